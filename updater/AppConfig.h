#pragma once

#include "SavedJSONParameters.h"

#include <array>
#include <variant>

/// One module of an instrument: a board with its own firmware when Path is empty, a program of the
/// panel computer otherwise.
struct TBoardRecord
{
    QString Name;      ///< shown in the module table
    QString Type;      ///< what the board answers to "DEVICETYPE ?;"
    QString Ip;        ///< IPv4 address of the board's Modbus TCP server
    bool Main = false; ///< asked for the instrument's identity during a search
    int IdCPU = 0;     ///< processor on the board; 0 takes ".bin" images, any other ".rpd"
    int Port = 0;      ///< TCP port of the Modbus server
    int MBAddr = 0;    ///< Modbus unit address
    QString Path;      ///< not empty: a program module
    QString Folder;    ///< program module: its folder in the archive
    QString File;      ///< program module: its program file; File + ".ver" holds its version

    bool IsProgram() const { return !Path.isEmpty(); }
};

/// One instrument of the catalogue; entries of Boards at and beyond BoardCount mean nothing.
struct TDeviceRecord
{
    static constexpr int MaxBoards = 10;

    QString Name;
    int IdDev = 0; ///< instrument type, part of firmware file names
    std::array<TBoardRecord, MaxBoards> Boards;
    int BoardCount = 0;
};

/// The device catalogue "updater.json"; entries of Devices at and beyond DeviceCount mean nothing.
class TAppConfigStruct final : public TSavedJSONParameters
{
public:
    static constexpr int MaxDevices = 10;

    std::array<TDeviceRecord, MaxDevices> Devices;
    int DeviceCount = 0;

    /// Reads "Devices" of the file's object. Devices beyond MaxDevices and boards beyond MaxBoards are left out.
    /// Records are overwritten, never cleared: the catalogue is loaded once, into a fresh object.
    void ReadFromJson(const QJsonObject& obj) override;
    /// Writes nothing: the program never writes the catalogue.
    void WriteToJson(QJsonObject& obj) override;
};

/// A key of a record's object in the catalogue, and the member that holds its value. The member's type says which JSON
/// values count.
template <typename Record>
struct TCatalogueKey
{
    const char* Key;
    std::variant<QString Record::*, int Record::*, bool Record::*> Member;
};

inline constexpr TCatalogueKey<TBoardRecord> BoardKeys[] = {
    {"Name", &TBoardRecord::Name},     {"Type", &TBoardRecord::Type}, {"Main", &TBoardRecord::Main},
    {"IdCPU", &TBoardRecord::IdCPU},   {"Ip", &TBoardRecord::Ip},     {"Port", &TBoardRecord::Port},
    {"MBAddr", &TBoardRecord::MBAddr}, {"Path", &TBoardRecord::Path}, {"File", &TBoardRecord::File},
    {"Folder", &TBoardRecord::Folder},
};
/// Besides them a device's object has the list "Boards", the catalogue's object the list "Devices".
inline constexpr TCatalogueKey<TDeviceRecord> DeviceKeys[] = {
    {"Name", &TDeviceRecord::Name},
    {"IdDev", &TDeviceRecord::IdDev},
};

/// The one catalogue of the program, empty until the main window loads it.
extern TAppConfigStruct g_appConfig;
