#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QString>

/// The record's lines in the texts of a log, as objects.
inline QList<QJsonObject> RecordsIn(const QStringList& log)
{
    QList<QJsonObject> records;
    for (const QString& line : log) {
        if (line.startsWith("UpdateRecord "))
            records.append(QJsonDocument::fromJson(line.section(' ', 1).toUtf8()).object());
    }
    return records;
}

/// Records in short: "start updated success backup", "start stopped failure stop".
inline QString Summary(const QList<QJsonObject>& records)
{
    QStringList words;
    for (const QJsonObject& record : records) {
        words.append(record["outcome"].toString(record["event"].toString()));
        words += record["stopped"].toBool() ? QStringList("stop") : QStringList();
        words += record["backup"].toBool() ? QStringList("backup") : QStringList();
    }
    return words.join(' ');
}

/// While it exists, everything that is logged is kept in it. One at a time.
class LogKeeper
{
public:
    LogKeeper()
        : m_before(qInstallMessageHandler(Keep))
    {
        s_log.clear();
    }
    ~LogKeeper() { qInstallMessageHandler(m_before); }
    Q_DISABLE_COPY_MOVE(LogKeeper)

    static QList<QJsonObject> Records() { return RecordsIn(s_log); }

private:
    static void Keep(QtMsgType, const QMessageLogContext&, const QString& text) { s_log.append(text); }

    inline static QStringList s_log;
    QtMessageHandler m_before;
};
