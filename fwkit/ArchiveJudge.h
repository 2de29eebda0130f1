#pragma once

#include "Finding.h"
#include "FirmwareFiles.h"
#include "Selection.h"

#include <QList>
#include <QStringList>

#include <optional>

class Progress;
struct ZipItem;

/// What the panel would do with an archive, for one module.
struct ModuleReport
{
    QString name;
    QString entry; ///< the file taken, or else the last one whose name fits; empty without both
    std::optional<Certificate> certificate; ///< of `entry`
    QString version;                        ///< as the table would show it; empty when nothing is taken
};

/// An alert of the panel and how often it appears.
struct AlertReport
{
    Alert alert;
    int times = 0;
};

/// The panel of one device.
struct DeviceReport
{
    QString name;
    int idDev = 0;
    QList<ModuleReport> modules;
    QList<AlertReport> alerts; ///< by first appearance; each text once
};

struct Judgement
{
    QList<DeviceReport> devices; ///< empty when the panel extracts nothing
    QList<Finding> findings;
    QList<Finding> notes; ///< no mistakes, but what the maker should know of
};

/// Where the panel extracts archives. Texts for users name this folder in place of the temporary one.
inline constexpr char DisplayedExtractionFolder[] = "/tmp/firmware";

/// Extracts the archive `path` to a temporary folder below TMPDIR, assigns its files as the panel of each selected
/// device would, and removes the folder. `name` is the archive's name in findings. Throws UsageError when the archive
/// cannot be read or the folder not be written, Interrupted when a signal has come.
Judgement JudgeArchive(const QString& path, const QString& name, const Selection& selection, Progress& progress);
/// Does the same with an archive that is yet to be made of `items`; links stand for the unpacked files.
Judgement JudgeItems(const QList<ZipItem>& items, const QString& name, const Selection& selection, Progress& progress);
