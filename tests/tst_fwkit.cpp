// What the maker's tool finds in an archive, and how it tells it.

#include "Fwkit.h"
#include "Table.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

namespace {

QStringList Kinds(const QJsonValue& findings)
{
    QStringList kinds;
    for (const QJsonValue& finding : findings.toArray()) {
        kinds.append((finding["kind"].toString() + ' ' + finding["place"].toString()).trimmed());
        if (finding["effect"].toString().isEmpty() || finding["remedy"].toString().isEmpty())
            kinds.append("without words");
    }
    return kinds;
}

} // namespace

class TestFwkit : public QObject
{
    Q_OBJECT

private slots:
    void Verify_data()
    {
        const Table<testdata::Files, QStringList, QStringList, QString> row("files", "findings", "boxes", "archive");
        const auto certified = testdata::WithCertificates;
        const QString missing = "Не найден сертификат ";
        const QString different = "Не соответствует сертификат ";
        row("good", certified(Good()), {}, {}, "a.zip");
        row("no certificate", {{"fw_7_1_0_v2.0.bin", "x"}}, {"missing-certificate fw_7_1_0_v2.0.bin"},
            {"6 Внимание! " + missing + "fw_7_1_0_v2.0.bin.sha256"}, "a.zip");
        row("hexadecimal certificate", {{"view/prog", "x"}, {"view/prog.sha256", "2d71"}},
            {"wrong-certificate view/prog"}, {"6 Внимание! " + different + "prog.sha256"}, "a.zip");
        row("encrypted", certified({{"fw_7_1_0_v2.0.bin", "x"}}), {"damaged-entry fw_7_1_0_v2.0.bin"},
            {"6 Внимание! " + different + "fw_7_1_0_v2.0.bin.sha256"}, "encrypted.zip");
        row("no version file", certified({{"view/prog", "x"}}), {"missing-version view/prog"},
            {"1 test /tmp/firmware/view/prog.ver: No such file or directory"}, "a.zip");
        row("two for a row", certified({{"a/fw_7_2_1_v3.rpd", "x"}, {"b/fw_7_2_1_v2.rpd", "y"}}),
            {"fight a/fw_7_2_1_v3.rpd"}, {}, "a.zip");
        row("one for two rows", certified({{"deep/prog2", "x"}, {"deep/prog2.ver", "1"}}),
            {"two-modules deep/prog2", "misplaced-program deep/prog2"}, {}, "a.zip");
        row("folder that is not copied", certified({{"base/kernel", "x"}, {"base/kernel.ver", "1"}}),
            {"never-copied base/kernel"}, {}, "a.zip");
        row("files that are not copied",
            certified(Good() + testdata::Files{{"view/a/firmware/f", ""}, {"view/.h", ""}}),
            {"never-copied view/a/firmware/f", "never-copied view/.h"}, {}, "a.zip");
        row("a version behind _", certified({{"fw_7_1_0_v1_5.bin", "x"}}), {"bad-version fw_7_1_0_v1_5.bin"}, {},
            "a.zip");
        row("half a version behind _", certified({{"fw_7_1_0_v1_v5.bin", "x"}}), {"bad-version fw_7_1_0_v1_v5.bin"}, {},
            "a.zip");
        row("empty version file", certified({{"view/prog", "x"}, {"view/prog.ver", ""}}), {"bad-version view/prog"}, {},
            "a.zip");
        row("program with a dot", certified({{"dot/p.x", "x"}, {"dot/p.x.ver", "1"}}), {"dotted-program dot/p.x"}, {},
            "a.zip");
        row("wrong kind", certified({{"fw_7_1_0_v2.rpd", "x"}}), {"wrong-kind fw_7_1_0_v2.rpd"}, {}, "a.zip");
        row("nobody's", certified({{"readme.txt", "x"}}), {"nobody readme.txt"}, {}, "a.zip");
        row("certificates alone", {{"a.sha256/fw_7_1_0_v2.0.bin", "x"}, {"b.sha256", "x"}},
            {"never-looked-at a.sha256/fw_7_1_0_v2.0.bin", "never-looked-at b.sha256"}, {}, "a.zip");
        row("climbs out", {{"good", "1"}, {"../x", "2"}, {"y", "3"}}, {"refused ../x"}, {}, "a.zip");
        row("file and folder", {{"a/b", "1"}, {"c", "3"}, {"a", "2"}}, {"refused a"}, {}, "a.zip");
        row("empty", {}, {"nothing-inside"}, {}, "a.zip");
        row("not shown, no folder", certified(Good()), {"not-shown", "firmware-in-name"}, {}, "firmware.bin");
        row("counts as 0", certified({{"fw_7_1_0_v1.4.7.bin", "x"}}), {"note: uncounted-version fw_7_1_0_v1.4.7.bin"},
            {}, "a.zip");
    }
    void Verify()
    {
        QFETCH(testdata::Files, files);
        QFETCH(QStringList, findings);
        QFETCH(QString, archive);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        testdata::WriteZip(folder.filePath(archive), files);
        if (archive == "encrypted.zip") {
            QByteArray zip = testdata::ReadFile(folder.filePath(archive));
            zip[zip.indexOf("PK\1\2") + 8] = '\1';
            testdata::WriteFile(folder.filePath(archive), zip);
        }
        const Outcome outcome = Run(folder, {"verify", "--json", "--catalogue", "@/updater.json", "@/" + archive});
        const QJsonObject told = QJsonDocument::fromJson(outcome.out.toUtf8()).object();
        QStringList boxes;
        for (const QJsonValue& box : told["devices"][0]["boxes"].toArray())
            boxes.append(QString::number(box["times"].toInt()) + ' ' + box["title"].toString() + ' '
                         + box["text"].toString());
        QTEST(boxes, "boxes");
        QCOMPARE(Kinds(told["findings"]) + Kinds(told["notes"]).replaceInStrings(QRegularExpression("^"), "note: "),
                 findings);
        QCOMPARE(outcome.status, Kinds(told["findings"]).isEmpty() ? 0 : 1);
        QCOMPARE(outcome.err, "");
        QCOMPARE(Listing(folder), QStringList({archive, "updater.json"}));
    }

