#include "Catalogue.h"

#include "CatalogueCheck.h"
#include "CatalogueText.h"
#include "Selection.h"
#include "UsageError.h"

#include <algorithm>

namespace {

// With higher numbers the versions of all processors might not fit in one answer.
constexpr int MaxProcessor = 28;

/// The key of the first value that is out of range; empty when there is none.
QString UnplayableKey(const TBoardRecord& board)
{
    if (!IsIPv4(board.Ip))
        return "Ip";
    if (board.Port < 1 || board.Port > 65535)
        return "Port";
    if (board.MBAddr != quint8(board.MBAddr))
        return "MBAddr";
    return board.IdCPU < 0 || board.IdCPU > MaxProcessor ? "IdCPU" : "";
}

[[noreturn]] void Refuse(const Finding& finding)
{
    throw UsageError(finding.file + ':' + finding.place + ": " + finding.effect + "; " + finding.remedy);
}

/// `board`: its path in the catalogue, as in findings.
[[noreturn]] void Refuse(const QString& file, const CatalogueReport& report, const QString& board, const QString& key)
{
    // A board with "File" but neither "Path" nor "Ip" has its only finding at "Path".
    for (const QString& path : {board + '.' + key, board + ".Path"}) {
        for (const Finding& finding : report.findings) {
            if (finding.place.endsWith(": " + path) && finding.kind != "duplicate-key")
                Refuse(finding);
        }
    }
    throw UsageError(QString("%1: %2.%3 cannot be played; see what \"fwkit check %1\" says").arg(file, board, key));
}

} // namespace

SimulatedDevice LoadDevice(const QString& path, const QString& id)
{
    const CatalogueReport report = CheckCatalogue(path, ReadCatalogueText(path));
    // A text that is no catalogue at all has exactly one finding.
    if (report.devices == 0 && report.findings.size() == 1)
        Refuse(report.findings.first());
    const Selection selection = SelectDevices(path, id);
    const TDeviceRecord& device = *selection.devices.first();
    const auto index = &device - selection.config->Devices.data();
    bool hasFirmware = false;
    for (int b = 0; b < device.BoardCount; ++b) {
        if (device.Boards[b].IsProgram())
            continue;
        if (const QString key = UnplayableKey(device.Boards[b]); !key.isEmpty())
            Refuse(path, report, QString("Devices[%1].Boards[%2]").arg(index).arg(b), key);
        hasFirmware = true;
    }
    if (!hasFirmware)
        throw UsageError(
            QString("%1: no firmware modules in the device with IdDev %2; choose with --device one that has "
                    "a board without \"Path\"")
                .arg(path)
                .arg(device.IdDev));
    const auto count = report.findings.size() + report.omitted;
    if (count == 0)
        return {device, {}};
    return {device, QString("%1 has findings: %2; see what \"fwkit check %1\" says").arg(path).arg(count)};
}
