#pragma once

#include "FirmwareArchive.h"

#include <QByteArray>
#include <QList>
#include <QTemporaryDir>

/// A folder to extract into, with a link that leads out of it, inside a folder in which nothing else may change.
class ExtractionSandbox
{
public:
    ExtractionSandbox();

    QString Folder() const { return m_root.path() + "/deep/firmware"; }
    /// Extracts, as ExtractAll does, and requires that everything outside is as it was and that only files and folders,
    /// all of them the archive's, are inside.
    bool Extract(const FirmwareArchive& archive) const;
    /// The content of a file below the folder.
    QByteArray Content(const QString& path) const;
    /// Empties the folder down to the link.
    void Reset() const;

private:
    QTemporaryDir m_root;
};

/// Whether the names alone show that the archive would touch something outside; decided without the program's code.
bool IsHostile(const QList<ArchiveEntry>& entries);
