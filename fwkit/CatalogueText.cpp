#include "CatalogueText.h"

#include "UsageError.h"

#include <QFile>

namespace {

constexpr qint64 MaxFileSize = qint64(4) * 1024 * 1024;

} // namespace

QByteArray ReadCatalogueText(const QString& path)
{
    QFile file(path);
    QByteArray text;
    // Text mode, as the panel opens it, so that offsets refer to the same text.
    if (file.open(QIODevice::ReadOnly | QIODevice::Text))
        text = file.read(MaxFileSize + 1);
    if (file.error() != QFile::NoError)
        throw UsageError(Kit::tr("%1: cannot be read (%2); name a readable catalogue").arg(path, WhyUnreadable(file)));
    if (text.size() > MaxFileSize)
        throw UsageError(Kit::tr("%1: over %2 bytes; name a catalogue").arg(path, QString::number(MaxFileSize)));
    return text;
}
