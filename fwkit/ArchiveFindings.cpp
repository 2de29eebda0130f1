#include "ArchiveFindings.h"

#include "Answers.h"
#include "BoardAnswer.h"
#include "Kit.h"
#include "UnusedFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

/// The part of an image's name between prefix and extension.
QString WrittenVersion(const QString& entry, const QString& prefix)
{
    constexpr int ExtensionSize = 4;
    const QString name = FileNameOf(entry);
    const qsizetype at = name.indexOf(prefix);
    return at < 0 ? QString() : name.mid(at + prefix.size()).chopped(ExtensionSize);
}

/// Whether the update does not copy the file at `path` below a program folder.
bool IsSkippedByUpdate(const QString& path)
{
    const QStringList parts = path.split('/');
    return std::any_of(parts.begin(), parts.end(), [](const QString& part) { return part.startsWith('.'); })
           || std::any_of(parts.begin(), parts.end() - 1, IsNeverCopied);
}

/// Whether a board's answer can carry `version`: only then can the check after the update succeed.
bool CanBeAnswered(const QString& version, int idCpu)
{
    const QString answer = "VER " + version + ';';
    return FitsAnswer(answer) && VersionIn(answer, idCpu) == version;
}

} // namespace

QString ProgramEntry(const TBoardRecord& board)
{
    return QDir::cleanPath(board.Folder + '/' + board.File);
}

QString VersionText(const QString& version)
{
    static const QRegularExpression LineBreak("[\r\n]");
    const QString shown = version.section(LineBreak, 0, 0);
    if (shown == version)
        return version;
    return version.trimmed() == shown.trimmed() ? Kit::tr("%1 (and a line break)").arg(shown)
                                                : Kit::tr("%1 (and another line)").arg(shown);
}

ArchiveFindings::ArchiveFindings(const QString& name, const QList<ArchiveEntry>& entries,
                                 const EntryCertificates& certificates)
    : m_name(name)
    , m_entries(entries)
    , m_certificates(certificates)
{}

void ArchiveFindings::Add(const char* kind, const QString& place, const QString& effect, const QString& remedy)
{
    // Devices may have modules in common: each finding is added once.
    const QString key = kind + ('\n' + place) + '\n' + effect;
    if (m_added.contains(key))
        return;
    m_added.insert(key);
    m_findings.append({kind, m_name, place, effect, remedy});
}

void ArchiveFindings::AboutEntries(const QString& folder)
{
    for (const ArchiveEntry& entry : m_entries) {
        if (!entry.isFile)
            continue;
        if (IsJudged(entry)) {
            const bool isLost = entry.size > 0 && QFileInfo(folder + '/' + entry.path).size() == 0;
            AboutCertificate(entry, m_certificates.value(entry.path), isLost);
            continue;
        }
        const QString certified = entry.path.chopped(QString(".sha256").size());
        if (!entry.path.endsWith(".sha256") || !m_certificates.contains(certified))
            Add("never-looked-at", entry.path,
                Kit::tr(
                    "The panel passes by whatever has \".sha256\" in its path, and there is no file whose certificate "
                    "this is"),
                Kit::tr("rename it, or add the file"));
    }
}

void ArchiveFindings::AboutCertificate(const ArchiveEntry& entry, Certificate certificate, bool isLost)
{
    const QString file = FileNameOf(entry.path) + ".sha256";
    if (certificate == Certificate::Missing)
        Add("missing-certificate", entry.path,
            Kit::tr("The panel does not take it and shows the box \"%1\" once for every module")
                .arg("Не найден сертификат " + file),
            Kit::tr("write the certificate with fwkit certify"));
    else if (isLost)
        Add("damaged-entry", entry.path,
            Kit::tr("The panel cannot unpack it (damaged, encrypted, or over %1 bytes) and writes an empty file")
                .arg(QString::number(FirmwareArchive::LargestEntry)),
            Kit::tr("pack the archive anew with fwkit pack"));
    else if (certificate == Certificate::Different)
        Add("wrong-certificate", entry.path,
            Kit::tr("The panel does not take it and shows the box \"%1\" once for every module")
                .arg("Не соответствует сертификат " + file),
            Kit::tr("write the certificate with fwkit certify --force: 32 raw bytes"));
}

