#pragma once

#include "CatalogueCheck.h"
#include "JsonPlaces.h"

#include <QHash>
#include <QJsonObject>
#include <QSet>

#include <map>
#include <optional>

/// `text` cut to a line's width, with "?" for what a terminal would not show as itself.
QString Shortened(const QString& text);

/// An object of the catalogue's text.
struct JsonSpot
{
    QString path; ///< as "Devices[0].Boards[2]"; empty for the top level
    qsizetype offset = 0;
    bool isObject = false;            ///< false: it reads as an object without keys
    QJsonObject object;               ///< as the panel gets it
    QHash<QString, qsizetype> values; ///< offset of each key's value, of the one that counts
    QSet<QString> wrong;              ///< keys whose value is of the wrong type
};

/// Walks through the text of a catalogue. What is wrong with an object's keys and their types is reported on the way.
class CatalogueReader
{
public:
    enum Level { Catalogue, Device, Board };

    CatalogueReader(const QString& file, const QByteArray& text);

    /// Nothing when the panel would find no object in the text: that has been reported.
    std::optional<JsonSpot> Top();
    /// The elements of the list `key` of `parent` that the panel would read.
    QList<JsonSpot> Elements(const JsonSpot& parent, const QString& key, Level level);
    /// Reports `kind` at the value of `key`, or at the object when it has no such key. A value of the wrong type has
    /// been reported already, and nothing more is said about it.
    void Report(const JsonSpot& spot, const QString& key, const QString& kind, const QStringList& args = {},
                const QString& remedyArg = {});
    /// Findings alone; the counts of devices and modules are the caller's.
    CatalogueReport Result() const;

private:
    void Add(qsizetype offset, const QString& path, const QString& kind, const QStringList& args,
             const QString& remedyArg = {});
    JsonSpot Enter(qsizetype offset, const QString& path, const QJsonValue& value, Level level);
    void CheckKeys(JsonSpot& spot, Level level);
    void CheckTypes(JsonSpot& spot, Level level);

    QString m_file;
    QByteArray m_text;
    std::multimap<qsizetype, Finding> m_findings; // by offset
    int m_omitted = 0;
    QHash<QString, int> m_counts;
};
