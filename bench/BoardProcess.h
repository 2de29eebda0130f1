#pragma once

#include <QProcess>

#include <chrono>

/// A running bench-board on 127.0.0.1. All functions throw Unmeasurable.
class BoardProcess
{
public:
    explicit BoardProcess(std::chrono::microseconds blockTime, std::chrono::milliseconds restart = {});
    ~BoardProcess();
    Q_DISABLE_COPY_MOVE(BoardProcess)

    quint16 Port() const { return m_port; }
    struct Work
    {
        int requests = 0;
        double seconds = 0; ///< that the board took to handle them
    };
    /// Requests handled since the last call.
    Work TakeWork();

private:
    QStringList ReadLine();

    QProcess m_process;
    quint16 m_port = 0;
};
