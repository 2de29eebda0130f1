#include "ExtractionSandbox.h"

#include "Fuzz.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace {

/// The file outside of the folder that hostile archives try to overwrite; the seeds contain its name.
constexpr char Elsewhere[] = "/tmp/updater-fuzz-elsewhere";

fs::path Native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

/// CRC-32 as in ITU-T V.42.
quint32 Crc32(const QByteArray& bytes)
{
    quint32 crc = ~0U;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

void RequireUntouched(const fs::path& root)
{
    std::set<std::string> seen;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it) {
        seen.insert(it->path().lexically_relative(root).string());
        if (it->path() == root / "deep/firmware")
            it.disable_recursion_pending();
    }
    Require(seen == std::set<std::string>{"deep", "deep/firmware", "kept", "kept/file"}
                && fs::file_size(root / "kept/file") == 4 && !fs::exists(Elsewhere),
            "nothing outside of the folder changes");
}

} // namespace

ExtractionSandbox::ExtractionSandbox()
{
    fs::create_directories(Native(Folder()));
    fs::create_directories(Native(m_root.filePath("kept")));
    std::ofstream(Native(m_root.filePath("kept/file"))) << "kept";
    Reset();
}

void ExtractionSandbox::Reset() const
{
    for (const auto& inside : fs::directory_iterator(Native(Folder())))
        fs::remove_all(inside.path());
    fs::create_symlink("../../kept", Native(Folder() + "/link"));
}

bool ExtractionSandbox::Extract(const FirmwareArchive& archive) const
{
    const bool allowed = MayBeExtracted(archive.Entries(), Folder());
    const bool extracted = archive.ExtractAll(Folder());
    RequireUntouched(Native(m_root.path()));
    Require(!IsHostile(archive.Entries()) || !extracted, "a hostile archive is refused");

    Require(extracted == (allowed || archive.Entries().isEmpty()), "what may be extracted is, whole");

    const fs::path folder = Native(Folder());
    std::map<fs::path, const ArchiveEntry*> last;
    for (const ArchiveEntry& entry : archive.Entries())
        last[Native(entry.path)] = &entry;
    for (const auto& on : fs::recursive_directory_iterator(folder)) {
        const fs::path path = on.path().lexically_relative(folder);
        const bool isLink = path == "link" && on.is_symlink();
        Require(isLink || allowed, "a refused archive leaves nothing in the folder");
        Require(isLink || (!on.is_symlink() && (on.is_directory() || (on.is_regular_file() && last.contains(path)))),
                "only folders and the archive's files are inside");
    }
    for (const auto& [path, entry] : last) {
        if (!extracted)
            break;
        Require(entry->isFile == fs::is_regular_file(folder / path), "every entry is there, as what it is");
        const QByteArray content = entry->isFile ? Content(entry->path) : QByteArray();
        Require(content.isEmpty() || (content.size() == entry->size && Crc32(content) == entry->claim.crc),
                "a file is what was packed, or empty when it could not be unpacked");
    }
    return extracted;
}

QByteArray ExtractionSandbox::Content(const QString& path) const
{
    QFile file(Folder() + '/' + path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool IsHostile(const QList<ArchiveEntry>& entries)
{
    for (const ArchiveEntry& entry : entries) {
        const fs::path path = Native(QString::fromLocal8Bit(entry.claim.name)).lexically_normal();
        const bool climbs = !path.empty() && *path.begin() == "..";
        const bool followsLink = path.native().starts_with("link/") && path != "link/";
        if (entry.isLink || path.is_absolute() || climbs || followsLink
            || path.native().find('\0') != std::string::npos)
            return true;
    }
    return false;
}
