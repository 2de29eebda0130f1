#include "Figure.h"

#include "TestData.h"
#include "Util.h"

#include <QProcess>

namespace {

/// 100 KiB each on average.
QString MakeProgramFolder(int64_t files)
{
    const QDir folder = EmptyFolder("program-folder");
    for (int i = 0; i < files; ++i) {
        const QByteArray content(qsizetype(19065) * (i % 10 + 1), char(i));
        testdata::WriteFile(folder.filePath(QString("part%1/file%2").arg(i % 20).arg(i)), content);
    }
    return folder.path();
}

bool Copy(const QString& source, const QString& target)
{
    // "/." makes cp copy the content of the folder, not the folder.
    return QProcess::execute("cp", {"-a", source + "/.", target}) == 0;
}

/// Empties `target`, copies an older version into it if `isInstalled`, and waits until the disk has written it.
void Prepare(const QString& source, const QString& target, bool isInstalled)
{
    EmptyFolder(QDir(target).dirName());
    if (isInstalled && !Copy(source, target))
        throw Unmeasurable{"cp failed"};
    SettleDisk();
}

Pair Installation(int64_t files, bool isInstalled)
{
    const QString source = MakeProgramFolder(files);
    const QString ours = QDir::current().filePath("installed");
    const QString theirs = QDir::current().filePath("copied");
    const auto install = [=] {
        Prepare(source, ours, isInstalled);
        return Seconds("the installation", [&] { return Util::CopyPath(source, ours); });
    };
    const auto toDisk = std::make_shared<double>();
    const auto copy = [=] {
        Prepare(source, theirs, isInstalled);
        const double seconds = Seconds("cp", [&] { return Copy(source, theirs); });
        *toDisk = seconds + Seconds("sync", [&] { return QProcess::execute("sync", {"-f", theirs}) == 0; });
        return seconds;
    };
    const Pair pair = AlternatingPair(install, copy);
    return [=] {
        Reading reading = pair();
        reading["files"] = double(files);
        reading["floor to disk"] = *toDisk;
        return reading;
    };
}

} // namespace

void AddCopyFigure()
{
    AddFigure("program folder, new", {200, 2000}, [](int64_t files) { return Installation(files, false); });
    AddFigure("program folder, over an older one", {2000}, [](int64_t files) { return Installation(files, true); });
}
