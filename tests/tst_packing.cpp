// The archives and certificates that fwkit writes: identical in each run, and written completely or not at all.

#include "FirmwareArchive.h"
#include "Fwkit.h"
#include "Table.h"
#include "ZipMaker.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

#include <csignal>
#include <fstream>
#include <sys/stat.h>

namespace {

const QStringList PackOrder{"pack", "--catalogue", "@/updater.json", "--device", "7", "--output"};

QByteArray LargeZip()
{
    const QByteArray content(50 << 20, '\0');
    const QByteArray packed = Deflated(content);
    QList<MadeEntry> entries;
    for (char name = 'a'; name < 'u'; ++name)
        entries.append({.name = {1, name}, .content = content, .packed = packed});
    return MakeZip(entries);
}

/// An image in the folder "in" and an archive "large.zip", both large enough to keep fwkit busy for a while.
void WriteLarge(const QTemporaryDir& folder)
{
    static const QByteArray Zip = LargeZip();
    WriteCatalogue(folder);
    WriteFiles(folder, {{"in/fw_7_1_0_v2.0.bin", {}}, {"large.zip", Zip}});
    QFile::resize(folder.filePath("in/fw_7_1_0_v2.0.bin"), 200 << 20);
}

/// Waits until a run has begun to write into its folder named `kind`, and returns the names of all such folders.
QStringList BusyFolders(const QProcess& process, const QTemporaryDir& folder, int count, const QString& kind)
{
    QStringList busy;
    while (busy.size() < count && process.state() == QProcess::Running) {
        busy.clear();
        QTest::qWait(1);
        for (const QString& name : Listing(folder).filter(kind)) {
            if (QDir(folder.filePath(name)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size() > 1)
                busy.append(name);
        }
    }
    return busy;
}

} // namespace

class TestPacking : public QObject
{
    Q_OBJECT

private slots:
    void PackIsTheSameEachTime()
    {
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        for (const auto& [name, content] : Good())
            testdata::WriteFile(folder.filePath("firmware/" + name), content);
        WriteFiles(folder, {{"firmware/.hidden", "x"}, {"firmware/old~", "x"}});
        QFile::setPermissions(folder.filePath("firmware/view/prog"), QFile::Permissions::fromInt(0x7700));
        const Outcome first = Run(folder, PackOrder + QStringList{"@/firmware/a.zip", "@/firmware"});
        QVERIFY2(first.status == 0, qPrintable(first.err));
        QCOMPARE(first.err.count("left out"), 2);
        QVERIFY(first.err.contains("The folder's name contains \"firmware\""));
        const QByteArray zip = testdata::ReadFile(folder.filePath("firmware/a.zip"));

        // At a later time and in another folder, from copies of the inputs; an archive in the folder is not packed.
        qputenv("TZ", "Asia/Tokyo");
        QFile touched(folder.filePath("firmware/view/prog"));
        QVERIFY(touched.open(QIODevice::ReadWrite));
        QVERIFY(touched.setFileTime(QDateTime::fromSecsSinceEpoch(1000000000), QFileDevice::FileModificationTime));
        QCOMPARE(
            Run(folder, PackOrder + QStringList{"@/b.zip", "@/firmware/view", "@/firmware/fw_7_1_0_v2.0.bin"}).status,
            0);
        const QStringList again{"@/firmware/a.zip", "@/firmware"};
        QVERIFY(Run(folder, PackOrder + again).err.contains("a.zip: is there already; "));
        QVERIFY(zip == testdata::ReadFile(folder.filePath("firmware/a.zip")));
        QCOMPARE(Run(folder, PackOrder + again + QStringList{"--force"}).status, 0);
        qunsetenv("TZ");
        QVERIFY(!zip.isEmpty() && zip == testdata::ReadFile(folder.filePath("b.zip")));
        QVERIFY(zip == testdata::ReadFile(folder.filePath("firmware/a.zip")));

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
        const Table<testdata::Files, QStringList> row("files", "lines");
        const testdata::Files image{{"in/fw_7_1_0_v2.0.bin", testdata::Image("2.0", 100000)}};
        row("two in one place", {{"in/a/prog", "x"}, {"in/b/prog", "y"}},
            {"@/in/b/prog: @/in/a/prog has the same place"});
        row("control character", {{"in/view/a\x1b", "x"}}, {"@/in/view/a\\u001b: Its name has characters"});
        row("certificate alone", image + testdata::Files{{"in/x.sha256", "x"}}, {"@/in/x.sha256: It is a certificate"});
        row("link out", image + testdata::Files{{"link", "in/view/link"}},
            {"@/in/view/link: a link out of the folder"});
        row("link to nothing", image + testdata::Files{{"dangling", "in/view/link"}},
            {"@/in/view/link: a link that leads nowhere"});
        row("name in other bytes", image + testdata::Files{{"bytes", ""}}, {"@/in/\uFFFD: its name is no UTF-8"});
        row("over the limit", image + testdata::Files{{"large", "in/view/large"}},
            {"@/in/view/large: The panel unpacks no"});
        row("all at once", image + testdata::Files{{"in/readme", "x"}, {"in/fw_7_1_0_v2.0.bin.sha256", "old"}},
            {"@/in/fw_7_1_0_v2.0.bin: Its certificate on the disk", "@/firmware.zip: The panel does not make",
             "@/in/readme: No module takes it"});
    }
    void PackRefuses()
    {
        QFETCH(testdata::Files, files);
        QFETCH(QStringList, lines);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        for (const auto& [name, content] : files) {
            testdata::WriteFile(folder.filePath(name.startsWith("in/") ? name : "in/view/x.tmp"), content);
            if (name == "link")
                QVERIFY(QFile::link(folder.filePath("updater.json"), folder.filePath(content)));
            else if (name == "dangling")
                QVERIFY(QFile::link(folder.filePath("nowhere"), folder.filePath(content)));
            else if (name == "bytes")
                std::ofstream(folder.filePath("in/").toStdString() + '\xFF') << 'x';
            else if (name == "large")
                QVERIFY(QFile(folder.filePath(content)).open(QIODevice::WriteOnly)
                        && QFile::resize(folder.filePath(content), FirmwareArchive::LargestEntry + 1));
        }
        const QString output = lines.size() > 1 ? "@/firmware.zip" : "@/out.zip";
        // Under the limit the archive of the image cannot be written: everything must be said before.
        const Outcome outcome = Run(folder, PackOrder + QStringList{output, "@/in"}, 16);
        for (const QString& line : lines.replaceInStrings("@", folder.path()))
            QVERIFY2(outcome.err.contains("fwkit pack: " + line), qPrintable(outcome.err));
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.out, "");
        QCOMPARE(Listing(folder), QStringList({"in", "updater.json"}));
    }

