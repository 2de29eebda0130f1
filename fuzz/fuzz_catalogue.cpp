// A catalogue of any bytes loads, and every number and flag is the value in the file or the default.

#include "AppConfig.h"
#include "Fuzz.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <climits>
#include <cmath>

namespace {

int WholeOrZero(const QJsonValue& value)
{
    const double number = value.isDouble() ? value.toDouble() : 0;
    const bool isInt = std::floor(number) == number && number >= INT_MIN && number <= INT_MAX;
    return isInt ? int(number) : 0;
}

void RequireBoard(const TBoardRecord& board, const QJsonObject& file)
{
    using Text = QString TBoardRecord::*;
    for (const auto& [key, text] : {std::pair<const char*, Text>{"Name", &TBoardRecord::Name},
                                    {"Type", &TBoardRecord::Type},
                                    {"Ip", &TBoardRecord::Ip},
                                    {"Path", &TBoardRecord::Path},
                                    {"File", &TBoardRecord::File},
                                    {"Folder", &TBoardRecord::Folder}})
        Require(board.*text == (file[key].isString() ? file[key].toString() : QString()),
                "a text is the file's or empty");
    using Number = int TBoardRecord::*;
    for (const auto& [key, number] : {std::pair<const char*, Number>{"IdCPU", &TBoardRecord::IdCPU},
                                      {"Port", &TBoardRecord::Port},
                                      {"MBAddr", &TBoardRecord::MBAddr}})
        Require(board.*number == WholeOrZero(file[key]), "a number is the file's or 0");
    Require(board.Main == (file["Main"] == true || WholeOrZero(file["Main"]) != 0),
            "Main is true or another number than 0");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    TAppConfigStruct catalogue;
    Require(catalogue.LoadFromFile(MemoryFile(bytes).Path()), "a file that is there loads");

    QByteArray text = bytes;
    // Read as text, so line ends are plain.
    const QJsonObject file = QJsonDocument::fromJson(text.replace('\r', "")).object();
    const QJsonArray devices = file["Devices"].toArray();
    Require(catalogue.DeviceVersion == WholeOrZero(file["DeviceVersion"]), "the version is the file's or 0");
    Require(catalogue.DeviceCount == std::min<int>(10, int(devices.size())), "ten devices at most");
    for (int d = 0; d < catalogue.DeviceCount; ++d) {
        const TDeviceRecord& device = catalogue.Devices[size_t(d)];
        const QJsonArray boards = devices[d].toObject()["Boards"].toArray();
        Require(device.Name == devices[d].toObject()["Name"].toString(), "a device's name is the file's or empty");
        Require(device.IdDev == WholeOrZero(devices[d].toObject()["IdDev"]), "a device's number is the file's or 0");
        Require(device.BoardCount == std::min<int>(10, int(boards.size())), "ten boards at most");
        for (int b = 0; b < device.BoardCount; ++b)
            RequireBoard(device.Boards[size_t(b)], boards[b].toObject());
    }
    return 0;
}
