#pragma once

#include <QByteArray>
#include <QJsonParseError>
#include <QList>
#include <QString>

/// Places in a JSON text (RFC 8259): Qt's parser returns values without their places. All offsets are in bytes.

/// One member of an object, or one element of a list (its key is empty).
struct JsonMember
{
    QString key;
    qsizetype keyOffset = 0; ///< of the key; for an element of a list: of the value
    qsizetype offset = 0;    ///< of the value
};

/// The members of the object or list at `offset`, in the text's order; empty for any other value. Qt must parse `text`
/// without an error.
QList<JsonMember> JsonMembers(const QByteArray& text, qsizetype offset);
/// Offset of the first value of the text.
qsizetype JsonBegin(const QByteArray& text);
/// Offset of the character that `fault`, from parsing `text`, is about.
qsizetype JsonFaultOffset(const QByteArray& text, const QJsonParseError& fault);
/// "LINE:COLUMN" of `offset`, both from 1; columns count UTF-16 code units, without a byte order mark.
QString LineAndColumn(const QByteArray& text, qsizetype offset);
