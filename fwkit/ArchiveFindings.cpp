#include "ArchiveFindings.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

/// What stands between the prefix and the extension of an image's name.
QString WrittenVersion(const QString& entry, const QString& prefix)
{
    constexpr int ExtensionSize = 4;
    const QString name = FileNameOf(entry);
    const qsizetype at = name.indexOf(prefix);
    return at < 0 ? QString() : name.mid(at + prefix.size()).chopped(ExtensionSize);
}

/// Whether the update passes by a file at `path` below a program folder.
bool IsPassedBy(const QString& path)
{
    const QStringList parts = path.split('/');
    return std::any_of(parts.begin(), parts.end(), [](const QString& part) { return part.startsWith('.'); })
           || std::any_of(parts.begin(), parts.end() - 1, IsNeverCopied);
}

bool FitsSomeRow(const QString& entry, const TDeviceRecord& device)
{
    for (int row = 0; row < device.BoardCount; ++row) {
        const TBoardRecord& board = device.Boards.at(row);
        if (EntryFits(entry, NamePrefix(FilePattern(device, board)), board))
            return true;
    }
    return false;
}

} // namespace

QString ProgramEntry(const TBoardRecord& board)
{
    return QDir::cleanPath(board.Folder + '/' + board.File);
}

ArchiveFindings::ArchiveFindings(const QString& name, const QList<ArchiveEntry>& entries,
                                 const EntryCertificates& certificates)
    : m_name(name)
    , m_entries(entries)
    , m_certificates(certificates)
{}

void ArchiveFindings::Add(const char* kind, const QString& place, const Words& effect, const Words& remedy)
{
    // Devices may have modules in common: the same is not said twice.
    const QString said = kind + ('\n' + place) + '\n' + effect.en;
    if (m_said.contains(said))
        return;
    m_said.insert(said);
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
                {"The panel passes by whatever has \".sha256\" in its path, and there is no file whose certificate "
                 "this is",
                 "Панель пропускает всё, в пути чего есть «.sha256», а файла для такого сертификата нет"},
                {"rename it, or add the file", "переименуйте или добавьте сам файл"});
    }
}

void ArchiveFindings::AboutCertificate(const ArchiveEntry& entry, Certificate certificate, bool isLost)
{
    const QString file = FileNameOf(entry.path) + ".sha256";
    if (certificate == Certificate::Missing)
        Add("missing-certificate", entry.path,
            Filled("The panel does not take it and shows the box \"Не найден сертификат %1\" once for every module",
                   "Панель не берёт файл и показывает «Не найден сертификат %1» по разу на каждый модуль", file),
            {"write the certificate with fwkit certify", "запишите сертификат командой fwkit certify"});
    else if (isLost)
        Add("damaged-entry", entry.path,
            Filled("The panel cannot unpack it (damaged, encrypted, or over %1 bytes) and writes an empty file",
                   "Панель не может его распаковать (повреждён, зашифрован или больше %1 байт) и пишет пустой файл",
                   QString::number(FirmwareArchive::LargestEntry)),
            {"pack the archive anew with fwkit pack", "соберите архив заново командой fwkit pack"});
    else if (certificate == Certificate::Different)
        Add("wrong-certificate", entry.path,
            Filled("The panel does not take it and shows the box \"Не соответствует сертификат %1\" once for every "
                   "module",
                   "Панель не берёт файл и показывает «Не соответствует сертификат %1» по разу на каждый модуль", file),
            {"write the certificate with fwkit certify: 32 raw bytes",
             "запишите сертификат командой fwkit certify: 32 байта как есть"});
}

void ArchiveFindings::AboutModules(const DeviceWalk& walk)
{
    AboutSharing(walk);
    for (int row = 0; row < walk.device->BoardCount; ++row) {
        const TBoardRecord& board = walk.device->Boards.at(row);
        const QList<TakenFile>& taken = walk.taken[row];
        for (qsizetype i = 0; i + 1 < taken.size(); ++i)
            Add("fight", taken[i].entry,
                Filled("The module \"%1\" takes this file and then, in its place, %2",
                       "Модуль «%1» берёт этот файл, а затем вместо него %2", board.Name, taken.last().entry),
                {"leave one of them in the archive", "оставьте в архиве один из них"});
        if (taken.isEmpty())
            continue;
        if (board.IsProgram())
            AboutProgram(board, taken.last());
        AboutVersion(*walk.device, board, taken.last());
    }
}

void ArchiveFindings::AboutSharing(const DeviceWalk& walk)
{
    QHash<QString, int> takers;
    for (int row = 0; row < walk.device->BoardCount; ++row) {
        for (const TakenFile& file : walk.taken[row]) {
            const int first = takers.value(file.entry, row);
            const TBoardRecord& one = walk.device->Boards.at(first);
            const TBoardRecord& other = walk.device->Boards.at(row);
            takers.insert(file.entry, first);
            // Equal boards at several addresses share their image on purpose.
            if (FilePattern(*walk.device, one) != FilePattern(*walk.device, other))
                Add("two-modules", file.entry,
                    Filled("Both modules \"%1\" and \"%2\" take it", "Его берут оба модуля: «%1» и «%2»", one.Name,
                           other.Name),
                    {"give it a path that only one module's name is part of",
                     "дайте ему путь, в который входит имя только одного модуля"});
        }
    }
}

