#pragma once

#include "Error.h"

#include <array>
#include <csignal>

/// Thrown in the middle of work that a signal is to end.
class Interrupted : public Error
{
public:
    Interrupted()
        : Error("interrupted")
    {}
};

/// Puts off the signals that end a program, so that what was begun can be removed first: when one has come, the
/// program ends by it at the end of this object. Signals that are ignored stay so. They may be nested.
class Interruption
{
public:
    Interruption();
    ~Interruption();
    Q_DISABLE_COPY_MOVE(Interruption)

    static bool HasCome();
    /// Throws Interrupted when a signal has come.
    static void Check();

private:
    static constexpr std::array Signals{SIGHUP,  SIGINT,  SIGQUIT, SIGPIPE,   SIGALRM, SIGTERM,
                                        SIGUSR1, SIGUSR2, SIGXCPU, SIGVTALRM, SIGPROF};
    std::array<struct sigaction, Signals.size()> m_before{};
};
