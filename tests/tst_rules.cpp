// How answers, file names, certificates and pairs of versions are interpreted.

#include "Answers.h"
#include "FirmwareFiles.h"
#include "Table.h"
#include "TestData.h"
#include "UpdateRecord.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(Certificate)

class TestRules : public QObject
{
    Q_OBJECT

private slots:
    void TypeAndSerial_data()
    {
        const Table<QString, QString, QString> row("answer", "type", "serial");
        row("as it should be", "WORD value;", "value", "value");
        row("one word", "WORD;", "", "WORD");
        row("empty", "", "", "");
        row("doubled space", "WORD  value;", "", "value");
        row("; in the middle", "WORD va;lue more;", "value", "more");
        row("not ASCII", "WORD \u00e9\u00ff;", "\u00e9\u00ff", "\u00e9\u00ff");
        row("closing space", "WORD value ;", "value", "");
    }
    void TypeAndSerial()
    {
        QFETCH(QString, answer);
        QTEST(DeviceTypeIn(answer), "type");
        QTEST(SerialIn(answer), "serial");
    }

    void Version_data()
    {
        const Table<QString, int, QString> row("answer", "idCpu", "version");
        row("two words, first processor", "VER 1.5;", 0, "1.5");
        row("two words, any processor", "VER 1.5;", 2, "1.5");
        row("many words", "VER 1.5 2.0 3;", 1, "2.0");
        row("too few for the processor", "VER 1.5 2.0;", 2, "nothing");
        row("doubled space", "VER  1.5;", 0, "");
        row("negative processor", "VER 1 2;", -2, "nothing");
        row("absurd processor", "VER 1 2;", 2147483647, "nothing");
    }
    void Version()
    {
        QFETCH(QString, answer);
        QFETCH(int, idCpu);
        QTEST(VersionIn(answer, idCpu).value_or("nothing"), "version");
    }

    void Entry_data()
    {
        const Table<int, QString, bool> row("idCpu", "entry", "fits"); // idCpu -1: a program module
        row("own image", 0, "any/folder/fw_3_2_0_v1.4.7.bin", true);
        row("own rpd", 1, "fw_3_2_1_v1.rpd", true);
        row("wrong kind for a first processor", 0, "fw_3_2_0_v1.rpd", false);
        row("wrong kind for another processor", 1, "fw_3_2_1_v1.bin", false);
        row("other unit", 0, "fw_3_21_0_v1.bin", false);
        row("other case", 0, "FW_3_2_0_v1.bin", false);
        row("text after the extension", 0, "fw_3_2_0_v1.bin.txt", false);
        row("program file", -1, "viewer/my-viewer", true);
        row("companion of a program file", -1, "viewer/my-viewer.ver", false);
        row("program folder with a dot", -1, "viewer-1.0/my-viewer", false);
    }
    void Entry()
    {
        QFETCH(int, idCpu);
        QFETCH(QString, entry);
        const TBoardRecord board = idCpu < 0 ? testdata::Program("p", "viewer", "my-viewer")
                                             : testdata::Board("b", "T", "127.0.0.1", 1, 2, idCpu);
        QTEST(EntryFits(entry, NamePrefix(FilePattern(testdata::Device("d", 3, {board}), board)), board), "fits");
    }

    void NameVersion_data()
    {
        const Table<QString> row("version");
        row("fw_3_2_0_v1.4.7.bin", "1.4.7");
        row("fw_3_2_1_v2.rpd", "2");
        row("a_b/fw_3_2_0_v1.5.bin", "1.5");
        row("fw_3_2_v1.bin", "BAD");
        row("fw_3_2_0_v1.txt", "BAD");
        row("fw_3_2_0_v1.bin.rpd", "1.bin");
        row("fw_3_2_0_.bin", "");
        row("", "BAD");
    }
    void NameVersion() { QTEST(VersionInName(QTest::currentDataTag()), "version"); }

    void Row_data()
    {
        const Table<QString, QString, bool, bool, bool> row("current", "offered", "valid", "upToDate", "takesFile");
        row("newer", "1.5", "1.6", true, false, true);
        row("as numbers 1.10 is older than 1.9", "1.10", "1.9", true, false, true);
        row("1.50 equals 1.5", "1.5", "1.50", true, true, true);
        row("older", "2", "1", true, true, true);
        row("three parts count as 0", "1.4.6", "1.4.7", true, true, true);
        row("from no number to a number", "BAD", "1", true, false, true);
        row("nothing offered", "1", "", false, true, true);
        row("not read", "???", "2", false, true, false);
        row("empty", "", "2", false, true, false);
    }
    void Row()
    {
        QFETCH(QString, current);
        QFETCH(QString, offered);
        const RowVerdict verdict = JudgeRow(current, offered);
        QTEST(verdict.valid, "valid");
        QTEST(verdict.upToDate, "upToDate");
        QTEST(verdict.takesFile, "takesFile");
    }

