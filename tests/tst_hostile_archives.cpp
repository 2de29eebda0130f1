// Archives from an untrusted USB stick, opened in the real window: what the operator sees, what is on the disk
// afterwards, and how much memory was needed. Nothing outside of the extraction folder ever changes.

#include "AlertRecorder.h"
#include "FirmwareArchive.h"
#include "ScriptedBoard.h"
#include "Tree.h"
#include "WindowFixture.h"
#include "ZipMaker.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QTableWidget>
#include <QTest>

#include <malloc.h>

using namespace std::chrono_literals;

namespace {

using Entries = QList<MadeEntry>;
using Prepare = std::function<void(const QString& folder)>;

constexpr char Fw[] = "fw_7_1_0_v2.0.bin";
const QStringList FwTree{"fw_7_1_0_v2.0.bin=IMAGE", "fw_7_1_0_v2.0.bin.sha256:32"};
const QStringList EmptyFwTree{"fw_7_1_0_v2.0.bin=", "fw_7_1_0_v2.0.bin.sha256:32"};

MadeEntry CertificateOf(const MadeEntry& entry)
{
    return {.name = entry.name + ".sha256",
            .content = QCryptographicHash::hash(entry.content, QCryptographicHash::Sha256),
            .flags = entry.flags};
}

/// An image that fits the row, and its certificate.
Entries Image(MadeEntry entry = {})
{
    entry.name = entry.name.isEmpty() ? QByteArray(Fw) : entry.name;
    entry.content = entry.content.isEmpty() ? QByteArray("IMAGE") : entry.content;
    return {entry, CertificateOf(entry)};
}

QByteArray Changed(QByteArray zip, qsizetype at, const QByteArray& bytes)
{
    return zip.replace(at, bytes.size(), bytes);
}

/// In KiB.
qint64 Memory(const QByteArray& name)
{
    const QByteArray status = testdata::ReadFile("/proc/self/status");
    return status.mid(status.indexOf(name) + name.size()).trimmed().split(' ').first().toLongLong();
}

} // namespace

Q_DECLARE_METATYPE(Prepare)

class TestHostileArchives : public QObject
{
    Q_OBJECT

    const QTemporaryDir m_root;
    ScriptedBoard m_board;
    std::unique_ptr<WindowFixture> m_fixture;

    struct Seen
    {
        QString version = "2.0"; ///< that the row offers
        QStringList tree = FwTree;
        QStringList alerts = {};
        bool popupStays = false;
        Prepare prepare = [](const QString&) {};
    };
    static void Row(const QByteArray& name, const QByteArray& zip, const Seen& seen)
    {
        QTest::newRow(name.constData()) << zip << seen.version << seen.tree << seen.alerts << seen.popupStays
                                        << seen.prepare;
    }
    static QString Different(const QString& name)
    {
        return "Внимание!: Не соответствует сертификат " + name + ".sha256";
    }
    void Refused();
    void Harmless();
    void Damaged();
    void NoArchive();
    void OnTheDisk();
    void Bombs();

private slots:
    void initTestCase()
    {
        QVERIFY(QDir(m_root.path()).mkpath("a/temporary/firmware"));
        qputenv("TMPDIR", m_root.filePath("a/temporary").toUtf8());
        for (const char* folder : {"", "a/", "a/temporary/", "a/temporary/firmware-decoy/"})
            testdata::WriteFile(m_root.filePath(QString(folder) + "x"), "decoy");
        m_fixture = std::make_unique<WindowFixture>();
        m_fixture->Open({testdata::Device("П", 7, {m_board.Record("a", 1, 0)})});
        QVERIFY2(m_fixture->driver.Run(), qPrintable(m_fixture->driver.Failure));
    }

