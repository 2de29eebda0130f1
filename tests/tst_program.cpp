// The real program in a separate process: one copy at a time, its assertion, and that it always ends.

#include "FakeBoard.h"
#include "RunGuard.h"
#include "Table.h"
#include "TestData.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

class TestProgram : public QObject
{
    Q_OBJECT

    /// Starts the program in `folder`; with steps, the UI driver operates it. All copies share one temporary folder: a
    /// killed copy leaves its shared-memory marker, and the next copy finds it only through the key file there.
    static void Start(QProcess& process, const QTemporaryDir& folder, const QString& steps = {})
    {
        QFile::copy(UPDATER_PROGRAM, folder.filePath("updater"));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_MESSAGE_PATTERN", "%{file} %{message}");
        if (!steps.isEmpty()) {
            environment.insert("QT_QPA_GENERIC_PLUGINS", "uidriver");
            environment.insert("QT_PLUGIN_PATH", PLUGIN_FOLDER);
            environment.insert("UPDATER_UI_SCRIPT", STEPS_FOLDER "/" + steps);
        }
        process.setProcessEnvironment(environment);
        process.start(folder.filePath("updater"));
        QVERIFY(process.waitForStarted());
    }

    /// Makes new.zip for device 7 of the catalogue in `folder`, as its maker would.
    static void Pack(const QTemporaryDir& folder, const testdata::Files& files)
    {
        const QTemporaryDir inputs;
        for (const auto& [name, content] : files)
            testdata::WriteFile(inputs.filePath(name), content);
        QCOMPARE(QProcess::execute(FWKIT_PROGRAM, {"pack", "--catalogue", folder.filePath("updater.json"), "--device",
                                                   "7", "--output", folder.filePath("new.zip"), inputs.path()}),
                 0);
    }

    /// Waits while the boards of this process go on answering; true once `done`. What is not done then is killed.
    static bool Wait(QProcess& process, const std::function<bool()>& done)
    {
        for (const QDeadlineTimer deadline(60000); !deadline.hasExpired();) {
            QCoreApplication::processEvents();
            if (done())
                return true;
        }
        process.kill();
        process.waitForFinished();
        return false;
    }
    static bool Ended(QProcess& process)
    {
        return Wait(process, [&] { return process.state() == QProcess::NotRunning; });
    }
    /// The process has logged `text`, so it holds the marker and shows the window.
    static bool Runs(QProcess& process, const QByteArray& text)
    {
        QByteArray log;
        return Wait(process, [&] { return (log += process.readAllStandardError()).contains(text); });
    }
    static void Kill(QProcess& process)
    {
        process.kill();
        QVERIFY(process.waitForFinished());
    }

private slots:
    // The guard's constructor removes what the last killed copy left: a segment outlives even this folder.
    void cleanup() { RunGuard("updater_single_instance_app"); }

    void OneCopyAtATime()
    {
        const QTemporaryDir folder;
        const QString early = folder.filePath(".updater-copy.aZ09bX");
        testdata::WriteFile(early, "half");
        QProcess first;
        Start(first, folder);
        QVERIFY(Runs(first, "src/SavedJSONParameters.cpp Couldn't open file "));
        // What is left of an interrupted copy is removed by a program that runs alone, and by no other.
        const QString half = folder.filePath(".updater-copy.aZ09bY");
        QVERIFY(Wait(first, [&] { return !QFile::exists(early); }));
        testdata::WriteFile(half, "half");
        QProcess second;
        Start(second, folder);
        QVERIFY(Ended(second));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(second.readAllStandardError(), "");
        QCOMPARE(first.state(), QProcess::Running);
        QVERIFY(QFile::exists(half));

        // The marker of a killed copy does not prevent the next start.
        Kill(first);
        QProcess third;
        Start(third, folder);
        QVERIFY(Runs(third, "Couldn't open file "));
        QVERIFY(Wait(third, [&] { return !QFile::exists(half); }));
        Kill(third);
    }

    void OneWordForAVersionStopsTheProgram()
    {
        FakeBoard board([](QTcpSocket& socket, const QByteArray& request) {
            const bool type = FakeBoard::Command(request) == "DEVICETYPE ?;";
            socket.write(FakeBoard::Text(request, type ? "DEVICETYPE T;" : "VER;"));
        });
        const QTemporaryDir folder;
        testdata::WriteCatalogue(
            folder.filePath("updater.json"),
            {testdata::Device("D", 1, {testdata::Board("b", "T", "127.0.0.1", board.serverPort(), 1, 0)})});
        QProcess process;
        Start(process, folder);
        QVERIFY(Ended(process));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        const QByteArray log = process.readAllStandardError();
        QVERIFY2(log.contains("QList::operator[]") && log.contains("index out of range"), log);
    }

