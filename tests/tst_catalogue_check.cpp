// `fwkit check`: a mistake in a catalogue that it misses or reports at the wrong place would be found only on site.

#include "AppConfig.h"
#include "CatalogueCheck.h"
#include "CatalogueWords.h"
#include "Table.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

class TestCatalogueCheck : public QObject
{
    Q_OBJECT

    QByteArray m_good;
    QSet<QString> m_shown;

    /// JSON with ' for ".
    static QByteArray Json(QByteArray text) { return text.replace(QByteArrayView("'"), QByteArrayView("\"")); }

    QByteArray Changed(const QByteArray& from, const QByteArray& to) const
    {
        const qsizetype at = m_good.indexOf(Json(from));
        Q_ASSERT(at >= 0);
        return QByteArray(m_good).replace(at, from.size(), Json(to));
    }

private slots:
    void initTestCase()
    {
        QFile file(QFINDTESTDATA("catalogues/good-small.json"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        m_good = file.readAll();
    }

    void Findings_data()
    {
        const Table<QByteArray, QByteArray, QString> row("from", "to", "findings");
        row("nothing", "", "", "");
        row("comma left out", "200,", "200", "not-json 3:3");
        row("text after the end", "  ]\n}", "  ]\n} x", "not-json 13:3");
        row("cut off", "MBAddr': 255}\n    ]}\n  ]\n}\n", "MBAddr': 255}", "not-json 10:106");
        row("list on top", m_good, "\n [1]", "no-object 2:2");
        row("a text on top", m_good, "'x'", "not-json 1:1");
        row("no text", m_good, " \n", "empty-file 2:1");
        row("no UTF-8", "Ж", "\xD6", "not-utf8 4:15");
        row("UTF-16", m_good, QByteArray("{\0", 2), "not-utf8 1:3");
        row("UTF-16 with its mark", m_good, "\xFF\xFE{", "not-utf8 1:1");
        row("comment", "'Devices'", "// boards\n 'Devices'", "comment 3:3");
        row("element no object", "{'Name': 'p', 'Path': 'x', 'Folder': 'viewer', 'File': 'show'}", "7",
            "no-object 7:7: D0.B2");
        row("device no object", "'Devices': [", "'Devices': [null,", "no-object 3:15: D0");
        row("number as text", "'Port': 502", "'Port': '502'", "wrong-type 5:87: D0.B0.Port");
        row("fraction", "'Port': 502", "'Port': 5.9", "wrong-type 5:87: D0.B0.Port");
        row("beyond 32 bits", "'IdDev': 1", "'IdDev': 2147483648", "wrong-type 4:28: D0.IdDev");
        row("text as number", "'Ip': '10.0.0.1'", "'Ip': 10", "wrong-type 5:67: D0.B0.Ip");
        row("flag as text", "'Main': true", "'Main': 'true'",
            "no-main-board 4:41: D0.Boards, wrong-type 5:43: D0.B0.Main");
        row("devices no list", "'Devices': [", "'Devices': 0, 'Devices ': [",
            "wrong-type 3:14: Devices, unknown-key 3:17: Devices ");
        row("boards no list", "'Boards': [", "'Boards': {}, 'boards': [",
            "wrong-type 4:41: D0.Boards, unknown-key 4:45: D0.boards");
        row("unknown key", "'File'", "'Fyle'", "no-file 7:7: D0.B2.File, unknown-key 7:54: D0.B2.Fyle");
        row("twice, escaped", "'Port': 502", "'Port': 1, 'Po\\u0072t': 0",
            "duplicate-key 5:90: D0.B0.Port, bad-port 5:103: D0.B0.Port");
        row("wrong type twice", "'Port': 502", "'Port': '1', 'Port': 502", "duplicate-key 5:92: D0.B0.Port");
        row("no devices", "'Devices'", "'$schema'", "no-devices 1:1: Devices");
        row("no boards", "'Boards': [", "'Boards': [], 'Cards': [",
            "no-boards 4:41: D0.Boards, unknown-key 4:45: D0.Cards");
        row("no main board", "'Main': true, ", "", "no-main-board 4:41: D0.Boards");
        row("main is a program", "'Path': 'x'", "'Path': 'x', 'Main': true", "program-is-main 7:42: D0.B2.Main");
        row("empty name", "'Name': 'n'", "'Name': ''", "no-name 6:16: D0.B1.Name");
        row("no number", "'IdDev': 1, ", "", "no-number 4:5: D0.IdDev");
        row("no unit", ", 'MBAddr': 255", "", "no-number 10:7: D1.B0.MBAddr");
        row("address too short", "'10.0.0.9'", "'10.1'", "bad-ip 10:65: D1.B0.Ip");
        row("address in octal", "'10.0.0.9'", "'10.0.0.01'", "bad-ip 10:65: D1.B0.Ip");
        row("IPv6", "'10.0.0.9'", "'::1'", "bad-ip 10:65: D1.B0.Ip");
        row("host name", "'10.0.0.9'", "'board'", "bad-ip 10:65: D1.B0.Ip");
        row("port 0", "65535", "0", "bad-port 10:85: D1.B0.Port");
        row("port 65536", "65535", "65536", "bad-port 10:85: D1.B0.Port");
        row("unit 256", "255", "256", "bad-unit 10:102: D1.B0.MBAddr");
        row("unit -1", "255", "-1", "bad-unit 10:102: D1.B0.MBAddr");
        row("reads a value", "28", "-3", "finish-is-command 10:55: D1.B0.IdCPU");
        row("writes a block", "28", "-2", "finish-is-command 10:55: D1.B0.IdCPU");
        row("sends the checksum", "28", "-1", "finish-is-command 10:55: D1.B0.IdCPU");
        row("0xA000 by overflow", "28", "65533", "finish-is-command 10:55: D1.B0.IdCPU");
        row("unanswered", "28", "65536", "finish-unanswered 10:55: D1.B0.IdCPU");
        row("unanswered, negative", "28", "-65536", "finish-unanswered 10:55: D1.B0.IdCPU");
        row("far", "28", "29", "far-processor 10:55: D1.B0.IdCPU");
        row("no word", "28", "123", "no-version-word 10:55: D1.B0.IdCPU");
        row("no word, negative", "28", "-4", "no-version-word 10:55: D1.B0.IdCPU");
        row("no type", "'TB'", "''", "empty-type 10:29: D1.B0.Type");
        row("type of two words", "'TB'", "'T B'", "unmatchable-type 10:29: D1.B0.Type");
        row("type with ;", "'TB'", "'TB;'", "unmatchable-type 10:29: D1.B0.Type");
        row("type beyond a byte", "'TB'", "'ТВ'", "unmatchable-type 10:29: D1.B0.Type");
        row("type too long", "'TB'", "'" + QByteArray(240, 'T') + "'", "unmatchable-type 10:29: D1.B0.Type");
        row("no path", "'Path': 'x', ", "", "no-path 7:7: D0.B2.Path");
        row("path at a board", "'IdCPU': 1", "'IdCPU': 128, 'File': 'n'",
            "no-path 6:7: D0.B1.Path, no-version-word 6:44: D0.B1.IdCPU");
        row("no folder", "'viewer'", "''", "no-folder 7:44: D0.B2.Folder");
        row("base", "'viewer'", "'base/'", "never-copied-folder 7:44: D0.B2.Folder");
        row("firmware", "'viewer'", "'viewer/..'", "never-copied-folder 7:44: D0.B2.Folder");
        row("update.old", "'viewer'", "'a/update.old'", "never-copied-folder 7:44: D0.B2.Folder");
        row("climbs out", "'viewer'", "'../viewer'", "outside-folder 7:44: D0.B2.Folder");
        row("absolute", "'viewer'", "'/opt/viewer'", "absolute-folder 7:44: D0.B2.Folder");
        row("folder with a dot", "'viewer'", "'viewer.d'", "dot-in-name 7:44: D0.B2.Folder");
        row("no file", "'show'", "''", "no-file 7:62: D0.B2.File");
        row("file with a dot", "'show'", "'show.sh'", "dot-in-name 7:62: D0.B2.File");
        row("file with a space", "'show'", "'show it'", "split-file 7:62: D0.B2.File");
        row("file with a quote", "'show'", "'show\\''", "split-file 7:62: D0.B2.File");
        row("file with a slash", "'show'", "'bin/show'", "slash-in-file 7:62: D0.B2.File");
        row("same board", "'IdCPU': 1,", "'IdCPU': 0,", "same-board 6:44: D0.B1.IdCPU");
        row("two types", "'TA', 'IdCPU': 1", "'TX', 'IdCPU': 1", "two-types 6:29: D0.B1.Type");
        row("same number", "'IdDev': 2", "'IdDev': 1", "same-device-id 9:28: D1.IdDev");
        row("hidden type", "'TB', 'Main': 1, 'IdCPU': 28, 'Ip': '10.0.0.9'",
            "'TA', 'Main': 1, 'IdCPU': 28, 'Ip': '10.0.0.2'", "same-type 10:29: D1.B0.Type");
        row("type that hides", "'TB', 'Main': 1, 'IdCPU': 28, 'Ip': '10.0.0.9', 'Port': 65535, 'MBAddr': 255",
            "'TA', 'Main': 1, 'Ip': '10.0.0.1', 'Port': 502, 'MBAddr': 1", "same-type 10:29: D1.B0.Type");
        row("equal images of unequal boards", "'TA', 'IdCPU': 1, 'Ip': '10.0.0.1'",
            "'TX', 'IdCPU': 0, 'Ip': '10.0.0.2'", "file-fits-another 6:88: D0.B1.MBAddr");
        row("equal images of equal boards", "'TA', 'IdCPU': 1, 'Ip': '10.0.0.1'", "'TA', 'IdCPU': 0, 'Ip': '10.0.0.2'",
            "");
        row("file in another's folder", "'File': 'show'}",
            "'File': 'show'}, {'Name': 'r', 'Path': 'x', 'Folder': 'showroom', 'File': 'door'}",
            "file-fits-another 7:62: D0.B2.File");
        row("file of another instrument", "'MBAddr': 255}",
            "'MBAddr': 255}, {'Name': 'r', 'Path': 'x', 'Folder': 'tools', 'File': 'how'}",
            "file-fits-another 10:162: D1.B1.File");
        row("program of both instruments", "'MBAddr': 255}",
            "'MBAddr': 255}, {'Name': 'p', 'Path': 'x', 'Folder': 'viewer', 'File': 'show'}", "");
    }
    void Findings()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QStringList findings;
        for (const Finding& finding : CheckCatalogue("c.json", Changed(from, to)).findings) {
            QCOMPARE(finding.file, "c.json");
            for (const QString& text : {finding.effect, finding.remedy})
                QVERIFY2(!text.isEmpty() && !text.contains('%'), qPrintable(text));
            // "Devices[0].Boards[2].Port" is D0.B2.Port above.
            QString place = finding.place;
            findings.append(finding.kind + " " + place.replace("Devices[", "D").replace("Boards[", "B").remove(']'));
            m_shown.insert(finding.kind);
        }
        QTEST(findings.join(", "), "findings");
    }
    void Surplus()
    {
        const CatalogueReport report =
            CheckCatalogue({}, Json("{'Devices': [" + QByteArray("0,").repeated(11) + "0]}"));
        QCOMPARE(report.devices, 10);
        QCOMPARE(report.findings.last().place, "1:34: Devices[10]");
        QVERIFY(report.findings.last().effect.endsWith("first 10 here and leaves out 2"));
        m_shown.insert(report.findings.last().kind);
    }
    void EveryKindIsShown()
    {
        const QStringList kinds = CatalogueKinds();
        QCOMPARE(m_shown, QSet<QString>(kinds.begin(), kinds.end()));
    }

    void SchemaHasTheKeys()
    {
        QFile file(QFINDTESTDATA("../docs/updater.schema.json"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject records = QJsonDocument::fromJson(file.readAll())["$defs"].toObject();
        const auto described = [&](const char* record) {
            QStringList keys;
            const QJsonObject properties = records[record]["properties"].toObject();
            for (auto it = properties.begin(); it != properties.end(); ++it) {
                const QJsonObject property = it.value().toObject();
                const QJsonValue type = property.value(property.contains("$ref") ? "$ref" : "type");
                keys.append(it.key() + ' ' + (type.isArray() ? type[0] : type).toString());
            }
            return keys;
        };
        const auto read = [](const auto& keys) {
            QStringList list;
            for (const auto& [key, member] : keys)
                list.append(key + QStringList{" string", " #/$defs/number", " boolean"}[qsizetype(member.index())]);
            list.sort();
            return list;
        };
        QCOMPARE(described("module"), read(BoardKeys));
        QCOMPARE(QStringList("Boards array") + read(DeviceKeys), described("device"));
    }

    void RemedyForAKey_data()
    {
        const Table<QByteArray, QString> row("key", "remedy");
        row("misspelt", "Prot", "write \"Port\"");
        row("wrong case", "mbaddr", "write \"MBAddr\"");
        row("of another level", "Boards", "it belongs in a device");
        row("like nothing", "Comment", "remove it");
        row("endless", QByteArray(100000, 'x'), "remove it");
    }
    void RemedyForAKey()
    {
        QFETCH(QByteArray, key);
        const CatalogueReport report = CheckCatalogue({}, Changed("'Path'", "'" + key + "': 1, 'Path'"));
        QCOMPARE(report.findings.size(), 1);
        QTEST(report.findings.first().remedy, "remedy");
        QVERIFY(report.findings.first().effect.size() < 200);
    }

    void FloodsAndDepthsEnd()
    {
        QByteArray flood = "{'Devices': [], 'a': " + QByteArray(1000, '[') + QByteArray(1000, ']');
        for (int i = 0; i < 100000; ++i)
            flood += ",\n'" + QByteArray::number(i) + "': 0";
        const CatalogueReport report = CheckCatalogue({}, Json(flood) + "}");
        // Many findings of one kind must not hide another kind.
        QCOMPARE(report.findings.size(), CatalogueReport::MaxOfKind + 1);
        QCOMPARE(report.omitted, 100001 - CatalogueReport::MaxOfKind);
        QCOMPARE(CheckCatalogue({}, QByteArray(1000000, '[')).findings.value(0).kind, "not-json");
    }

    void NoDamagedTextIsMisread()
    {
        for (qsizetype at = 0; at < m_good.size(); ++at) {
            for (const char c : QByteArray("{}[],:\"\\\0 5", 11)) {
                const QByteArray text = QByteArray(m_good).replace(at, 1, QByteArray(1, c));
                const CatalogueReport report = CheckCatalogue({}, text);
                const bool isRead = !QJsonDocument::fromJson(text).isNull();
                static const QSet<QString> Unread{"not-json", "not-utf8", "comment"};
                QCOMPARE(report.findings.isEmpty() || !Unread.contains(report.findings.first().kind), isRead);
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestCatalogueCheck)
#include "tst_catalogue_check.moc"
