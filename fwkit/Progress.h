#pragma once

#include <QElapsedTimer>
#include <QString>

/// Shows the progress of long work on one line of stderr, which is rewritten at most every 100 ms and erased by the
/// destructor. Writes nothing when stderr is no terminal.
class Progress
{
public:
    /// `isWanted`: false to write nothing.
    explicit Progress(bool isWanted = true);
    ~Progress();
    Q_DISABLE_COPY_MOVE(Progress)

    /// `work` names what is done; `done` of `total`, in any unit, is shown as a percentage unless `total` is 0.
    void Show(const QString& work, qint64 done, qint64 total);
    /// Erases the line, so that something else can be written.
    void Wipe();

private:
    bool m_isTerminal;
    QString m_work;
    QElapsedTimer m_shown;
};
