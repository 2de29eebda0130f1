// Any bytes for an archive: what its directory claims, what is listed, and what an extraction does to the disk.

#include "ExtractionSandbox.h"
#include "Fuzz.h"
#include "ZipDirectory.h"

#include <QBuffer>
#include <QDir>

namespace {

// Extracted files are in memory.
constexpr qint64 LargestUnpacked = 1 << 20;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const ExtractionSandbox sandbox;
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const auto claims = ReadZipDirectory(buffer);
    qsizetype directory = 0;
    for (const ZipClaim& claim : claims.value_or(QList<ZipClaim>()))
        directory += 46 + claim.name.size();
    Require(directory <= bytes.size(), "no two entries share a byte of the directory");

    const MemoryFile file(bytes);
    const FirmwareArchive archive(file.Path());
    Require(archive.Entries().size() <= (claims ? claims->size() : 0), "what is listed was claimed");
    qint64 unpacked = 0;
    for (const ArchiveEntry& entry : archive.Entries()) {
        Require(QDir::cleanPath(entry.path) == entry.path && !entry.path.isEmpty() && entry.path != ".",
                "a listed path is clean");
        Require(!entry.isCredible || (entry.size >= 0 && entry.size <= FirmwareArchive::LargestEntry),
                "a credible entry fits the panel");
        unpacked += entry.size;
    }
    if (unpacked > LargestUnpacked)
        return 0;
    sandbox.Extract(archive);
    sandbox.Reset();
    return 0;
}
