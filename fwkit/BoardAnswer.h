#pragma once

#include <QString>

#include <algorithm>

/// Modbus leaves an answer 252 bytes of data (MODBUS Application Protocol, 4.1), and two of them are its length.
inline constexpr int MaxAnswer = 250;

/// Whether a board can send `text` as an answer: one byte for each character, in one frame.
inline bool FitsAnswer(const QString& text)
{
    return text.size() <= MaxAnswer
           && std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
}
