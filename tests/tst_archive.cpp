// Archives from anybody's stick: what is extracted, what is refused, and that nothing outside is ever
// touched.

#include "FirmwareArchive.h"
#include "Stage.h"
#include "Table.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <private/qzipwriter_p.h>

#include <functional>

namespace {

using Prepare = std::function<void(const QString& folder)>;

/// Everything below `folder` as "path=content", folders as "path/", links as "path@".
QStringList Tree(const QString& folder, const QString& below = {})
{
    QStringList tree;
    const QDir dir(folder + '/' + below);
    for (const QFileInfo& info :
         dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString path = below + info.fileName();
        if (info.isSymLink())
            tree.append(path + '@');
        else if (info.isDir())
            tree.append(QStringList(path + '/') + Tree(folder, path + '/'));
        else
            tree.append(path + '=' + stage::ReadFile(info.filePath()));
    }
    return tree;
}

} // namespace

Q_DECLARE_METATYPE(Prepare)

class TestArchive : public QObject
{
    Q_OBJECT

    static void Row(
        const char* name, const stage::Files& files, bool extracted, const QStringList& tree,
        const Prepare& prepare = [](const QString&) {})
    {
        QTest::newRow(name) << files << extracted << tree << prepare;
    }

private slots:
    void Extract_data()
    {
        QTest::addColumn<stage::Files>("files");
        QTest::addColumn<bool>("extracted");
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<Prepare>("prepare");
        const stage::Files mixed{{"top.bin", "1"}, {"a/b/deep.bin", "2"}, {"a/file", "3"}};
        const QStringList mixedTree{"a/", "a/b/", "a/b/deep.bin=2", "a/file=3", "top.bin=1"};
        Row("no folder entries, files on top and in folders", mixed, true, mixedTree);
        Row("a name that climbs and stays inside", {{"a/../b", "1"}}, true, {"b=1"});
        Row("climbs out", {{"good", "1"}, {"a/../../x", "2"}}, false, {});
        Row("climbs out further", {{"good", "1"}, {"x/../../../outside/x", "2"}}, false, {});
        Row("climbs out from the top", {{"good", "1"}, {"../outside/keep", "2"}}, false, {});
        Row("absolute name", {{"good", "1"}, {"/tmp/x", "2"}}, false, {});
        Row("hidden file", {{".hidden", "1"}}, true, {".hidden=1"});
        Row("leading ./", {{"./fw.bin", "1"}}, true, {"fw.bin=1"});
        Row("folder in a file's place", {{"fw.bin", "1"}}, true, {"fw.bin=1"},
            [](const QString& folder) { QDir(folder).mkpath("fw.bin/left/over"); });
        Row("file in a folder's place", {{"a/fw.bin", "1"}}, true, {"a/", "a/fw.bin=1"},
            [](const QString& folder) { stage::WriteFile(folder + "/a", "old"); });
        Row("file and folder at once", {{"a/b", "1"}, {"a", "2"}}, false, {});
        Row("folder stored as an empty file", {{"a", ""}, {"a/b", "1"}}, true, {"a/", "a/b=1"});
        Row("twice the same name", {{"a", "1"}, {"a", "1"}}, true, {"a=1"});
        Row("other files stay", {{"new", "1"}}, true, {"new=1", "old=0"},
            [](const QString& folder) { stage::WriteFile(folder + "/old", "0"); });
        Row("read-only old file", {{"fw.bin", "new"}}, true, {"fw.bin=new"}, [](const QString& folder) {
            stage::WriteFile(folder + "/fw.bin", "old");
            QFile::setPermissions(folder + "/fw.bin", QFile::ReadOwner);
        });
        Row("through a link on the disk", {{"good", "1"}, {"link/x", "2"}}, false, {"link@"},
            [](const QString& folder) { QFile::link(folder + "/../outside", folder + "/link"); });
        Row("onto a link on the disk", {{"link", "new"}}, true, {"link=new"},
            [](const QString& folder) { QFile::link(folder + "/../outside/keep", folder + "/link"); });
    }
    void Extract()
    {
        QFETCH(stage::Files, files);
        QFETCH(Prepare, prepare);
        const QTemporaryDir root;
        const QString folder = root.filePath("firmware");
        QVERIFY(QDir(root.path()).mkpath("firmware"));
        stage::WriteFile(root.filePath("outside/keep"), "kept");
        prepare(folder);
        stage::WriteZip(root.filePath("archive.zip"), files);
        QTEST(FirmwareArchive(root.filePath("archive.zip")).ExtractAll(folder), "extracted");
        QTEST(Tree(folder), "tree");
        QCOMPARE(Tree(root.filePath("outside")), QStringList{"keep=kept"});
        QCOMPARE(QDir(root.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name),
                 QStringList({"archive.zip", "firmware", "outside"}));
    }

