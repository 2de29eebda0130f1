// The maker's tool as a maker or a script runs it: what it finds, what it writes, its exit status, and that it leaves
// nothing half-written behind.

#include "FirmwareArchive.h"
#include "Stage.h"
#include "Table.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Outcome
{
    int status = -1;
    QString out;
    QString err;
};

/// "@" in an argument is the folder. `limit`: how large a file may become, in blocks of 512 bytes; -1: any size.
Outcome Run(const QTemporaryDir& folder, QStringList arguments, int limit = -1, const QByteArray& locale = "C.UTF-8")
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", locale);
    environment.insert("TMPDIR", folder.path());
    process.setProcessEnvironment(environment);
    arguments.replaceInStrings("@", folder.path());
    const QString limited =
        QString("ulimit -f %1; exec \"$0\" \"$@\"").arg(limit < 0 ? "unlimited" : QString::number(limit));
    process.start("/bin/sh", QStringList{"-c", limited, FWKIT_PROGRAM} + arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        qFatal("fwkit did not end by itself");
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

void WriteFiles(const QTemporaryDir& folder, const stage::Files& files)
{
    for (const auto& [name, content] : files)
        stage::WriteFile(folder.filePath(name), content);
}

/// Everything in the folder, hidden files too.
QStringList Listing(const QTemporaryDir& folder)
{
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// Two boards and programs that are in order, in each other's way, and never copied or taken.
void WriteCatalogue(const QTemporaryDir& folder)
{
    stage::WriteCatalogue(
        folder.filePath("updater.json"),
        {stage::Device("П", 7,
                       {stage::Board("Один", "T", "127.0.0.1", 1, 1, 0), stage::Board("Два", "T", "127.0.0.1", 1, 2, 1),
                        stage::Program("П1", "view", "prog"), stage::Program("П2", "deep", "prog2"),
                        stage::Program("П3", "base", "kernel"), stage::Program("П4", "dot", "p.x")})});
}

stage::Files Good()
{
    return {{"fw_7_1_0_v2.0.bin", "image"}, {"view/prog", "code"}, {"view/prog.ver", "1.5"}, {"view/lib/l.so", "l"}};
}

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
        const Table<stage::Files, QStringList, QStringList, QString> row("files", "findings", "boxes", "archive");
        const auto certified = stage::WithCertificates;
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
        row("files that are not copied", certified(Good() + stage::Files{{"view/a/firmware/f", ""}, {"view/.h", ""}}),
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
        QFETCH(stage::Files, files);
        QFETCH(QStringList, findings);
        QFETCH(QString, archive);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        stage::WriteZip(folder.filePath(archive), files);
        if (archive == "encrypted.zip") {
            QByteArray zip = stage::ReadFile(folder.filePath(archive));
            zip[zip.indexOf("PK\1\2") + 8] = '\1';
            stage::WriteFile(folder.filePath(archive), zip);
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
        stage::Files files = stage::WithCertificates({Good()[0]});
        files += stage::Files{{"view/prog", "x"}, {"\x1b[31m.\xc2\x9b.bin", "x"}};
        stage::WriteZip(folder.filePath("a.zip"), files);
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
        stage::Files files;
        for (int i = 0; i < 2000; ++i)
            files.append({QString("f%1").arg(i), "x"});
        stage::WriteZip(folder.filePath("a.zip"), files);
        const Outcome outcome = Run(folder, {"verify", "--catalogue", "@/updater.json", "@/a.zip"});
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.out.count("  6 x  ["), 2000);
        QCOMPARE(outcome.out.count("No module takes it"), 2000);
    }

    void PackIsTheSameEachTime()
    {
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        for (const auto& [name, content] : Good())
            stage::WriteFile(folder.filePath("in/" + name), content);
        WriteFiles(folder, {{"in/.hidden", "x"}, {"in/old~", "x"}});
        QFile::setPermissions(folder.filePath("in/view/prog"), QFile::Permissions::fromInt(0x7700));
        const QStringList order{"pack", "--catalogue", "@/updater.json", "--device", "7", "--output"};
        const Outcome first = Run(folder, order + QStringList{"@/in/a.zip", "@/in"});
        QVERIFY2(first.status == 0, qPrintable(first.err));
        QCOMPARE(first.err.count("left out"), 2);

        // Later, elsewhere, with other inputs of the same content; the archive itself is none of them.
        qputenv("TZ", "Asia/Tokyo");
        QFile touched(folder.filePath("in/view/prog"));
        QVERIFY(touched.open(QIODevice::ReadWrite));
        QVERIFY(touched.setFileTime(QDateTime::fromSecsSinceEpoch(1000000000), QFileDevice::FileModificationTime));
        QCOMPARE(Run(folder, order + QStringList{"@/b.zip", "@/in/view", "@/in/fw_7_1_0_v2.0.bin"}).status, 0);
        QCOMPARE(Run(folder, order + QStringList{"@/in/a.zip", "@/in"}).status, 0);
        qunsetenv("TZ");
        const QByteArray zip = stage::ReadFile(folder.filePath("b.zip"));
        QVERIFY(!zip.isEmpty() && zip == stage::ReadFile(folder.filePath("in/a.zip")));

        QStringList entries;
        const FirmwareArchive archive(folder.filePath("b.zip"));
        for (const ArchiveEntry& entry : archive.Entries())
            entries.append(entry.path + (entry.permissions & QFile::ExeOwner ? "*" : ""));
        QCOMPARE(entries,
                 QStringList({"fw_7_1_0_v2.0.bin", "fw_7_1_0_v2.0.bin.sha256", "view/lib/l.so", "view/lib/l.so.sha256",
                              "view/prog*", "view/prog.sha256", "view/prog.ver", "view/prog.ver.sha256"}));
    }

    void PackRefuses_data()
    {
        const Table<stage::Files, QString, QString> row("files", "line", "output");
        const stage::Files image{{"in/fw_7_1_0_v2.0.bin", "x"}};
        row("two in one place", {{"in/a/prog", "x"}, {"in/b/prog", "y"}}, "@/in/b/prog: @/in/a/prog has the same place",
            "");
        row("control character", {{"in/view/a\x1b", "x"}}, "@/in/view/a\\u001b: Its name has characters", "");
        row("changed since", image + stage::Files{{"in/fw_7_1_0_v2.0.bin.sha256", "old"}},
            "@/in/fw_7_1_0_v2.0.bin: Its certificate on the disk", "");
        row("certificate alone", image + stage::Files{{"in/x.sha256", "x"}}, "@/in/x.sha256: It is a certificate", "");
        row("link out", image + stage::Files{{"link", "in/view/link"}}, "@/in/view/link: a link out of the folder", "");
        row("over the limit", image + stage::Files{{"large", "in/view/large"}}, "@/in/view/large: The panel unpacks no",
            "");
        row("by the panel's trial", image + stage::Files{{"in/readme", "x"}}, "@/in/readme: No module takes it", "");
        row("firmware in the output's name", image, "@/firmware.zip: The panel does not make", "firmware.zip");
    }
    void PackRefuses()
    {
        QFETCH(stage::Files, files);
        QFETCH(QString, line);
        QFETCH(QString, output);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        for (const auto& [name, content] : files) {
            stage::WriteFile(folder.filePath(name.startsWith("in/") ? name : "in/view/x.tmp"), content);
            if (name == "link")
                QVERIFY(QFile::link(folder.filePath("updater.json"), folder.filePath(content)));
            else if (name == "large")
                QVERIFY(QFile(folder.filePath(content)).open(QIODevice::WriteOnly)
                        && QFile::resize(folder.filePath(content), FirmwareArchive::LargestEntry + 1));
        }
        const Outcome outcome = Run(folder, {"pack", "--catalogue", "@/updater.json", "--device", "7", "--output",
                                             "@/" + (output.isEmpty() ? "out.zip" : output), "@/in"});
        QVERIFY2(outcome.err.contains("fwkit pack: " + line.replace("@", folder.path())), qPrintable(outcome.err));
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.out, "");
        QCOMPARE(Listing(folder), QStringList({"in", "updater.json"}));
    }

    void FullDisk_data()
    {
        const Table<QStringList, int, QString> row("arguments", "limit", "line");
        row("pack", {"pack", "--catalogue", "@/updater.json", "--device", "7", "--output", "@/a.zip", "@/in"}, 16,
            "pack: @/a.zip: cannot be written (");
        row("certify", {"certify", "@/in"}, 0, "certify: @/in/fw_7_1_0_v2.0.bin.sha256: cannot be written (");
        row("verify", {"verify", "--catalogue", "@/updater.json", "@/b.zip"}, 16,
            "verify: @/b.zip: cannot be unpacked in @ ");
    }
    void FullDisk()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, limit);
        QFETCH(QString, line);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        const QByteArray image = stage::Image("2.0", 100000);
        WriteFiles(folder, {{"in/fw_7_1_0_v2.0.bin", image}, {"a.zip", "old"}});
        stage::WriteZip(folder.filePath("b.zip"), {{"a", image}});
        const Outcome outcome = Run(folder, arguments, limit);
        QCOMPARE(outcome.status, 2);
        QVERIFY2(outcome.err.startsWith("fwkit " + line.replace("@", folder.path())), qPrintable(outcome.err));
        QCOMPARE(outcome.err.count('\n'), 1);
        QCOMPARE(stage::ReadFile(folder.filePath("a.zip")), "old");
        QCOMPARE(Listing(folder), QStringList({"a.zip", "b.zip", "in", "updater.json"}));
        QCOMPARE(QDir(folder.filePath("in")).entryList(QDir::Files | QDir::Hidden), QStringList("fw_7_1_0_v2.0.bin"));
    }

    void Misuse_data()
    {
        const Table<QStringList, QString> row("arguments", "line");
        const QStringList pack{"pack", "--catalogue", "@/updater.json", "--device", "7"};
        const QStringList verify{"verify", "--catalogue"};
        row("no verb", {}, ": no verb");
        row("unknown verb", {"x\x1b"}, " x\\u001b: x\\u001b: no such verb");
        row("unknown option", {"verify", "--x"}, " verify: Unknown option 'x'.");
        row("no catalogue named", {"verify", "@/a.zip"}, " verify: --catalogue is missing");
        row("no such catalogue", verify + QStringList{"@/x", "@/a.zip"}, " verify: @/x: cannot be read (No such");
        row("no device in it", verify + QStringList{"@/in/file", "@/a.zip"},
            " verify: @/in/file: the panel reads no device");
        row("no such device", verify + QStringList{"@/updater.json", "--device", "8", "x"},
            " verify: @/updater.json: no device has IdDev 8; choose one of 7");
        row("no archive", verify + QStringList{"@/updater.json"}, " verify: name one archive");
        row("folder for an archive", verify + QStringList{"@/updater.json", "@/in"}, " verify: @/in: cannot be read (");
        row("no output", pack + QStringList{"@/in"}, " pack: --output is missing");
        row("no input", pack + QStringList{"--output", "@/a.zip"}, " pack: name the files");
        row("missing input", pack + QStringList{"--output", "@/a.zip", "@/x"}, " pack: @/x: no such file or folder");
        row("nothing in it", pack + QStringList{"--output", "@/a.zip", "@/empty"}, " pack: the inputs hold no file");
        row("unreadable input", pack + QStringList{"--output", "@/a.zip", "/proc/self/mem"},
            " pack: /proc/self/mem: cannot");
        row("no folder for it", pack + QStringList{"--output", "@/x/a.zip", "@/target"},
            " pack: @/x/a.zip: its folder takes");
        row("a device as output", pack + QStringList{"--output", "/dev/null", "@/in"},
            " pack: /dev/null: is no regular");
        row("unreadable file", {"certify", "/proc/self/mem"}, " certify: /proc/self/mem: cannot be read to its end");
        row("no file", {"certify", "@/in/file", "@/x"}, " certify: @/x: no such file or folder");
        row("a certificate", {"certify", "@/in/c.sha256"}, " certify: @/in/c.sha256: a certificate, hidden");
        row("certificate is a link", {"certify", "@/in/linked"}, " certify: @/in/linked.sha256: is no regular file");
    }
    void Misuse()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, line);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        WriteFiles(folder, {{"in/file", "{}"}, {"in/c.sha256", "x"}, {"in/linked", "x"}, {"target", "kept"}});
        QFile::link(folder.filePath("target"), folder.filePath("in/linked.sha256"));
        QDir(folder.path()).mkpath("empty");
        const Outcome outcome = Run(folder, arguments);
        QCOMPARE(outcome.status, 2);
        QVERIFY2(outcome.err.startsWith("fwkit" + line.replace("@", folder.path())), qPrintable(outcome.err));
        QCOMPARE(outcome.err.count('\n'), 1);
        QCOMPARE(stage::ReadFile(folder.filePath("target")), "kept");
        QVERIFY(!QFileInfo::exists(folder.filePath("a.zip")) && !QFileInfo::exists(folder.filePath("in/file.sha256")));
    }

    void Certify()
    {
        const QTemporaryDir folder;
        WriteFiles(folder, {{"in/a.bin", "image"},
                            {"in/b/prog", "code"},
                            {"in/b/prog.sha256", "wrong"},
                            {"in/.h/x", ""},
                            {"in/.hidden", ""},
                            {"in/x.tmp", ""},
                            {"outside/x", ""}});
        QFile::link(folder.filePath("outside"), folder.filePath("in/folder"));
        QFile::link(folder.filePath("outside/x"), folder.filePath("in/file"));
        const Outcome outcome = Run(folder, {"certify", "@/in"});
        QCOMPARE(outcome.status, 0);
        QVERIFY(outcome.out.contains("2 certificates written, 0 were right already."));
        QCOMPARE(outcome.out.count("left out"), 5);
        const auto digest = [](const char* text) { return QCryptographicHash::hash(text, QCryptographicHash::Sha256); };
        QCOMPARE(stage::ReadFile(folder.filePath("in/a.bin.sha256")), digest("image"));
        QCOMPARE(stage::ReadFile(folder.filePath("in/b/prog.sha256")), digest("code"));
        QCOMPARE(QDir(folder.filePath("in")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList({".h", ".hidden", "a.bin", "a.bin.sha256", "b", "file", "folder", "x.tmp"}));
        QCOMPARE(QDir(folder.filePath("outside")).entryList(QDir::Files), QStringList("x"));

        // What is right is not even rewritten.
        const QDateTime written = QFileInfo(folder.filePath("in/a.bin.sha256")).lastModified();
        stage::WriteFile(folder.filePath("in/b/prog"), "new");
        QVERIFY(Run(folder, {"certify", "@/in/a.bin", "@/in/b"}).out.contains("1 certificates written, 1 were right"));
        QCOMPARE(QFileInfo(folder.filePath("in/a.bin.sha256")).lastModified(), written);
        QCOMPARE(stage::ReadFile(folder.filePath("in/b/prog.sha256")), digest("new"));
    }
};

QTEST_GUILESS_MAIN(TestFwkit)
#include "tst_fwkit.moc"