    void ClosedInTheMiddle_data()
    {
        // The request that the board does not answer; the size of the image, 0 where none is written.
        const Table<QByteArray, int> row("silentOn", "size");
        row("close-search", "DEVICETYPE ?;", 0);
        row("close-reading", "VER ?;", 0);
        row("close-dialog", "", 0);
        row("close-update", "", 3000000);
        row("close-box", "", 480);
    }
    void ClosedInTheMiddle()
    {
        QFETCH(QByteArray, silentOn);
        QFETCH(int, size);
        int blocks = 0;
        FakeBoard board([&](QTcpSocket& socket, const QByteArray& request) {
            if (request.at(7) == 0x48) {
                ++blocks;
                socket.write(FakeBoard::Answer(request, 0x48, QByteArray("\2\0", 2) + request.mid(10, 2)));
            } else if (FakeBoard::Command(request) != silentOn) {
                socket.write(FakeBoard::Text(request, FakeBoard::Command(request).chopped(2) + "1.0;"));
            }
        });
        const QTemporaryDir folder;
        testdata::WriteCatalogue(
            folder.filePath("updater.json"),
            {testdata::Device("D", 7, {testdata::Board("b", "1.0", "127.0.0.1", board.serverPort(), 1, 0)})});
        Pack(folder, {{"fw_7_1_0_v2.0.bin", testdata::Image("2.0", size)}});
        QProcess process;
        Start(process, folder, QTest::currentDataTag());
        QVERIFY(Ended(process));
        const QByteArray log = process.readAllStandardError();
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QVERIFY2(process.exitCode() == 0, log.right(600));
        QVERIFY(log.contains("Try connect"));
        // Also a run whose window was closed is recorded to its end.
        QCOMPARE(log.contains("\"event\":\"end\""), size > 0);
        // A request whose time limit expires is logged without a text: closing must not have waited for it.
        QVERIFY2(!log.contains("updater/TcpModbus.cpp \n"), log.right(600));
        QCOMPARE(blocks > 0, size > 0);
        QVERIFY(blocks < 3000000 / 240);
        // The marker is released: the next copy runs.
        QProcess next;
        Start(next, folder);
        QVERIFY(Runs(next, "Try connect"));
        Kill(next);
    }

    void PackedArchiveIsTakenWithoutAlerts()
    {
        FakeBoard board([](QTcpSocket& socket, const QByteArray& request) {
            socket.write(FakeBoard::Text(request, FakeBoard::Command(request).chopped(2) + "1.0;"));
        });
        const QTemporaryDir folder;
        testdata::WriteCatalogue(folder.filePath("updater.json"),
                                 {testdata::Device("D", 7,
                                                   {testdata::Board("b", "1.0", "127.0.0.1", board.serverPort(), 1, 0),
                                                    testdata::Board("c", "1.0", "127.0.0.1", board.serverPort(), 2, 3),
                                                    testdata::Program("Просмотр", "viewer", "demo-viewer")})});
        testdata::WriteFile(folder.filePath("demo-viewer.ver"), "1.0");
        Pack(folder, {{"a/fw_7_1_0_v1.5.bin", "1"},
                      {"b/fw_7_2_3_v2.1.rpd", "2"},
                      {"viewer/demo-viewer", "#!/bin/sh\n"},
                      {"viewer/demo-viewer.ver", "2.0"},
                      {"viewer/lib/picture.png", "3"}});
        QProcess process;
        Start(process, folder, "take");
        QVERIFY(Ended(process));
        QVERIFY2(process.exitCode() == 0, process.readAllStandardError().right(600));
        QCOMPARE(process.readAllStandardOutput(), "1.5 2.1 2.0\n");
    }

    void NoBuildPathInTheBinary()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(UPDATER_COVERAGE)
        QSKIP("the tables of the sanitizer and of the counters hold the path");
#endif
        const QByteArray binary = testdata::ReadFile(UPDATER_PROGRAM);
        QVERIFY(binary.contains("updater/Util.cpp"));
        // Without the leading "/": a path may also lead there from another folder.
        for (const char* folder : {&BUILD_FOLDER[1], &SOURCE_FOLDER "/updater"[1]})
            QVERIFY2(!binary.contains(folder), folder);
    }
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