    void LinkEntryRefusesAll()
    {
        const QTemporaryDir root;
        QZipWriter zip(root.filePath("a.zip"));
        zip.addFile("good", "1");
        zip.addSymLink("link", "/etc");
        zip.addFile("link/x", "2");
        zip.close();
        QDir(root.path()).mkpath("firmware");
        QVERIFY(!FirmwareArchive(root.filePath("a.zip")).ExtractAll(root.filePath("firmware")));
        QCOMPARE(Tree(root.filePath("firmware")), QStringList());
    }

    void FolderEntriesAndPermissions()
    {
        const QTemporaryDir root;
        QZipWriter zip(root.filePath("a.zip"));
        zip.addDirectory("empty");
        zip.addFile("program", "1");
        zip.close();
        // The toolkit's writer loses the execute bits: they are set in the last entry's external attributes.
        QByteArray bytes = stage::ReadFile(root.filePath("a.zip"));
        bytes[bytes.lastIndexOf("PK\1\2") + 40] = char(0755);
        stage::WriteFile(root.filePath("a.zip"), bytes);
        QDir(root.path()).mkpath("firmware");
        const FirmwareArchive archive(root.filePath("a.zip"));
        QVERIFY(archive.ExtractAll(root.filePath("firmware")));
        QVERIFY(!archive.Entries().first().isFile);
        QCOMPARE(Tree(root.filePath("firmware")), QStringList({"empty/", "program=1"}));
        QVERIFY(QFileInfo(root.filePath("firmware/program")).isExecutable());
    }

    void Broken_data()
    {
        // In the first directory entry; -1: the file is cut off behind `bytes` bytes.
        const Table<int, QByteArray, int> row("offset", "bytes", "entries");
        row("empty file", -1, "", 0);
        row("directory cut off", -1, QByteArray(300, 'x'), 0);
        row("encrypted", 8, "\1", 2);
        row("packed size beyond the archive", 20, "\xff\xff\xff\xff", 2);
        row("unpacked size beyond the panel", 24, "\xff\xff\xff\x7f", 2);
        row("unpacked size too small", 24, QByteArray("\5\0\0\0", 4), 2);
        row("no directory entry", 0, "xx", 0);
    }
    void Broken()
    {
        QFETCH(int, offset);
        QFETCH(QByteArray, bytes);
        const QTemporaryDir root;
        const QString path = root.filePath("a.zip");
        stage::WriteZip(path, {{"fw.bin", QByteArray(100000, 'x')}, {"other", "good"}});
        QByteArray zip = stage::ReadFile(path);
        if (offset < 0)
            zip.truncate(bytes.size());
        else
            zip.replace(zip.indexOf("PK\1\2") + offset, bytes.size(), bytes);
        stage::WriteFile(path, zip);
        const QString folder = root.filePath("firmware");
        QDir(root.path()).mkpath("firmware");
        const FirmwareArchive archive(path);
        QVERIFY(archive.ExtractAll(folder));
        QTEST(int(archive.Entries().size()), "entries");
        // What cannot be unpacked must not pass for the file: its certificate will name it. The rest is there.
        QCOMPARE(Tree(folder), archive.Entries().isEmpty() ? QStringList() : QStringList({"fw.bin=", "other=good"}));
    }

    void NoZipAndNoFolder()
    {
        const QTemporaryDir root;
        stage::WriteFile(root.filePath("text.zip"), "this is no archive");
        QVERIFY(FirmwareArchive(root.filePath("text.zip")).Entries().isEmpty());
        QVERIFY(FirmwareArchive(root.filePath("text.zip")).ExtractAll(root.filePath("missing")));
        QVERIFY(FirmwareArchive(root.filePath("missing.zip")).Entries().isEmpty());
        stage::WriteZip(root.filePath("good.zip"), {{"a", "1"}});
        QVERIFY(!FirmwareArchive(root.filePath("good.zip")).ExtractAll(root.filePath("missing")));
        QVERIFY(!QFileInfo::exists(root.filePath("missing")));
    }
};

QTEST_GUILESS_MAIN(TestArchive)
#include "tst_archive.moc"
