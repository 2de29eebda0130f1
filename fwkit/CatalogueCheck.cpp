#include "CatalogueCheck.h"

#include "Answers.h"
#include "BinaryCommand.h"
#include "BoardAnswer.h"
#include "CatalogueReader.h"
#include "FirmwareFiles.h"
#include "Kit.h"

#include <QDir>
#include <QHostAddress>
#include <QProcess>

#include <algorithm>

namespace {

/// The versions of processors 0 to 28 fit in one answer with seven characters each.
constexpr int LastProcessor = 28;

struct Module
{
    const TDeviceRecord& device;
    const TBoardRecord& board;
    const JsonSpot& spot;

    bool SharesUnitWith(const Module& other) const
    {
        return board.Ip == other.board.Ip && board.Port == other.board.Port && board.MBAddr == other.board.MBAddr;
    }
};

void CheckType(CatalogueReader& reader, const Module& module)
{
    const QString& type = module.board.Type;
    const QString answer = "DEVICETYPE " + type;
    if (type.isEmpty())
        reader.Report(module.spot, "Type", "empty-type");
    else if (DeviceTypeIn(answer) != type || !FitsAnswer(answer))
        reader.Report(module.spot, "Type", "unmatchable-type");
}

void CheckAddress(CatalogueReader& reader, const Module& module)
{
    const TBoardRecord& board = module.board;
    if (!IsIPv4(board.Ip))
        reader.Report(module.spot, "Ip", "bad-ip", {Shortened(board.Ip)});
    if (board.Port < 1 || board.Port > 65535)
        reader.Report(module.spot, "Port", "bad-port", {QString::number(board.Port)});
    if (!module.spot.values.contains("MBAddr"))
        reader.Report(module.spot, "MBAddr", "no-number");
    else if (board.MBAddr != quint8(board.MBAddr))
        reader.Report(module.spot, "MBAddr", "bad-unit",
                      {QString::number(board.MBAddr), QString::number(quint8(board.MBAddr))});
}

void CheckProcessor(CatalogueReader& reader, const Module& module)
{
    const int processor = module.board.IdCPU;
    const quint16 finish = FinishCommand(processor);
    const auto reportCommand = [&](const QString& command) {
        reader.Report(module.spot, "IdCPU", "finish-is-command", {QString::number(finish, 16).toUpper(), command});
    };
    const QString longestAnswer = QString("VER") + QString(" 1").repeated((MaxAnswer - 3) / 2);
    if (finish == CmdReadValue)
        reportCommand(Kit::tr("which reads a value"));
    else if (finish == CmdWriteBlock)
        reportCommand(Kit::tr("which writes a block"));
    else if (finish == CmdImageCrc)
        reportCommand(Kit::tr("which sends a checksum"));
    else if (finish == CmdFinish && processor != 0)
        reader.Report(module.spot, "IdCPU", "finish-unanswered");
    else if (!VersionIn(longestAnswer, processor))
        reader.Report(module.spot, "IdCPU", "no-version-word");
    else if (processor > LastProcessor)
        reader.Report(module.spot, "IdCPU", "far-processor");
}

void CheckFirmware(CatalogueReader& reader, const Module& module)
{
    const bool looksLikeProgram = !module.board.Folder.isEmpty() || !module.board.File.isEmpty();
    if (looksLikeProgram)
        reader.Report(module.spot, "Path", "no-path");
    // A program whose "Path" was forgotten needs no address: no further findings.
    if (looksLikeProgram && module.board.Ip.isEmpty())
        return;
    CheckType(reader, module);
    CheckAddress(reader, module);
    CheckProcessor(reader, module);
}

void CheckFolder(CatalogueReader& reader, const Module& module)
{
    const TBoardRecord& board = module.board;
    const QString source = ProgramSource(board);
    const auto report = [&](const QString& kind, const QString& text = {}) {
        reader.Report(module.spot, "Folder", kind, text.isEmpty() ? QStringList() : QStringList{Shortened(text)});
    };
    if (board.Folder.isEmpty())
        report("no-folder");
    else if (!(source + '/').startsWith(ExtractionFolder() + '/'))
        report("outside-folder", source);
    else if (const QString name = QDir(source).dirName(); IsNeverCopied(name))
        report("never-copied-folder", name);
    else if (!EntryFits(board.Folder, {}, board))
        report("dot-in-name");
    else if (board.Folder.startsWith('/'))
        report("absolute-folder", source.mid(ExtractionFolder().size() + 1));
}

void CheckProgram(CatalogueReader& reader, const Module& module)
{
    const TBoardRecord& board = module.board;
    const QStringList command = QProcess::splitCommand(MakeExecutableCommand("/", board));
    if (board.Main)
        reader.Report(module.spot, "Main", "program-is-main");
    CheckFolder(reader, module);
    if (board.File.isEmpty())
        reader.Report(module.spot, "File", "no-file");
    else if (!EntryFits(board.File, NamePrefix(FilePattern(module.device, board)), board))
        reader.Report(module.spot, "File", "dot-in-name");
    else if (command.size() != 4 || command.last() != QDir::cleanPath("/" + board.File))
        reader.Report(module.spot, "File", "split-file");
    else if (board.File.contains('/'))
        reader.Report(module.spot, "File", "slash-in-file");
}

/// A path that an archive may have for the module's file.
QString SampleEntry(const Module& module)
{
    if (module.board.IsProgram())
        return module.board.Folder + '/' + module.board.File;
    return FilePattern(module.device, module.board).replace('*', "1.0");
}

bool TakesFileOf(const Module& taker, const Module& owner)
{
    const QString prefix = NamePrefix(FilePattern(taker.device, taker.board));
    return !prefix.isEmpty() && EntryFits(SampleEntry(owner), prefix, taker.board);
}

void CheckFiles(CatalogueReader& reader, const Module& first, const Module& second)
{
    // Equal boards at several addresses take the same image on purpose.
    if (!first.board.IsProgram() && first.board.Type == second.board.Type)
        return;
    const bool later = TakesFileOf(second, first);
    if (!later && !TakesFileOf(first, second))
        return;
    const Module& taker = later ? second : first;
    const Module& owner = later ? first : second;
    reader.Report(taker.spot, taker.board.IsProgram() ? "File" : "MBAddr", "file-fits-another",
                  {Shortened(SampleEntry(owner)), owner.spot.path});
}

/// Two modules, the first of them earlier in the text.
void CheckPair(CatalogueReader& reader, const Module& first, const Module& second)
{
    const bool inOneDevice = &first.device == &second.device;
    const bool arePrograms = first.board.IsProgram() && second.board.IsProgram();
    const bool areBoards = !first.board.IsProgram() && !second.board.IsProgram();
    if (inOneDevice && areBoards && first.SharesUnitWith(second)) {
        if (first.board.IdCPU == second.board.IdCPU)
            return reader.Report(second.spot, "IdCPU", "same-board", {first.spot.path});
        if (first.board.Type != second.board.Type)
            reader.Report(second.spot, "Type", "two-types", {first.spot.path});
    }
    const bool isSharedProgram = first.board.Folder == second.board.Folder && first.board.File == second.board.File;
    // One program may belong to two instruments; the IdDev in their names distinguishes the images of two.
    if (inOneDevice || (arePrograms && !isSharedProgram))
        CheckFiles(reader, first, second);
}

void CheckSearch(CatalogueReader& reader, const QList<Module>& modules)
{
    for (const Module& later : modules) {
        const auto hides = [&](const Module& earlier) {
            return &earlier.device < &later.device && earlier.board.Main && earlier.board.Type == later.board.Type;
        };
        const auto earlier = std::find_if(modules.begin(), modules.end(), hides);
        if (!later.board.Main || later.board.Type.isEmpty() || earlier == modules.end())
            continue;
        const QString never = Kit::tr("this instrument is never found");
        const QString sometimes = Kit::tr("this instrument is found only while that board does not answer");
        reader.Report(later.spot, "Type", "same-type",
                      {earlier->spot.path, earlier->SharesUnitWith(later) ? never : sometimes});
    }
}

void CheckDevice(CatalogueReader& reader, const TDeviceRecord& device, const JsonSpot& spot)
{
    if (device.Name.isEmpty())
        reader.Report(spot, "Name", "no-name");
    if (!spot.values.contains("IdDev"))
        reader.Report(spot, "IdDev", "no-number");
    const auto* end = device.Boards.begin() + device.BoardCount;
    if (device.BoardCount == 0)
        reader.Report(spot, "Boards", "no-boards");
    else if (std::none_of(device.Boards.begin(), end,
                          [](const auto& board) { return board.Main && !board.IsProgram(); }))
        reader.Report(spot, "Boards", "no-main-board");
}

void CheckBetweenDevices(CatalogueReader& reader, const TAppConfigStruct& catalogue, const QList<JsonSpot>& devices)
{
    for (int d = 0; d < devices.size(); ++d) {
        for (int e = 0; e < d; ++e) {
            const bool areObjects = devices[d].isObject && devices[e].isObject;
            if (areObjects && catalogue.Devices[d].IdDev == catalogue.Devices[e].IdDev)
                reader.Report(devices[d], "IdDev", "same-device-id", {devices[e].path});
        }
    }
}

void CheckModule(CatalogueReader& reader, const Module& module)
{
    if (module.board.Name.isEmpty())
        reader.Report(module.spot, "Name", "no-name");
    if (module.board.IsProgram())
        CheckProgram(reader, module);
    else
        CheckFirmware(reader, module);
}

void CheckBetweenModules(CatalogueReader& reader, const QList<Module>& modules)
{
    CheckSearch(reader, modules);
    for (auto second = modules.begin(); second != modules.end(); ++second)
        for (auto first = modules.begin(); first != second; ++first)
            CheckPair(reader, *first, *second);
}

} // namespace