    void CertificateOf_data()
    {
        const QByteArray digest = QCryptographicHash::hash("firmware", QCryptographicHash::Sha256);
        const Table<bool, QByteArray, Certificate> row("readable", "certificate", "verdict");
        row("raw digest", true, digest, Certificate::Matches);
        row("hexadecimal", true, digest.toHex(), Certificate::Different);
        row("short", true, digest.first(31), Certificate::Different);
        row("long", true, digest + '\n', Certificate::Different);
        row("of another file", true, QByteArray(32, 'x'), Certificate::Different);
        row("empty", true, "", Certificate::Different);
        row("missing", true, QByteArray(), Certificate::Missing);
        row("unreadable file", false, digest, Certificate::Different);
        row("unreadable file, empty certificate", false, "", Certificate::Matches);
    }
    void CertificateOf()
    {
        QFETCH(bool, readable);
        QFETCH(QByteArray, certificate);
        const QTemporaryDir folder;
        const QString path = folder.filePath("fw.bin");
        if (readable)
            testdata::WriteFile(path, "firmware");
        if (!certificate.isNull())
            testdata::WriteFile(path + ".sha256", certificate);
        const FileDigest digest = ReadDigest(path);
        QCOMPARE(digest.opened, readable);
        QTEST(JudgeCertificate(path, digest.sha256), "verdict");
    }

    void ReadErrorEndsTheHash()
    {
        // Can be opened, but reading its first byte fails, as on a removed USB stick.
        const FileDigest digest = ReadDigest("/proc/self/mem");
        QVERIFY(digest.opened);
        QVERIFY(digest.sha256.isEmpty());
    }

    void WhereTheDialogOpens()
    {
        const QTemporaryDir media;
        const auto folder = [&](bool firmware, const QString& host) {
            return StartFolder("/opt/u", firmware, host, media.path());
        };
        QDir(media.path()).mkpath("orangepi");
        QCOMPARE(folder(false, "orangepizero2"), "/opt/u");
        QCOMPARE(folder(true, "orangepizero2"), "/opt/u/firmware");
        QDir(media.path()).mkpath("orangepi/STICK");
        QCOMPARE(folder(true, "orangepizero2"), media.filePath("orangepi"));
        QCOMPARE(folder(false, "raspberrypi"), "/opt/u");
        QDir(media.path()).mkpath("rpi/STICK");
        QCOMPARE(folder(false, "raspberrypi"), media.filePath("rpi"));
    }

    void RecordIsOneLine_data()
    {
        const Table<QString, QByteArray> row("line", "json"); // with ' for "
        row("unknown is null", RecordLine("r", RunStart{}),
            "{'device':null,'event':'start','instrument':null,'marked':0,'program':'','run':'r','serial':null}");
        row("unknown versions are null",
            RecordLine("r", ModuleRecord{.name = "a",
                                         .before = "???",
                                         .offered = "BAD",
                                         .after = "",
                                         .file = "f",
                                         .size = {},
                                         .sha256 = {}}),
            "{'after':null,'before':null,'event':'module','file':'f','kind':'firmware','name':'a','offered':null,"
            "'outcome':'updated','run':'r','seconds':0,'sha256':null,'size':null}");
        // The JSON of Qt has no escape for the last three.
        row("line ends in names",
            RecordLine("r", ModuleRecord{.name = "a\n\t\u0085\u2028\x7f",
                                         .isProgram = true,
                                         .before = "1.0\n",
                                         .offered = "2",
                                         .after = "2",
                                         .file = "f",
                                         .size = 5,
                                         .sha256 = "\xab",
                                         .seconds = 1.25}),
            "{'after':'2','before':'1.0','event':'module','file':'f','kind':'program',"
            "'name':'a\\n\\t\\u0085\\u2028\\u007f','offered':'2','outcome':'updated','run':'r','seconds':1.25,"
            "'sha256':'ab','size':5}");
        row("end", RecordLine("r", RunEnd{.succeeded = true, .backup = true, .modules = 3}),
            "{'backup':true,'event':'end','modules':3,'outcome':'success','run':'r','stopped':false}");
    }
    void RecordIsOneLine()
    {
        QFETCH(QString, line);
        QTEST(line.section(' ', 1).replace('"', '\'').toUtf8(), "json");
        QCOMPARE(line.section(' ', 0, 0), "UpdateRecord");
    }
};

QTEST_APPLESS_MAIN(TestRules)
#include "tst_rules.moc"
