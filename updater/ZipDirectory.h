#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/// What the directory of a zip archive claims of one entry, before anything is believed or unpacked.
struct ZipClaim
{
    QByteArray name; ///< as stored, in whatever encoding
    quint16 flags = 0;
    quint16 method = 0;
    quint32 crc = 0;
    quint32 packedSize = 0;
    quint32 unpackedSize = 0;
    quint32 offset = 0; ///< of the local header, from the archive's start
};

/// 65,535 entries with names of ordinary length fit. More would only serve to fill a panel's memory.
inline constexpr qint64 LargestZipDirectory = 8 << 20;

class QIODevice;

/// Reads the central directory of a zip archive (APPNOTE.TXT, 4.3.12 and 4.3.16), which QZipReader shows
/// only with leading dots and slashes taken off the names. Nothing when it is damaged, larger than
/// LargestZipDirectory, or not there.
std::optional<QList<ZipClaim>> ReadZipDirectory(QIODevice& archive);
