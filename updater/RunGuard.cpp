#include "RunGuard.h"

#include <QCryptographicHash>

namespace {

constexpr qsizetype MarkerSize = sizeof(quint64);

QString generateKeyHash(const QString& key, const QString& suffix)
{
    return QCryptographicHash::hash(key.toUtf8() + suffix.toUtf8(), QCryptographicHash::Sha1).toHex();
}

class Lock
{
public:
    explicit Lock(QSystemSemaphore& semaphore)
        : m_semaphore(semaphore)
    {
        m_semaphore.acquire();
    }
    ~Lock() { m_semaphore.release(); }
    Q_DISABLE_COPY_MOVE(Lock)

private:
    QSystemSemaphore& m_semaphore;
};

} // namespace

RunGuard::RunGuard(const QString& key)
    : key(key)
    , memLockKey(generateKeyHash(key, "_memLockKey"))
    , sharedmemKey(generateKeyHash(key, "_sharedmemKey"))
    , sharedMem(sharedmemKey)
    , memLock(memLockKey, 1, QSystemSemaphore::Open)
{
    // A segment outlives a process that crashed; the last detach removes it.
    const Lock lock(memLock);
    QSharedMemory stale(sharedmemKey);
    stale.attach(QSharedMemory::ReadWrite);
}

RunGuard::~RunGuard()
{
    release();
}

bool RunGuard::isAnotherRunning()
{
    if (sharedMem.isAttached())
        return false;
    const Lock lock(memLock);
    const bool attached = sharedMem.attach(QSharedMemory::ReadWrite);
    if (attached)
        sharedMem.detach();
    return attached;
}

bool RunGuard::tryToRun()
{
    if (isAnotherRunning())
        return false;
    bool created = false;
    {
        const Lock lock(memLock);
        created = sharedMem.create(MarkerSize, QSharedMemory::ReadWrite);
    }
    if (!created)
        release();
    return created;
}

void RunGuard::release()
{
    const Lock lock(memLock);
    if (sharedMem.isAttached())
        sharedMem.detach();
}