void ArchiveFindings::AboutProgram(const TBoardRecord& board, const TakenFile& file)
{
    if (file.entry != ProgramEntry(board))
        Add("misplaced-program", file.entry,
            Filled("The module \"%1\" takes it, but the update copies the folder \"%2\" only", //
                   "Модуль «%1» берёт его, но обновление копирует только папку «%2»", board.Name, board.Folder),
            Filled("put it at %1", "поместите его как %1", ProgramEntry(board)));
    if (IsNeverCopied(QDir(QDir::cleanPath(QString(PanelFolder) + '/' + board.Folder)).dirName()))
        Add("never-copied", file.entry,
            Filled("The module \"%1\" takes it, but the update never copies a folder \"%2\"",
                   "Модуль «%1» берёт его, но обновление никогда не копирует папку «%2»", board.Name, board.Folder),
            {"change Folder in the catalogue", "измените Folder в каталоге"});
}

void ArchiveFindings::AboutVersion(const TDeviceRecord& device, const TBoardRecord& board, const TakenFile& file)
{
    const QString prefix = NamePrefix(FilePattern(device, board));
    const RowVerdict overZero = JudgeRow("0", file.version);
    if (file.version == UnknownVersion)
        Add("missing-version", file.entry,
            Filled("The panel shows a box \"test\" and the version \"???\" for the module \"%1\"",
                   "Панель показывает окно «test» и версию «???» модуля «%1»", board.Name),
            Filled("add its version as the file %1.ver", "добавьте его версию файлом %1.ver", file.entry));
    else if (!overZero.valid || (!board.IsProgram() && file.version != WrittenVersion(file.entry, prefix)))
        Add("bad-version", file.entry,
            Filled("The panel reads \"%1\" as its version", "Панель читает его версию как «%1»", file.version),
            {"write a version without \"_\", right in front of the extension or in the .ver file",
             "напишите версию без «_», прямо перед расширением или в файле .ver"});
    else if (overZero.upToDate)
        m_notes.append({"uncounted-version",
                        m_name,
                        file.entry,
                        Filled("The version %1 counts as no more than 0: the panel marks the module \"%2\" by itself "
                               "over no version that is a number",
                               "Версия %1 считается не больше 0: панель сама не отметит модуль «%2» ни при какой "
                               "версии-числе",
                               file.version, board.Name),
                        {"use a number with one point, or have the operator mark it by hand",
                         "возьмите число с одной точкой, или пусть оператор отметит модуль сам"}});
}

void ArchiveFindings::AboutLeftOver(const QList<DeviceWalk>& walks)
{
    QSet<QString> used;
    QSet<QString> programFiles;
    QStringList folders;
    for (const DeviceWalk& walk : walks) {
        for (int row = 0; row < walk.device->BoardCount; ++row) {
            for (const TakenFile& file : walk.taken[row])
                used << file.entry << file.entry + ".ver";
            const TBoardRecord& board = walk.device->Boards.at(row);
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
        if (folder == folders.end() || programFiles.contains(entry.path))
            AboutUnused(entry.path, walks);
        else if (IsPassedBy(entry.path.mid(folder->size())))
            Add("never-copied", entry.path,
                {"The update copies neither hidden files nor folders called base, firmware or update.old",
                 "Обновление не копирует ни скрытые файлы, ни папки base, firmware и update.old"},
                {"rename it, or leave it out", "переименуйте или уберите"});
    }
}

void ArchiveFindings::AboutUnused(const QString& entry, const QList<DeviceWalk>& walks)
{
    const char* kind = "nobody";
    Words effect{"No module takes it", "Его не берёт ни один модуль"};
    Words remedy{"name it as the catalogue asks, or leave it out", "назовите по каталогу или уберите"};
    for (const DeviceWalk& walk : walks) {
        // Its certificate is to blame, and that has been said.
        if (FitsSomeRow(entry, *walk.device))
            return;
        for (int row = 0; row < walk.device->BoardCount; ++row) {
            const TBoardRecord& board = walk.device->Boards.at(row);
            if (board.IsProgram() && entry == ProgramEntry(board)) {
                kind = "dotted-program";
                effect = Filled("The module \"%1\" takes nothing with a \".\" in its folder or name",
                                "Модуль «%1» не берёт ничего с «.» в папке или имени", board.Name);
                remedy = {"change Folder and File in the catalogue", "измените Folder и File в каталоге"};
            }
            if (board.IsProgram() || !entry.contains(NamePrefix(FilePattern(*walk.device, board))))
                continue;
            kind = "wrong-kind";
            effect =
                Filled("The module \"%1\" has the name but takes %2 only", //
                       "Имя подходит модулю «%1», но он берёт только %2", board.Name, FilePattern(*walk.device, board));
            remedy = {"build the image for this processor", "соберите образ для этого процессора"};
        }
    }
    Add(kind, entry, effect, remedy);
}

Finding Refused(const QString& name, const ArchiveEntry& culprit, bool isOutside)
{
    const Words why = culprit.isLink ? Words{"is a link", "это ссылка"}
                      : isOutside    ? Words{"leads out of the folder, or is too long or too deep for it",
                                          "ведёт за пределы папки либо слишком длинный или глубокий"}
                                  : Words{"is to be a file and a folder at once", "должен быть и файлом, и папкой"};
    return {"refused",
            name,
            QString::fromLocal8Bit(culprit.claim.name),
            {"The panel refuses the whole archive because this entry " + why.en
                 + ": the waiting message stays on the screen for ever",
             "Панель отвергает весь архив, так как этот элемент " + why.ru
                 + ": сообщение об ожидании остаётся на экране навсегда"},
            {"pack the archive anew with fwkit pack", "соберите архив заново командой fwkit pack"}};
}

Finding NothingInside(const QString& name)
{
    return {"nothing-inside",
            name,
            {},
            {"The panel finds nothing in it (no zip archive, damaged, or empty) and says so by no word",
             "Панель ничего в нём не находит (не zip, повреждён или пуст) и ничего об этом не говорит"},
            {"pack the archive anew with fwkit pack", "соберите архив заново командой fwkit pack"}};
}
