#include "Answers.h"

#include <QStringList>

namespace {

QStringList Words(QString line)
{
    return line.remove(';').split(' ');
}

} // namespace

QString DeviceTypeIn(const QString& answer)
{
    return Words(answer).value(1);
}

QString SerialIn(const QString& answer)
{
    return Words(answer).last();
}

std::optional<QString> VersionIn(const QString& answer, int idCpu)
{
    // Not const: the assertion for an index out of range must name QList::operator[], which only the non-const one
    // does.
    QStringList words = Words(answer);
    if (words.size() <= 2)
        return words[1];
    const qint64 index = qint64(idCpu) + 1;
    if (index < 0 || index >= words.size())
        return std::nullopt;
    return words[index];
}
