#pragma once

#include "CatalogueCheck.h"
#include "JsonPlaces.h"

#include <QHash>
#include <QJsonObject>
#include <QSet>

#include <map>
#include <optional>

/// The first 60 characters of `text`, with "?" for those that cannot be printed and "..." for the rest.
QString Shortened(const QString& text);

/// An object of the catalogue and its place in the text; offsets are in bytes.
struct JsonSpot
{
    QString path; ///< as "Devices[0].Boards[2]"; empty for the top level
    qsizetype offset = 0;
    bool isObject = false;            ///< false: another value, which the panel reads as an object without keys
    QJsonObject object;               ///< as the panel gets it
    QHash<QString, qsizetype> values; ///< offset of each key's value; of the last one when a key is repeated
    QSet<QString> wrong;              ///< keys whose value is of the wrong type
};

/// Reads the objects of a catalogue's text. Unknown or repeated keys and values of a wrong type are reported when their
/// object is read.
class CatalogueReader
{
public:
    enum Level { Catalogue, Device, Board };

    CatalogueReader(const QString& file, const QByteArray& text);

    /// The outermost object; std::nullopt, with a report, when the text is not one.
    std::optional<JsonSpot> Top();
    /// The elements of the list `key` of `parent` that the panel would read; reports a list that is too long.
    QList<JsonSpot> Elements(const JsonSpot& parent, const QString& key, Level level);
    /// Reports `kind` at the value of `key`, or at the object when it has no such key. Does nothing for a value of a
    /// wrong type, which has been reported already. `args` and `remedyArg` are those of CatalogueFinding.
    void Report(const JsonSpot& spot, const QString& key, const QString& kind, const QStringList& args = {},
                const QString& remedyArg = {});
    /// What has been reported so far; the caller fills in the numbers of devices and modules.
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
