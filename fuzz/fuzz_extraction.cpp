// A whole archive with any names: line by line "f", "d" or "l" (file, folder, link) and the name. Each file holds its
// own name, so the test can check which entry was unpacked under which path.

#include "ExtractionSandbox.h"
#include "Fuzz.h"

#include <QBuffer>

#include <private/qzipwriter_p.h>

#include <map>

namespace {

constexpr qsizetype MostEntries = 20;

QByteArray Packed(const QList<QByteArray>& lines)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QZipWriter zip(&buffer);
    for (const QByteArray& line : lines) {
        const QString name = QString::fromUtf8(line.mid(1));
        if (line.startsWith('d'))
            zip.addDirectory(name);
        else if (line.startsWith('l'))
            zip.addSymLink(name, "/etc");
        else if (line.startsWith('f'))
            zip.addFile(name, name.toUtf8());
    }
    zip.close();
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const ExtractionSandbox sandbox;
    QList<QByteArray> lines = Lines(data, size, MostEntries + 1);
    lines.removeLast();
    const MemoryFile file(Packed(lines));
    const FirmwareArchive archive(file.Path());
    const bool extracted = sandbox.Extract(archive);
    // Of two files with one path the last one counts.
    std::map<QString, QString> last;
    for (const ArchiveEntry& entry : archive.Entries())
        last[entry.path] = entry.isFile ? QString::fromUtf8(entry.claim.name) : QString();
    for (const auto& [path, stored] : last) {
        Require(!extracted || stored.isNull() || sandbox.Content(path) == stored.toUtf8(),
                "a file is unpacked whole, under its own name");
    }
    sandbox.Reset();
    return 0;
}
