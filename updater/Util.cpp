#include "Util.h"

#include "FirmwareFiles.h"
#include "TimeLimits.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
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

/// Copies into a hidden file beside `target`, brings it to the disk, and gives it the target's name: a power
/// cut or a full disk at any moment leaves the old file or the new one, also while the program runs from it.
bool ReplaceFile(const QString& source, const QString& target)
{
    constexpr qint64 ChunkSize = 1 << 20;
    QFile from(source);
    QTemporaryFile beside(QFileInfo(target).path() + "/.updater.XXXXXX");
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

/// Where a running CopyPath has got to. It calls itself for every folder, on the GUI thread only.
struct CopyWalk
{
    QString targetRoot;  ///< the outermost call's; it may come into being only during the walk
    QStringList sources; ///< canonical; the folders it is in the middle of, the outermost first

    /// A link may lead back to a folder above, and the target may lie inside the source: neither would end.
    bool LeadsBack(const QString& folder) const
    {
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        const QString below = canonical.endsWith('/') ? canonical : canonical + '/';
        const auto isAbove = [&](const QString& source) { return source == canonical || source.startsWith(below); };
        return canonical == QFileInfo(targetRoot).canonicalFilePath()
               || std::any_of(sources.begin(), sources.end(), isAbove);
    }
};

class CopyStep
{
public:
    CopyStep(CopyWalk& walk, const QString& src, const QString& dst)
        : m_walk(walk)
    {
        if (walk.sources.isEmpty())
            walk.targetRoot = dst;
        walk.sources.append(QFileInfo(src).canonicalFilePath());
    }
    ~CopyStep() { m_walk.sources.removeLast(); }
    Q_DISABLE_COPY_MOVE(CopyStep)

private:
    CopyWalk& m_walk;
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
    for (const QString& name : from.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort)) {
        const QString folder = src + QDir::separator() + name;
        const QString target = dst + QDir::separator() + name;
        if (walk.LeadsBack(folder))
            continue;
        if (!from.exists(target) && !from.mkpath(target))
            return false;
        qDebug().noquote() << "mkpath" << target << "ok";
        if (!CopyPath(folder, target))
            return false;
    }
    for (const QString& name : from.entryList(QDir::Files, QDir::NoSort)) {
        const QString source = src + QDir::separator() + name;
        const QString target = dst + QDir::separator() + name;
        if (!ReplaceFile(source, target))
            return false;
        qDebug().noquote() << "copy" << source << "to" << target << "ok";
    }
    return true;
}
