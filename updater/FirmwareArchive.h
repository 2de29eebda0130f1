#pragma once

#include <QList>
#include <QString>

#include <memory>

class QZipReader;

/// One entry of a firmware archive.
struct ArchiveEntry
{
    QString path;   ///< cleaned, below the extraction folder unless the archive is hostile
    QString stored; ///< under which the reader finds it
    bool isFile = false;
    bool isLink = false;
    uint permissions = 0;   ///< QFile::Permissions of a file entry
    qint64 size = 0;        ///< unpacked size, as the archive's directory claims
    bool isCredible = true; ///< its claimed sizes fit the archive and the panel's memory
};

/// A ".zip" archive from outside. A file that is no zip, or that cannot be read, has no entries.
class FirmwareArchive
{
public:
    /// The reader unpacks an entry as a whole in memory, and a panel has little.
    static constexpr qint64 LargestEntry = 256 << 20;

    explicit FirmwareArchive(const QString& path);
    ~FirmwareArchive();

    /// In the archive's own order.
    const QList<ArchiveEntry>& Entries() const { return m_entries; }

    /// Extracts every entry into `folder`, which must exist. False when the archive was refused (nothing is
    /// written then) or when an entry could not be written (what came before it stays).
    /// An entry whose data cannot be unpacked (damaged, encrypted, larger than LargestEntry) is written empty: its
    /// certificate then names it to the operator.
    bool ExtractAll(const QString& folder) const;

private:
    bool Extract(const ArchiveEntry& entry, const QString& folder) const;
    QByteArray Data(const ArchiveEntry& entry) const;

    std::unique_ptr<QZipReader> m_reader;
    QList<ArchiveEntry> m_entries;
};

/// Whether the entries can be extracted into `folder` without touching anything outside of it: no link among
/// them, no path that leads out by "..", none that passes through a link that is already there, and none that
/// is to be a file and a folder at once.
bool MayBeExtracted(const QList<ArchiveEntry>& entries, const QString& folder);
