#include "CatalogueReader.h"

#include "AppConfig.h"
#include "CatalogueWords.h"
#include "Kit.h"
#include "Spelling.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace {

constexpr int MaxShown = 60;

/// The first three in the order of the types that the member of a TCatalogueKey may have.
enum class Type { Text, Number, Flag, List };

struct Field
{
    const char* key;
    Type type;
};

template <typename Record, std::size_t Count>
QList<Field> FieldsOf(const TCatalogueKey<Record> (&keys)[Count])
{
    QList<Field> fields;
    for (const auto& [key, member] : keys)
        fields.append({key, Type(member.index())});
    return fields;
}

const QList<Field>& Fields(CatalogueReader::Level level)
{
    static const QList<Field> Top{{"DeviceVersion", Type::Number}, {"Devices", Type::List}};
    static const QList<Field> Device = FieldsOf(DeviceKeys) + QList<Field>{{"Boards", Type::List}};
    static const QList<Field> Board = FieldsOf(BoardKeys);
    return level == CatalogueReader::Catalogue ? Top : level == CatalogueReader::Device ? Device : Board;
}

bool HasKey(CatalogueReader::Level level, const QString& key)
{
    const QList<Field>& fields = Fields(level);
    return std::any_of(fields.begin(), fields.end(), [&](const Field& field) { return key == field.key; });
}

struct TypeTexts
{
    const char* name;
    const char* readInstead;
    const char* remedy;
};

/// In the order of Type.
constexpr TypeTexts Texts[] = {
    {QT_TRANSLATE_NOOP("Kit", "text"), QT_TRANSLATE_NOOP("Kit", "\"\""), QT_TRANSLATE_NOOP("Kit", "a text in quotes")},
    {QT_TRANSLATE_NOOP("Kit", "whole number of 32 bits"), "0",
     QT_TRANSLATE_NOOP("Kit", "a whole number without quotes")},
    {QT_TRANSLATE_NOOP("Kit", "flag"), "false", QT_TRANSLATE_NOOP("Kit", "true or false")},
    {QT_TRANSLATE_NOOP("Kit", "list"), QT_TRANSLATE_NOOP("Kit", "an empty list"),
     QT_TRANSLATE_NOOP("Kit", "a list in [ ]")},
};

/// Whether the panel reads the value as it was written.
bool IsOfType(const QJsonObject& object, const QString& key, Type type)
{
    const QJsonValue value = object.value(key);
    const bool isWhole = value.isDouble() && value.toDouble() == JsonInt(object, key);
    switch (type) {
    case Type::Text:
        return value.isString();
    case Type::Number:
        return isWhole;
    case Type::Flag:
        return value.isBool() || isWhole;
    case Type::List:
        break;
    }
    return value.isArray();
}

QString RemedyForKey(const QString& key, CatalogueReader::Level level)
{
    QStringList known;
    for (const Field& field : Fields(level))
        known.append(field.key);
    const QString nearest = Nearest(key, known);
    if (!nearest.isEmpty())
        return Kit::tr("write \"%1\"").arg(nearest);
    if (HasKey(CatalogueReader::Board, key))
        return Kit::tr("it belongs in a board");
    if (HasKey(CatalogueReader::Device, key))
        return Kit::tr("it belongs in a device");
    return HasKey(CatalogueReader::Catalogue, key) ? Kit::tr("it belongs at the top") : Kit::tr("remove it");
}

/// The kind of finding for a text that is no JSON: the probable cause decides on the remedy.
const char* FaultKind(const QByteArray& text, const QJsonParseError& fault, qsizetype offset)
{
    if (text.trimmed().isEmpty())
        return "empty-file";
    // A text in UTF-16 has a 0 in one of its first two bytes, or begins with a byte order mark that is no UTF-8.
    if (fault.error == QJsonParseError::IllegalUTF8String || text.left(2).contains('\0') || text.startsWith("\xFF\xFE")
        || text.startsWith("\xFE\xFF"))
        return "not-utf8";
    const QByteArray there = text.mid(offset, 2);
    return there == "//" || there == "/*" || there.startsWith('#') ? "comment" : "not-json";
}

QString Join(const QString& path, const QString& key)
{
    return path.isEmpty() ? Shortened(key) : path + '.' + Shortened(key);
}

} // namespace

QString Shortened(const QString& text)
{
    QString shown = text.left(MaxShown);
    for (QChar& c : shown)
        c = c.isPrint() || c.isSurrogate() ? c : QChar('?');
    return text.size() > MaxShown ? shown + "..." : shown;
}

CatalogueReader::CatalogueReader(const QString& file, const QByteArray& text)
    : m_file(file)
    , m_text(text)
{}

