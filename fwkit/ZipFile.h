#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class Progress;

/// A file to be written to an archive.
struct ZipItem
{
    QString name;   ///< path in the archive
    QString source; ///< the file to copy; empty: `content` is written
    QByteArray content;
    bool isExecutable = false;
};

/// Writes a zip archive (APPNOTE.TXT, without zip64) to `path`, which must not exist. Dates and modes are fixed, so
/// that the same items always give the same bytes. `name` is the archive's name in error texts. Throws UsageError when
/// it cannot be written, Interrupted when a signal has come.
void WriteZipFile(const QString& path, const QString& name, const QList<ZipItem>& items, Progress& progress);
