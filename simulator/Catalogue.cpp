#include "Catalogue.h"

#include "CatalogueCheck.h"
#include "CatalogueText.h"
#include "Selection.h"
#include "UsageError.h"

#include <algorithm>

namespace {

// With more processors the versions of a full device would not fit one answer.
constexpr int MaxProcessor = 28;

/// The key of the first value that cannot be played; empty when all can.
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

/// `board`: its path, as findings have it.
[[noreturn]] void Refuse(const QString& file, const CatalogueReport& report, const QString& board, const QString& key)
{
    // What has a "File" but neither "Path" nor "Ip" has one finding for both.
    for (const QString& path : {board + '.' + key, board + ".Path"}) {
        for (const Finding& finding : report.findings) {
            if (finding.place.endsWith(": " + path) && finding.kind != "duplicate-key")
                Refuse(finding);
        }
    }
    throw UsageError(QString("%1: %2.%3 cannot be played; see what \"fwkit check %1\" says").arg(file, board, key));
}

} // namespace

Played LoadDevice(const QString& path, const QString& id)
{
    const CatalogueReport report = CheckCatalogue(path, ReadCatalogueText(path));
    // A text that is no catalogue at all has nothing else to be told of.
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
