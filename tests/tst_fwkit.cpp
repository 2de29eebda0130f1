// What fwkit finds in an archive, and how it reports it.

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
        row("a version after _", certified({{"fw_7_1_0_v1_5.bin", "x"}}), {"bad-version fw_7_1_0_v1_5.bin"}, {},
            "a.zip");
        row("half a version after _", certified({{"fw_7_1_0_v1_v5.bin", "x"}}), {"bad-version fw_7_1_0_v1_v5.bin"}, {},
            "a.zip");
        row("empty version file", certified({{"view/prog", "x"}, {"view/prog.ver", ""}}), {"bad-version view/prog"}, {},
            "a.zip");
        row("empty image", certified({{"fw_7_1_0_v2.0.bin", ""}}), {"empty-file fw_7_1_0_v2.0.bin"}, {}, "a.zip");
        row("empty program", certified({{"view/prog", ""}, {"view/prog.ver", "1"}, {"view/lib/none", ""}}),
            {"empty-file view/prog"}, {}, "a.zip");
        row("version of two words", certified({{"fw_7_2_1_v1.5 (1).rpd", "x"}}),
            {"unanswerable-version fw_7_2_1_v1.5 (1).rpd"}, {}, "a.zip");
        row("version with a semicolon", certified({{"fw_7_1_0_v1;5.bin", "x"}}),
            {"unanswerable-version fw_7_1_0_v1;5.bin"}, {}, "a.zip");
        row("Cyrillic version", certified({{"fw_7_1_0_v2б.bin", "x"}}), {"unanswerable-version fw_7_1_0_v2б.bin"}, {},
            "a.zip");
        row("line break in a version", certified({{"view/prog", "x"}, {"view/prog.ver", "2.0\n"}}),
            {"note: line-break view/prog"}, {}, "a.zip");
        row("program with a dot", certified({{"dot/p.x", "x"}, {"dot/p.x.ver", "1"}}), {"dotted-program dot/p.x"}, {},
            "a.zip");
        row("wrong kind", certified({{"fw_7_1_0_v2.rpd", "x"}}), {"wrong-kind fw_7_1_0_v2.rpd"}, {}, "a.zip");
        row("wrong case of the name", certified({{"Fw_7_1_0_V2.bin", "x"}, {"PROG", "x"}}),
            {"wrong-case Fw_7_1_0_V2.bin", "wrong-case PROG"}, {}, "a.zip");
        row("wrong case of the kind", certified({{"fw_7_1_0_v2.BIN", "x"}}), {"wrong-case fw_7_1_0_v2.BIN"}, {},
            "a.zip");
        row("nobody's", certified({{"readme.txt", "x"}}), {"nobody readme.txt"}, {}, "a.zip");
        row("folders of Windows", certified(Good() + testdata::Files{{"view\\l.so", "x"}}), {"odd-name view\\l.so"}, {},
            "a.zip");
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
        const QJsonObject printed = QJsonDocument::fromJson(outcome.out.toUtf8()).object();
        QStringList boxes;
        for (const QJsonValue& box : printed["devices"][0]["boxes"].toArray())
            boxes.append(QString::number(box["times"].toInt()) + ' ' + box["title"].toString() + ' '
                         + box["text"].toString());
        QTEST(boxes, "boxes");
        QStringList notes = Kinds(printed["notes"]);
        QCOMPARE(notes.takeFirst(), "catalogue-findings");
        QCOMPARE(Kinds(printed["findings"]) + notes.replaceInStrings(QRegularExpression("^"), "note: "), findings);
        QCOMPARE(outcome.status, Kinds(printed["findings"]).isEmpty() ? 0 : 1);
        QCOMPARE(outcome.err, "");
        QCOMPARE(Listing(folder), QStringList({archive, "updater.json"}));
    }

    void UnusedFilesAreExplained()
    {
        const QTemporaryDir folder;
        const TBoardRecord board = testdata::Board("Один", "T", "127.0.0.1", 1, 1, 0);
        testdata::WriteCatalogue(folder.filePath("updater.json"),
                                 {testdata::Device("П", 7, {board, testdata::Program("П1", "view", "prog")}),
                                  testdata::Device("Р", 8, {board, testdata::Program("П2", "deep", "tool")})});
        WriteFiles(folder, {{"in/a/fw_8_1_0_v2.bin", "x"},
                            {"in/Fw_8_1_0_v2.hex", "x"},
                            {"in/fw_7_1_0_v2.bin.bin", "x"},
                            {"in/fw_7_1_0_v3.bin ", "x"},
                            {"in/fw_7_1_0_v2.BIN", "x"},
                            {"in/fw_7_1_0_v2.hex", "x"},
                            {"in/fw_7_1_0_v2.rpd", "x"},
                            {"in/tool", "x"},
                            {"in/view.txt", "x"}});
        const Outcome outcome = Run(
            folder, {"pack", "-q", "--catalogue", "@/updater.json", "--device", "7", "--output", "@/a.zip", "@/in"});
        QString printed = outcome.err;
        printed.remove("fwkit pack: " + folder.path() + "/in/").remove("The module \"Один\" ");
        const QString other = "It is for another device, \"Р\" (IdDev 8); leave it out, or choose that device with ";
        const QString only = "has the name but takes fw_7_1_0_v*.bin only; ";
        const QString rename = "does not take it: upper and lower case and spaces count; rename it to ";
        const QString read = "The panel reads \"2\" as its version; ";
        const QString names = "fw_7_1_0_v*.bin (Один), view/prog (П1)";
        QCOMPARE(
            printed.split('\n').filter(": "),
            QStringList({"fw_7_1_0_v2.bin.bin: " + read + "end the name with a version without \"_\" and one .bin",
                         "Fw_8_1_0_v2.hex: " + other + "--device", "fw_7_1_0_v2.BIN: " + rename + "fw_7_1_0_v2.bin",
                         "fw_7_1_0_v2.hex: " + only + "give the image itself, with the extension .bin",
                         "fw_7_1_0_v2.rpd: " + only + "build the image for this processor",
                         "fw_7_1_0_v3.bin : " + rename + "fw_7_1_0_v3.bin", "a/fw_8_1_0_v2.bin: " + other + "--device",
                         "tool: " + other + "--device",
                         "view.txt: No module takes it; leave it out, or give it one of these names: " + names}));
    }

    void VerifyForPeople_data()
    {
        const Table<QByteArray, QStringList> row("locale", "lines");
        row("English", "C.UTF-8",
            {"MODULE  FILE               NEW VERSION             CERTIFICATE",
             "Один    fw_7_1_0_v2.0.bin  2.0                     matches", "Два     -                  -",
             "П1      view/prog          -                       missing",
             "П3      base/kernel        2.0 (and a line break)  matches",
             "  6 x  [Внимание!] Не найден сертификат prog.sha256"});
        row("Russian", "ru_RU.UTF-8",
            {"МОДУЛЬ  ФАЙЛ               НОВАЯ ВЕРСИЯ            СЕРТИФИКАТ",
             "Один    fw_7_1_0_v2.0.bin  2.0                     верен"});
    }
    void VerifyForPeople()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QStringList, lines);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        testdata::Files files =
            testdata::WithCertificates({Good()[0], {"base/kernel", "x"}, {"base/kernel.ver", "2.0\n"}});
        files += testdata::Files{{"view/prog", "x"}, {"\x1b[31m.\xc2\x9b.bin", "x"}};
        testdata::WriteZip(folder.filePath("a.zip"), files);
        const Outcome outcome = Run(folder, {"verify", "--catalogue", "@/updater.json", "@/a.zip"}, -1, locale);
        const QStringList printed = outcome.out.split('\n');
        for (const QString& line : lines)
            QVERIFY2(printed.contains(line), qPrintable(outcome.out));
        QVERIFY(outcome.out.contains("\\u001b[31m.\\u009b.bin"));
        QVERIFY(!outcome.out.contains('\x1b'));
    }

    void Answers_data()
    {
        const Table<QStringList, int, QString, QString> row("arguments", "status", "out", "err");
        const QStringList good{"-c", "@/good.json", "@/a.zip"};
        const QString served = "@/a.zip -> П (7): modules served: 2 of 3.\n";
        row("verify", QStringList{"verify"} + good, 0, served, "");
        row("verify quietly", QStringList{"verify", "-q"} + good, 0, "", "");
        row("findings quietly", {"verify", "-q", "-c", "@/good.json", "@/b.zip"}, 1, "@/b.zip: x: No module", "");
        row("faulty catalogue", {"verify", "-c", "@/updater.json", "@/a.zip"}, 0, "П (7): modules served: 2 of 6.\n",
            "fwkit verify: note: @/updater.json: The catalogue itself has findings: 3; see what \"fwkit check "
            "@/updater.json\" says\n");
        row("pack", {"pack", "-c", "@/good.json", "-d7", "-o", "@/c.zip", "@/in"}, 0,
            "@/c.zip -> П (7): modules served: 1 of 3.\n", "");
        row("pack for a script", {"pack", "-j", "-c", "@/good.json", "-d7", "-o", "@/firmware/c.zip", "@/in"}, 0,
            "\"kind\": \"firmware-in-folder\"", "");
        row("certify for a script", {"certify", "-j", "@/in"}, 0, "\"result\": \"new\"", "");
        row("certify finds for a script", {"certify", "-j", "@/firmware"}, 1, "\"kind\": \"empty-file\"", "");
        row("certify goes on", {"certify", "/proc/self/mem", "@/in"}, 2, "@/in/fw_7_1_0_v2.0.bin: new",
            "fwkit certify: /proc/self/mem: cannot be read to its end");
        row("certify quietly", {"certify", "-q", "@/in"}, 0, "", "");
        row("certify finds quietly", {"certify", "-q", "@/in", "@/firmware"}, 1, "",
            "certify: @/firmware/x: It is empty");
        row("list", {"list", "@/a.zip"}, 0,
            "FILE               SIZE  VERSION  CERTIFICATE\n"
            "fw_7_1_0_v2.0.bin  5     2.0      matches\n"
            "view/prog          4     1.5      matches\n"
            "view/prog.ver      3     -        matches\n"
            "view/lib/l.so      1     -        matches\n"
            "\n@/a.zip: files with a certificate that matches: 4 of 4.\n",
            "");
        row("list certificates", {"list", "@/b.zip"}, 0,
            "x      2     -                     missing\n"
            "y      1     1 (and another line)  different\n"
            "y.ver  3     -                     missing\n"
            "z      1     -                     damaged\n",
            "");
        row("list names", {"list", "--quiet", "@/b.zip"}, 0, "x\ny\ny.ver\nz\n", "");
        row("list for a script", {"list", "--json", "@/a.zip"}, 0, "\"version\": \"1.5\"", "");
        row("list no archive", {"list", "@/good.json"}, 2, "", "fwkit list: @/good.json: no zip archive, damaged");
        row("devices", {"devices", "@/good.json"}, 0, "IdDev  NAME  MODULES\n7      П     Один, Два, П1\n", "");
        row("numbers of devices", {"devices", "-q", "@/good.json"}, 0, "7\n", "");
        row("check quietly", {"check", "-q", "@/good.json"}, 0, "", "");
        row("check goes on", {"check", "@/x.json", "@/good.json"}, 2, "@/good.json: fine, devices: 1, modules: 3\n",
            "fwkit check: @/x.json: cannot be read");
        row("help", {"help", "list"}, 0, "Exit status: 0 fine, 1 findings, 2 misuse", "");
        row("help on help", {"help", "help"}, 0, "Usage: fwkit VERB", "");
        row("misspelt option", {"pack", "--outptu=x"}, 2, "", "Unknown option 'outptu'. Did you mean --output?");
        row("help on two verbs", {"help", "pack", "verify"}, 2, "", "name one");
        row("version", {"-V"}, 0, "fwkit 1.", "");
    }
    void Answers()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        testdata::WriteCatalogue(folder.filePath("good.json"), {GoodDevice()});
        testdata::WriteZip(folder.filePath("a.zip"), testdata::WithCertificates(Good()));
        testdata::WriteZip(folder.filePath("b.zip"),
                           {{"x", "11"}, {"y", "1"}, {"y.sha256", "2"}, {"y.ver", "1\n2"}, {"z", "1"}});
        QByteArray zip = testdata::ReadFile(folder.filePath("b.zip"));
        zip[zip.lastIndexOf("PK\1\2") + 8] = '\1'; // its flags: encrypted
        testdata::WriteFile(folder.filePath("b.zip"), zip);
        WriteFiles(folder, {{"in/fw_7_1_0_v2.0.bin", "x"}, {"firmware/x", ""}});
        const Outcome outcome = Run(folder, arguments);
        QCOMPARE(outcome.status, status);
        for (const auto& [printed, expected] : {std::pair(outcome.out, out), std::pair(outcome.err, err)}) {
            const QString text = QString(expected).replace("@", folder.path());
            QVERIFY2(text.isEmpty() ? printed.isEmpty() : printed.contains(text), qPrintable(printed));
        }
    }

    void CompletionOffers_data()
    {
        const Table<QString, QString> row("line", "offered");
        row("numbers of the catalogue named", "fwkit pack --catalogue updater.json -d ''", "7");
        row("no catalogue", "fwkit pack --device ''", "");
        row("nothing that is being made", "fwkit verify -c updater.json ''", "a.zip");
    }
    void CompletionOffers()
    {
        QFETCH(QString, line);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        WriteFiles(folder, {{"a.zip", ""}, {".fwkit-a1b2c3/archive.zip", ""}});
        QFile::link(FWKIT_PROGRAM, folder.filePath("fwkit"));
        QProcess bash;
        bash.setWorkingDirectory(folder.path());
        bash.start("bash",
                   {"-c",
                    "source \"$0\"; PATH=.:$PATH; eval \"COMP_WORDS=($1)\"; COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
                    "_fwkit; echo -n \"${COMPREPLY[@]}\"",
                    QFINDTESTDATA("../fwkit/fwkit.bash-completion"), line});
        QVERIFY(bash.waitForFinished());
        QTEST(QString(bash.readAllStandardOutput()), "offered");
    }

    void NoTemporaryFolder()
    {
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        testdata::WriteZip(folder.filePath("a.zip"), testdata::WithCertificates(Good()));
        QProcessEnvironment environment = MakersEnvironment(folder, "C.UTF-8");
        environment.insert("TMPDIR", folder.filePath("x"));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(FWKIT_PROGRAM, {"verify", "-qc", folder.filePath("updater.json"), folder.filePath("a.zip")});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 2);
        const QString line = "fwkit verify: TMPDIR: " + folder.filePath("x") + ": no such folder; ";
        QVERIFY(QString(process.readAllStandardError()).startsWith(line));
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
        for (const char* verb : {"certify", "pack", "verify", "check", "list", "devices"})
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