std::optional<JsonSpot> CatalogueReader::Top()
{
    QJsonParseError fault;
    const QJsonDocument document = QJsonDocument::fromJson(m_text, &fault);
    if (fault.error != QJsonParseError::NoError) {
        const qsizetype offset = JsonFaultOffset(m_text, fault);
        const QString kind = FaultKind(m_text, fault, offset);
        Add(offset, {}, kind, kind == "not-json" ? QStringList{fault.errorString()} : QStringList());
        return std::nullopt;
    }
    const QJsonValue value = document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array());
    const JsonSpot top = Enter(JsonBegin(m_text), {}, value, Catalogue);
    return top.isObject ? std::optional(top) : std::nullopt;
}

CatalogueReport CatalogueReader::Result() const
{
    CatalogueReport report;
    for (const auto& [offset, finding] : m_findings)
        report.findings.append(finding);
    report.omitted = m_omitted;
    return report;
}

JsonSpot CatalogueReader::Enter(qsizetype offset, const QString& path, const QJsonValue& value, Level level)
{
    JsonSpot spot{path, offset, value.isObject(), value.toObject(), {}, {}};
    if (spot.isObject) {
        CheckKeys(spot, level);
        CheckTypes(spot, level);
    } else if (level == Catalogue) {
        Add(offset, path, "no-object", {Kit::tr("the panel finds no instrument")});
    } else {
        Add(offset, path, "no-object", {Kit::tr("it takes its place all the same, with all values empty or 0")});
    }
    return spot;
}

void CatalogueReader::CheckKeys(JsonSpot& spot, Level level)
{
    for (const JsonMember& member : JsonMembers(m_text, spot.offset)) {
        const QString path = Join(spot.path, member.key);
        // This key names the JSON schema for editors.
        const bool isKnown = HasKey(level, member.key) || (level == Catalogue && member.key == "$schema");
        if (!isKnown)
            Add(member.keyOffset, path, "unknown-key", {Shortened(member.key)}, RemedyForKey(member.key, level));
        if (spot.values.contains(member.key))
            Add(member.keyOffset, path, "duplicate-key", {Shortened(member.key)});
        spot.values[member.key] = member.offset;
    }
}

void CatalogueReader::CheckTypes(JsonSpot& spot, Level level)
{
    for (const Field& field : Fields(level)) {
        const QString key = field.key;
        if (!spot.values.contains(key) || IsOfType(spot.object, key, field.type))
            continue;
        const QByteArray list = QJsonDocument(QJsonArray{spot.object.value(key)}).toJson(QJsonDocument::Compact);
        const QString value = Shortened(QString::fromUtf8(list.mid(1, list.size() - 2)));
        const TypeTexts& texts = Texts[int(field.type)];
        Report(spot, key, "wrong-type", {value, Kit::tr(texts.name), Kit::tr(texts.readInstead)},
               Kit::tr(texts.remedy));
        spot.wrong.insert(key);
    }
}

QList<JsonSpot> CatalogueReader::Elements(const JsonSpot& parent, const QString& key, Level level)
{
    const int most = level == Device ? TAppConfigStruct::MaxDevices : TDeviceRecord::MaxBoards;
    const QJsonArray list = parent.object.value(key).toArray();
    const QList<JsonMember> members = JsonMembers(m_text, parent.values.value(key));
    const auto path = [&](int i) { return Join(parent.path, key) + QString("[%1]").arg(i); };
    QList<JsonSpot> elements;
    for (int i = 0; i < std::min(int(list.size()), most); ++i)
        elements.append(Enter(members.at(i).offset, path(i), list.at(i), level));
    if (list.size() > most)
        Add(members.at(most).offset, path(most), "too-many",
            {QString::number(most), QString::number(list.size() - most)});
    return elements;
}

void CatalogueReader::Report(const JsonSpot& spot, const QString& key, const QString& kind, const QStringList& args,
                             const QString& remedyArg)
{
    if (!spot.wrong.contains(key))
        Add(spot.values.value(key, spot.offset), Join(spot.path, key), kind, args, remedyArg);
}

void CatalogueReader::Add(qsizetype offset, const QString& path, const QString& kind, const QStringList& args,
                          const QString& remedyArg)
{
    if (++m_counts[kind] > CatalogueReport::MaxOfKind) {
        ++m_omitted;
        return;
    }
    Finding finding = CatalogueFinding(kind, args, remedyArg);
    finding.file = m_file;
    finding.place = LineAndColumn(m_text, offset) + (path.isEmpty() ? QString() : ": " + path);
    m_findings.emplace(offset, finding);
}
