#include "Catalogue.h"

#include <QFile>
#include <QHostAddress>
#include <QJsonDocument>

#include <algorithm>

namespace {

constexpr qint64 MaxFileSize = qint64(4) * 1024 * 1024;
// With more processors the versions of a full device would not fit one answer.
constexpr int MaxProcessor = 28;

QJsonObject ReadObject(const QString& path)
{
    QFile file(path);
    QByteArray text;
    if (file.open(QIODevice::ReadOnly))
        text = file.read(MaxFileSize + 1);
    if (file.error() != QFile::NoError)
        throw BadInput{"cannot be read (" + file.errorString() + "); name a readable catalogue"};
    if (text.trimmed().isEmpty() || text.size() > MaxFileSize)
        throw BadInput{QString("empty or over %1 bytes; name a catalogue").arg(MaxFileSize)};
    QJsonParseError fault;
    const QJsonDocument document = QJsonDocument::fromJson(text, &fault);
    if (fault.error == QJsonParseError::NoError)
        return document.object();
    const QByteArray before = text.left(fault.offset);
    const auto column = QString::fromUtf8(before.mid(before.lastIndexOf('\n') + 1)).size() + 1;
    // "near": the toolkit stops at some mistakes and behind others.
    throw BadInput{QString("near line %1, column %2: not JSON (").arg(before.count('\n') + 1).arg(column)
                   + fault.errorString() + "); correct it there"};
}

void RequireWithin(const QString& key, int value, int lowest, int highest)
{
    if (value < lowest || value > highest)
        throw BadInput{key + QString(" %1 is outside %2..%3; correct it").arg(value).arg(lowest).arg(highest)};
}

void CheckBoard(const TBoardRecord& board)
{
    QHostAddress ip;
    // The toolkit also takes shortened addresses such as "127.1", and reads "010" as 8.
    if (!ip.setAddress(board.Ip) || ip.protocol() != QHostAddress::IPv4Protocol || ip.toString() != board.Ip)
        throw BadInput{"Ip \"" + board.Ip + "\" is no IPv4 address; write four numbers 0..255 with dots"};
    RequireWithin("Port", board.Port, 1, 65535);
    RequireWithin("MBAddr", board.MBAddr, 0, 255);
    RequireWithin("IdCPU", board.IdCPU, 0, MaxProcessor);
}

} // namespace

TDeviceRecord LoadDevice(const QString& path, int index)
{
    QString place = path + ": ";
    try {
        TAppConfigStruct catalogue;
        catalogue.ReadFromJson(ReadObject(path));
        if (catalogue.DeviceCount == 0)
            throw BadInput{"no devices; the top level must be an object with a list \"Devices\""};
        RequireWithin("--device", index, 0, catalogue.DeviceCount - 1);
        const TDeviceRecord& device = catalogue.Devices[index];
        bool hasFirmware = false;
        for (int b = 0; b < device.BoardCount; ++b) {
            place = path + QString(": device %1, board %2: ").arg(index).arg(b);
            if (device.Boards[b].IsProgram())
                continue;
            CheckBoard(device.Boards[b]);
            hasFirmware = true;
        }
        place = path + QString(": device %1: ").arg(index);
        if (!hasFirmware)
            throw BadInput{"no firmware modules; choose a device that has a board without \"Path\""};
        return device;
    } catch (const BadInput& bad) {
        throw BadInput{place + bad.why};
    }
}
