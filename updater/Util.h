#pragma once

#include <QString>

class QObject;

/// What the update needs of the panel computer's own system. All of it blocks, all of it is logged.
class Util
{
public:
    /// Runs `command`, split into program and arguments without a shell, for at most
    /// g_timeLimits.systemCommand; then it is killed. True when it wrote nothing to its standard error:
    /// neither the exit status nor a failed start counts.
    static bool BashCommand(QString command);
    /// Text of the file `dir`/`name`.ver as it stands, a closing line break included. When it cannot be
    /// opened an error box is shown and "???" returned. `parent` and `flag` are not used.
    static QString GetVersion(QObject* parent, QString dir, QString name, bool flag);
    /// Copies the files and folders of `src` over those of `dst` (absolute paths; `dst` exists). Hidden
    /// entries and folders named "base", "firmware" or "update.old" are left out at every level. Linked folders are
    /// copied as folders, unless they lead back to one above or into the target; inside of a linked folder each
    /// further one only once. Of a folder's files those named "*.ver" come last. False at the first entry that fails;
    /// what was copied before stays. Each file is replaced in one step: whatever happens, its name holds the old file
    /// or the new one. What a killed copy left hidden in a folder of `dst` is removed.
    static bool CopyPath(QString src, QString dst);

    Util() = delete;
};