    void VerifyForPeople_data()
    {
        const Table<QByteArray, QStringList> row("locale", "lines");
        row("English", "C.UTF-8",
            {"MODULE  FILE               NEW VERSION  CERTIFICATE", "Один    fw_7_1_0_v2.0.bin  2.0          matches",
             "Два     -                  -", "П1      view/prog          -            missing",
             "  6 x  [Внимание!] Не найден сертификат prog.sha256"});
        row("Russian", "ru_RU.UTF-8",
            {"МОДУЛЬ  ФАЙЛ               НОВАЯ ВЕРСИЯ  СЕРТИФИКАТ", "Один    fw_7_1_0_v2.0.bin  2.0           верен"});
    }
    void VerifyForPeople()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QStringList, lines);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        testdata::Files files = testdata::WithCertificates({Good()[0]});
        files += testdata::Files{{"view/prog", "x"}, {"\x1b[31m.\xc2\x9b.bin", "x"}};
        testdata::WriteZip(folder.filePath("a.zip"), files);
        const Outcome outcome = Run(folder, {"verify", "--catalogue", "@/updater.json", "@/a.zip"}, -1, locale);
        const QStringList told = outcome.out.split('\n');
        for (const QString& line : lines)
            QVERIFY2(told.contains(line), qPrintable(outcome.out));
        QVERIFY(outcome.out.contains("\\u001b[31m.\\u009b.bin"));
        QVERIFY(!outcome.out.contains('\x1b'));
    }

    void ManyEntries()
    {
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        testdata::Files files;
        for (int i = 0; i < 2000; ++i)
            files.append({QString("f%1").arg(i), "x"});
        testdata::WriteZip(folder.filePath("a.zip"), files);
        const Outcome outcome = Run(folder, {"verify", "--catalogue", "@/updater.json", "@/a.zip"});
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.out.count("  6 x  ["), 2000);
        QCOMPARE(outcome.out.count("No module takes it"), 2000);
    }

    void CompletionKnowsTheOptions_data()
    {
        const Table<QString, QStringList> row("function", "words");
        for (const char* verb : {"certify", "pack", "verify"})
            row(verb, "_fwkit", {FWKIT_PROGRAM, verb});
        row("simulator", "_instrument_simulator", {SIMULATOR_PROGRAM});
    }
    void CompletionKnowsTheOptions()
    {
        QFETCH(QString, function);
        QFETCH(QStringList, words);
        const auto output = [](QStringList command) {
            QProcess process;
            process.start(command.takeFirst(), command);
            process.waitForFinished();
            return process.readAllStandardOutput() + process.readAllStandardError();
        };
        QStringList helped;
        static const QRegularExpression Option("^ .*(--[a-z]+)", QRegularExpression::MultilineOption);
        for (const auto& match : Option.globalMatch(output(words + QStringList("--help"))))
            helped.append(match.captured(1));
        const QString file = "../" + QString(function == "_fwkit" ? "fwkit/fwkit" : "simulator/instrument-simulator");
        const QString script = "source \"$0\"; COMP_WORDS=(\"${@:2}\" --); COMP_CWORD=$(($# - 1)); $1; "
                               "echo -n \"${COMPREPLY[@]}\"";
        const QByteArray offered =
            output(QStringList{"bash", "-c", script, QFINDTESTDATA(file + ".bash-completion"), function} + words);
        QStringList completed = QString(offered).split(' ');
        completed.sort();
        helped.sort();
        QCOMPARE(completed, helped);
    }
};

QTEST_GUILESS_MAIN(TestFwkit)
#include "tst_fwkit.moc"
