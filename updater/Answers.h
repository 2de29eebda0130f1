#pragma once

#include <QString>

#include <optional>

/// An instrument's text answer is a line of words separated by single spaces. The first repeats the command, a ";" ends
/// the line. Two spaces in a row enclose an empty word.

/// Second word of a "DEVICETYPE ?;" answer; empty when the line has fewer words.
QString DeviceTypeIn(const QString& answer);
/// Last word of a "SERIAL ?;" answer.
QString SerialIn(const QString& answer);
/// Version of processor `idCpu` in a "VER ?;" answer: word idCpu + 1 of a line of more than two words, or
/// nothing when it has not that many; word 1 of a shorter line, whatever the processor. A line of one word
/// is never answered; Qt's assertion stops the program.
std::optional<QString> VersionIn(const QString& answer, int idCpu);
