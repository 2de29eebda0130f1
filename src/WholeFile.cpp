#include "WholeFile.h"

#include <QSaveFile>

bool CommitWhole(QSaveFile& file, const QByteArray& content)
{
    // Cancelled first, the commit fails.
    if (file.write(content) != content.size() || !file.flush())
        file.cancelWriting();
    return file.commit();
}
