#include "TestData.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTcpServer>

#include <private/qzipwriter_p.h>

namespace testdata {

namespace {

/// Leaves out empty texts: a board with a "Path", even an empty one, would be a program module.
template <typename Record, std::size_t Count>
QJsonObject ObjectOf(const Record& record, const TCatalogueKey<Record> (&keys)[Count])
{
    QJsonObject object;
    for (const auto& [key, member] : keys) {
        const QJsonValue value = std::visit([&](auto field) { return QJsonValue(record.*field); }, member);
        if (value != QString())
            object[key] = value;
    }
    return object;
}

} // namespace

int FreePort(const QString& ip)
{
    QTcpServer server;
    if (!server.listen(QHostAddress(ip)))
        qFatal("no port on %s", qPrintable(ip));
    return server.serverPort();
}

TBoardRecord Board(const QString& name, const QString& type, const QString& ip, int port, int unit, int cpu)
{
    TBoardRecord board;
    board.Name = name;
    board.Type = type;
    board.Ip = ip;
    board.Port = port;
    board.MBAddr = unit;
    board.IdCPU = cpu;
    return board;
}

TBoardRecord Program(const QString& name, const QString& folder, const QString& file)
{
    TBoardRecord board;
    board.Name = name;
    board.Path = folder;
    board.Folder = folder;
    board.File = file;
    return board;
}

TDeviceRecord Device(const QString& name, int idDev, const QList<TBoardRecord>& boards)
{
    TDeviceRecord device;
    device.Name = name;
    device.IdDev = idDev;
    device.BoardCount = int(boards.size());
    std::copy(boards.begin(), boards.end(), device.Boards.begin());
    // The first board of an instrument is its main board, which answers with its type.
    device.Boards[0].Main = true;
    return device;
}

void WriteCatalogue(const QString& path, const QList<TDeviceRecord>& devices)
{
    QJsonArray list;
    for (const TDeviceRecord& device : devices) {
        QJsonArray boards;
        for (int b = 0; b < device.BoardCount; ++b)
            boards.append(ObjectOf(device.Boards[b], BoardKeys));
        QJsonObject object = ObjectOf(device, DeviceKeys);
        object["Boards"] = boards;
        list.append(object);
    }
    WriteFile(path, QJsonDocument(QJsonObject{{"DeviceVersion", 200}, {"Devices", list}}).toJson());
}

QByteArray Image(const QString& version, int size)
{
    QByteArray image = "UPDIMG1 " + version.toLatin1().leftJustified(16, '\0', true);
    QRandomGenerator random(quint32(qHash(version, 1)));
    while (image.size() < size)
        image.append(char(random.bounded(256)));
    return image;
}

Files WithCertificates(const Files& files)
{
    Files all;
    for (const auto& [path, content] : files) {
        all.append({path, content});
        all.append({path + ".sha256", QCryptographicHash::hash(content, QCryptographicHash::Sha256)});
    }
    return all;
}

void WriteFile(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.flush())
        qFatal("%s: %s", qPrintable(path), qPrintable(file.errorString()));
}

void WriteZip(const QString& path, const Files& files)
{
    QZipWriter zip(path);
    for (const auto& [name, content] : files)
        zip.addFile(name, content);
    zip.close();
    if (zip.status() != QZipWriter::NoError)
        qFatal("%s: the archive could not be written", qPrintable(path));
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace testdata
