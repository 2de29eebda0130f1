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
    // Not const: only the changeable list's index check names itself "QList::operator[]" when it fails.
    QStringList words = Words(answer);
    if (words.size() <= 2)
        return words[1];
    const qint64 index = qint64(idCpu) + 1;
    if (index < 0 || index >= words.size())
        return std::nullopt;
    return words[index];
}
