#pragma once

#include <QSharedMemory>
#include <QString>
#include <QSystemSemaphore>

/// Lets one copy of the program run at a time. The marker is a shared-memory segment whose existence is all
/// that counts; every test and change of it is made under an inter-process lock.
class RunGuard
{
public:
    /// Also removes the marker of a copy that crashed.
    explicit RunGuard(const QString& key);
    ~RunGuard();
    Q_DISABLE_COPY_MOVE(RunGuard)

    /// True when another process holds the marker.
    bool isAnotherRunning();
    /// True when this process holds the marker from now on.
    bool tryToRun();
    void release();

private:
    const QString key;
    const QString memLockKey;
    const QString sharedmemKey;
    QSharedMemory sharedMem;
    QSystemSemaphore memLock;
};
