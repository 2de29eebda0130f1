#include "SavedJSONParameters.h"

#include "AtomicWrite.h"

#include <QDebug>
#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>

QString JsonString(const QJsonObject& obj, const QString& key)
{
    return obj.value(key).toString();
}

int JsonInt(const QJsonObject& obj, const QString& key)
{
    return obj.value(key).toInt(0);
}

bool JsonBool(const QJsonObject& obj, const QString& key)
{
    const QJsonValue value = obj.value(key);
    return value.isDouble() ? value.toInt(0) != 0 : value.toBool(false);
}

void TSavedJSONParameters::ReadFromJson(const QJsonObject&) {}

void TSavedJSONParameters::WriteToJson(QJsonObject&) {}

void TSavedJSONParameters::SetModified(bool) {}

bool TSavedJSONParameters::LoadFromFile(const QString& path)
{
    FileName = path;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qDebug().noquote() << "Couldn't open file " + path + "    Error: " + file.errorString();
        return false;
    }
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    DeviceVersion = JsonInt(object, "DeviceVersion");
    ReadFromJson(object);
    file.close();
    return true;
}

bool TSavedJSONParameters::SaveToFile(const QString& path)
{
    FileName = path;
    QJsonObject object;
    // Always the version this class writes, never the one that was loaded.
    object["DeviceVersion"] = CurrentVersion;
    WriteToJson(object);
    return SaveJsonToFile(path, object);
}

bool TSavedJSONParameters::Load()
{
    return !FileName.isEmpty() && LoadFromFile(FileName);
}

bool TSavedJSONParameters::Save()
{
    return !FileName.isEmpty() && SaveToFile(FileName);
}

// Deliberate: without an override Reapply() recurses forever once FileName is set.
// NOLINTNEXTLINE(misc-no-recursion)
bool TSavedJSONParameters::Reapply(int value)
{
    return !FileName.isEmpty() && Reapply(value);
}

bool TSavedJSONParameters::SaveJsonToFile(const QString& path, QJsonObject& obj)
{
    QSaveFile file(path);
    try {
        if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
            return false;
        if (WriteAndCommit(file, QJsonDocument(obj).toJson(QJsonDocument::Indented)))
            return true;
        qWarning().noquote() << "Error saveFile.commit() " + file.fileName();
        return false;
    } catch (...) {
        qDebug().noquote() << "Invalid SaveJsonToFile() " + file.fileName();
        file.cancelWriting();
        return false;
    }
}
