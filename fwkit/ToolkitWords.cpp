#include "ToolkitWords.h"

#include "Words.h"

#include <QHash>

QString ToolkitWords::translate(const char* context, const char* text, const char*, int) const
{
    static const QHash<QByteArrayView, const char*> Russian{
        {"Options:", "Ключи:"},
        {"[options]", "[ключи]"},
        {"Usage: %1", "Использование: %1"},
        {"Unknown option '%1'.", "Неизвестный ключ «%1»."},
        {"Missing value after '%1'.", "Нет значения после «%1»."},
        {"Unexpected value after '%1'.", "Лишнее значение после «%1»."},
    };
    if (QByteArrayView(context) != "QCommandLineParser")
        return {};
    const char* russian = Russian.value(text);
    return russian ? Say({text, russian}) : QString();
}
