#pragma once

#include <QString>

class QObject;

/// Operations on the panel computer itself. Each blocks, and logs what it does.
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
    /// CopyTree, logged.
    static bool CopyPath(QString src, QString dst);

    Util() = delete;
};
