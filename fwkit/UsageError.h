#pragma once

#include "Error.h"
#include "Kit.h"

#include <QFileInfo>

/// Thrown for arguments or files that cannot be used; the text is one line that names file, place and remedy.
class UsageError : public Error
{
public:
    using Error::Error;
};

/// Why opening or reading `file` failed, as a text for people.
inline QString WhyUnreadable(const QFile& file)
{
    const QFileInfo info(file);
    return info.isSymLink() && !info.exists() ? Kit::tr("a link that leads nowhere") : file.errorString();
}
