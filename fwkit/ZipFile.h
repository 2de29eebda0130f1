#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class Progress;

/// A file of an archive that is to be written.
struct ZipItem
{
    QString name;
    QString source; ///< file that is copied; empty: `content` is taken
    QByteArray content;
    bool isExecutable = false;
};

/// Writes a zip archive (APPNOTE.TXT, without zip64). The same items give the same bytes at any time, in any time zone
/// and whoever does it: dates and modes are fixed. `name` is what a failure calls the file. Throws UsageError.
void WriteZipFile(const QString& path, const QString& name, const QList<ZipItem>& items, Progress& progress);
