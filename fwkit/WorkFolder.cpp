#include "WorkFolder.h"

#include <QDir>
#include <QFileInfo>

#include <unistd.h>

namespace {

constexpr char LockName[] = "fwkit.lock";

/// Removes all but the lock file, which must be removed last: a folder without one is not recognised as left over.
void RemoveContent(const QString& folder)
{
    const auto all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    for (const QFileInfo& entry : QDir(folder).entryInfoList(all)) {
        if (entry.isDir() && !entry.isSymLink())
            QDir(entry.filePath()).removeRecursively();
        else if (entry.fileName() != LockName)
            QFile::remove(entry.filePath());
    }
}

void RemoveLeftovers(const QString& start)
{
    const QFileInfo info(start);
    const auto folders = QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::CaseSensitive;
    for (const QFileInfo& folder : QDir(info.path()).entryInfoList({info.fileName() + "??????"}, folders)) {
        const QString path = folder.filePath() + '/' + LockName;
        if (folder.ownerId() != ::geteuid() || !QFileInfo::exists(path))
            continue;
        QLockFile lock(path);
        // A lock is stale only when its process has ended, however old it is.
        lock.setStaleLockTime(0);
        if (!lock.tryLock(0))
            continue;
        RemoveContent(folder.filePath());
        lock.unlock();
        QDir().rmdir(folder.filePath());
    }
}

} // namespace

WorkFolder::WorkFolder(const QString& start)
    : m_folder((RemoveLeftovers(start), start + "XXXXXX"))
    , m_lock(m_folder.filePath(LockName))
{
    m_lock.setStaleLockTime(0);
    if (m_folder.isValid())
        m_lock.tryLock(0);
}

WorkFolder::~WorkFolder()
{
    if (m_folder.isValid())
        RemoveContent(m_folder.path());
}
