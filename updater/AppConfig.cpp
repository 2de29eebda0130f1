#include "AppConfig.h"

#include <QJsonArray>

#include <algorithm>

TAppConfigStruct g_appConfig;

namespace {

void ReadBoard(const QJsonObject& obj, TBoardRecord& board)
{
    board.Name = JsonString(obj, "Name");
    board.Type = JsonString(obj, "Type");
    board.Main = JsonBool(obj, "Main");
    board.IdCPU = JsonInt(obj, "IdCPU");
    board.Ip = JsonString(obj, "Ip");
    board.Port = JsonInt(obj, "Port");
    board.MBAddr = JsonInt(obj, "MBAddr");
    board.Path = JsonString(obj, "Path");
    board.File = JsonString(obj, "File");
    board.Folder = JsonString(obj, "Folder");
}

void ReadDevice(const QJsonObject& obj, TDeviceRecord& device)
{
    device.Name = JsonString(obj, "Name");
    device.IdDev = JsonInt(obj, "IdDev");
    if (!obj.value("Boards").isArray())
        return;
    const QJsonArray boards = obj.value("Boards").toArray();
    device.BoardCount = std::min(int(boards.size()), TDeviceRecord::MaxBoards);
    for (int b = 0; b < device.BoardCount; ++b)
        ReadBoard(boards.at(b).toObject(), device.Boards[b]);
}

} // namespace

void TAppConfigStruct::ReadFromJson(const QJsonObject& obj)
{
    if (!obj.value("Devices").isArray())
        return;
    const QJsonArray devices = obj.value("Devices").toArray();
    DeviceCount = std::min(int(devices.size()), MaxDevices);
    for (int d = 0; d < DeviceCount; ++d)
        ReadDevice(devices.at(d).toObject(), Devices[d]);
}

void TAppConfigStruct::WriteToJson(QJsonObject&) {}
