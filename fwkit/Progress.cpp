#include "Progress.h"

#include <cstdio>
#include <unistd.h>

namespace {

constexpr qint64 PauseMs = 100;
constexpr char WipeLine[] = "\r\033[K";

void Write(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stderr);
    std::fflush(stderr);
}

} // namespace

Progress::Progress(bool isWanted)
    : m_isTerminal(isWanted && ::isatty(STDERR_FILENO) == 1)
{}

Progress::~Progress()
{
    Wipe();
}

void Progress::Wipe()
{
    if (m_shown.isValid())
        Write(WipeLine);
    m_shown.invalidate();
}

void Progress::Show(const QString& work, qint64 done, qint64 total)
{
    const QString text = m_isTerminal ? work : QString();
    if (!m_isTerminal || (text == m_work && m_shown.isValid() && m_shown.elapsed() < PauseMs))
        return;
    m_work = text;
    m_shown.start();
    Write(WipeLine + text + (total > 0 ? QString(" %1 %").arg(100 * done / total) : QString()));
}