    void Gallery_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<QStringList>("alerts");
        QTest::addColumn<bool>("popupStays");
        QTest::addColumn<Prepare>("prepare");
        Row("good", MakeZip(Image()), {});
        Refused();
        Harmless();
        Damaged();
        NoArchive();
        OnTheDisk();
        Bombs();
    }
    void Gallery()
    {
        QFETCH(QByteArray, zip);
        QFETCH(Prepare, prepare);
        const QString folder = m_root.filePath("a/temporary/firmware");
        QDir(folder).removeRecursively();
        QDir().mkdir(folder);
        prepare(folder);
        const QStringList before = Tree(m_root.path(), "a/temporary/firmware/");
        testdata::WriteFile(WindowFixture::Path("new.zip"), zip);
        QTableWidgetItem* offered = m_fixture->window->findChild<QTableWidget*>("tableWidget")->item(0, 2);
        offered->setText("");
        AlertRecorder alerts;
        int looks = 0;
        m_fixture->driver.Press("buttonArchive");
        m_fixture->driver.ChooseFile("Открыть архив с прошивками", "new.zip");
        m_fixture->driver.Step("the end", [&] {
            const QWidget* modal = QApplication::activeModalWidget();
            looks = modal && modal->windowType() == Qt::ToolTip ? looks + 1 : 0;
            return looks > 10 || (m_fixture->Controls() == "idle" && UiDriver::IsReachable(m_fixture->window.get()));
        });
        // Reset the peak, or the memory that an earlier row has freed would hide it.
        malloc_trim(0);
        testdata::WriteFile("/proc/self/clear_refs", "5");
        const qint64 memory = Memory("VmRSS:");
        QVERIFY2(m_fixture->driver.Run(2min), qPrintable(m_fixture->driver.Failure));
        const qint64 grown = Memory("VmHWM:") - memory;
        if (looks > 0)
            QApplication::activeModalWidget()->close();
        QTEST(looks > 0, "popupStays");
        QTEST(alerts.texts, "alerts");
        QTEST(offered->text(), "version");
        QStringList found = Tree(folder);
        found.sort();
        QFETCH(QStringList, tree);
        tree.sort();
        QCOMPARE(found, tree);
        QCOMPARE(Tree(m_root.path(), "a/temporary/firmware/"), before);
        QVERIFY2(grown < 48 << 10, qPrintable(QString("%1 KiB").arg(grown)));
    }
};

void TestHostileArchives::Refused()
{
    const auto refused = [](
                             const QByteArray& name, const Entries& entries, const Prepare& prepare = [](auto) {}) {
        Row(name, MakeZip(Image() + entries), {.version = "", .tree = {}, .popupStays = true, .prepare = prepare});
    };
    for (const char* name :
         {"../x", "a/../../x", "a/b/../../../../x", "./../x", ".//.././x", "..", "a/../..", "/x", "//x", "/../x"})
        refused(QByteArray("climbs: ") + name, {{name, "1"}});
    refused("absolute name", {{m_root.filePath("a/x").toUtf8(), "1"}});
    refused("zero byte", {{QByteArray("a\0b", 3), "1"}});
    refused("link", {{.name = "link", .content = "/etc", .mode = 0120777}});
    refused("link, and a file through it", {{.name = "link", .content = "..", .mode = 0120777}, {"link/x", "1"}});
    refused("link under another name", {{.name = "link", .content = Fw, .mode = 0120000}});
    refused("file and folder at once", {{"a/b", "1"}, {"a", "2"}});
    refused("folder entry and file at once", {{.name = "a/", .mode = 040755}, {"a", "2"}});
    refused("name too long", {{QByteArray(256, 'n'), "1"}});
    refused("name too long as UTF-8", {{QByteArray("ф").repeated(128), "1"}});
    refused("path too long", {{QByteArray("long/").repeated(1000) + 'n', "1"}});
    refused("the longest name there is", {{QByteArray("a/").repeated(32767), "1"}});
    refused("too deep", {{QByteArray("a/").repeated(33) + 'n', "1"}});
    Row("through a link on the disk", MakeZip(Image() + Entries{{"link/x", "1"}}),
        {.version = "", .tree = {"link@"}, .popupStays = true, .prepare = [](const QString& folder) {
             QFile::link(folder + "/..", folder + "/link");
         }});
}

