#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/// What the directory of a zip archive claims of one entry, before anything is believed or unpacked.
struct ZipClaim
{
    QByteArray name; ///< as stored, in whatever encoding
    quint32 packedSize = 0;
    quint32 unpackedSize = 0;
};

class QIODevice;

/// Reads the central directory of a zip archive (APPNOTE.TXT, 4.3.12 and 4.3.16), which the toolkit's reader shows
/// only with leading dots and slashes taken off the names. Nothing when it is damaged or there is none.
std::optional<QList<ZipClaim>> ReadZipDirectory(QIODevice& archive);
