// USB sticks that are removed, disks that are full or read-only, power cuts, and failures of sudo: the real window
// reports them, and no program file is ever lost.

#include "AlertRecorder.h"
#include "FirmwareArchive.h"
#include "RecordKeeper.h"
#include "ScriptedBoard.h"
#include "Table.h"
#include "TimeLimits.h"
#include "Tree.h"
#include "Util.h"
#include "WindowFixture.h"

#include <QApplication>
#include <QProcess>
#include <QRandomGenerator>
#include <QTableWidget>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

/// While the object exists, no file grows beyond `bytes`: a write fails as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit full{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    rlimit m_before{};
};

/// While the object exists, the program's folder is read-only. File modes do not stop root, so root becomes nobody.
class ReadOnlyFolder
{
public:
    ReadOnlyFolder()
    {
        QFile::setPermissions(WindowFixture::Path(""), QFile::Permissions(0x5555));
        m_isNobody = geteuid() == 0 && seteuid(65534) == 0;
    }
    ~ReadOnlyFolder()
    {
        if (m_isNobody && seteuid(0) != 0)
            qFatal("root is lost");
        QFile::setPermissions(WindowFixture::Path(""), QFile::Permissions(0x7755));
    }
    Q_DISABLE_COPY_MOVE(ReadOnlyFolder)

private:
    bool m_isNobody = false;
};

/// While the object exists, `script` replaces sudo; without a script there is no sudo at all.
class Sudo
{
public:
    explicit Sudo(const QByteArray& script)
    {
        if (!script.isNull()) {
            testdata::WriteFile(m_folder.filePath("sudo"), "#!/bin/sh\n" + script);
            QFile::setPermissions(m_folder.filePath("sudo"), QFile::Permissions(0x7755));
        }
        qputenv("PATH", m_folder.path().toUtf8());
    }
    ~Sudo() { qputenv("PATH", m_before); }
    Q_DISABLE_COPY_MOVE(Sudo)

private:
    const QByteArray m_before = qgetenv("PATH");
    const QTemporaryDir m_folder;
};

const QByteArray OldProgram(70000, 'o');
const QByteArray NewProgram(90000, 'n');

using Break = std::function<std::shared_ptr<void>()>;

QStringList Leftovers(const QString& folder)
{
    return QDir(folder).entryList({".*"}, QDir::Files | QDir::Hidden);
}

} // namespace

class TestDiskFaults : public QObject
{
    Q_OBJECT

private slots:
    void StickPulled_data()
    {
        const Table<std::function<void(QString)>, bool> row("pull", "whole");
        row(
            "unlinked", [](const QString& path) { QFile::remove(path); }, true);
        row(
            "gone in the data", [](const QString& path) { QFile::resize(path, 20000); }, false);
        row(
            "truncated to nothing", [](const QString& path) { QFile::resize(path, 0); }, false);
    }
    void StickPulled()
    {
        QFETCH(std::function<void(QString)>, pull);
        const QTemporaryDir root;
        const QString path = root.filePath("a.zip");
        testdata::WriteZip(path, {{"a", testdata::Image("1", 90000)}, {"b", "later"}});
        const FirmwareArchive archive(path);
        pull(path);
        QDir(root.path()).mkdir("out");
        // The part that could not be read is empty, so the digest differs and the alert names the certificate.
        QVERIFY(archive.ExtractAll(root.filePath("out")));
        QFETCH(bool, whole);
        QCOMPARE(Tree(root.filePath("out")), whole ? QStringList({"a:90000", "b=later"}) : QStringList({"a=", "b="}));
    }

    void UnreadableStick_data()
    {
        // Can be opened, but reading its first byte fails, as on a removed USB stick.
        const QString pulled = "/proc/self/mem";
        const Table<QString, QString> row("image", "certificate");
        row("the certificate", "", pulled);
        row("both", pulled, pulled);
    }
    void UnreadableStick()
    {
        ScriptedBoard one;
        WindowFixture fixture;
        fixture.Open({testdata::Device("П", 7, {one.Record("a", 1, 0)})});
        const QString path = WindowFixture::Path("firmware/fw_7_1_0_v1.4.bin");
        testdata::WriteFile(path, "image");
        QFETCH(QString, image);
        QFETCH(QString, certificate);
        QVERIFY(image.isEmpty() || (QFile::remove(path) && QFile::link(image, path)));
        QVERIFY(QFile::link(certificate, path + ".sha256"));
        AlertRecorder alerts;
        fixture.PressRow(0, 3);
        fixture.driver.ChooseFile("Открыть файл с прошивкой", "fw_7_1_0_v1.4.bin");
        fixture.driver.Step("reported", [&] { return !alerts.texts.isEmpty() && !UiDriver::OpenBox(); });
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        QCOMPARE(alerts.texts, QStringList{"Внимание!: Не соответствует сертификат fw_7_1_0_v1.4.bin.sha256"});
        QCOMPARE(fixture.Cell(0, 2), "");
    }

