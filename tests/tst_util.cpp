// File operations on the panel's disk: a copy must end, lose nothing, and never delete its source.

#include "Table.h"
#include "TestData.h"
#include "TimeLimits.h"
#include "Tree.h"
#include "TreeCopy.h"
#include "UiDriver.h"
#include "Util.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;

class TestUtil : public QObject
{
    Q_OBJECT

private slots:
    void Command_data()
    {
        const Table<QString, bool> row("command", "result");
        row("silent", "true", true);
        row("fails silently", "false", true);
        row("no such program", "/no/such/program", true);
        row("writes to its output", "echo text", true);
        row("writes to its errors, succeeds", "sh -c \"echo text >&2\"", false);
        row("no shell", "true; echo x >&2", true);
        row("empty", "", true);
        row("spaces", "   ", true);
        row("runs too long", "sleep 20", true);
    }
    void Command()
    {
        QFETCH(QString, command);
        g_timeLimits.systemCommand = command == "sleep 20" ? 300ms : 60s;
        QTEST(Util::BashCommand(command), "result");
    }

    void Version()
    {
        const QTemporaryDir folder;
        testdata::WriteFile(folder.filePath("program.ver"), "1.2 \xd0\xb1\n");
        QCOMPARE(Util::GetVersion(nullptr, folder.path(), "program", true), "1.2 б\n");

        UiDriver driver;
        const QString name = "<b>missing</b>";
        const QString path = folder.filePath(name) + ".ver";
        driver.Step(
            "the message box",
            [=] {
                const QMessageBox* box = UiDriver::OpenBox();
                return box && box->windowTitle() == "test" && box->textFormat() == Qt::PlainText
                       && box->icon() == QMessageBox::Critical && box->text() == path + ": No such file or directory";
            },
            [] { UiDriver::PressNow(UiDriver::OpenBox()->button(QMessageBox::Ok)); });
        driver.Start();
        QCOMPARE(Util::GetVersion(nullptr, folder.path(), name, false), "???");
        QVERIFY(driver.Failure.isEmpty());
    }

    void CopyLeavesOut_data()
    {
        QTest::addColumn<bool>("copied");
        for (const char* name : {"base/f", "firmware/f", "update.old/f", ".hidden", "a/base/f", "a/.hidden/f"})
            QTest::newRow(name) << false;
        for (const char* name : {"f", "a/b/f", "Base/f", "firmware.bin", "a/update.old.txt"})
            QTest::newRow(name) << true;
    }
    void CopyLeavesOut()
    {
        const QTemporaryDir root;
        const QString name = QTest::currentDataTag();
        testdata::WriteFile(root.filePath("src/" + name), "content");
        testdata::WriteFile(root.filePath("dst/other"), "kept");
        QVERIFY(Util::CopyPath(root.filePath("src"), root.filePath("dst")));
        QFETCH(bool, copied);
        QCOMPARE(testdata::ReadFile(root.filePath("dst/" + name)), copied ? QByteArray("content") : QByteArray());
        QCOMPARE(testdata::ReadFile(root.filePath("dst/other")), "kept");
    }

    void CopyResult()
    {
        const QTemporaryDir root;
        testdata::WriteFile(root.filePath("firmware/f"), "1");
        QVERIFY(QDir(root.path()).mkpath("dst"));
        QVERIFY(Util::CopyPath(root.filePath("firmware"), root.filePath("dst")));
        QVERIFY(QDir(root.filePath("dst")).isEmpty());
        QVERIFY(!Util::CopyPath(root.filePath("missing"), root.filePath("dst")));
        // A folder has the name that the file needs.
        testdata::WriteFile(root.filePath("src/f"), "1");
        QVERIFY(QDir(root.path()).mkpath("dst/f"));
        QVERIFY(!Util::CopyPath(root.filePath("src"), root.filePath("dst")));
        QVERIFY(!Util::CopyPath(root.filePath("src"), root.filePath("nowhere")));
    }

