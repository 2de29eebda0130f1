#include "AppConfig.h"

#include <QJsonArray>

#include <algorithm>

TAppConfigStruct g_appConfig;

namespace {

void ReadValue(const QJsonObject& obj, const char* key, QString& value)
{
    value = JsonString(obj, key);
}

void ReadValue(const QJsonObject& obj, const char* key, int& value)
{
    value = JsonInt(obj, key);
}

void ReadValue(const QJsonObject& obj, const char* key, bool& value)
{
    value = JsonBool(obj, key);
}

template <typename Record, std::size_t Count>
void ReadValues(const QJsonObject& obj, const TCatalogueKey<Record> (&keys)[Count], Record& record)
{
    for (const auto& [key, member] : keys)
        std::visit([&obj, &record, key = key](auto field) { ReadValue(obj, key, record.*field); }, member);
}

void ReadDevice(const QJsonObject& obj, TDeviceRecord& device)
{
    ReadValues(obj, DeviceKeys, device);
    if (!obj.value("Boards").isArray())
        return;
    const QJsonArray boards = obj.value("Boards").toArray();
    device.BoardCount = std::min(int(boards.size()), TDeviceRecord::MaxBoards);
    for (int b = 0; b < device.BoardCount; ++b)
        ReadValues(boards.at(b).toObject(), BoardKeys, device.Boards[b]);
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
