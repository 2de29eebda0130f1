#pragma once

#include <chrono>

/// Seconds on the monotonic clock since the machine started, the same for all processes.
inline double Now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
