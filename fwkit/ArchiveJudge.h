#pragma once

#include "Finding.h"
#include "FirmwareFiles.h"
#include "Selection.h"

#include <QList>
#include <QStringList>

#include <optional>

class Progress;

/// What the panel would do with an archive.

struct ModuleReport
{
    QString name;
    QString entry; ///< taken; when nothing is, the last that would be with a good certificate; else empty
    std::optional<Certificate> certificate; ///< of `entry`
    QString version;                        ///< as the table would show it; empty when nothing is taken
};

struct BoxReport
{
    Box box;
    int times = 0;
};

/// The panel of one instrument.
struct DeviceReport
{
    QString name;
    int idDev = 0;
    QList<ModuleReport> modules;
    QList<BoxReport> boxes; ///< in the order in which they are first seen
};

struct Judgement
{
    QList<DeviceReport> devices; ///< empty when the panel extracts nothing
    QList<Finding> findings;
    QList<Finding> notes; ///< what the maker may well want, but should know
};

/// Where the panel extracts archives; boxes name files below it.
inline constexpr char PanelFolder[] = "/tmp/firmware";

/// Takes the archive `path` as the panel of each selected device would, in a folder that is removed again. Findings
/// call it `name`. Throws UsageError when that cannot be tried.
Judgement JudgeArchive(const QString& path, const QString& name, const Selection& selection, Progress& progress);