void ArchiveFindings::AboutModules(const DeviceAssignment& assignment)
{
    AboutSharing(assignment);
    for (int row = 0; row < assignment.device->BoardCount; ++row) {
        const TBoardRecord& board = assignment.device->Boards.at(row);
        const QList<TakenFile>& taken = assignment.taken[row];
        for (qsizetype i = 0; i + 1 < taken.size(); ++i)
            Add("fight", taken[i].entry,
                Kit::tr("The module \"%1\" takes this file and then, in its place, %2")
                    .arg(board.Name, taken.last().entry),
                Kit::tr("leave one of them in the archive"));
        if (taken.isEmpty())
            continue;
        if (board.IsProgram())
            AboutProgram(board, taken.last());
        if (taken.last().isEmpty)
            AboutEmptiness(board, taken.last());
        AboutVersion(*assignment.device, board, taken.last());
    }
}

void ArchiveFindings::AboutSharing(const DeviceAssignment& assignment)
{
    QHash<QString, int> takers;
    for (int row = 0; row < assignment.device->BoardCount; ++row) {
        for (const TakenFile& file : assignment.taken[row]) {
            const int first = takers.value(file.entry, row);
            const TBoardRecord& one = assignment.device->Boards.at(first);
            const TBoardRecord& other = assignment.device->Boards.at(row);
            takers.insert(file.entry, first);
            // Equal boards at several addresses share their image on purpose.
            if (FilePattern(*assignment.device, one) != FilePattern(*assignment.device, other))
                Add("two-modules", file.entry,
                    Kit::tr("Both modules \"%1\" and \"%2\" take it").arg(one.Name, other.Name),
                    Kit::tr("give it a path that only one module's name is part of"));
        }
    }
}

void ArchiveFindings::AboutProgram(const TBoardRecord& board, const TakenFile& file)
{
    if (file.entry != ProgramEntry(board))
        Add("misplaced-program", file.entry,
            Kit::tr("The module \"%1\" takes it, but the update copies the folder \"%2\" only")
                .arg(board.Name, board.Folder),
            Kit::tr("put it at %1").arg(ProgramEntry(board)));
    if (IsNeverCopied(QDir(QDir::cleanPath(QString(DisplayedExtractionFolder) + '/' + board.Folder)).dirName()))
        Add("never-copied", file.entry,
            Kit::tr("The module \"%1\" takes it, but the update never copies a folder \"%2\"")
                .arg(board.Name, board.Folder),
            Kit::tr("change Folder in the catalogue"));
}

void ArchiveFindings::AboutEmptiness(const TBoardRecord& board, const TakenFile& file)
{
    Add("empty-file", file.entry,
        board.IsProgram()
            ? Kit::tr("It is empty: the update puts an empty program in the place of the module \"%1\"").arg(board.Name)
            : Kit::tr("It is empty: the update passes by the module \"%1\" without a sign, and reports success")
                  .arg(board.Name),
        Kit::tr("copy it anew"));
}