    void CopyKeepsWhatCameBeforeAFailure_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<bool>("readable");
        QTest::newRow("a folder has the name of a file") << 1 << true;
        QTest::newRow("a file cannot be read") << 1 << false;
        QTest::newRow("large files") << (20 << 20) << true;
    }
    void CopyKeepsWhatCameBeforeAFailure()
    {
        QFETCH(int, size);
        QFETCH(bool, readable);
        const QTemporaryDir root;
        for (const char* name : {"src/a/1", "src/a/2", "src/other"})
            testdata::WriteFile(root.filePath(name), QByteArray(size, 'x'));
        QVERIFY(QFile::link(readable ? "other" : "/proc/self/mem", root.filePath("src/f")));
        QVERIFY(QDir(root.path()).mkpath(readable ? "dst/f" : "dst"));
        QVERIFY(!Util::CopyPath(root.filePath("src"), root.filePath("dst")));
        for (const char* name : {"dst/a/1", "dst/a/2"})
            QCOMPARE(testdata::ReadFile(root.filePath(name)), QByteArray(size, 'x'));
        QVERIFY(Tree(root.filePath("dst")).filter("updater-copy").isEmpty());
    }

    void CopyIntoAFolderWithTwoNames()
    {
        const QTemporaryDir root;
        for (const char* name : {"src/a/f", "src/b/g", "dst/a/.updater-copy.aZ09bY"})
            testdata::WriteFile(root.filePath(name), "1");
        QVERIFY(QFile::link("a", root.filePath("dst/b")));
        QVERIFY(Util::CopyPath(root.filePath("src"), root.filePath("dst")));
        QCOMPARE(Tree(root.filePath("dst")), (QStringList{"a/", "a/f=1", "a/g=1", "b@"}));
    }

    void Leftovers_data()
    {
        const Table<bool> row("removed");
        for (const char* name : {".updater-copy.aZ09bY", "update.old/.updater-copy.abcdef", "a/b/.updater-copy.ABCDEF"})
            row(name, true);
        for (const char* name : {"updater-copy.aZ09bY", ".updater-copy.aZ09b", ".updater-copy.aZ09bYz",
                                 ".Updater-copy.aZ09bY", ".updater-copy.aZ09b~", ".updater-copy.aZ09bY\n",
                                 ".updater-copy.aZ09bY/f", "x.updater-copy.aZ09bY", "out/.updater-copy.aZ09bY"})
            row(name, false);
    }
    void Leftovers()
    {
        const QTemporaryDir root;
        QVERIFY(QDir(root.path()).mkpath("program"));
        testdata::WriteFile(root.filePath("elsewhere/f"), "1");
        QVERIFY(QFile::link("../elsewhere", root.filePath("program/out")));
        QVERIFY(QFile::link("../elsewhere/f", root.filePath("program/.updater-copy.Linked")));
        const QString path = root.filePath("program/") + QTest::currentDataTag();
        testdata::WriteFile(path, "half");
        RemoveCopyLeftovers(root.filePath("program"));
        QFETCH(bool, removed);
        QCOMPARE(QFile::exists(path), !removed);
        QVERIFY(QFile::exists(root.filePath("program/.updater-copy.Linked")));
    }

    void CopyIsLoggedAsOneOperation()
    {
        static QStringList lines;
        lines.clear();
        const QTemporaryDir root;
        for (const char* name : {"src/a/b/f", "src/a/b/base/f", "src/f"})
            testdata::WriteFile(root.filePath(name), "1");
        QVERIFY(QDir(root.path()).mkdir("dst"));
        const auto previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext& context, const QString& text) {
                lines.append(QString(context.function) + ": " + text);
            });
        const bool copied = Util::CopyPath(root.filePath("src"), root.filePath("dst"));
        qInstallMessageHandler(previous);
        QVERIFY(copied);
        QCOMPARE(lines.join('\n').remove(root.path()).remove("static bool Util::CopyPath(QString, QString): "),
                 "mkpath /dst/a ok\nmkpath /dst/a/b ok\nmkpath /dst/a/b/base ok\n"
                 "copy /src/a/b/f to /dst/a/b/f ok\ncopy /src/f to /dst/f ok");
    }

    void CopyReplacesInOneStep()
    {
        const QTemporaryDir root;
        testdata::WriteFile(root.filePath("src/program"), "new");
        QFile::setPermissions(root.filePath("src/program"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QVERIFY(QDir(root.path()).mkdir("dst") && QFile::copy("/bin/sleep", root.filePath("dst/program")));
        // The running program must not be overwritten in place: the new file replaces it.
        QProcess running;
        running.start(root.filePath("dst/program"), {"20"});
        QVERIFY(running.waitForStarted());
        QVERIFY(Util::CopyPath(root.filePath("src"), root.filePath("dst")));
        QVERIFY(!running.waitForFinished(50));
        running.kill();
        QVERIFY(running.waitForFinished());
        QCOMPARE(testdata::ReadFile(root.filePath("dst/program")), "new");
        QVERIFY(QFileInfo(root.filePath("dst/program")).isExecutable());
        QCOMPARE(QDir(root.filePath("dst")).entryList(QDir::Files | QDir::Hidden), QStringList{"program"});
    }

    void CopyEnds()
    {
        const QTemporaryDir root;
        testdata::WriteFile(root.filePath("src/a/f"), "1");
        QVERIFY(QFile::link(root.filePath("src"), root.filePath("src/a/up")));
        QVERIFY(QFile::link(root.path(), root.filePath("src/a/further-up")));
        // The target is inside of the source, like the backup folder.
        QVERIFY(QDir(root.path()).mkpath("src/backup"));
        // The target folder of an excluded folder is created, but stays empty.
        QStringList copied{"a/", "a/f=1", "a/further-up/", "a/up/", "backup/"};
        QVERIFY(Util::CopyPath(root.filePath("src"), root.filePath("src/backup")));
        QCOMPARE(Tree(root.filePath("src/backup")), copied);
        // Through a link from the source into an earlier copy, each copy would contain the one before.
        QVERIFY(QFile::link(root.filePath("src/backup/a"), root.filePath("src/a/into")));
        QVERIFY(Util::CopyPath(root.filePath("src"), root.filePath("src/backup")));
        copied.insert(3, "a/into/");
        QCOMPARE(Tree(root.filePath("src/backup")), copied);
        QVERIFY(Util::CopyPath(root.filePath("src/a"), root.filePath("src/a")));
        QCOMPARE(testdata::ReadFile(root.filePath("src/a/f")), "1");
    }

    void CopyOfLinkedFolders()
    {
        const QTemporaryDir root;
        testdata::WriteFile(root.filePath("outside/plugins-1/p"), "1");
        testdata::WriteFile(root.filePath("src/lib-1/f"), "1");
        QVERIFY(QFile::link(root.filePath("outside/plugins-1"), root.filePath("outside/plugins")));
        QVERIFY(QFile::link(root.filePath("outside"), root.filePath("src/lib-1/more")));
        for (const char* name : {"src/lib", "src/lib-too"})
            QVERIFY(QFile::link("lib-1", root.filePath(name)));
        // Each folder links to all others: every path through the links is copied.
        const int count = 3;
        for (int i = 0; i < count * count; ++i) {
            const QString from = root.filePath(QString("src/n%1").arg(i / count));
            testdata::WriteFile(from + "/f", "1");
            QVERIFY(QFile::link(QString("../n%1").arg(i % count), from + QString("/to%1").arg(i % count)));
        }
        QVERIFY(QDir(root.path()).mkdir("dst"));
        QVERIFY(Util::CopyPath(root.filePath("src"), root.filePath("dst")));
        for (const char* path : {"lib-1/f", "lib/f", "lib-too/f", "lib/more/plugins-1/p", "lib-too/more/plugins/p",
                                 "n1/f", "n1/to2/f", "n2/to0/to1/f"})
            QCOMPARE(testdata::ReadFile(root.filePath(QString("dst/") + path)), "1");
    }
};

QTEST_MAIN(TestUtil)
#include "tst_util.moc"