    void FullTemporaryDisk()
    {
        ScriptedBoard one;
        WindowFixture fixture;
        fixture.Open({testdata::Device("П", 7, {one.Record("a", 1, 0)})});
        testdata::WriteZip(WindowFixture::Path("new.zip"),
                           {{"a", "first"}, {"fw_7_1_0_v2.0.bin", testdata::Image("2.0", 90000)}});
        fixture.driver.Press("buttonArchive");
        fixture.driver.ChooseFile("Открыть архив с прошивками", "new.zip");
        {
            const FullDisk full(80000);
            QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
            QTRY_VERIFY(QApplication::activeModalWidget()->windowType() == Qt::ToolTip);
            QTest::qWait(100);
        }
        QCOMPARE(fixture.Cell(0, 2), "");
        QVERIFY(QApplication::activeModalWidget()->close());
        QCOMPARE(Tree(ExtractionFolder()), QStringList{"a=first"});
    }

    void ProgramUpdate_data()
    {
        const Table<Break, QString, QString, bool> row("fault", "box", "status", "isNew");
        const auto sudo = [](const QByteArray& script) { return [=] { return std::make_shared<Sudo>(script); }; };
        row(
            "none", [] { return nullptr; }, Success, "ok", true);
        row(
            "program folder read-only", [] { return std::make_shared<ReadOnlyFolder>(); }, Failure, "cancel", false);
        row(
            "disk full", [] { return std::make_shared<FullDisk>(80000); }, Failure, "cancel", false);
        row("no sudo", sudo({}), Success, "ok", true);
        row("sudo asks for a password", sudo("printf 'password: ' >&2; read -r password"), Failure, "cancel", true);
        row("sudo asks elsewhere, without end", sudo("read -r password; echo late >&2"), Success, "ok", true);
        row("sudo warns", sudo("echo 'unable to resolve host' >&2"), Failure, "cancel", true);
        row("sudo fails without a word", sudo("exit 1"), Success, "ok", true);
    }
    void ProgramUpdate()
    {
        testdata::WriteFile(WindowFixture::Path("viewer"), OldProgram);
        testdata::WriteFile(WindowFixture::Path("viewer.ver"), "1.0");
        const LogKeeper log;
        ScriptedBoard one;
        WindowFixture fixture;
        // Only these commands never end.
        g_timeLimits.systemCommand = QByteArray(QTest::currentDataTag()).startsWith("sudo asks") ? 500ms : 60s;
        fixture.Open({testdata::Device("П", 7, {one.Record("a", 1, 0), testdata::Program("b", "viewer", "viewer")})});
        fixture.TakeArchive(testdata::WithCertificates({{"viewer/viewer", NewProgram}, {"viewer/viewer.ver", "2.0"}}));
        QFETCH(Break, fault);
        QFETCH(QString, box);
        std::shared_ptr<void> holds;
        fixture.driver.Do([&] { holds = fault(); });
        fixture.driver.Press("buttonUpdate");
        fixture.driver.AnswerBox(box, box == Success ? "Нет" : "OK");
        const bool ran = fixture.driver.Run();
        holds.reset();
        QVERIFY2(ran, qPrintable(fixture.driver.Failure));
        QTEST(fixture.Status(1), "status");
        QCOMPARE(Summary(LogKeeper::Records()),
                 box == Success ? "start updated success backup" : "start copy-failed failure");
        QFETCH(bool, isNew);
        QVERIFY(testdata::ReadFile(WindowFixture::Path("viewer")) == (isNew ? NewProgram : OldProgram));
        // The version file read at the next start must match the program file.
        QCOMPARE(testdata::ReadFile(WindowFixture::Path("viewer.ver")), isNew ? "2.0" : "1.0");
        QCOMPARE(Leftovers(WindowFixture::Path("")), QStringList());
        QCOMPARE(fixture.Controls(), "idle");
    }

