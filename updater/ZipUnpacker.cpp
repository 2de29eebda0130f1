#include "ZipUnpacker.h"

#include "ZipDirectory.h"

#include <QByteArray>
#include <QIODevice>
#include <QtEndian>

#include <algorithm>

#include <zlib.h>

namespace {

/// zlib copies its window of 32 KiB at the end of each chunk: the larger, the fewer.
constexpr qint64 ChunkSize = 256 << 10;
constexpr quint16 EncryptedFlag = 1;
constexpr quint16 Stored = 0;

/// Takes what comes out, as far as it is what was claimed.
class Sink
{
public:
    Sink(QIODevice& target, const ZipClaim& claim)
        : m_target(target)
        , m_claim(claim)
    {}

    bool Take(const QByteArray& chunk, qint64 size)
    {
        m_size += size;
        if (m_size > m_claim.unpackedSize)
            return false;
        m_crc = quint32(crc32(m_crc, reinterpret_cast<const Bytef*>(chunk.constData()), uInt(size)));
        m_refused = m_target.write(chunk.constData(), size) != size;
        return !m_refused;
    }
    Unpacked Verdict(bool allCame) const
    {
        if (m_refused)
            return Unpacked::Unwritable;
        return allCame && m_size == m_claim.unpackedSize && m_crc == m_claim.crc ? Unpacked::Whole : Unpacked::Damaged;
    }

private:
    QIODevice& m_target;
    const ZipClaim& m_claim;
    qint64 m_size = 0;
    quint32 m_crc = 0;
    bool m_refused = false;
};

/// The packed bytes of one entry.
class Source
{
public:
    Source(QIODevice& archive, const ZipClaim& claim)
        : m_archive(archive)
        , m_left(claim.packedSize)
    {
        constexpr qint64 LocalHeaderSize = 30;
        const QByteArray header = archive.seek(claim.offset) ? archive.read(LocalHeaderSize) : QByteArray();
        if (header.size() != LocalHeaderSize || !header.startsWith("PK\3\4"))
            m_left = 0;
        else
            archive.seek(claim.offset + LocalHeaderSize + qFromLittleEndian<quint16>(header.constData() + 26)
                         + qFromLittleEndian<quint16>(header.constData() + 28));
    }

    /// Count of bytes put into `chunk`; 0 at the end, wherever it comes.
    qint64 Read(QByteArray& chunk)
    {
        const qint64 count = m_archive.read(chunk.data(), std::min<qint64>(chunk.size(), m_left));
        m_left -= std::max<qint64>(0, count);
        return std::max<qint64>(0, count);
    }

private:
    QIODevice& m_archive;
    qint64 m_left;
};

bool CopyStored(Source& source, Sink& sink)
{
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    while (const qint64 count = source.Read(chunk)) {
        if (!sink.Take(chunk, count))
            return false;
    }
    return true;
}

bool Inflate(Source& source, Sink& sink, z_stream& stream)
{
    QByteArray packed(ChunkSize, Qt::Uninitialized);
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    int state = Z_OK;
    while (state != Z_STREAM_END) {
        stream.avail_in = uInt(source.Read(packed));
        stream.next_in = reinterpret_cast<Bytef*>(packed.data());
        if (stream.avail_in == 0)
            return false;
        do {
            stream.avail_out = uInt(ChunkSize);
            stream.next_out = reinterpret_cast<Bytef*>(chunk.data());
            state = inflate(&stream, Z_NO_FLUSH);
            // Z_BUF_ERROR: all that was there is out already.
            if (state != Z_OK && state != Z_STREAM_END && state != Z_BUF_ERROR)
                return false;
            if (!sink.Take(chunk, ChunkSize - stream.avail_out))
                return false;
        } while (stream.avail_out == 0);
    }
    return true;
}

} // namespace

Unpacked UnpackZipEntry(QIODevice& archive, const ZipClaim& claim, QIODevice& target)
{
    if ((claim.flags & EncryptedFlag) != 0 || (claim.method != Stored && claim.method != Z_DEFLATED))
        return Unpacked::Damaged;
    Source source(archive, claim);
    Sink sink(target, claim);
    if (claim.method == Stored)
        return sink.Verdict(CopyStored(source, sink));
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return Unpacked::Damaged;
    const bool allCame = Inflate(source, sink, stream);
    inflateEnd(&stream);
    return sink.Verdict(allCame);
}
