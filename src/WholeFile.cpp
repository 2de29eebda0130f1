#include "WholeFile.h"

#include <QSaveFile>

bool CommitWhole(QSaveFile& file, const QByteArray& content)
{
    // Without the commit the save file drops what it wrote, and keeps the reason as its error.
    return file.write(content) == content.size() && file.flush() && file.commit();
}
