#pragma once

#include "Interruption.h"

#include <QLockFile>
#include <QTemporaryDir>

/// A folder for work in progress that is removed again, also when a signal ends the program. What a killed run could
/// not remove, the next one does that makes its folder in the same place.
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
    Interruption m_interruption; ///< the first member: a signal ends the program when the folder is gone
    QTemporaryDir m_folder;
    QLockFile m_lock; ///< tells other runs that this one lives
};
