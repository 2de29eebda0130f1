#include "ArchiveJudge.h"

#include "ArchiveAssignment.h"
#include "ArchiveFindings.h"
#include "Progress.h"
#include "UsageError.h"
#include "WorkFolder.h"
#include "ZipFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <functional>

namespace {

/// The last entry of the shortest list of first entries that is refused.
const ArchiveEntry& FirstRefusedEntry(const QList<ArchiveEntry>& entries, const QString& folder)
{
    // More entries never make a refused archive acceptable.
    qsizetype accepted = 0;
    for (qsizetype refused = entries.size(); refused - accepted > 1;) {
        const qsizetype middle = accepted + (refused - accepted) / 2;
        (MayBeExtracted(entries.first(middle), folder) ? accepted : refused) = middle;
    }
    return entries[accepted];
}

void RequireRoom(const QList<ArchiveEntry>& entries, const QString& name, const QString& folder)
{
    qint64 needed = 0;
    for (const ArchiveEntry& entry : entries)
        needed += entry.isCredible ? entry.size : 0;
    const qint64 available = QStorageInfo(folder).bytesAvailable();
    // Negative where the file system is unknown, as in a chroot that is no mount point: then only unpacking can tell.
    if (available >= 0 && needed > available)
        throw UsageError(Kit::tr("%1: unpacks to %2 bytes, and %3 has %4; name a folder with more room in TMPDIR")
                             .arg(name, QString::number(needed), folder, QString::number(available)));
}

bool Extract(const FirmwareArchive& archive, const QString& folder, Progress& progress)
{
    return archive.ExtractAll(folder, [&](qsizetype done) {
        Interruption::Check();
        progress.Show(Kit::tr("Unpacking"), done, archive.Entries().size());
    });
}

void Count(QList<AlertReport>& alerts, QHash<QString, qsizetype>& known, const Alert& alert)
{
    const auto at = known.constFind(alert.text);
    if (at == known.cend()) {
        known.insert(alert.text, alerts.size());
        alerts.append({alert, 1});
    } else {
        ++alerts[*at].times;
    }
}

/// Assigns the files of an extracted archive to the modules of devices.
class DeviceAssigner
{
public:
    DeviceAssigner(const QList<ArchiveEntry>& entries, const QString& folder, Progress& progress)
        : m_entries(entries)
        , m_folder(folder)
    {
        // Reading the files takes long: doing it here allows a check for signals after each of them.
        for (qsizetype i = 0; i < entries.size(); ++i) {
            Interruption::Check();
            progress.Show(Kit::tr("Trying"), i, entries.size());
            const QString path = folder + '/' + entries[i].path;
            if (IsJudged(entries[i]))
                Digests.insert(path, ReadDigest(path));
        }
    }

    DeviceAssignment Assign(const TDeviceRecord& device)
    {
        DeviceAssignment assignment{&device, QList<QList<TakenFile>>(device.BoardCount), {}};
        QHash<QString, qsizetype> known;
        const auto show = [&](Alert alert) {
            alert.text.replace(m_folder, DisplayedExtractionFolder);
            Count(assignment.alerts, known, alert);
        };
        for (int row = 0; row < device.BoardCount; ++row) {
            for (const ArchiveStep& step : AssignEntries(m_entries, m_folder, device, row, Digests)) {
                if (step.alert)
                    show(*step.alert);
                else
                    assignment.taken[row].append({step.entry, Version(device.Boards.at(row), step.entry, show),
                                                  QFileInfo(m_folder + '/' + step.entry).size() == 0});
            }
        }
        return assignment;
    }

    DigestCache Digests;

private:
    QString Version(const TBoardRecord& board, const QString& entry, const std::function<void(Alert)>& show) const
    {
        if (!board.IsProgram())
            return VersionInName(entry);
        const VersionFile file = ReadVersionFile(m_folder, entry);
        if (!file.fault.isEmpty())
            show(file.ErrorAlert());
        return file.version;
    }

