// Names and versions. Lines of the input: device, unit and processor; a program's file; a path in an archive; the
// version that a board has; the version that is offered.

#include "FirmwareFiles.h"
#include "Fuzz.h"

#include <QRegularExpression>

namespace {

/// A version of two parts as a whole number, which needs no rounding; nothing for any other text.
std::optional<int> Plain(const QString& version)
{
    static const QRegularExpression twoParts("\\A([0-9]{1,3})\\.([0-9]{1,3})\\z");
    const auto match = twoParts.match(version);
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1).toInt() * 1000 + match.captured(2).leftJustified(3, '0').toInt();
}

void RequireImage(const TDeviceRecord& device, const TBoardRecord& board, const QString& path, const QString& version)
{
    const QString prefix = NamePrefix(FilePattern(device, board));
    const QString extension = board.IdCPU == 0 ? ".bin" : ".rpd";
    Require(prefix == QString::asprintf("fw_%d_%d_%d_v", device.IdDev, board.MBAddr, board.IdCPU),
            "the prefix has the catalogue's numbers");
    Require(EntryFits(path, prefix, board) == (path.indexOf(prefix) >= 0 && path.right(4) == extension),
            "an image is its row's, and of the right kind");
    const bool isPlain = !version.contains('_') && !version.contains(".bin") && !version.contains(".rpd");
    const QString name = "folder/" + FilePattern(device, board).replace("*", version);
    Require(EntryFits(name, prefix, board), "the image of a row fits it, whatever its version");
    Require(!isPlain || VersionInName(name) == version, "the version in a name is the one it was given");
}

void RequireVerdict(const QString& current, const QString& offered)
{
    const RowVerdict verdict = JudgeRow(current, offered);
    const bool isKnown = !current.isEmpty() && current != "???";
    Require(verdict.takesFile == isKnown && verdict.valid == (isKnown && !offered.isEmpty()),
            "both versions must be known");
    Require(verdict.valid || verdict.upToDate, "nothing is marked without two versions");
    const auto old = Plain(current);
    const auto fresh = Plain(offered);
    Require(!old || !fresh || verdict.upToDate == (*old >= *fresh), "versions of two parts compare as numbers");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> lines = Lines(data, size, 5);
    const QList<QByteArray> numbers = (lines[0] + "   ").split(' ');
    const QString path = QString::fromUtf8(lines[2]);
    const QString current = QString::fromUtf8(lines[3]);
    const QString offered = QString::fromUtf8(lines[4].chopped(lines[4].endsWith('\n')));

    TDeviceRecord device;
    device.IdDev = numbers[0].toInt();
    TBoardRecord board;
    board.MBAddr = numbers[1].toInt();
    board.IdCPU = numbers[2].toInt();
    RequireImage(device, board, path, offered);
    RequireVerdict(current, offered);
    Require(path.right(FileNameOf(path).size()) == FileNameOf(path) && !FileNameOf(path).contains('/'),
            "a file's name is the part after the last slash");
    Require(VersionInName(path) == "BAD" || path.count('_') >= 4, "a name without four underscores has no version");

    board.Path = "program";
    board.File = QString::fromUtf8(lines[1]);
    const QString prefix = NamePrefix(FilePattern(device, board));
    Require(!EntryFits(path, prefix, board) || (path.contains(prefix) && !path.contains('.')),
            "a program's file is named so, and no part of its path has a dot");
    return 0;
}