void TestHostileArchives::Harmless()
{
    const auto harmless = [](const MadeEntry& entry, const QStringList& tree) {
        Row("harmless: " + entry.name.left(40), MakeZip(Image() + Entries{entry, CertificateOf(entry)}),
            {.tree = tree + FwTree});
    };
    harmless({"a/../b", "1"}, {"b=1", "b.sha256:32"});
    harmless({"./b", "1"}, {"b=1", "b.sha256:32"});
    harmless({"..\\b", "1"}, {"..\\b=1", "..\\b.sha256:32"});
    harmless({"C:\\b", "1"}, {"C:\\b=1", "C:\\b.sha256:32"});
    harmless({"%2e%2e/b", "1"}, {"%2e%2e/", "%2e%2e/b=1", "%2e%2e/b.sha256:32"});
    harmless({"...", "1"}, {"...=1", "....sha256:32"});
    harmless({".hidden", "1"}, {".hidden=1", ".hidden.sha256:32"});
    harmless({"a\nb\t\x1b[2J\x7f", "1"}, {"a\nb\t\x1b[2J\x7f=1", "a\nb\t\x1b[2J\x7f.sha256:32"});
    harmless({.name = "run", .content = "1", .mode = 0100711}, {"run*=1", "run.sha256:32"});
    harmless({.name = "pipe", .content = "1", .mode = 010644}, {"pipe=1", "pipe.sha256:32"});
    harmless({.name = "disk", .content = "1", .mode = 060666}, {"disk=1", "disk.sha256:32"});
    harmless({.name = "all bits", .content = "1", .mode = 0177777}, {"all bits*=1", "all bits.sha256:32"});
    harmless({.name = "modeless", .content = "1", .mode = 0}, {"modeless=1", "modeless.sha256:32"});
    Row("folders, one of them looking like an empty file",
        MakeZip(Entries{{.name = "empty/", .mode = 040755}, {"a", ""}} + Image({.name = "a/fw_7_1_0_v3.0.bin"})),
        {"3.0", {"a/", "a/fw_7_1_0_v3.0.bin=IMAGE", "a/fw_7_1_0_v3.0.bin.sha256:32", "empty/"}});
    Row("twice the same name: the later counts", MakeZip(Image({.content = "OTHER"}) + Image()), {});
    Row("stored", MakeZip(Image({.method = 0})), {});
    Row("sizes only after the data", MakeZip(Image({.flags = 8, .local = Fw})), {});
    Row("local header of another name and size", MakeZip(Image({.local = "../../x"})), {});
    Row("a comment at the end", Changed(MakeZip(Image()) + "hello", MakeZip(Image()).size() - 2, "\5"), {});
    const QByteArray russian = "Прошивка/fw_7_1_0_v3.0.bin";
    const QStringList russianTree{"Прошивка/", russian + "=IMAGE", russian + ".sha256:32"};
    Row("Cyrillic in UTF-8, flagged", MakeZip(Image({.name = russian, .flags = 0x800})), {"3.0", russianTree});
    Row("Cyrillic in UTF-8, not flagged", MakeZip(Image({.name = russian})), {"3.0", russianTree});
    const QString unreadable = "\uFFFD\uFFFD\uFFFD/";
    Row("Cyrillic in CP866", MakeZip(Image({.name = "\x8f\x90\xe8/fw_7_1_0_v3.0.bin"})),
        {"3.0", {unreadable, unreadable + "fw_7_1_0_v3.0.bin=IMAGE", unreadable + "fw_7_1_0_v3.0.bin.sha256:32"}});
    Row("no certificate, control characters", MakeZip(Image() + Entries{{"a\n\x07", "1"}}),
        {.tree = QStringList{"a\n\x07=1"} + FwTree, .alerts = {"Внимание!: Не найден сертификат a\n\x07.sha256"}});
    Entries many;
    QStringList tree;
    for (int i = 0; i < 5000; ++i) {
        many += Image({.name = QString("f%1").arg(i, 4, 10, QChar('0')).toLatin1(), .method = 0});
        tree += {many[i * 2].name + "=IMAGE", many[i * 2].name + ".sha256:32"};
    }
    Row("10,000 entries", MakeZip(many), {"", tree});
}

void TestHostileArchives::Damaged()
{
    const auto damaged = [](const QByteArray& name, const QByteArray& zip) {
        Row("damaged: " + name, zip, {"", EmptyFwTree, {Different(Fw)}});
    };
    const QByteArray zip = MakeZip(Image());
    const qsizetype data = 30 + qsizetype(strlen(Fw));
    const qsizetype directory = zip.indexOf("PK\1\2");
    damaged("encrypted", MakeZip({Image({.flags = 1})[0], Image()[1]}));
    damaged("another method", Changed(Changed(zip, 8, "\14"), directory + 10, "\14"));
    damaged("method unlike the local header's", Changed(zip, directory + 10, QByteArray(1, 0)));
    damaged("bit flipped in the packed data", Changed(zip, data + 2, QByteArray(1, char(zip[data + 2] ^ 4))));
    damaged("bit flipped in stored data",
            Changed(MakeZip({Image({.method = 0})[0], Image()[1]}), data, QByteArray(1, 'I' ^ 4)));
    damaged("bit flipped in the checksum", Changed(zip, directory + 16, QByteArray(1, char(zip[directory + 16] ^ 1))));
    damaged("bit flipped in the offset", Changed(zip, directory + 42, "\x40"));
    damaged("claims less than there is", Changed(zip, directory + 24, "\4"));
    damaged("claims more than there is", Changed(zip, directory + 24, "\6"));
    damaged("packed size beyond the archive", Changed(zip, directory + 20, "\xff\xff\xff\x0f"));
    damaged("packed size into the next entry's", MakeZip({Image({.method = 0, .size = 6})[0], Image()[1]}));
    damaged("zip64 sizes", Changed(zip, directory + 20, QByteArray(8, char(0xff))));
    damaged("over the limit", Changed(zip, directory + 24, QByteArray("\1\0\0\x10", 4)));
    damaged("a hole in the archive", Changed(zip, data, QByteArray(5, 0)));
    const QByteArray imageLast = MakeZip({Image()[1], Image()[0]});
    damaged("no local header", Changed(imageLast, imageLast.lastIndexOf("PK\3\4"), "xx"));
}

