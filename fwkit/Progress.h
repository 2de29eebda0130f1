#pragma once

#include <QElapsedTimer>
#include <QString>

/// Tells how far long work has got: one line on stderr that is rewritten and at last wiped off. Silent when stderr is
/// no terminal.
class Progress
{
public:
    /// `isWanted`: false for silence.
    explicit Progress(bool isWanted = true);
    ~Progress();
    Q_DISABLE_COPY_MOVE(Progress)

    /// `done` of `total`, in any unit.
    void Tell(const QString& work, qint64 done, qint64 total);
    /// Makes room for another line.
    void Wipe();

private:
    bool m_isTerminal;
    QString m_work;
    QElapsedTimer m_shown;
};
