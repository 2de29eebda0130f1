#pragma once

#include "Interruption.h"

#include <QLockFile>
#include <QTemporaryDir>

/// A temporary folder that the destructor removes, also when a signal ends the program. The folder of a killed run is
/// removed when the next object with the same `start` is made.
class WorkFolder
{
public:
    /// `start`: the folder's path without the six letters that make it unique, as "/tmp/fwkit-".
    explicit WorkFolder(const QString& start);
    ~WorkFolder();
    Q_DISABLE_COPY_MOVE(WorkFolder)

    /// Empty when the folder could not be made.
    QString ErrorString() const { return m_folder.isValid() ? QString() : m_folder.errorString(); }
    QString FilePath(const QString& name) const { return m_folder.filePath(name); }

private:
    Interruption m_interruption; ///< first, so destroyed last: a signal takes effect after the folder is removed
    QTemporaryDir m_folder;
    QLockFile m_lock; ///< shows other runs that the folder is in use
};
