#include "FirmwareFiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

namespace {

constexpr char StockRaspberryPiHost[] = "raspberrypi";

QString ImageExtension(const TBoardRecord& board)
{
    return board.IdCPU == 0 ? ".bin" : ".rpd";
}

} // namespace

QString FilePattern(const TDeviceRecord& device, const TBoardRecord& board)
{
    if (board.IsProgram())
        return board.File;
    return QString("fw_%1_%2_%3_v*").arg(device.IdDev).arg(board.MBAddr).arg(board.IdCPU) + ImageExtension(board);
}

QString NamePrefix(const QString& pattern)
{
    return QString(pattern).remove("*.bin").remove("*.rpd");
}

bool EntryFits(const QString& entryPath, const QString& prefix, const TBoardRecord& board)
{
    if (!entryPath.contains(prefix))
        return false;
    return board.IsProgram() ? !entryPath.contains('.') : entryPath.endsWith(ImageExtension(board));
}

QString VersionInName(const QString& name)
{
    const QStringList parts = name.split('_');
    if (parts.size() <= 4)
        return NoVersionInName;
    const QString& last = parts.last();
    QStringList pieces;
    for (const char* extension : {".bin", ".rpd"}) {
        if (last.contains(extension))
            pieces = last.split(extension);
    }
    return pieces.isEmpty() ? QString(NoVersionInName) : pieces.first().mid(1);
}

QString FileNameOf(const QString& path)
{
    return path.split('/').last();
}

QString ExtractionFolder()
{
    return QDir::cleanPath(QDir::tempPath() + "/firmware");
}

QString ProgramSource(const TBoardRecord& board)
{
    return QDir::cleanPath(ExtractionFolder() + "/" + board.Folder);
}

QString MakeExecutableCommand(const QString& programFolder, const TBoardRecord& board)
{
    return "sudo chmod 777 " + QDir::cleanPath(programFolder + "/" + board.File);
}

QString StartFolder(const QString& programFolder, bool inFirmwareFolder, const QString& hostName,
                    const QString& mediaParent)
{
    const QString media = mediaParent + (hostName == StockRaspberryPiHost ? "/rpi" : "/orangepi");
    // "." and ".." are counted too, so more than two entries mean that something is mounted.
    if (QDir(media).exists() && QDir(media).count() > 2)
        return media;
    return QDir::cleanPath(inFirmwareFolder ? programFolder + "/firmware" : programFolder);
}

FileDigest ReadDigest(const QString& path)
{
    constexpr qint64 ChunkSize = 8192;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    qint64 size = 0;
    qint64 count = 0;
    while ((count = file.read(chunk.data(), ChunkSize)) > 0) {
        hash.addData(QByteArrayView(chunk).first(count));
        size += count;
    }
    // A stick that is pulled ends the file with an error: the digest of what was read so far is not the file's.
    return {true, count < 0 ? QByteArray() : hash.result(), size};
}

VersionFile ReadVersionFile(const QString& folder, const QString& name)
{
    const QString path = QDir::cleanPath(folder + QDir::separator() + name + ".ver");
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        return {path, QString::fromUtf8(file.readAll()), {}};
    return {path, UnknownVersion, file.errorString()};
}

bool IsNeverCopied(const QString& folderName)
{
    static const QStringList NeverCopied{"base", "firmware", "update.old"};
    return NeverCopied.contains(folderName);
}

Certificate JudgeCertificate(const QString& path, const QByteArray& digest)
{
    QFile file(path + ".sha256");
    if (!file.open(QIODevice::ReadOnly))
        return Certificate::Missing;
    // The file may be on a stick that was pulled: a certificate that cannot be read is not an empty one.
    const QByteArray certificate = file.readAll();
    return certificate == digest && file.error() == QFile::NoError ? Certificate::Matches : Certificate::Different;
}

RowVerdict JudgeRow(const QString& current, const QString& offered)
{
    RowVerdict verdict;
    verdict.takesFile = !current.isEmpty() && current != UnknownVersion;
    verdict.valid = verdict.takesFile && !offered.isEmpty();
    verdict.upToDate = !verdict.valid || current.toFloat() >= offered.toFloat();
    return verdict;
}
