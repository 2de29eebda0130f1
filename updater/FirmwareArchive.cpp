#include "FirmwareArchive.h"

#include "ZipUnpacker.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <private/qzipreader_p.h>

#include <algorithm>
#include <filesystem>

namespace {

/// Every folder above `path`, the outermost first: "a", "a/b" for "a/b/c".
QStringList FoldersAbove(const QString& path)
{
    QStringList folders;
    for (qsizetype slash = path.indexOf('/'); slash >= 0; slash = path.indexOf('/', slash + 1))
        folders.append(path.first(slash));
    return folders;
}

/// The paths of an archive, sorted, so that the entries of a folder are neighbours. A list of every folder of every
/// path would let a small hostile archive fill the panel's memory.
class SortedPaths
{
public:
    explicit SortedPaths(const QList<ArchiveEntry>& entries)
    {
        for (const ArchiveEntry& entry : entries)
            m_paths.append(entry.path);
        std::sort(m_paths.begin(), m_paths.end());
    }
    bool HasInside(const QString& folder) const
    {
        const QString below = folder + '/';
        const auto first = std::lower_bound(m_paths.begin(), m_paths.end(), below);
        return first != m_paths.end() && first->startsWith(below);
    }
    bool PassesThroughLink(const QString& root) const
    {
        QString previous;
        for (const QString& path : m_paths) {
            for (const QString& folder : FoldersAbove(path)) {
                if (!previous.startsWith(folder + '/') && QFileInfo(root + '/' + folder).isSymLink())
                    return true;
            }
            previous = path;
        }
        return false;
    }

private:
    QStringList m_paths;
};

/// Deeper folders than any maker's archive has, and longer names than a panel's file systems take.
bool IsTooLong(const QString& path)
{
    constexpr qsizetype LongestPath = 2048;
    constexpr qsizetype LongestName = 255;
    constexpr qsizetype DeepestPath = 32;
    // File systems count bytes, not characters.
    const QByteArray native = QFile::encodeName(path);
    if (native.size() > LongestPath || native.count('/') > DeepestPath)
        return true;
    const QList<QByteArray> names = native.split('/');
    return std::any_of(names.begin(), names.end(), [](const QByteArray& name) { return name.size() > LongestName; });
}

/// A full temporary disk would stop more than the updater.
bool FitsOnDisk(const QList<ArchiveEntry>& entries, const QString& folder)
{
    qint64 needed = 0;
    for (const ArchiveEntry& entry : entries) {
        if (entry.isFile && entry.isCredible)
            needed += entry.size - QFileInfo(folder + '/' + entry.path).size();
    }
    std::error_code error;
    const auto space = std::filesystem::space(QFile::encodeName(folder).toStdString(), error);
    return error || needed <= 0 || quint64(needed) <= space.available;
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
    QSet<QString> folders;
    for (const ArchiveEntry& entry : entries) {
        if (entry.isLink || LeadsOutside(entry.path) || IsTooLong(entry.path))
            return false;
        if (!entry.isFile)
            folders.insert(entry.path);
    }
    const SortedPaths paths(entries);
    for (const ArchiveEntry& entry : entries) {
        if (entry.isFile && (folders.contains(entry.path) || paths.HasInside(entry.path)))
            return false;
    }
    return !paths.PassesThroughLink(folder) && std::none_of(folders.begin(), folders.end(), [&](const QString& inside) {
        return QFileInfo(folder + '/' + inside).isSymLink();
    });
}

FirmwareArchive::FirmwareArchive(const QString& path)
{
    m_file = std::make_unique<QFile>(path);
    const auto claims = m_file->open(QIODevice::ReadOnly) ? ReadZipDirectory(*m_file) : std::nullopt;
    if (!claims)
        return;
    const QZipReader reader(path);
    const QList<QZipReader::FileInfo> infos = reader.fileInfoList();
    // When QZipReader lists other entries than the directory has, neither list can be trusted.
    if (infos.size() != claims->size())
        return;
    for (qsizetype i = 0; i < infos.size(); ++i) {
        const QZipReader::FileInfo& info = infos[i];
        const ZipClaim& claim = claims->at(i);
        ArchiveEntry entry;
        entry.claim = claim;
        entry.path = QDir::cleanPath(QString::fromLocal8Bit(claim.name));
        entry.isFile = info.isFile;
        entry.isLink = info.isSymLink;
        entry.permissions = info.permissions.toInt();
        entry.size = claim.unpackedSize;
        entry.isCredible = claim.packedSize <= m_file->size() && claim.unpackedSize <= LargestEntry;
        // Some archivers store "./" for the top folder itself.
        if (!entry.path.isEmpty() && entry.path != ".")
            m_entries.append(entry);
    }
    // An archiver that stores no file modes leaves a folder entry looking like an empty file.
    const SortedPaths paths(m_entries);
    for (ArchiveEntry& entry : m_entries) {
        const bool isFolder = entry.claim.name.endsWith('/') || paths.HasInside(entry.path);
        entry.isFile = entry.isFile && !(entry.size == 0 && isFolder);
    }
}

FirmwareArchive::~FirmwareArchive() = default;

bool FirmwareArchive::ExtractAll(const QString& folder, const std::function<void(qsizetype)>& beforeEntry) const
{
    if (m_entries.isEmpty())
        return true;
    if (!QDir(folder).exists() || !MayBeExtracted(m_entries, folder) || !FitsOnDisk(m_entries, folder))
        return false;
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (beforeEntry)
            beforeEntry(i);
        if (!Extract(m_entries[i], folder))
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
    if (!MakeRoom(path) || !file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    const Unpacked result = entry.isCredible ? UnpackZipEntry(*m_file, entry.claim, file) : Unpacked::Damaged;
    if (result == Unpacked::Unwritable || (result == Unpacked::Damaged && !file.resize(0))) {
        file.remove();
        return false;
    }
    // Some file systems have no modes, which is no reason to fail.
    const auto kept = QFile::Permissions::fromInt(int(entry.permissions));
    file.setPermissions(kept | QFile::ReadOwner | QFile::WriteOwner);
    return true;
}
