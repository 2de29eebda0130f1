#include "FirmwareArchive.h"

#include "ZipDirectory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <private/qzipreader_p.h>

#include <new>

namespace {

/// Every folder above `path`, the outermost first: "a", "a/b" for "a/b/c".
QStringList FoldersAbove(const QString& path)
{
    QStringList folders;
    for (qsizetype slash = path.indexOf('/'); slash >= 0; slash = path.indexOf('/', slash + 1))
        folders.append(path.first(slash));
    return folders;
}

QSet<QString> AllFolders(const QList<ArchiveEntry>& entries)
{
    QSet<QString> folders;
    for (const ArchiveEntry& entry : entries) {
        for (const QString& folder : FoldersAbove(entry.path))
            folders.insert(folder);
    }
    return folders;
}

bool LeadsOutside(const QString& path)
{
    return path == ".." || path.startsWith("../") || path.startsWith('/') || path.contains(QChar(0));
}

/// Makes `folder` below `root`; a file of an earlier archive that stands in its way is removed.
bool MakeFolder(const QString& root, const QString& folder)
{
    for (const QString& part : FoldersAbove(folder + '/')) {
        const QString path = root + '/' + part;
        if (QFileInfo(path).isDir())
            continue;
        QFile::remove(path);
        if (!QDir().mkdir(path))
            return false;
    }
    return true;
}

/// A file is made anew, never written into: an old one may be read-only, and a folder with its name must go.
bool MakeRoom(const QString& path)
{
    const QFileInfo info(path);
    if (info.isDir() && !info.isSymLink())
        return QDir(path).removeRecursively();
    return !(info.exists() || info.isSymLink()) || QFile::remove(path);
}

} // namespace

bool MayBeExtracted(const QList<ArchiveEntry>& entries, const QString& folder)
{
    QSet<QString> folders = AllFolders(entries);
    for (const ArchiveEntry& entry : entries) {
        if (!entry.isFile)
            folders.insert(entry.path);
    }
    for (const QString& inside : folders) {
        if (QFileInfo(folder + '/' + inside).isSymLink())
            return false;
    }
    for (const ArchiveEntry& entry : entries) {
        if (entry.isLink || LeadsOutside(entry.path) || (entry.isFile && folders.contains(entry.path)))
            return false;
    }
    return true;
}

FirmwareArchive::FirmwareArchive(const QString& path)
{
    QFile file(path);
    const auto claims = file.open(QIODevice::ReadOnly) ? ReadZipDirectory(file) : std::nullopt;
    if (!claims)
        return;
    m_reader = std::make_unique<QZipReader>(path);
    const QList<QZipReader::FileInfo> infos = m_reader->fileInfoList();
    // Where the reader sees other entries than the directory has, neither can be trusted.
    if (infos.size() != claims->size())
        return;
    for (qsizetype i = 0; i < infos.size(); ++i) {
        const QZipReader::FileInfo& info = infos[i];
        const ZipClaim& claim = claims->at(i);
        ArchiveEntry entry;
        entry.stored = QString::fromLocal8Bit(claim.name);
        entry.path = QDir::cleanPath(entry.stored);
        entry.isFile = info.isFile;
        entry.isLink = info.isSymLink;
        entry.permissions = info.permissions.toInt();
        entry.size = claim.unpackedSize;
        entry.isCredible = claim.packedSize <= file.size() && claim.unpackedSize <= LargestEntry;
        // Some archivers store "./" for the top folder itself.
        if (!entry.path.isEmpty() && entry.path != ".")
            m_entries.append(entry);
    }
    // An archiver that stores no file modes leaves a folder entry looking like an empty file.
    const QSet<QString> folders = AllFolders(m_entries);
    for (ArchiveEntry& entry : m_entries) {
        const bool isFolder = entry.stored.endsWith('/') || folders.contains(entry.path);
        entry.isFile = entry.isFile && !(entry.size == 0 && isFolder);
    }
}

FirmwareArchive::~FirmwareArchive() = default;

bool FirmwareArchive::ExtractAll(const QString& folder) const
{
    if (m_entries.isEmpty())
        return true;
    if (!QDir(folder).exists() || !MayBeExtracted(m_entries, folder))
        return false;
    for (const ArchiveEntry& entry : m_entries) {
        if (!Extract(entry, folder))
            return false;
    }
    return true;
}

bool FirmwareArchive::Extract(const ArchiveEntry& entry, const QString& folder) const
{
    if (!entry.isFile)
        return MakeFolder(folder, entry.path);
    const qsizetype slash = entry.path.lastIndexOf('/');
    const QString path = folder + '/' + entry.path;
    if (slash > 0 && !MakeFolder(folder, entry.path.first(slash)))
        return false;
    QFile file(path);
    if (!MakeRoom(path) || !file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray data = Data(entry);
    if (file.write(data) != data.size() || !file.flush())
        return false;
    // Some file systems know no modes: no reason to fail.
    const auto kept = QFile::Permissions::fromInt(int(entry.permissions));
    file.setPermissions(kept | QFile::ReadOwner | QFile::WriteOwner);
    return true;
}

QByteArray FirmwareArchive::Data(const ArchiveEntry& entry) const
{
    if (!entry.isCredible)
        return {};
    try {
        const QByteArray data = m_reader->fileData(entry.stored);
        return data.size() == entry.size ? data : QByteArray();
    } catch (const std::bad_alloc&) {
        // The data unpacks to more than the directory claims, without end.
        return {};
    }
}
