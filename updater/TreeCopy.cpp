#include "TreeCopy.h"

#include "FirmwareFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QList>
#include <QRegularExpression>
#include <QTemporaryFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

/// Hidden, so that no copy carries it on. QTemporaryFile replaces the X by letters and digits.
constexpr char TemporaryName[] = ".updater-copy.XXXXXX";

/// Brings to the disk what was written to the file system of `folder`.
bool Sync(const QString& folder)
{
    const int handle = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) {
        // A folder may be writable and not readable. Then only sync() is left, which cannot report a failure.
        ::sync();
        return true;
    }
    // Some file systems cannot sync, which is no reason to refuse the copy.
    const bool failed = ::syncfs(handle) != 0 && (errno == EIO || errno == ENOSPC || errno == EDQUOT);
    ::close(handle);
    return !failed;
}

bool IsInside(const QString& path, const QString& folder)
{
    return path == folder || path.startsWith(folder.endsWith('/') ? folder : folder + '/');
}

void RemoveLeftovers(const QString& folder, QDirIterator::IteratorFlag levels)
{
    static const QRegularExpression leftover("\\A\\.updater-copy\\.[A-Za-z0-9]{6}\\z");
    QDirIterator files(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks, levels);
    while (files.hasNext()) {
        files.next();
        if (leftover.match(files.fileName()).hasMatch())
            QFile::remove(files.filePath());
    }
}

/// A copy beside its target, which it replaces once it is on the disk.
struct WaitingCopy
{
    QString source;
    QString target;
    QString temporary;
};

/// Fills `copy.temporary`; nothing is left of a copy that fails.
bool CopyBeside(WaitingCopy& copy, const QString& folder)
{
    constexpr qint64 ChunkSize = 256 << 10;
    QFile from(copy.source);
    QTemporaryFile to(folder + '/' + TemporaryName);
    if (!from.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !to.open())
        return false;
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    qint64 count = 0;
    while ((count = from.read(chunk.data(), ChunkSize)) > 0 && to.write(chunk.constData(), count) == count) {
    }
    if (count != 0 || !to.flush())
        return false;
    // Some file systems have no modes, which is no reason to refuse the copy.
    to.setPermissions(from.permissions());
    to.setAutoRemove(false);
    copy.temporary = to.fileName();
    return true;
}

/// Empties `copies`. They wait together because syncing each file by itself takes longer than copying it.
bool Replace(QList<WaitingCopy>& copies, const QString& folder, const CopyLog& log)
{
    bool isWhole = copies.isEmpty() || Sync(folder);
    for (const WaitingCopy& copy : std::exchange(copies, {})) {
        const QByteArray temporary = QFile::encodeName(copy.temporary);
        isWhole = isWhole && std::rename(temporary.constData(), QFile::encodeName(copy.target).constData()) == 0;
        if (isWhole)
            log("copy " + copy.source + " to " + copy.target + " ok");
        else
            ::unlink(temporary.constData());
    }
    return isWhole;
}

bool CopyFiles(const QDir& src, const QString& dst, const CopyLog& log)
{
    RemoveLeftovers(dst, QDirIterator::NoIteratorFlags);
    QStringList names = src.entryList(QDir::Files, QDir::NoSort);
    // A copy that ends early must not leave the new version's text beside the old program: the module would then
    // count as up to date.
    std::stable_partition(names.begin(), names.end(), [](const QString& name) { return !name.endsWith(".ver"); });
    QList<WaitingCopy> waiting;
    for (const QString& name : names) {
        WaitingCopy copy{src.path() + QDir::separator() + name, dst + QDir::separator() + name, {}};
        bool isCopied = CopyBeside(copy, dst);
        // It may be that the disk is full: the copies that wait occupy space beside the files they replace. Put them in
        // place, then try this file once more. What is in place stays when it fails again.
        if (!isCopied && !waiting.isEmpty())
            isCopied = Replace(waiting, dst, log) && CopyBeside(copy, dst);
        if (!isCopied)
            return false;
        waiting.append(copy);
    }
    return Replace(waiting, dst, log);
}

/// `enclosing`: canonical paths of the folders that the copy is in the middle of.
bool CopyFolder(const QString& src, const QString& dst, QStringList enclosing, const CopyLog& log)
{
    const QDir from(src);
    if (!from.exists())
        return false;
    if (IsNeverCopied(from.dirName()))
        return true;
    const QString canonical = from.canonicalPath();
    const auto isInThis = [&](const QString& path) { return IsInside(path, canonical); };
    // A folder that holds one that the copy is in, or that holds the target, would be copied without end. Only the top
    // folder may hold the target: a backup of it lies inside of it.
    if (std::any_of(enclosing.cbegin(), enclosing.cend(), isInThis)
        || (!enclosing.isEmpty() && isInThis(QDir(dst).canonicalPath())))
        return true;
    enclosing.append(canonical);
    // Folders first: the version files beside the program come last of all.
    for (const QString& name : from.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort)) {
        const QString target = dst + QDir::separator() + name;
        if (!from.exists(target) && !from.mkpath(target))
            return false;
        log("mkpath " + target + " ok");
        if (!CopyFolder(src + QDir::separator() + name, target, enclosing, log))
            return false;
    }
    return CopyFiles(from, dst, log);
}

} // namespace

bool CopyTree(const QString& src, const QString& dst, const CopyLog& log)
{
    return CopyFolder(src, dst, {}, log);
}

void RemoveCopyLeftovers(const QString& folder)
{
    RemoveLeftovers(folder, QDirIterator::Subdirectories);
}
