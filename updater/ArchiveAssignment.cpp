#include "ArchiveAssignment.h"

CertificateCheck CheckFile(const QString& path, DigestCache& digests)
{
    CertificateCheck check;
    const auto known = digests.constFind(path);
    const FileDigest digest = known != digests.cend() ? *known : *digests.insert(path, ReadDigest(path));
    if (!digest.opened)
        check.alerts.append({"Внимание!", "Не могу открыть прошивку " + FileNameOf(path)});
    const QString certificate = FileNameOf(path) + ".sha256";
    switch (JudgeCertificate(path, digest.sha256)) {
    case Certificate::Missing:
        check.alerts.append({"Внимание!", "Не найден сертификат " + certificate});
        break;
    case Certificate::Different:
        check.alerts.append({"Внимание!", "Не соответствует сертификат " + certificate});
        break;
    case Certificate::Matches:
        check.isValid = true;
        break;
    }
    return check;
}

QList<ArchiveStep> AssignEntries(const QList<ArchiveEntry>& entries, const QString& folder, const TDeviceRecord& device,
                                 int row, DigestCache& digests)
{
    QList<ArchiveStep> steps;
    const TBoardRecord& board = device.Boards.at(row);
    const QString prefix = NamePrefix(FilePattern(device, board));
    for (const ArchiveEntry& entry : entries) {
        if (!IsJudged(entry))
            continue;
        const CertificateCheck check = CheckFile(folder + '/' + entry.path, digests);
        for (const Alert& alert : check.alerts)
            steps.append({alert});
        if (check.isValid && EntryFits(entry.path, prefix, board))
            steps.append({std::nullopt, entry.path});
    }
    return steps;
}

bool IsJudged(const ArchiveEntry& entry)
{
    return entry.isFile && !entry.path.contains(".sha256");
}
