#include "ArchiveList.h"

#include "FirmwareArchive.h"
#include "Progress.h"
#include "UsageError.h"
#include "ZipUnpacker.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QFile>

namespace {

/// Hashes what is written to it and keeps nothing else.
class HashDevice : public QIODevice
{
public:
    HashDevice() { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }
    QByteArray Digest() const { return m_hash.result(); }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override
    {
        m_hash.addData(QByteArrayView(data, size));
        return size;
    }

private:
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
};

class Lister
{
public:
    explicit Lister(const QString& path)
        : m_file(path)
        , m_archive(path)
    {
        if (!m_file.open(QIODevice::ReadOnly))
            throw UsageError(
                Kit::tr("%1: cannot be read (%2); name a readable archive").arg(path, WhyUnreadable(m_file)));
        for (const ArchiveEntry& entry : m_archive.Entries()) {
            if (entry.isFile)
                m_entries.insert(entry.path, &entry);
        }
        if (m_entries.isEmpty())
            throw UsageError(Kit::tr("%1: no zip archive, damaged, or empty; name an archive").arg(path));
    }

    QList<ListedFile> List(Progress& progress)
    {
        QList<ListedFile> files;
        const QList<ArchiveEntry>& entries = m_archive.Entries();
        for (qsizetype i = 0; i < entries.size(); ++i) {
            progress.Show(Kit::tr("Reading"), i, entries.size());
            const ArchiveEntry& entry = entries[i];
            const bool isCertificate =
                entry.path.endsWith(".sha256") && m_entries.contains(entry.path.chopped(qsizetype(strlen(".sha256"))));
            if (entry.isFile && !isCertificate)
                files.append({entry.path, entry.size, Version(entry), Judge(entry)});
        }
        return files;
    }

private:
    /// Content of a certificate or .ver file; std::nullopt when there is none, it is damaged or over 4096 bytes.
    std::optional<QByteArray> SmallContent(const QString& path)
    {
        constexpr qint64 Most = 4096;
        const ArchiveEntry* entry = m_entries.value(path);
        QBuffer content;
        content.open(QIODevice::WriteOnly);
        if (!entry || entry->size > Most || UnpackZipEntry(m_file, entry->claim, content) != Unpacked::Whole)
            return std::nullopt;
        return content.data();
    }

    QString Version(const ArchiveEntry& entry)
    {
        if (const auto text = SmallContent(entry.path + ".ver"))
            return QString::fromUtf8(*text);
        const QString name = FileNameOf(entry.path);
        const QString version = VersionInName(name);
        return name.startsWith("fw_") && version != NoVersionInName ? version : QString();
    }

    std::optional<Certificate> Judge(const ArchiveEntry& entry)
    {
        HashDevice hash;
        if (!entry.isCredible || UnpackZipEntry(m_file, entry.claim, hash) != Unpacked::Whole)
            return std::nullopt;
        if (!m_entries.contains(entry.path + ".sha256"))
            return Certificate::Missing;
        return SmallContent(entry.path + ".sha256") == hash.Digest() ? Certificate::Matches : Certificate::Different;
    }

    QFile m_file;
    FirmwareArchive m_archive;
    QHash<QString, const ArchiveEntry*> m_entries; // by path; owned by m_archive
};

} // namespace

QList<ListedFile> ListArchive(const QString& path, Progress& progress)
{
    return Lister(path).List(progress);
}
