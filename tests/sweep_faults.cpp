// Every fault of the simulated instrument at every request of a full update: the run ends, the message box reports no
// success that the instrument does not have, and the record says nothing else than the instrument. The expected
// outcomes are read from the tables in docs/reliability.md.

#include "RecordKeeper.h"
#include "ScriptedBoard.h"
#include "Table.h"
#include "TimeLimits.h"
#include "WindowFixture.h"

#include <QCryptographicHash>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

using namespace std::chrono_literals;

namespace {

/// The outcome for a module that one letter of the table stands for.
struct Outcome
{
    QString icon;
    QString shown;         ///< current version in the table
    bool holds = false;    ///< the instrument holds exactly the image
    bool runs = false;     ///< and reports its version in the end
    bool boxFails = false; ///< the message box at the end reports a failure
    bool isLast = false;   ///< no later module is touched
    QString log;           ///< a line that must be logged, after "!": must not
};

const QHash<QString, Outcome> Outcomes{
    {"S", {"ok", "2.0", true, true, false, false, "!WaitReboot 9"}},
    {"W", {"cancel", "2.", true, true, false, false, "!WaitReboot 9"}},
    {"O", {"cancel", "1.0", false, false, false, false, "!WaitReboot 9"}},
    {"R", {"cancel", "1.0", true, false, false, false, "!WaitReboot 9"}},
    {"L", {"cancel", "1.0", true, true, false, false, "!WaitReboot 9"}},
    {"K", {"", "1.0", false, false, false, false, "Try to reconnect 10"}},
    {"F", {"cancel", "1.0", false, false, true, true, "info: "}},
    {"A", {"cancel", "1.0", true, true, true, true, "info: "}},
    {"V", {"cancel", "???", true, true, true, false, "info: "}},
    {"N", {"cancel", "1.0", false, false, true, false, "WaitReboot 9"}},
    {"H", {"cancel", "1.0", true, false, true, false, "WaitReboot 9"}},
    {"G", {"cancel", "1.0", true, true, true, false, "WaitReboot 9"}},
    {"-", {"", "1.0", false, false, false, false, ""}},
};
/// The message box reports success although a module does not run the image; only the row's icon, or its absence,
/// shows it.
constexpr char SilentOutcomes[] = "WORLK";
constexpr int RequestsOfModule = 7;

QStringList g_log;

void Keep(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    const bool isRecord = text.startsWith("UpdateRecord ");
    g_log.append((type == QtInfoMsg && !isRecord ? "info: " : "") + text);
}

QList<QStringList> ExpectationRows()
{
    QList<QStringList> rows;
    for (const QString& line : QString(testdata::ReadFile(DOCS_FOLDER "/reliability.md")).split('\n')) {
        const QStringList cells = line.split('|');
        if (line.startsWith("| `") && cells.size() == 7)
            rows.append({cells[1].trimmed().remove('`'), cells[2].trimmed(), cells[3], cells[4], cells[5]});
    }
    return rows;
}

/// The names of outcomes in the record, by the letters that the page explains.
QHash<QString, QString> RecordedNames()
{
    QHash<QString, QString> names{{"-", ""}};
    for (const QString& line : QString(testdata::ReadFile(DOCS_FOLDER "/reliability.md")).split('\n')) {
        const QStringList cells = line.split('|');
        if (line.startsWith("| ") && cells.size() == 6 && cells[1].size() == 3)
            names.insert(cells[1].trimmed(), cells[2].trimmed().remove('`'));
    }
    return names;
}

TDeviceRecord TwoBoards()
{
    return testdata::Device(
        "П", 7,
        {testdata::Board("a", "DEV", "127.0.0.1", 0, 1, 0), testdata::Board("b", "DEV2", "127.0.0.2", 0, 2, 1)});
}

/// Two blocks each.
testdata::Files Images()
{
    return testdata::WithCertificates(
        {{"fw_7_1_0_v2.0.bin", testdata::Image("2.0", 300)}, {"fw_7_2_1_v2.0.rpd", testdata::Image("2.0", 250)}});
}

} // namespace

class SweepFaults : public QObject
{
    Q_OBJECT

    QMap<QString, int> m_counts;
    QHash<QString, QString> m_recorded;

    /// The record of the run that has just ended agrees with the page, with the window and with the instrument.
    void CompareRecord(const QStringList& letters, const WindowFixture& fixture, Instrument& instrument, bool success)
    {
        const QList<QJsonObject> records = RecordsIn(g_log);
        QString summary = "start ";
        for (const QString& letter : letters)
            summary += m_recorded[letter] + (m_recorded[letter].isEmpty() ? "" : " ");
        QCOMPARE(Summary(records), summary + (success ? "success backup" : "failure"));
        for (int row = 0; row < records.size() - 2; ++row) {
            const QJsonObject& record = records[row + 1];
            const QByteArray image = Images()[row * 2].second;
            const QByteArray sha256 = QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
            const bool isUpdated = record["outcome"] == "updated";
            const bool wasAsked = isUpdated || record["outcome"] == "another-version";
            QCOMPARE(record["name"], fixture.Cell(row, 0));
            QCOMPARE(record["sha256"], QString(sha256));
            QCOMPARE(record["after"], wasAsked ? QJsonValue(fixture.Cell(row, 1)) : QJsonValue());
            QCOMPARE(isUpdated, fixture.Status(row) == "ok");
            QVERIFY(!isUpdated || (instrument.Image(row) == image && instrument.Version(row) == record["after"]));
        }
    }

private slots:
    void initTestCase() { qInstallMessageHandler(Keep); }

