#include "Util.h"

#include "FirmwareFiles.h"
#include "TimeLimits.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QSet>
#include <QTemporaryFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <unistd.h>

namespace {

bool IsOnDisk(int handle)
{
    return ::fsync(handle) == 0 || (errno != EIO && errno != ENOSPC && errno != EDQUOT);
}

/// Hidden, so that no copy carries it on. The template's end is replaced by as many letters.
constexpr char BesideTemplate[] = "/.updater-copy.XXXXXX";

/// What a copy left behind that was killed, or whose panel lost its power.
void RemoveLeftovers(const QString& folder)
{
    QDir dir(folder);
    const auto filter = QDir::Files | QDir::Hidden | QDir::NoSymLinks;
    for (const QString& name : dir.entryList({".updater-copy.??????"}, filter, QDir::NoSort))
        dir.remove(name);
}

/// Copies into a hidden file beside `target`, brings it to the disk, and gives it the target's name: a power
/// cut or a full disk at any moment leaves the old file or the new one, also while the program runs from it.
bool ReplaceFile(const QString& source, const QString& target)
{
    constexpr qint64 ChunkSize = 1 << 20;
    QFile from(source);
    QTemporaryFile beside(QFileInfo(target).path() + BesideTemplate);
    if (!from.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !beside.open())
        return false;
    const QString temporary = beside.fileName();
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    qint64 count = 0;
    while ((count = from.read(chunk.data(), ChunkSize)) > 0) {
        if (beside.write(chunk.constData(), count) != count)
            return false;
    }
    // Some file systems know neither modes nor syncing: no reason to refuse the copy.
    beside.setPermissions(from.permissions());
    if (count < 0 || !beside.flush() || !IsOnDisk(beside.handle()))
        return false;
    if (std::rename(QFile::encodeName(temporary), QFile::encodeName(target)) != 0)
        return false;
    beside.setAutoRemove(false);
    return true;
}

bool IsInside(const QString& path, const QString& folder)
{
    return path == folder || path.startsWith(folder.endsWith('/') ? folder : folder + '/');
}

/// Where a running CopyPath has got to. It calls itself for every folder, on the GUI thread only.
struct CopyWalk
{
    QString targetRoot;     ///< the outermost call's; it may come into being only during the walk
    QStringList sources;    ///< canonical; the folders it is in the middle of, the outermost first
    bool inLink = false;    ///< one of them was entered through a link
    QSet<QString> followed; ///< canonical; where further links led since then

    /// Whether a folder is to be entered. A link may lead back to a folder above, and the target may lie inside the
    /// source or of what a link leads to: neither would end. Inside of a linked folder each further one is entered
    /// once: where folders link to each other, the ways through them are without number.
    bool Enters(const QString& folder, const QString& target) const
    {
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        const auto isAbove = [&](const QString& source) { return IsInside(source, canonical); };
        if (canonical == QFileInfo(targetRoot).canonicalFilePath()
            || std::any_of(sources.begin(), sources.end(), isAbove))
            return false;
        const QString targetParent = QFileInfo(QFileInfo(target).path()).canonicalFilePath();
        return !QFileInfo(folder).isSymLink() || (!IsInside(targetParent, canonical) && !followed.contains(canonical));
    }
};

class CopyStep
{
public:
    CopyStep(CopyWalk& walk, const QString& src, const QString& dst)
        : m_walk(walk)
        , m_isFirstLink(!walk.sources.isEmpty() && !walk.inLink && QFileInfo(src).isSymLink())
    {
        const QString canonical = QFileInfo(src).canonicalFilePath();
        if (walk.sources.isEmpty())
            walk.targetRoot = dst;
        else if (walk.inLink && QFileInfo(src).isSymLink())
            walk.followed.insert(canonical);
        walk.inLink = walk.inLink || m_isFirstLink;
        walk.sources.append(canonical);
    }
    ~CopyStep()
    {
        m_walk.sources.removeLast();
        if (m_isFirstLink) {
            m_walk.inLink = false;
            m_walk.followed.clear();
        }
    }
    Q_DISABLE_COPY_MOVE(CopyStep)

private:
    CopyWalk& m_walk;
    bool m_isFirstLink;
};

/// Kills what is still running. A command that runs as root cannot be killed and would be waited for without
/// end: it is left to end by itself.
void End(std::unique_ptr<QProcess> process)
{
    process->kill();
    if (process->state() == QProcess::NotRunning || process->waitForFinished(int(g_timeLimits.killedCommand.count())))
        return;
    QObject::connect(process.get(), &QProcess::finished, process.get(), &QObject::deleteLater);
    static_cast<void>(process.release());
}

} // namespace

bool Util::BashCommand(QString command)
{
    qDebug().noquote() << "-------- BASH --------\n";
    qDebug().noquote() << command;
    auto process = std::make_unique<QProcess>();
    // The toolkit would take the program's name out of an empty list.
    if (!QProcess::splitCommand(command).isEmpty()) {
        process->startCommand(command);
        process->waitForFinished(int(g_timeLimits.systemCommand.count()));
    }
    const QString errors = process->readAllStandardError();
    qDebug().noquote() << process->readAllStandardOutput();
    qDebug().noquote() << errors;
    End(std::move(process));
    qDebug().noquote() << "-------- BASH --------\n";
    return errors.isEmpty();
}

QString Util::GetVersion(QObject*, QString dir, QString name, bool)
{
    qDebug().noquote() << "Try get ver" << dir << name;
    const VersionFile file = ReadVersionFile(dir, name);
    if (file.fault.isEmpty())
        return file.version;
    qDebug().noquote() << file.fault;
    // The toolkit's stock critical box, spelled out: a file name is shown as text, never as markup.
    const Box told = file.Complaint();
    QMessageBox box(QMessageBox::Critical, told.title, told.text, QMessageBox::Ok);
    box.setTextFormat(Qt::PlainText);
    box.exec();
    return file.version;
}

bool Util::CopyPath(QString src, QString dst)
{
    static CopyWalk walk;

    const QDir from(src);
    if (!from.exists())
        return false;
    if (IsNeverCopied(from.dirName()))
        return true;
    const CopyStep step(walk, src, dst);
    RemoveLeftovers(dst);
    for (const QString& name : from.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort)) {
        const QString folder = src + QDir::separator() + name;
        const QString target = dst + QDir::separator() + name;
        if (!walk.Enters(folder, target))
            continue;
        if (!from.exists(target) && !from.mkpath(target))
            return false;
        qDebug().noquote() << "mkpath" << target << "ok";
        if (!CopyPath(folder, target))
            return false;
    }
    // A copy that ends early must not leave the new version's text beside the old program: the module would then
    // pass for up to date.
    QStringList files = from.entryList(QDir::Files, QDir::NoSort);
    std::stable_partition(files.begin(), files.end(), [](const QString& name) { return !name.endsWith(".ver"); });
    for (const QString& name : files) {
        const QString source = src + QDir::separator() + name;
        const QString target = dst + QDir::separator() + name;
        if (!ReplaceFile(source, target))
            return false;
        qDebug().noquote() << "copy" << source << "to" << target << "ok";
    }
    return true;
}
