#pragma once

#include "Error.h"

#include <array>
#include <csignal>

/// Thrown to end work early after a signal.
class Interrupted : public Error
{
public:
    Interrupted()
        : Error("interrupted")
    {}
};

/// Delays the signals that end a program, so that temporary files can be removed first: while an object exists they are
/// only recorded; its destructor restores the former handlers and raises the recorded signal. Ignored signals stay
/// ignored. Objects may be nested; use them in one thread only.
class Interruption
{
public:
    Interruption();
    ~Interruption();
    Q_DISABLE_COPY_MOVE(Interruption)

    /// Whether a signal has been recorded.
    static bool HasCome();
    /// Throws Interrupted when a signal has been recorded.
    static void Check();

private:
    static constexpr std::array Signals{SIGHUP,  SIGINT,  SIGQUIT, SIGPIPE,   SIGALRM, SIGTERM,
                                        SIGUSR1, SIGUSR2, SIGXCPU, SIGVTALRM, SIGPROF};
    std::array<struct sigaction, Signals.size()> m_before{};
};
