#include "Util.h"

#include "FirmwareFiles.h"
#include "TimeLimits.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

/// The log names the operation that was asked for, whichever step of it tells something.
QDebug CopyLog()
{
    return QMessageLogger(QT_MESSAGELOG_FILE, QT_MESSAGELOG_LINE, "static bool Util::CopyPath(QString, QString)")
        .debug()
        .noquote();
}

/// Hidden, so that no copy carries it on. The template's end is replaced by as many letters.
constexpr char BesideTemplate[] = "/.updater-copy.XXXXXX";

/// Brings to the disk what was written to the file system of `folder`. Some know no syncing: no reason to refuse a
/// copy.
bool Sync(const QString& folder)
{
    const int handle = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) {
        // A folder may be written into and not be read.
        ::sync();
        return true;
    }
    const bool failed = ::syncfs(handle) != 0 && (errno == EIO || errno == ENOSPC || errno == EDQUOT);
    ::close(handle);
    return !failed;
}

/// Copies that wait hidden beside their targets. Once they are on the disk, each gets its target's name: a power cut or
/// a full disk at any moment leaves the old file or the new one, also while the program runs from it. They wait
/// together because bringing each to the disk by itself takes longer than the copying.
class CopyBatch
{
public:
    /// False when the file cannot be copied; nothing is left of it then.
    bool Add(const QString& source, const QString& target)
    {
        const QFileInfo old(target);
        if (old.isDir() && !old.isSymLink())
            return false;
        // On a disk that is nearly full those that wait keep the room of the files which they replace.
        if (!Copy(source, target) && (m_copies.isEmpty() || !Commit() || !Copy(source, target)))
            return false;
        return m_size < LargestSize || Commit();
    }

    /// Tells that `folder` is there, behind what waits.
    void AddFolder(const QString& folder) { m_copies.append({{}, {}, folder}); }

    /// False when they do not reach the disk, and then none of them takes its place, or when one cannot take its place.
    bool Commit()
    {
        const QList<Copied> copies = std::exchange(m_copies, {});
        m_size = 0;
        m_chunk.clear();
        QSet<QString> folders;
        for (const Copied& copy : copies) {
            if (!copy.temporary.isEmpty())
                folders.insert(QFileInfo(copy.target).path());
        }
        bool isWhole = SyncAll(folders);
        for (const Copied& copy : copies) {
            isWhole = isWhole && TakePlace(copy);
            if (!isWhole && !copy.temporary.isEmpty())
                ::unlink(copy.temporary.constData());
        }
        return isWhole;
    }

private:
    /// A panel's card is small, and until they take their places both the old and the new files need room.
    static constexpr qint64 LargestSize = 32 << 20;

    struct Copied
    {
        QString source;
        QByteArray temporary; ///< empty for a folder
        QString target;
    };

    bool Copy(const QString& source, const QString& target)
    {
        constexpr qint64 ChunkSize = 256 << 10;
        // What a file takes on the disk besides its bytes.
        constexpr qint64 Overhead = 4096;
        QByteArray temporary = QFile::encodeName(QFileInfo(target).path() + BesideTemplate);
        QFile from(source);
        if (!from.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return false;
        const int handle = ::mkostemp(temporary.data(), O_CLOEXEC);
        QFile to;
        if (handle < 0 || !to.open(handle, QIODevice::WriteOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle))
            return false;
        m_chunk.resize(ChunkSize);
        qint64 size = 0;
        qint64 count = 0;
        while ((count = from.read(m_chunk.data(), ChunkSize)) > 0 && to.write(m_chunk.constData(), count) == count)
            size += count;
        struct stat status = {};
        // Some file systems know no modes: no reason to refuse the copy.
        if (::fstat(from.handle(), &status) == 0)
            static_cast<void>(::fchmod(handle, status.st_mode & 0777));
        if (count != 0) {
            ::unlink(temporary.constData());
            return false;
        }
        m_copies.append({source, temporary, target});
        m_size += size + Overhead;
        return true;
    }

    /// Once for each file system.
    static bool SyncAll(const QSet<QString>& folders)
    {
        QSet<quint64> synced;
        return std::all_of(folders.begin(), folders.end(), [&](const QString& folder) {
            struct stat status = {};
            if (::stat(QFile::encodeName(folder).constData(), &status) == 0 && synced.contains(status.st_dev))
                return true;
            synced.insert(status.st_dev);
            return Sync(folder);
        });
    }

    static bool TakePlace(const Copied& copy)
    {
        if (copy.temporary.isEmpty()) {
            CopyLog() << "mkpath" << copy.target << "ok";
            return true;
        }
        if (std::rename(copy.temporary.constData(), QFile::encodeName(copy.target).constData()) != 0)
            return false;
        CopyLog() << "copy" << copy.source << "to" << copy.target << "ok";
        return true;
    }

    QList<Copied> m_copies;
    qint64 m_size = 0;
    QByteArray m_chunk;
};

/// What a copy left behind that was killed, or whose panel lost its power. What waits in `batch` is none of it.
bool RemoveLeftovers(const QString& folder, CopyBatch& batch)
{
    QDir dir(folder);
    const auto filter = QDir::Files | QDir::Hidden | QDir::NoSymLinks;
    const auto leftovers = [&] { return dir.entryList({".updater-copy.??????"}, filter, QDir::NoSort); };
    if (leftovers().isEmpty())
        return true;
    // The folder may be another's under a second name.
    if (!batch.Commit())
        return false;
    for (const QString& name : leftovers())
        dir.remove(name);
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
    CopyBatch batch;

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

/// Calls Util::CopyPath for every folder in `src`.
bool CopyFolder(CopyWalk& walk, const QString& src, const QString& dst)
{
    const QDir from(src);
    if (!from.exists())
        return false;
    if (IsNeverCopied(from.dirName()))
        return true;
    const CopyStep step(walk, src, dst);
    if (!RemoveLeftovers(dst, walk.batch))
        return false;
    for (const QString& name : from.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort)) {
        const QString folder = src + QDir::separator() + name;
        const QString target = dst + QDir::separator() + name;
        if (!walk.Enters(folder, target))
            continue;
        if (!from.exists(target) && !from.mkpath(target))
            return false;
        walk.batch.AddFolder(target);
        if (!Util::CopyPath(folder, target))
            return false;
    }
    // A copy that ends early must not leave the new version's text beside the old program: the module would then
    // pass for up to date.
    QStringList files = from.entryList(QDir::Files, QDir::NoSort);
    std::stable_partition(files.begin(), files.end(), [](const QString& name) { return !name.endsWith(".ver"); });
    return std::all_of(files.cbegin(), files.cend(), [&](const QString& name) {
        return walk.batch.Add(src + QDir::separator() + name, dst + QDir::separator() + name);
    });
}

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

    if (!walk.sources.isEmpty())
        return CopyFolder(walk, src, dst);
    const bool copied = CopyFolder(walk, src, dst);
    // What was copied before a failure stays.
    return walk.batch.Commit() && copied;
}
