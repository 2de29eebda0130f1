#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/// One entry of an archive, valid or not. Values that are not given are derived from the content.
struct MadeEntry
{
    QByteArray name = {}; ///< in any encoding
    QByteArray content = {};
    quint32 mode = 0100644; ///< Unix file type and permissions
    quint16 flags = 0;
    quint16 method = 8;
    std::optional<quint32> size = {};   ///< unpacked size in the directory
    QByteArray local = {};              ///< name in the local header, whose sizes are then wrong too
    QByteArray packed = {};             ///< content that is packed already
    std::optional<quint32> offset = {}; ///< of another entry's data, which this one shares
};

/// The bytes of a zip archive (APPNOTE.TXT, 4.3.6).
QByteArray MakeZip(const QList<MadeEntry>& entries);
/// Packed with the method "deflated".
QByteArray Deflated(const QByteArray& content);