    void FullDisk_data()
    {
        const Table<QStringList, int, QString> row("arguments", "limit", "line");
        row("pack", PackOrder + QStringList{"@/a.zip", "-qf", "@/in"}, 16, "pack: @/a.zip: cannot be written (");
        row("certify", {"certify", "@/in"}, 0, "certify: @/in/fw_7_1_0_v2.0.bin.sha256: cannot be written (");
        row("verify", {"verify", "-q", "--catalogue", "@/updater.json", "@/b.zip"}, 16,
            "verify: @/b.zip: cannot be unpacked in @ ");
    }
    void FullDisk()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, limit);
        QFETCH(QString, line);
        const QTemporaryDir folder;
        WriteCatalogue(folder);
        const QByteArray image = testdata::Image("2.0", 100000);
        WriteFiles(folder, {{"in/fw_7_1_0_v2.0.bin", image}, {"a.zip", "old"}});
        testdata::WriteZip(folder.filePath("b.zip"), {{"a", image}});
        const Outcome outcome = Run(folder, arguments, limit);
        QCOMPARE(outcome.status, 2);
        QVERIFY2(outcome.err.startsWith("fwkit " + line.replace("@", folder.path())), qPrintable(outcome.err));
        QCOMPARE(outcome.err.count('\n'), 1);
        QCOMPARE(testdata::ReadFile(folder.filePath("a.zip")), "old");
        QCOMPARE(Listing(folder), QStringList({"a.zip", "b.zip", "in", "updater.json"}));
        QCOMPARE(QDir(folder.filePath("in")).entryList(QDir::Files | QDir::Hidden), QStringList("fw_7_1_0_v2.0.bin"));
    }

    void SignalsLeaveNothing_data()
    {
        const Table<QStringList, int> row("arguments", "signal");
        const QStringList pack = PackOrder + QStringList{"@/a.zip", "--force", "@/in"};
        const QStringList verify{"verify", "--catalogue", "@/updater.json", "@/large.zip"};
        row("pack, interrupted", pack, SIGINT);
        row("pack, terminated", pack, SIGTERM);
        row("pack, terminal closed", pack, SIGHUP);
        row("pack, reader gone", pack, SIGPIPE);
        row("verify, interrupted", verify, SIGINT);
        row("verify, terminated", verify, SIGTERM);
    }
    void SignalsLeaveNothing()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, signal);
        const QTemporaryDir folder;
        WriteLarge(folder);
        testdata::WriteFile(folder.filePath("a.zip"), "old");
        QProcess process;
        Start(process, folder, arguments);
        QCOMPARE(BusyFolders(process, folder, 1, arguments.first() == "pack" ? ".fwkit-" : "fwkit-").size(), 1);
        QCOMPARE(::kill(pid_t(process.processId()), signal), 0);
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        QCOMPARE(process.exitCode(), signal);
        QCOMPARE(Listing(folder), QStringList({"a.zip", "in", "large.zip", "updater.json"}));
        QCOMPARE(testdata::ReadFile(folder.filePath("a.zip")), "old");
    }

    void KilledRunsAreTidiedUpAfter()
    {
        const QTemporaryDir folder;
        WriteLarge(folder);
        WriteFiles(folder, {{"small/fw_7_1_0_v2.0.bin", "x"}, {".fwkit-backup/own", "x"}});
        QProcess living;
        Start(living, folder, PackOrder + QStringList{"@/living.zip", "@/in"});
        const QStringList kept = BusyFolders(living, folder, 1, ".fwkit-");
        ::kill(pid_t(living.processId()), SIGSTOP);
        QProcess killed;
        Start(killed, folder, PackOrder + QStringList{"@/killed.zip", "@/in"});
        QCOMPARE(BusyFolders(killed, folder, 2, ".fwkit-").size(), 2);
        killed.kill();
        QVERIFY(killed.waitForFinished());
        QCOMPARE(Listing(folder).filter("fwkit-").size(), 3);

        QCOMPARE(Run(folder, PackOrder + QStringList{"@/next.zip", "@/small"}).status, 0);
        QStringList left = Listing(folder).filter("fwkit-");
        left.removeOne(".fwkit-backup");
        QCOMPARE(left, kept);
        ::kill(pid_t(living.processId()), SIGCONT);
        living.terminate();
        QVERIFY(living.waitForFinished());
        QCOMPARE(Listing(folder).filter("fwkit-"), QStringList(".fwkit-backup"));
    }

    void Misuse_data()
    {
        const Table<QStringList, QString> row("arguments", "line");
        const QStringList pack{"pack", "-q", "--catalogue", "@/updater.json", "--device", "7"};
        const QStringList verify{"verify", "-q", "--catalogue"};
        row("no verb", {}, ": no verb");
        row("unknown verb", {"x\x1b"}, ": x\\u001b: no such verb; see");
        row("misspelt verb", {"Verfy"}, ": Verfy: no such verb; did you mean verify?");
        row("unknown option", {"verify", "--x"}, " verify: Unknown option 'x'. See fwkit verify --help.");
        row("no catalogue named", {"verify", "@/a.zip"}, " verify: missing: --catalogue; see --help");
        row("nothing named", {"pack"}, " pack: missing: --catalogue, --device, --output, FILE|FOLDER...; see");
        row("two devices", pack + QStringList{"-d", "8"}, " pack: --device is given more than once");
        row("no such catalogue", verify + QStringList{"@/x", "@/a.zip"},
            " verify: @/x: cannot be read (No such file or directory); name a readable catalogue");
        row("no device in it", verify + QStringList{"@/in/file", "@/a.zip"},
            " verify: @/in/file: the panel reads no device");
        row("no such device", verify + QStringList{"@/updater.json", "--device", "8", "x"},
            " verify: @/updater.json: no device has IdDev 8; choose one of 7 (П) with");
        row("no archive", verify + QStringList{"@/updater.json"}, " verify: missing: FILE.zip");
        row("folder for an archive", verify + QStringList{"@/updater.json", "@/in"}, " verify: @/in: cannot be read (");
        row("no output", pack + QStringList{"@/in"}, " pack: missing: --output;");
        row("no input", pack + QStringList{"--output", "@/a.zip"}, " pack: missing: FILE|FOLDER");
        row("missing input", pack + QStringList{"--output", "@/a.zip", "@/x"}, " pack: @/x: no such file or folder");
        row("link to nothing", {"certify", "@/nowhere"}, " certify: @/nowhere: a link that leads nowhere");
        row("catalogue through a broken link", {"devices", "@/nowhere"},
            " devices: @/nowhere: cannot be read (a link that");
        row("pipe as input", pack + QStringList{"--output", "@/a.zip", "@/fifo"}, " pack: @/fifo: no regular file");
        row("nothing in it", pack + QStringList{"--output", "@/a.zip", "@/empty"}, " pack: the inputs hold no file");
        row("unreadable input", pack + QStringList{"--output", "@/a.zip", "/proc/self/mem"},
            " pack: /proc/self/mem: cannot");
        row("no folder for it", pack + QStringList{"--output", "@/x/a.zip", "@/target"},
            " pack: @/x/a.zip: its folder takes");
        row("a pipe as output", pack + QStringList{"--output", "@/fifo", "@/target"}, " pack: @/fifo: is no regular");
        row("no file", {"certify", "@/in/file", "@/x"}, " certify: @/x: no such file or folder");
        row("certificates alone", {"certify", "@/in/c.sha256"}, " certify: nothing to certify");
        row("nothing below", {"certify", "@/empty"}, " certify: nothing to certify");
        row("both ways", {"certify", "--check", "--force", "@/in"}, " certify: --check only looks and");
        row("packed certificates", pack + QStringList{"--output", "@/a.zip", "@/in/c.sha256"},
            " pack: the inputs hold no file");
        row("output there", pack + QStringList{"--output", "@/target", "@/x"}, " pack: @/target: is there already");
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
        QFile::link(folder.filePath("x"), folder.filePath("nowhere"));
        QDir(folder.path()).mkpath("empty");
        QCOMPARE(::mkfifo(qPrintable(folder.filePath("fifo")), 0600), 0);
        const Outcome outcome = Run(folder, arguments);
        QCOMPARE(outcome.status, 2);
        QVERIFY2(outcome.err.startsWith("fwkit" + line.replace("@", folder.path())), qPrintable(outcome.err));
        QCOMPARE(outcome.err.count('\n'), 1);
        QCOMPARE(testdata::ReadFile(folder.filePath("target")), "kept");
        QVERIFY(!QFileInfo::exists(folder.filePath("a.zip")) && !QFileInfo::exists(folder.filePath("in/file.sha256")));
    }

    void Certify_data()
    {
        const Table<QStringList, QStringList, QString> row("arguments", "printed", "right");
        const QString different = "b/prog: It does not match its certificate, which stays as it is";
        const QString empty = "none: It is empty and gets no certificate";
        const QString odd = "\uFFFD: its name is no UTF-8";
        row("first", {"@/in"}, {"a.bin: new", "c.bin: unchanged", odd, different, empty}, "a.bin c.bin");
        row("named by a shell", {"@/in/a.bin", "@/in/c.bin", "@/in/c.bin.sha256", "@/in/x.tmp"},
            {"a.bin: new", "c.bin: unchanged"}, "a.bin c.bin");
        row("only looked", {"--check", "@/in"},
            {"c.bin: unchanged", odd, "a.bin: It has no certificate", different, empty}, "c.bin");
        row("forced", {"--force", "@/in"}, {"a.bin: new", "b/prog: replaced", "c.bin: unchanged", "none: new", odd},
            "a.bin b/prog c.bin none");
    }
    void Certify()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, printed);
        const QTemporaryDir folder;
        const auto digest = [](const QByteArray& text) {
            return QCryptographicHash::hash(text, QCryptographicHash::Sha256);
        };
        const testdata::Files files{{"a.bin", "image"}, {"b/prog", "code"}, {"c.bin", "same"}, {"none", ""},
                                    {".h/x", "x"},      {".hidden", "x"},   {"x.tmp", "x"}};
        for (const auto& [name, content] : files)
            testdata::WriteFile(folder.filePath("in/" + name), content);
        WriteFiles(folder, {{"in/b/prog.sha256", "other"}, {"in/c.bin.sha256", digest("same")}, {"outside/x", "x"}});
        QFile::link(folder.filePath("outside"), folder.filePath("in/folder"));
        QFile::link(folder.filePath("outside/x"), folder.filePath("in/file"));
        const std::string odd = folder.path().toStdString() + "/in/\xFF";
        std::ofstream(odd) << 'x';
        QFile same(folder.filePath("in/c.bin.sha256"));
        const QDateTime before = QDateTime::fromSecsSinceEpoch(1000000000);
        QVERIFY(same.open(QIODevice::ReadWrite) && same.setFileTime(before, QFileDevice::FileModificationTime));
        same.close();

        const Outcome outcome = Run(folder, QStringList{"certify"} + arguments);
        std::remove(odd.c_str()); // QTemporaryDir could not
        QString text = outcome.out + outcome.err;
        QStringList lines = text.remove("fwkit certify: ").remove(folder.path() + "/in/").split('\n');
        QCOMPARE(lines.filter("left out").size(), arguments.last() == "@/in" ? 5 : 1);
        lines.replaceInStrings(QRegularExpression("; .*|.*left out.*|^Certificates: .*"), "");
        lines.removeAll({});
        QCOMPARE(lines, printed);
        QCOMPARE(outcome.status, outcome.err.isEmpty() ? 0 : 1);

        QStringList right;
        for (const auto& [name, content] : files) {
            if (testdata::ReadFile(folder.filePath("in/" + name + ".sha256")) == digest(content))
                right.append(name);
        }
        QTEST(right.join(' '), "right");
        QCOMPARE(QDir(folder.filePath("outside")).entryList(QDir::Files), QStringList("x"));
        // A correct certificate is not rewritten.
        QCOMPARE(QFileInfo(folder.filePath("in/c.bin.sha256")).lastModified(), before);
    }
};

QTEST_GUILESS_MAIN(TestPacking)
#include "tst_packing.moc"
