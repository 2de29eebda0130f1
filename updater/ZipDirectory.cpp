#include "ZipDirectory.h"

#include <QIODevice>
#include <QtEndian>

#include <algorithm>

namespace {

constexpr char EndSignature[] = "PK\5\6";
constexpr char EntrySignature[] = "PK\1\2";
constexpr qint64 EndSize = 22;
constexpr qint64 LongestComment = 65535;
constexpr qint64 EntrySize = 46;

template <typename T>
T Field(const QByteArray& record, qsizetype offset)
{
    return qFromLittleEndian<T>(record.constData() + offset);
}

/// The record that ends the archive: only a comment of the length it announces may follow it, but archivers are
/// lax about that, so the last one counts.
QByteArray EndRecord(QIODevice& archive)
{
    const qint64 tailSize = std::min(archive.size(), EndSize + LongestComment);
    if (!archive.seek(archive.size() - tailSize))
        return {};
    const QByteArray tail = archive.read(tailSize);
    const qsizetype at = tail.first(std::max<qsizetype>(0, tail.size() - EndSize + 4)).lastIndexOf(EndSignature);
    return at < 0 ? QByteArray() : tail.mid(at, EndSize);
}

} // namespace

std::optional<QList<ZipClaim>> ReadZipDirectory(QIODevice& archive)
{
    const QByteArray end = EndRecord(archive);
    if (end.size() != EndSize || !archive.seek(Field<quint32>(end, 16)))
        return std::nullopt;
    QList<ZipClaim> claims;
    const int count = Field<quint16>(end, 10);
    qint64 size = 0;
    for (int i = 0; i < count; ++i) {
        const QByteArray entry = archive.read(EntrySize);
        if (entry.size() != EntrySize || !entry.startsWith(EntrySignature))
            return std::nullopt;
        const qint64 nameSize = Field<quint16>(entry, 28);
        const qint64 extraSize = qint64(Field<quint16>(entry, 30)) + Field<quint16>(entry, 32);
        size += EntrySize + nameSize + extraSize;
        if (size > LargestZipDirectory)
            return std::nullopt;
        const QByteArray name = archive.read(nameSize);
        if (name.size() != nameSize || archive.skip(extraSize) != extraSize)
            return std::nullopt;
        claims.append({.name = name,
                       .flags = Field<quint16>(entry, 8),
                       .method = Field<quint16>(entry, 10),
                       .crc = Field<quint32>(entry, 16),
                       .packedSize = Field<quint32>(entry, 20),
                       .unpackedSize = Field<quint32>(entry, 24),
                       .offset = Field<quint32>(entry, 42)});
    }
    return claims;
}
