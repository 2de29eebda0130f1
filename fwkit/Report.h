#pragma once

#include "Finding.h"

#include <QJsonObject>
#include <QStringList>

/// How the verbs write: nothing that came from a file reaches the terminal as a command to it.

/// What cannot be printed (control characters, those that turn the writing direction) as "\u001b".
QString Printable(const QString& text);
/// One line: file, place, what happens, remedy.
QString LineOf(const Finding& finding);
/// Left-aligned columns; the first row is the heading.
QString TableOf(const QList<QStringList>& rows);

QJsonObject JsonOf(const Finding& finding);
/// UTF-8, indented, with a closing line break.
QString JsonText(const QJsonObject& object);

/// Writes text to stdout, which is flushed at the program's end.
void Print(const QString& text);
/// Throws UsageError with the text `failure` unless all that was printed has been written.
void RequireWritten(const QString& failure);
/// Writes one line to stderr, with the verb in front.
void Warn(const QString& verb, const QString& line);
