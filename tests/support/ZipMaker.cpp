#include "ZipMaker.h"

#include <QtEndian>

#include <zlib.h>

namespace {

template <typename... Fields>
QByteArray Record(const char* signature, Fields... fields)
{
    QByteArray record(signature);
    const auto append = [&](auto field) {
        const auto wire = qToLittleEndian(field);
        record.append(reinterpret_cast<const char*>(&wire), sizeof wire);
    };
    (append(fields), ...);
    return record;
}

} // namespace

QByteArray Deflated(const QByteArray& content)
{
    // Without the size that Qt writes first, and without zlib's header and checksum.
    return content.isEmpty() ? QByteArray("\3\0", 2) : qCompress(content, 9).mid(6).chopped(4);
}

QByteArray MakeZip(const QList<MadeEntry>& entries)
{
    constexpr quint16 Version = 20;
    constexpr quint16 OnUnix = 3 << 8;
    QByteArray zip;
    QByteArray directory;
    for (const MadeEntry& entry : entries) {
        const QByteArray packed = !entry.packed.isNull() ? entry.packed
                                  : entry.method == 8    ? Deflated(entry.content)
                                                         : entry.content;
        const QByteArray local = entry.local.isNull() ? entry.name : entry.local;
        const auto crc =
            quint32(crc32(0, reinterpret_cast<const Bytef*>(entry.content.constData()), uInt(entry.content.size())));
        const quint32 size = entry.size.value_or(quint32(entry.content.size()));
        const quint32 lie = entry.local.isNull() ? 0 : 7;
        directory += Record("PK\1\2", quint16(OnUnix | Version), Version, entry.flags, entry.method, 0U, crc,
                            quint32(packed.size()), size, quint16(entry.name.size()), quint16(0), quint16(0),
                            quint16(0), quint16(0), entry.mode << 16, entry.offset.value_or(quint32(zip.size())))
                     + entry.name;
        if (!entry.offset)
            zip += Record("PK\3\4", Version, entry.flags, entry.method, 0U, crc ^ lie, quint32(packed.size()) + lie,
                          size + lie, quint16(local.size()), quint16(0))
                   + local + packed;
    }
    const auto count = quint16(entries.size());
    return zip + directory
           + Record("PK\5\6", quint16(0), quint16(0), count, count, quint32(directory.size()), quint32(zip.size()),
                    quint16(0));
}
