#pragma once

#include <QJsonObject>
#include <QString>

/// The value of `key` when it is a JSON string, otherwise "".
QString JsonString(const QJsonObject& obj, const QString& key);
/// The value of `key` when it is a whole JSON number that fits an int, otherwise 0.
int JsonInt(const QJsonObject& obj, const QString& key);
/// The value of `key` when it is a JSON boolean, or whether it is a whole number other than 0; otherwise
/// false.
bool JsonBool(const QJsonObject& obj, const QString& key);

/// Base of every parameter set that is kept in a JSON file. A derived class reads its members from the file's object
/// and writes them into it; the file handling and the version number are here. It is never deleted through a pointer to
/// the base, hence no virtual destructor.
class TSavedJSONParameters
{
public:
    /// Version of the file's contents: 200 until a load replaces it by the file's "DeviceVersion".
    int DeviceVersion = CurrentVersion;
    /// The path last given to LoadFromFile or SaveToFile; empty before.
    QString FileName;

    virtual void ReadFromJson(const QJsonObject& obj);
    virtual void WriteToJson(QJsonObject& obj);
    /// False only when the file cannot be opened (then only FileName has changed). A file that is not
    /// JSON, or whose top level is not an object, loads as an empty object.
    virtual bool LoadFromFile(const QString& path);
    /// True when the file was written whole and took the old one's place; otherwise the old one stands.
    virtual bool SaveToFile(const QString& path);
    /// As LoadFromFile and SaveToFile with the path last used; false when there was none.
    virtual bool Load();
    virtual bool Save();
    /// For derived classes to override. Without an override it recurses forever once a file name is known.
    virtual bool Reapply(int value);
    virtual void SetModified(bool modified);

    /// Writes `obj` as indented JSON, atomically. False leaves the previous file as it was.
    static bool SaveJsonToFile(const QString& path, QJsonObject& obj);

private:
    static constexpr int CurrentVersion = 200;
};