void TestHostileArchives::NoArchive()
{
    const QByteArray zip = MakeZip(Image());
    const qsizetype directory = zip.indexOf("PK\1\2");
    const qsizetype end = zip.indexOf("PK\5\6");
    const auto nothing = [](const QByteArray& name, const QByteArray& bytes) {
        Row("no archive: " + name, bytes, {"", {}});
    };
    nothing("empty file", "");
    nothing("empty zip", MakeZip({}));
    nothing("text", "this is no archive");
    nothing("another mark in front", Changed(zip, 0, "xx"));
    nothing("cut off in a local header", zip.first(20));
    nothing("cut off in the data", zip.first(50));
    nothing("cut off in the directory", zip.first(directory + 40));
    nothing("cut off in the end record", zip.first(end + 21));
    nothing("only the end record", zip.mid(end));
    nothing("a byte lost in front", zip.mid(1));
    nothing("bit flipped in a directory entry's mark", Changed(zip, directory, "Q"));
    nothing("bit flipped in a name's length", Changed(zip, directory + 28, "\x31"));
    nothing("more entries announced than there are", Changed(zip, end + 10, "\3"));
    nothing("zip64 end record", Changed(zip, end + 8, QByteArray(12, char(0xff))));
    Entries large{{.name = "first"}};
    while (large.size() < 130)
        large.append({.name = QByteArray(65535, 'n'), .offset = 0});
    nothing("directory of more than 8 MiB", MakeZip(large));
}

void TestHostileArchives::OnTheDisk()
{
    const auto onDisk = [](const QByteArray& name, const QStringList& tree, const Prepare& prepare) {
        Row("on the disk: " + name, MakeZip(Image()), {.tree = tree + FwTree, .prepare = prepare});
    };
    onDisk("a folder in its place", {}, [](const QString& folder) { QDir(folder).mkpath(QString(Fw) + "/left"); });
    onDisk("other files", {"a=0"}, [](const QString& folder) { testdata::WriteFile(folder + "/a", "0"); });
    onDisk("a link in its place", {}, [](const QString& folder) { QFile::link("../x", folder + '/' + Fw); });
    onDisk("a read-only file in its place", {}, [](const QString& folder) {
        testdata::WriteFile(folder + '/' + Fw, "old");
        QFile::setPermissions(folder + '/' + Fw, QFile::ReadOwner);
    });
    Row("on the disk: a file in a folder's place", MakeZip(Image({.name = "a/fw_7_1_0_v3.0.bin"})),
        {.version = "3.0",
         .tree = {"a/", "a/fw_7_1_0_v3.0.bin=IMAGE", "a/fw_7_1_0_v3.0.bin.sha256:32"},
         .prepare = [](const QString& folder) { testdata::WriteFile(folder + "/a", "old"); }});
}

void TestHostileArchives::Bombs()
{
    constexpr int Size = 128 << 20;
    const MadeEntry honest{.name = "a", .content = QByteArray(Size, 0)};
    const QByteArray packed = Deflated(honest.content);
    QVERIFY(packed.size() < Size / 1000);
    Row("bomb with its true size",
        MakeZip(Image() + Entries{{.name = "a", .content = honest.content, .packed = packed}}),
        {.tree = QStringList{QString("a:%1").arg(Size)} + FwTree,
         .alerts = {"Внимание!: Не найден сертификат a.sha256"}});
    Row("bomb that claims little", MakeZip({{.name = Fw, .size = 1000, .packed = packed}, Image()[1]}),
        {"", EmptyFwTree, {Different(Fw)}});
    constexpr auto Largest = quint32(FirmwareArchive::LargestEntry);
    // The size is only claimed: a program that believes it must not fill the disk of the machine that runs this test.
    Entries claims{{.name = "first", .content = "IMAGE", .size = Largest}};
    while (claims.size() < 30000)
        claims.append({.name = QByteArray::number(claims.size()), .content = "IMAGE", .size = Largest, .offset = 0});
    Row("more than the disk has left", MakeZip(claims), {.version = "", .tree = {}, .popupStays = true});
    Row("overlapping entries",
        MakeZip(
            {Image({.method = 0})[0], {.name = "a.sha256", .content = "IMAGE", .method = 0, .offset = 0}, Image()[1]}),
        {.tree = QStringList{"a.sha256=IMAGE"} + FwTree});
}

QTEST_MAIN(TestHostileArchives)
#include "tst_hostile_archives.moc"
