#pragma once

#include <QByteArray>
#include <QJsonParseError>
#include <QList>
#include <QString>

/// Where things stand in a JSON text (RFC 8259): Qt's reader tells values, but not their places.

/// One member of an object, or one element of a list (its key is empty).
struct JsonMember
{
    QString key;
    qsizetype keyOffset = 0; ///< in bytes from the text's begin; a list's element: the value's
    qsizetype offset = 0;    ///< of the value
};

/// What the object or the list at `offset` consists of, in the text's order; nothing for any other value. The text
/// must be one that Qt reads without an error.
QList<JsonMember> JsonMembers(const QByteArray& text, qsizetype offset);
/// Offset of the first value of the text.
qsizetype JsonBegin(const QByteArray& text);
/// Offset of the character that `fault` is about.
qsizetype JsonFaultOffset(const QByteArray& text, const QJsonParseError& fault);
/// "LINE:COLUMN", both from 1, in characters.
QString LineAndColumn(const QByteArray& text, qsizetype offset);
