#include "ArchiveWalk.h"

namespace {

QByteArray FileSha256(const QString& path, DigestCache& digests, const ShowBox& show)
{
    const auto known = digests.constFind(path);
    const FileDigest digest = known != digests.cend() ? *known : *digests.insert(path, ReadDigest(path));
    if (!digest.opened)
        show({"Внимание!", "Не могу открыть прошивку " + FileNameOf(path)});
    return digest.sha256;
}

} // namespace

void WalkArchive(const QList<ArchiveEntry>& entries, const QString& folder, DigestCache& digests,
                 const ArchiveRows& rows)
{
    for (int row = 0; row < rows.rowCount(); ++row) {
        const TBoardRecord& board = rows.device().Boards.at(row);
        const bool isProgram = board.IsProgram();
        const QString prefix = NamePrefix(FilePattern(rows.device(), board));
        for (const ArchiveEntry& entry : entries) {
            if (!IsJudged(entry))
                continue;
            const QString path = folder + "/" + entry.path;
            if (!HasItsCertificate(path, digests, rows.show)
                || !EntryFits(entry.path, prefix, rows.device().Boards.at(row)))
                continue;
            const QString version = isProgram ? rows.programVersion(folder, entry.path) : VersionInName(entry.path);
            rows.take(row, version, path, digests[path].sha256);
        }
    }
}

bool IsJudged(const ArchiveEntry& entry)
{
    return entry.isFile && !entry.path.contains(".sha256");
}

bool HasItsCertificate(const QString& path, DigestCache& digests, const ShowBox& show)
{
    const QString certificate = FileNameOf(path) + ".sha256";
    const QByteArray digest = FileSha256(path, digests, show);
    switch (JudgeCertificate(path, digest)) {
    case Certificate::Missing:
        show({"Внимание!", "Не найден сертификат " + certificate});
        return false;
    case Certificate::Different:
        show({"Внимание!", "Не соответствует сертификат " + certificate});
        return false;
    case Certificate::Matches:
        break;
    }
    return true;
}