    void PageNamesEveryFault()
    {
        QStringList page;
        for (const QStringList& row : ExpectationRows())
            page.append(row[0] + ": " + row[1]);
        QStringList table;
        for (const Fault::Entry& entry : Fault::Table())
            table.append(entry.name + ": " + entry.meaning);
        QCOMPARE(page, table);
    }

    void Cell_data()
    {
        m_recorded = RecordedNames();
        const Table<QString, QString, QString> row("fault", "first", "second");
        // Under the sanitizers a run takes a few times as long: there only each n-th row is run.
        const int stride = std::max(1, qEnvironmentVariableIntValue("SWEEP_STRIDE"));
        int index = 0;
        const auto add = [&](const QString& fault, const QString& first, const QString& second) {
            if (index++ % stride == 0)
                row(qPrintable(fault), fault, first, second);
        };
        for (const QStringList& cells : ExpectationRows()) {
            const QStringList first = cells[2].split(' ', Qt::SkipEmptyParts);
            const QStringList second = cells[3].split(' ', Qt::SkipEmptyParts);
            const QStringList all = cells[4].split(' ', Qt::SkipEmptyParts);
            QVERIFY2(first.size() == RequestsOfModule && second.size() == RequestsOfModule, qPrintable(cells[0]));
            for (int i = 0; i < RequestsOfModule; ++i) {
                // "2N": the fault can occur only while the second module's image is written.
                const bool isLater = first[i].startsWith('2');
                const QString next = isLater ? first[i].mid(1) : Outcomes[first[i]].isLast ? "-" : "S";
                add(cells[0] + '@' + QString::number(i + 1), isLater ? "S" : first[i], next);
                add(cells[0] + '@' + QString::number(RequestsOfModule + i + 1), "S", second[i]);
            }
            add(cells[0] + "@always", all.at(0), all.at(1));
        }
    }
    void Cell()
    {
        QFETCH(QString, fault);
        QFETCH(QString, first);
        QFETCH(QString, second);
        WindowFixture fixture;
        g_timeLimits.reply = Scaled(120ms);
        g_timeLimits.connectAttempt = Scaled(8ms);
        g_timeLimits.restartPause = Scaled(80ms);
        g_timeLimits.pollPause = 3ms;
        Instrument instrument(TwoBoards(), {.restart = Scaled(30ms), .late = 20ms, .tooLate = Scaled(240ms)});
        QString error;
        QVERIFY2(instrument.Start(&error), qPrintable(error));
        fixture.Open({instrument.Device()});
        fixture.TakeArchive(Images());
        fixture.driver.Do([&] {
            const int before = instrument.RequestCount();
            QList<Fault> faults = *Fault::Parse(fault, &error);
            if (faults[0].request != Fault::Always)
                faults[0].request += before;
            instrument.SetFaults(faults);
            g_log.clear();
        });
        fixture.driver.Press("buttonUpdate");
        const QList<Outcome> expected{Outcomes[first], Outcomes[second]};
        const bool success = !expected[0].boxFails && !expected[1].boxFails;
        QString box;
        fixture.driver.Step(
            "the message box at the end", [] { return UiDriver::OpenBox(); },
            [&] {
                box = UiDriver::OpenBox()->text();
                UiDriver::PressNow(UiDriver::OpenBox()->buttons().last());
            });
        fixture.driver.Step("the controls are idle", [&] { return fixture.Controls() == "idle"; });
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        const QStringList log = g_log;
        QCOMPARE(box, success ? Success : Failure);
        for (int row = 0; row < 2; ++row) {
            const QByteArray image = Images()[row * 2].second;
            QCOMPARE(fixture.Status(row), expected[row].icon);
            QCOMPARE(fixture.Cell(row, 1), expected[row].shown);
            QTRY_COMPARE(instrument.Version(row), expected[row].runs ? "2.0" : "1.0");
            QCOMPARE(instrument.Image(row), expected[row].holds ? image : QByteArray());
            const bool isThere = log.filter(QString(expected[row].log).remove('!')).size() > 0;
            if (!expected[row].log.startsWith('!') || (first == "S" && second == "S"))
                QVERIFY2(isThere != expected[row].log.startsWith('!'), qPrintable(log.join('\n')));
            if (success && expected[row].icon == "ok")
                QVERIFY(instrument.Image(row) == image && instrument.Version(row) == "2.0");
        }
        CompareRecord({first, second}, fixture, instrument, success);
        if (QTest::currentTestFailed())
            return;
        // The client may repeat an unanswered request once, just before its time limit expires.
        if (!fault.endsWith("@always"))
            QVERIFY(instrument.RepetitionCount() <= 1);
        ++m_counts[success ? QString(SilentOutcomes).contains(first) || QString(SilentOutcomes).contains(second)
                                 ? "success reported for a module that does not run the image"
                                 : "success"
                           : "failure named"];
    }

    void cleanupTestCase()
    {
        qInstallMessageHandler(nullptr);
        for (auto count = m_counts.cbegin(); count != m_counts.cend(); ++count)
            qInfo("%d cells: %s", count.value(), qPrintable(count.key()));
    }

private:
    /// The sanitizers slow everything down.
    static std::chrono::milliseconds Scaled(std::chrono::milliseconds time)
    {
#ifdef __SANITIZE_ADDRESS__
        return time * 3;
#else
        return time;
#endif
    }
};

QTEST_MAIN(SweepFaults)
#include "sweep_faults.moc"
