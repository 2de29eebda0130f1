#pragma once

#include "Finding.h"

#include <QJsonObject>
#include <QStringList>

/// Output of the verbs. Text from files is escaped, so that it cannot send control sequences to the terminal.

/// `text` with each character that cannot be printed (control characters, changes of the writing direction) replaced by
/// its code, such as "\u001b".
QString Printable(const QString& text);
/// One line without a line break: file, place, effect, remedy.
QString LineOf(const Finding& finding);
/// Left-aligned columns; the first row is the heading and must be there, and all rows have as many cells.
QString TableOf(const QList<QStringList>& rows);

QJsonObject JsonOf(const Finding& finding);
/// UTF-8, indented, with a closing line break.
QString JsonText(const QJsonObject& object);

/// Writes `text` to stdout as it is, without flushing; RequireWritten reports a failure.
void Print(const QString& text);
/// Flushes stdout. Throws UsageError with the text `failure` unless everything has been written.
void RequireWritten(const QString& failure);
/// Writes one line to stderr, with the verb in front.
void Warn(const QString& verb, const QString& line);
