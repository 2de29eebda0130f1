#include "Interruption.h"

namespace {

volatile std::sig_atomic_t g_signal = 0;

void Note(int signal)
{
    g_signal = signal;
}

} // namespace

Interruption::Interruption()
{
    struct sigaction noted = {};
    noted.sa_handler = Note;
    // SA_RESTART: otherwise a signal would make a read fail, as if the file were at fault.
    noted.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < Signals.size(); ++i) {
        ::sigaction(Signals[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler != SIG_IGN)
            ::sigaction(Signals[i], &noted, nullptr);
    }
}

Interruption::~Interruption()
{
    for (std::size_t i = 0; i < Signals.size(); ++i)
        ::sigaction(Signals[i], &m_before[i], nullptr);
    const int signal = g_signal;
    g_signal = 0;
    // With an outer object this only records it again.
    if (signal != 0)
        std::raise(signal);
}

bool Interruption::HasCome()
{
    return g_signal != 0;
}

void Interruption::Check()
{
    if (HasCome())
        throw Interrupted();
}
