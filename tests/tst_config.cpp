// Loading the catalogue: an invalid file must result in defaults, never in a crash or a write beyond the tables.

#include "AppConfig.h"
#include "Table.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

class TestConfig : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString Write(const QByteArray& text)
    {
        QFile file(m_folder.filePath("updater.json"));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write the catalogue");
        return file.fileName();
    }

    static QByteArray OneBoard(const QByteArray& fields)
    {
        return R"({"DeviceVersion": 5, "Devices": [{"Name": "D", "IdDev": 3, "Boards": [{)" + fields + "}]}]}";
    }

private slots:
    void DeviceVersion_data()
    {
        const Table<QByteArray, int> row("text", "version");
        row("number", R"({"DeviceVersion": 7})", 7);
        row("text", R"({"DeviceVersion": "5"})", 0);
        row("fraction", R"({"DeviceVersion": 5.9})", 0);
        row("too large", R"({"DeviceVersion": 2147483648})", 0);
        row("missing", "{}", 0);
        row("array on top", "[]", 0);
        row("no JSON", "plain text", 0);
        row("empty file", "", 0);
    }
    void DeviceVersion()
    {
        QFETCH(QByteArray, text);
        TAppConfigStruct config;
        QCOMPARE(config.DeviceVersion, 200);
        QVERIFY(config.LoadFromFile(Write(text)));
        QTEST(config.DeviceVersion, "version");
        QCOMPARE(config.DeviceCount, 0);
    }

    void Board_data()
    {
        const Table<QByteArray, bool, int, QString> row("fields", "main", "port", "ip");
        row("all right", R"("Main": true, "Port": 502, "Ip": "10.0.0.1")", true, 502, "10.0.0.1");
        row("Main as a number", R"("Main": 1)", true, 0, "");
        row("Main 0", R"("Main": 0)", false, 0, "");
        row("Main 0.5 is no whole number", R"("Main": 0.5)", false, 0, "");
        row("Main as a text", R"("Main": "true")", false, 0, "");
        row("Port as a text", R"("Port": "502")", false, 0, "");
        row("Ip as a number", R"("Ip": 5)", false, 0, "");
    }
    void Board()
    {
        QFETCH(QByteArray, fields);
        TAppConfigStruct config;
        QVERIFY(config.LoadFromFile(Write(OneBoard(fields))));
        QCOMPARE(config.DeviceCount, 1);
        QCOMPARE(config.Devices[0].IdDev, 3);
        QCOMPARE(config.Devices[0].BoardCount, 1);
        QTEST(config.Devices[0].Boards[0].Main, "main");
        QTEST(config.Devices[0].Boards[0].Port, "port");
        QTEST(config.Devices[0].Boards[0].Ip, "ip");
    }

    void EveryFieldOfABoard()
    {
        TAppConfigStruct config;
        QVERIFY(config.LoadFromFile(Write(
            OneBoard(R"("Name":"n","Type":"t","IdCPU":2,"MBAddr":9,"Path":"p","File":"f","Folder":"o","Unknown":1)"))));
        const TBoardRecord& board = config.Devices[0].Boards[0];
        QCOMPARE(QStringList({board.Name, board.Type, board.Path, board.File, board.Folder}),
                 QStringList({"n", "t", "p", "f", "o"}));
        QCOMPARE(board.IdCPU, 2);
        QCOMPARE(board.MBAddr, 9);
    }

    void SurplusIsLeftOut()
    {
        QJsonArray boards;
        for (int b = 0; b < 12; ++b)
            boards.append(QJsonObject{{"Name", QString::number(b)}});
        QJsonArray devices{5}; // no object: all defaults, and it counts
        for (int d = 1; d < 12; ++d)
            devices.append(QJsonObject{{"IdDev", d}, {"Boards", boards}});
        const QString path = Write(QJsonDocument(QJsonObject{{"Devices", devices}}).toJson());
        TAppConfigStruct config;
        QVERIFY(config.LoadFromFile(path));
        QCOMPARE(config.DeviceCount, 10);
        QCOMPARE(config.Devices[0].BoardCount, 0);
        QCOMPARE(config.Devices[9].IdDev, 9);
        QCOMPARE(config.Devices[9].BoardCount, 10);
        QCOMPARE(config.Devices[9].Boards[9].Name, "9");

        // A later file without devices of the right type changes nothing.
        Write(R"({"Devices": {}})");
        QVERIFY(config.Load());
        QCOMPARE(config.DeviceCount, 10);
    }

    void FileThatCannotBeOpened()
    {
        TAppConfigStruct config;
        QVERIFY(!config.Load() && !config.Save() && !config.Reapply(1));
        const QString path = m_folder.filePath("missing/updater.json");
        QTest::ignoreMessage(
            QtDebugMsg,
            QString("Couldn't open file %1    Error: No such file or directory").arg(path).toUtf8().constData());
        QVERIFY(!config.LoadFromFile(path));
        QCOMPARE(config.FileName, path);
        QCOMPARE(config.DeviceVersion, 200);
        QVERIFY(!config.Save());
    }

    void SaveIsAllOrNothing()
    {
        TAppConfigStruct config;
        QVERIFY(config.LoadFromFile(Write(R"({"DeviceVersion": 7})")));
        QVERIFY(config.Save());
        QVERIFY(config.Load());
        QCOMPARE(config.DeviceVersion, 200);

        // A disk that accepts only the first bytes: write() returns a short count and sets no error.
        const QString path = config.FileName;
        QJsonObject large{{"Text", QString(100000, 'x')}};
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        const rlimit full{5000, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        QTest::ignoreMessage(QtWarningMsg, qPrintable("Error saveFile.commit() " + path));
        const bool saved = TSavedJSONParameters::SaveJsonToFile(path, large);
        setrlimit(RLIMIT_FSIZE, &old);
        QVERIFY(!saved);
        QVERIFY(config.Load());
        QCOMPARE(config.DeviceVersion, 200);
    }
};

QTEST_APPLESS_MAIN(TestConfig)
#include "tst_config.moc"
