#include "Figure.h"

#include "ArchiveAssignment.h"
#include "FirmwareArchive.h"
#include "TestData.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>

#include <private/qzipreader_p.h>

#include <memory>

namespace {

constexpr int Modules = 10;

/// Half code, half noise: deflate makes of it about what it makes of firmware.
QByteArray Content(int unit, int64_t size)
{
    QByteArray content;
    content.reserve(size);
    QRandomGenerator random(static_cast<quint32>(unit));
    while (content.size() < size) {
        const quint32 word = random.generate();
        content.append(word % 2 == 0 ? QByteArray("\x00\xb5\x04\x46\x20\x68\x00\x28", 8)
                                     : QByteArray(reinterpret_cast<const char*>(&word), 4));
    }
    content.truncate(size);
    return content;
}

QString MakeArchive(int64_t size)
{
    const QString path = EmptyFolder("archive").filePath("bench.zip");
    testdata::Files files;
    for (int unit = 1; unit <= Modules; ++unit)
        files.append({QString("fw_1_%1_0_v2.0.bin").arg(unit), Content(unit, size)});
    testdata::WriteZip(path, testdata::WithCertificates(files));
    return path;
}

double Analyse(const QString& path, int rows)
{
    const QString folder = EmptyFolder("taken").path();
    const TDeviceRecord device = BenchDevice(rows, 502);
    int taken = 0;
    SettleDisk();
    return Seconds("the analysis", [&] {
        const FirmwareArchive archive(path);
        if (!archive.ExtractAll(folder))
            return false;
        DigestCache digests;
        for (int row = 0; row < rows; ++row) {
            for (const ArchiveStep& step : AssignEntries(archive.Entries(), folder, device, row, digests)) {
                if (step.alert)
                    throw Unmeasurable{step.alert->text};
                ++taken;
            }
        }
        return taken == rows;
    });
}

double ExtractAndHash(const QString& path)
{
    const QString folder = EmptyFolder("extracted").path();
    SettleDisk();
    return Seconds("the extraction", [&] {
        QZipReader reader(path);
        if (!reader.extractAll(folder))
            return false;
        QByteArray chunk(8192, Qt::Uninitialized);
        for (int unit = 1; unit <= Modules; ++unit) {
            QFile file(folder + QString("/fw_1_%1_0_v2.0.bin").arg(unit));
            if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
                return false;
            QCryptographicHash hash(QCryptographicHash::Sha256);
            qint64 count = 0;
            while ((count = file.read(chunk.data(), chunk.size())) > 0)
                hash.addData(QByteArrayView(chunk).first(count));
            if (hash.result() != testdata::ReadFile(file.fileName() + ".sha256"))
                return false;
        }
        return true;
    });
}

Pair AnalysisOf(int64_t size)
{
    const QString path = MakeArchive(size);
    const Pair pair = AlternatingPair([=] { return Analyse(path, Modules); }, [=] { return ExtractAndHash(path); });
    return [=] {
        Reading reading = pair();
        reading["bytes"] = double(Modules * size);
        return reading;
    };
}

} // namespace

void AddArchiveFigure()
{
    AddFigure("archive of ten files", {4 * MiB, 40 * MiB}, AnalysisOf);
    AddFigure("archive, all rows against one row", {Modules}, [](int64_t rows) {
        const QString path = MakeArchive(4 * MiB);
        return AlternatingPair([=] { return Analyse(path, int(rows)); }, [=] { return Analyse(path, 1); });
    });
}
