#pragma once

#include "FirmwareFiles.h"

#include <QList>
#include <QString>

#include <optional>

class Progress;

/// A file of an archive, as far as no catalogue is needed to tell.
struct ListedFile
{
    QString path;
    qint64 size = 0;                        ///< in bytes, unpacked
    QString version;                        ///< of the .ver file beside it, or else in its name; empty without both
    std::optional<Certificate> certificate; ///< nothing: the file's data cannot be unpacked
};

/// The files of the archive `path` in its own order, but for their certificates. Unpacks nothing to the disk. Throws
/// UsageError when there is nothing in it that a panel would see.
QList<ListedFile> ListArchive(const QString& path, Progress& progress);
