#include "AtomicWrite.h"

#include <QSaveFile>

bool WriteAndCommit(QSaveFile& file, const QByteArray& content)
{
    // Cancelled first, the commit fails.
    if (file.write(content) != content.size() || !file.flush())
        file.cancelWriting();
    return file.commit();
}
