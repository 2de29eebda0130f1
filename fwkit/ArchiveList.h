#pragma once

#include "FirmwareFiles.h"

#include <QList>
#include <QString>

#include <optional>

class Progress;

/// What is known of a file of an archive without a catalogue.
struct ListedFile
{
    QString path;
    qint64 size = 0;                        ///< in bytes, unpacked
    QString version;                        ///< from its .ver file, or else from its name; empty without both
    std::optional<Certificate> certificate; ///< std::nullopt: the data cannot be unpacked
};

/// The files of the archive `path` in the archive's order, without those files' certificates. Unpacks nothing to the
/// disk. Throws UsageError when the archive cannot be read or has no file.
QList<ListedFile> ListArchive(const QString& path, Progress& progress);