    const QList<ArchiveEntry>& m_entries;
    QString m_folder;
};

DeviceReport Report(const DeviceAssignment& assignment, const QList<ArchiveEntry>& entries,
                    const EntryCertificates& certificates)
{
    DeviceReport report{assignment.device->Name, assignment.device->IdDev, {}, assignment.alerts};
    for (int row = 0; row < assignment.device->BoardCount; ++row) {
        const TBoardRecord& board = assignment.device->Boards.at(row);
        ModuleReport module{board.Name, {}, {}, {}};
        if (!assignment.taken[row].isEmpty()) {
            module.entry = assignment.taken[row].last().entry;
            module.version = assignment.taken[row].last().version;
        } else {
            const QString prefix = NamePrefix(FilePattern(*assignment.device, board));
            for (const ArchiveEntry& entry : entries) {
                if (IsJudged(entry) && EntryFits(entry.path, prefix, board))
                    module.entry = entry.path;
            }
        }
        if (!module.entry.isEmpty())
            module.certificate = certificates.value(module.entry);
        report.modules.append(module);
    }
    return report;
}

Judgement JudgeExtracted(const QList<ArchiveEntry>& entries, const QString& folder, const QString& name,
                         const Selection& selection, Progress& progress)
{
    DeviceAssigner assigner(entries, folder, progress);
    QList<DeviceAssignment> assignments;
    for (const TDeviceRecord* device : selection.devices)
        assignments.append(assigner.Assign(*device));
    EntryCertificates certificates;
    for (const ArchiveEntry& entry : entries) {
        const QString path = folder + '/' + entry.path;
        if (IsJudged(entry))
            certificates.insert(entry.path, JudgeCertificate(path, assigner.Digests.value(path).sha256));
    }
    Judgement judgement;
    ArchiveFindings findings(name, entries, certificates);
    findings.AboutEntries(folder);
    for (const DeviceAssignment& assignment : assignments) {
        judgement.devices.append(Report(assignment, entries, certificates));
        findings.AboutModules(assignment);
    }
    findings.AboutLeftOver(assignments, selection);
    judgement.findings = findings.Findings();
    judgement.notes = findings.Notes();
    return judgement;
}

QList<Finding> AboutName(const QString& name)
{
    QList<Finding> findings;
    const QString file = QFileInfo(name).fileName();
    if (!file.endsWith(".zip", Qt::CaseInsensitive) || file.startsWith('.'))
        findings.append({"not-shown",
                         name,
                         {},
                         Kit::tr("The panel's dialog does not show this file"),
                         Kit::tr("give it a name that ends with \".zip\" and begins with no dot")});
    if (file.contains("firmware"))
        findings.append(
            {"firmware-in-name",
             name,
             {},
             Kit::tr("The panel does not make its extraction folder for an archive with \"firmware\" in its path, "
                     "and after a restart there is none: the waiting message stays on the screen for ever"),
             Kit::tr("rename the archive")});
    return findings;
}

/// Judges the entries of an archive with what `fill` puts into an empty folder for them.
Judgement Judge(const QList<ArchiveEntry>& entries, const QString& name, const Selection& selection, Progress& progress,
                const std::function<void(const QString& folder)>& fill)
{
    // It is empty when TMPDIR names no folder, and the archive would be unpacked below "/".
    if (QDir::tempPath().isEmpty())
        throw UsageError(Kit::tr("TMPDIR: %1: no such folder; make it, or set TMPDIR to another one")
                             .arg(qEnvironmentVariable("TMPDIR")));
    const WorkFolder temporary(QDir::tempPath() + "/fwkit-");
    const QString folder = temporary.FilePath("firmware");
    if (!temporary.ErrorString().isEmpty() || !QDir().mkdir(folder))
        throw UsageError(
            Kit::tr("%1: no folder can be made there to unpack in; set TMPDIR to one where files can be written")
                .arg(QDir::tempPath()));
    Judgement judgement;
    if (entries.isEmpty()) {
        judgement.findings = {NothingInside(name)};
    } else if (!MayBeExtracted(entries, folder)) {
        const ArchiveEntry& refused = FirstRefusedEntry(entries, folder);
        judgement.findings = {Refused(name, refused, !MayBeExtracted({refused}, folder))};
    } else {
        RequireRoom(entries, name, folder);
        fill(folder);
        judgement = JudgeExtracted(entries, folder, name, selection, progress);
    }
    judgement.findings = AboutName(name) + judgement.findings;
    return judgement;
}

[[noreturn]] void FailToFill(const QString& name)
{
    throw UsageError(Kit::tr("%1: cannot be unpacked in %2 (no room, or a name too long for a file); make room there")
                         .arg(name, QDir::tempPath()));
}

/// Puts a link to the item's source, or a file with its content, where it would be unpacked.
bool PutInPlace(const ZipItem& item, const QString& folder)
{
    const QString path = folder + '/' + item.name;
    if (!QDir().mkpath(QFileInfo(path).path()))
        return false;
    if (!item.source.isEmpty())
        return QFile::link(QFileInfo(item.source).absoluteFilePath(), path);
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(item.content) == item.content.size();
}

} // namespace

Judgement JudgeArchive(const QString& path, const QString& name, const Selection& selection, Progress& progress)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw UsageError(Kit::tr("%1: cannot be read (%2); name a readable archive").arg(name, file.errorString()));
    const FirmwareArchive archive(path);
    return Judge(archive.Entries(), name, selection, progress, [&](const QString& folder) {
        if (!Extract(archive, folder, progress))
            FailToFill(name);
    });
}

Judgement JudgeItems(const QList<ZipItem>& items, const QString& name, const Selection& selection, Progress& progress)
{
    QList<ArchiveEntry> entries;
    for (const ZipItem& item : items) {
        ArchiveEntry entry;
        entry.path = item.name;
        entry.claim.name = item.name.toUtf8();
        entry.isFile = true;
        entry.size = item.source.isEmpty() ? item.content.size() : QFileInfo(item.source).size();
        entries.append(entry);
    }
    return Judge(entries, name, selection, progress, [&](const QString& folder) {
        for (const ZipItem& item : items) {
            Interruption::Check();
            if (!PutInPlace(item, folder))
                FailToFill(name);
        }
    });
}
