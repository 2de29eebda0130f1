#include "JsonPlaces.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace {

constexpr char ByteOrderMark[] = "\xEF\xBB\xBF";

qsizetype SkipSpace(const QByteArray& text, qsizetype at)
{
    while (at < text.size() && QByteArrayView(" \t\r\n").contains(text[at]))
        ++at;
    return at;
}

/// Offset after the string that begins at `at`.
qsizetype SkipString(const QByteArray& text, qsizetype at)
{
    for (++at; at < text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\')
            ++at;
    }
    return std::min(at + 1, text.size());
}

/// Offset after the value that begins at `at`. Counts brackets instead of recursing, so that deep nesting needs no
/// stack.
qsizetype SkipValue(const QByteArray& text, qsizetype at)
{
    for (int depth = 0; at < text.size();) {
        const char c = text[at];
        if (depth == 0 && QByteArrayView(",]}").contains(c))
            return at;
        if (QByteArrayView("[{").contains(c))
            ++depth;
        else if (QByteArrayView("]}").contains(c))
            --depth;
        at = c == '"' ? SkipString(text, at) : at + 1;
    }
    return at;
}

QString Unescaped(const QByteArray& token)
{
    return QJsonDocument::fromJson('[' + token + ']').array().first().toString();
}

} // namespace

QList<JsonMember> JsonMembers(const QByteArray& text, qsizetype offset)
{
    QList<JsonMember> members;
    const bool isObject = text.mid(offset, 1) == "{";
    if (!isObject && text.mid(offset, 1) != "[")
        return members;
    qsizetype at = SkipSpace(text, offset + 1);
    while (at < text.size() && text[at] != ']' && text[at] != '}') {
        JsonMember member{{}, at, at};
        if (isObject) {
            const qsizetype after = SkipString(text, at);
            member.key = Unescaped(text.mid(at, after - at));
            member.offset = SkipSpace(text, SkipSpace(text, after) + 1);
        }
        members.append(member);
        at = SkipValue(text, member.offset);
        if (text.mid(at, 1) == ",")
            at = SkipSpace(text, at + 1);
    }
    return members;
}

qsizetype JsonBegin(const QByteArray& text)
{
    return SkipSpace(text, text.startsWith(ByteOrderMark) ? qsizetype(sizeof ByteOrderMark - 1) : 0);
}

qsizetype JsonFaultOffset(const QByteArray& text, const QJsonParseError& fault)
{
    // For these errors Qt reports the offset of the wrong character, for all others the offset after it.
    const bool isAt = fault.error == QJsonParseError::IllegalNumber || fault.error == QJsonParseError::IllegalUTF8String
                      || fault.error == QJsonParseError::GarbageAtEnd;
    return std::clamp<qsizetype>(fault.offset - (isAt || fault.offset >= text.size() ? 0 : 1), 0, text.size());
}

QString LineAndColumn(const QByteArray& text, qsizetype offset)
{
    QByteArray before = text.left(offset);
    if (before.startsWith(ByteOrderMark))
        before.remove(0, sizeof ByteOrderMark - 1);
    const qsizetype line = before.lastIndexOf('\n') + 1;
    return QString("%1:%2").arg(before.count('\n') + 1).arg(QString::fromUtf8(before.mid(line)).size() + 1);
}
