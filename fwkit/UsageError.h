#pragma once

#include "Error.h"
#include "Kit.h"

#include <QFileInfo>

/// Arguments or files that cannot be used: the text is one line that names file, place and remedy.
class UsageError : public Error
{
public:
    using Error::Error;
};

/// Why `file` could not be opened or read.
inline QString WhyUnreadable(const QFile& file)
{
    const QFileInfo info(file);
    return info.isSymLink() && !info.exists() ? Kit::tr("a link that leads nowhere") : file.errorString();
}