void ArchiveFindings::AboutVersion(const TDeviceRecord& device, const TBoardRecord& board, const TakenFile& file)
{
    const QString prefix = NamePrefix(FilePattern(device, board));
    const RowVerdict overZero = JudgeRow("0", file.version);
    if (file.version == UnknownVersion)
        Add("missing-version", file.entry,
            Kit::tr("The panel shows a box \"test\" and the version \"???\" for the module \"%1\"").arg(board.Name),
            Kit::tr("add its version as the file %1.ver").arg(file.entry));
    else if (!overZero.valid || (!board.IsProgram() && file.version != WrittenVersion(file.entry, prefix)))
        Add("bad-version", file.entry, Kit::tr("The panel reads \"%1\" as its version").arg(VersionText(file.version)),
            board.IsProgram() ? Kit::tr("write the version into %1.ver").arg(file.entry)
                              : Kit::tr("end the name with a version without \"_\" and one %1")
                                    .arg(FilePattern(device, board).section('*', 1)));
    else if (!board.IsProgram() && !CanBeAnswered(file.version, board.IdCPU))
        Add("unanswerable-version", file.entry,
            Kit::tr("No board can answer the version \"%1\": the module \"%2\" gets the red cross after every update")
                .arg(file.version, board.Name),
            Kit::tr("rename it: a version is one short word of Latin letters, digits and points"));
    else if (overZero.upToDate)
        m_notes.append({"uncounted-version", m_name, file.entry,
                        Kit::tr("The version %1 counts as no more than 0: the panel marks the module \"%2\" by itself "
                                "over no version that is a number")
                            .arg(VersionText(file.version), board.Name),
                        Kit::tr("use a number with one point, or have the operator mark it by hand")});
    if (VersionText(file.version) != file.version)
        m_notes.append({"line-break", m_name, file.entry,
                        Kit::tr("Its version has a line break, and the panel shows it with that"),
                        Kit::tr("write %1.ver without it, as printf does and echo does not").arg(file.entry)});
}

void ArchiveFindings::AboutLeftOver(const QList<DeviceAssignment>& assignments, const Selection& selection)
{
    QSet<QString> used;
    QSet<QString> programFiles;
    QStringList folders;
    for (const DeviceAssignment& assignment : assignments) {
        for (int row = 0; row < assignment.device->BoardCount; ++row) {
            for (const TakenFile& file : assignment.taken[row])
                used << file.entry << file.entry + ".ver";
            const TBoardRecord& board = assignment.device->Boards.at(row);
            if (!board.IsProgram() || !m_certificates.contains(ProgramEntry(board)))
                continue;
            programFiles.insert(ProgramEntry(board));
            folders.append(QDir::cleanPath(board.Folder) + '/');
        }
    }
    for (const ArchiveEntry& entry : m_entries) {
        if (!IsJudged(entry) || used.contains(entry.path))
            continue;
        const auto folder = std::find_if(folders.begin(), folders.end(),
                                         [&](const QString& start) { return entry.path.startsWith(start); });
        if (folder == folders.end() || programFiles.contains(entry.path)) {
            // A file whose only fault is its certificate has a finding already.
            if (const auto unused = WhyUnused(entry.path, selection))
                Add(unused->kind, entry.path, unused->effect, unused->remedy);
        } else if (IsSkippedByUpdate(entry.path.mid(folder->size()))) {
            Add("never-copied", entry.path,
                Kit::tr("The update copies neither hidden files nor folders called base, firmware or update.old"),
                Kit::tr("rename it, or leave it out"));
        }
    }
}

Finding Refused(const QString& name, const ArchiveEntry& refused, bool isOutside)
{
    const QString why = refused.isLink ? Kit::tr("is a link")
                        : isOutside    ? Kit::tr("leads out of the folder, or is too long or too deep for it")
                                       : Kit::tr("is to be a file and a folder at once");
    return {
        "refused", name, QString::fromLocal8Bit(refused.claim.name),
        Kit::tr("The panel refuses the whole archive because this entry %1: the waiting message stays on the screen "
                "for ever")
            .arg(why),
        Kit::tr("pack the archive anew with fwkit pack")};
}

Finding NothingInside(const QString& name)
{
    return {"nothing-inside",
            name,
            {},
            Kit::tr("The panel finds nothing in it (no zip archive, damaged, or empty) and says so by no word"),
            Kit::tr("pack the archive anew with fwkit pack")};
}