    void KilledCopy()
    {
        const QTemporaryDir root;
        const QByteArray old = testdata::Image("1", 3 << 20);
        const QByteArray next = testdata::Image("2", 4 << 20);
        testdata::WriteFile(root.filePath("old/program"), old);
        testdata::WriteFile(root.filePath("new/program"), next);
        testdata::WriteFile(root.filePath("installed/program"), old);
        qsizetype leftovers = 0;
        for (int round = 0; round < 25; ++round) {
            QProcess copy;
            copy.setProcessChannelMode(QProcess::MergedChannels);
            copy.start(QCoreApplication::applicationFilePath(),
                       {"--copy", root.filePath("old"), root.filePath("new"), root.filePath("installed")});
            QVERIFY(copy.waitForReadyRead());
            QTest::qSleep(QRandomGenerator::global()->bounded(40));
            copy.kill();
            QVERIFY(copy.waitForFinished());
            QCOMPARE(copy.exitStatus(), QProcess::CrashExit);
            const QByteArray installed = testdata::ReadFile(root.filePath("installed/program"));
            QVERIFY(installed == old || installed == next);
            leftovers += Leftovers(root.filePath("installed")).size();
        }
        // Temporary files of killed copies are not copied along, and the next copy removes them.
        QVERIFY(leftovers > 0);
        testdata::WriteFile(root.filePath("installed/.updater-copy.aZ09bY"), "half");
        QVERIFY(QDir(root.path()).mkdir("backup"));
        QVERIFY(Util::CopyPath(root.filePath("installed"), root.filePath("backup")));
        QCOMPARE(Leftovers(root.filePath("backup")), QStringList());
        QVERIFY(Util::CopyPath(root.filePath("new"), root.filePath("installed")));
        QCOMPARE(Leftovers(root.filePath("installed")), QStringList());
    }

    void AbsurdCatalogue_data()
    {
        const Table<QByteArray, QString> row("fields", "version");
        row("all right", R"("Port": %1, "MBAddr": 2)", "1.0");
        row("negative", R"("Port": -1, "MBAddr": -1, "IdCPU": -2147483648)", "???");
        row("largest", R"("Port": 2147483647, "MBAddr": 2147483647, "IdCPU": 2147483647)", "???");
        row("no numbers", R"("Port": 1e300, "MBAddr": 0.5, "IdCPU": "x")", "???");
        row("port that wraps", R"("Port": %2, "MBAddr": 2)", "???");
        row("unit that wraps", R"("Port": %1, "MBAddr": 258)", "1.0");
    }
    void AbsurdCatalogue()
    {
        QFETCH(QByteArray, fields);
        ScriptedBoard one;
        const int port = one.board.serverPort();
        fields.replace("%1", QByteArray::number(port)).replace("%2", QByteArray::number(port + 65536));
        const QByteArray board = R"({"Type": "DEV", "Ip": "127.0.0.1", )" + fields + "}";
        const QByteArray main =
            R"({"Type": "DEV", "Ip": "127.0.0.1", "Main": 1, "MBAddr": 1, "Port": )" + QByteArray::number(port) + "}";
        const QByteArray tenAbsurd = ("," + board).repeated(10);
        const QByteArray device = R"({"IdDev": -1, "Boards": [)" + main + tenAbsurd + "]}";
        QSet<int> units;
        one.fault = [&](const Call& c) {
            units.insert(quint8(c.request.at(6)));
            return false;
        };
        WindowFixture fixture;
        testdata::WriteFile(WindowFixture::Path("updater.json"),
                            R"({"Devices": [)" + (device + ",").repeated(10) + device + "]}");
        fixture.window = std::make_unique<MainWindow>(nullptr);
        fixture.window->show();
        fixture.WaitForVersions();
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        // The table holds ten boards: the first one answers, and so do those that are reached as the catalogue says.
        QFETCH(QString, version);
        QCOMPARE(fixture.Versions(), "1.0" + (" " + version).repeated(9));
        // Unit address 258 is sent as its low byte.
        QCOMPARE(units, version == "1.0" ? (QSet<int>{1, 2}) : QSet<int>{1});
    }
};

/// As a child of KilledCopy: copies one folder, then the other, over a third, until it is killed.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    while (arguments.size() == 5 && arguments[1] == "--copy") {
        for (int source : {2, 3}) {
            if (!Util::CopyPath(arguments[source], arguments[4]))
                return 1;
        }
    }
    TestDiskFaults test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_disk_faults.moc"
