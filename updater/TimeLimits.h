#pragma once

#include <chrono>

/// Every time limit of the program. The program runs with these values; only tests shorten them. All are
/// measured on the monotonic clock: the panel has no battery clock, and the step that network time makes
/// at start must neither cut a wait nor stretch it.
struct TimeLimits
{
    std::chrono::milliseconds firstSearch{500};       ///< from the window's construction
    std::chrono::milliseconds connectAttempt{1000};   ///< one of the attempts of TcpModbus::Connect
    std::chrono::milliseconds reply{10000};           ///< one answer, for TcpModbus and Qt's Modbus client
    std::chrono::milliseconds restartPause{2000};     ///< from a written image to the first poll
    std::chrono::milliseconds slowRestartPause{7000}; ///< the same for panels and probers, which boot slowly
    std::chrono::milliseconds pollPause{1000};        ///< after a poll that failed
    std::chrono::milliseconds systemCommand{30000};   ///< one command of Util::BashCommand
    std::chrono::milliseconds killedCommand{1000};    ///< for a killed command to end
    std::chrono::milliseconds popupExposure{250};     ///< for the wait pop-up to reach the screen
};

extern TimeLimits g_timeLimits;
