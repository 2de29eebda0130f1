#pragma once

#include <QString>

#include <optional>

/// What an instrument's text line says: words separated by single spaces, the first one repeating the
/// command, and a closing ";". Two spaces in a row enclose an empty word.

/// Second word of a "DEVICETYPE ?;" answer; empty when the line has fewer words.
QString DeviceTypeIn(const QString& answer);
/// Last word of a "SERIAL ?;" answer.
QString SerialIn(const QString& answer);
/// Version of processor `idCpu` in a "VER ?;" answer: word idCpu + 1 of a line of more than two words, or
/// nothing when it has not that many; word 1 of a shorter line, whatever the processor. A line of one word
/// is no answer of any instrument: the toolkit's assertion stops the program.
std::optional<QString> VersionIn(const QString& answer, int idCpu);
