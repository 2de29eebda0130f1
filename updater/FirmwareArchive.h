#pragma once

#include "ZipDirectory.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>

class QFile;

/// One entry of a firmware archive.
struct ArchiveEntry
{
    QString path; ///< cleaned, below the extraction folder unless the archive is hostile
    ZipClaim claim;
    bool isFile = false;
    bool isLink = false;
    uint permissions = 0;   ///< QFile::Permissions of a file entry
    qint64 size = 0;        ///< unpacked size, as the archive's directory claims
    bool isCredible = true; ///< its claimed sizes fit the archive and LargestEntry
};

/// A ".zip" archive from outside. A file that is no zip, or that cannot be read, has no entries.
class FirmwareArchive
{
public:
    /// An update reads an image as a whole into memory, and a panel has little. Unpacking needs the same small
    /// memory for every size.
    static constexpr qint64 LargestEntry = 256 << 20;

    explicit FirmwareArchive(const QString& path);
    ~FirmwareArchive();

    /// In the archive's own order.
    const QList<ArchiveEntry>& Entries() const { return m_entries; }

    /// Extracts every entry into `folder`, which must exist. False when the archive was refused, also because it
    /// claims more than the disk has left (nothing is written then), or when an entry could not be written (what came
    /// before it stays, of the entry itself nothing does).
    /// An entry whose data cannot be unpacked (damaged, encrypted, larger than LargestEntry) is written empty: the
    /// certificate alert then shows its name.
    /// `beforeEntry` is called with the count of the entries that are done; what it throws ends the work.
    bool ExtractAll(const QString& folder, const std::function<void(qsizetype)>& beforeEntry = {}) const;

private:
    bool Extract(const ArchiveEntry& entry, const QString& folder) const;

    std::unique_ptr<QFile> m_file;
    QList<ArchiveEntry> m_entries;
};

/// Whether the entries can be extracted into `folder` without touching anything outside of it: no link among
/// them, no path that leads out by "..", none that passes through a link that is already there, none that is to be a
/// file and a folder at once, and none too long for a disk or deeper than 32 folders.
bool MayBeExtracted(const QList<ArchiveEntry>& entries, const QString& folder);