bool IsIPv4(const QString& ip)
{
    QHostAddress address;
    // Qt also takes shortened addresses such as "127.1".
    return address.setAddress(ip) && address.protocol() == QHostAddress::IPv4Protocol && address.toString() == ip;
}

CatalogueReport CheckCatalogue(const QString& file, const QByteArray& text)
{
    CatalogueReader reader(file, text);
    const std::optional<JsonSpot> top = reader.Top();
    if (!top)
        return reader.Result();
    TAppConfigStruct catalogue;
    catalogue.ReadFromJson(top->object);
    if (catalogue.DeviceCount == 0)
        reader.Report(*top, "Devices", "no-devices");
    const QList<JsonSpot> devices = reader.Elements(*top, "Devices", CatalogueReader::Device);
    QList<QList<JsonSpot>> boards;
    QList<Module> modules;
    boards.reserve(devices.size()); // the modules refer to what it holds
    for (int d = 0; d < devices.size(); ++d) {
        const TDeviceRecord& device = catalogue.Devices[d];
        if (devices[d].isObject)
            CheckDevice(reader, device, devices[d]);
        boards.append(reader.Elements(devices[d], "Boards", CatalogueReader::Board));
        for (int b = 0; b < boards[d].size(); ++b) {
            if (boards[d][b].isObject) {
                modules.append({device, device.Boards[b], boards.at(d).at(b)});
                CheckModule(reader, modules.last());
            }
        }
    }
    CheckBetweenDevices(reader, catalogue, devices);
    CheckBetweenModules(reader, modules);
    CatalogueReport report = reader.Result();
    report.devices = catalogue.DeviceCount;
    for (const TDeviceRecord& device : catalogue.Devices)
        report.modules += device.BoardCount;
    return report;
}
