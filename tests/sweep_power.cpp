// The panel loses power at every request of an update: the program starts again, finds the instrument, offers what is
// not done, and a second run completes.

#include "Fwkit.h"
#include "Instrument.h"
#include "RecordKeeper.h"
#include "RunGuard.h"
#include "Table.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;

namespace {

/// Two boards with two blocks each, so an update of both takes fourteen requests; the four before them are the search's
/// and the versions'.
constexpr int FirstRequest = 5;
constexpr int LastRequest = 18;

} // namespace

class SweepPower : public QObject
{
    Q_OBJECT

    /// Starts the program, operated by the UI driver.
    static void Start(QProcess& process, const QString& folder, const QString& steps)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_GENERIC_PLUGINS", "uidriver");
        environment.insert("QT_PLUGIN_PATH", PLUGIN_FOLDER);
        environment.insert("UPDATER_UI_SCRIPT", STEPS_FOLDER "/" + steps);
        process.setProcessEnvironment(environment);
        process.start(folder + "/updater");
    }

    static QList<QJsonObject> RecordsOf(QProcess& process)
    {
        return RecordsIn(QString(process.readAllStandardError()).split('\n'));
    }

private slots:
    void cleanup() { RunGuard("updater_single_instance_app"); }

    void PowerLost_data()
    {
        const Table<int> row("request");
        for (int request = FirstRequest; request <= LastRequest; ++request)
            row(qPrintable("request " + QString::number(request - FirstRequest + 1)), request);
    }
    void PowerLost()
    {
        QFETCH(int, request);
        const testdata::Files files = testdata::WithCertificates(
            {{"fw_7_1_0_v2.0.bin", testdata::Image("2.0", 300)}, {"fw_7_2_1_v2.0.rpd", testdata::Image("2.0", 250)}});
        Instrument instrument(testdata::Device("П", 7,
                                               {testdata::Board("a", "DEV", "127.0.0.1", 0, 1, 0),
                                                testdata::Board("b", "DEV2", "127.0.0.2", 0, 2, 1)}),
                              {.restart = 300ms});
        QString error;
        QVERIFY2(instrument.Start(&error), qPrintable(error));
        const QTemporaryDir folder;
        QVERIFY(QFile::copy(UPDATER_PROGRAM, folder.filePath("updater")));
        testdata::WriteCatalogue(folder.filePath("updater.json"), {instrument.Device()});
        WriteFiles(folder, {{"new/" + files[0].first, files[0].second}, {"new/" + files[2].first, files[2].second}});
        const Outcome packed =
            Run(folder, {"pack", "--catalogue", "@/updater.json", "--device", "7", "--output", "@/new.zip", "@/new"});
        QVERIFY2(packed.status == 0, qPrintable(packed.err));

        QProcess first;
        connect(&instrument, &Instrument::Requested, &first, [&](int number) {
            if (number == request)
                first.kill();
        });
        Start(first, folder.path(), "update");
        QTRY_COMPARE_WITH_TIMEOUT(first.state(), QProcess::Running, 20000);
        QTRY_COMPARE_WITH_TIMEOUT(first.state(), QProcess::NotRunning, 60000);
        QCOMPARE(first.exitStatus(), QProcess::CrashExit);
        // The first module's seven requests are done before the second one's.
        QCOMPARE(Summary(RecordsOf(first)), request < FirstRequest + 7 ? "start" : "start updated");
        // A board restarts after the finish command.
        QTest::qWait(500);
        QString offered = "offered:";
        for (int row = 0; row < 2; ++row)
            offered += instrument.Version(row) == "2.0" ? "" : row == 0 ? " a" : " b";

        QProcess second;
        Start(second, folder.path(), offered == "offered:" ? "nothing-to-update" : "update");
        QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::Running, 20000);
        QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::NotRunning, 90000);
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        const QList<QJsonObject> records = RecordsOf(second);
        QVERIFY2(second.exitCode() == 0, qPrintable(Summary(records)));
        QCOMPARE(Summary(records).endsWith(" success backup"), offered != "offered:");
        QCOMPARE(QString(second.readAllStandardOutput()).trimmed(), offered);
        for (int row = 0; row < 2; ++row) {
            QCOMPARE(instrument.Image(row), files[row * 2].second);
            QCOMPARE(instrument.Version(row), "2.0");
        }
    }
};

QTEST_GUILESS_MAIN(SweepPower)
#include "sweep_power.moc"
