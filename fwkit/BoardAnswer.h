#pragma once

#include <QString>

#include <algorithm>

/// Bytes of text in an answer: a Modbus PDU has 252 bytes of data (MODBUS Application Protocol, 4.1), two of which hold
/// the text's length.
inline constexpr int MaxAnswer = 250;

/// Whether a board can send `text` in one answer, with one byte (Latin-1) for each character.
inline bool FitsAnswer(const QString& text)
{
    return text.size() <= MaxAnswer
           && std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
}
