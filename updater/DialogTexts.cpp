#include "DialogTexts.h"

#include <QHash>
#include <QLibraryInfo>

DialogTexts::DialogTexts()
{
    static_cast<void>(load("qtbase_ru", QLibraryInfo::path(QLibraryInfo::TranslationsPath)));
}

QString DialogTexts::translate(const char* context, const char* text, const char* disambiguation, int n) const
{
    static const QStringList contexts{
        "QAbstractFileIconProvider", "QFileDialog", "QFileSystemModel", "QLineEdit", "QPlatformTheme",
        "QWidgetTextControl"};
    static const QHash<QByteArray, QString> texts{
        {"&Open", "Открыть"},
        {"Back", "Назад"},
        {"Go back", "Назад"},
        {"Forward", "Вперёд"},
        {"Go forward", "Вперёд"},
        {"Parent Directory", "Родительская папка"},
        {"Go to the parent directory", "В родительскую папку"},
        {"Create New Folder", "Создать папку"},
        {"Create a New Folder", "Создать папку"},
        {"New Folder", "Новая папка"},
        {"List View", "Список"},
        {"Change to list view mode", "Показать списком"},
        {"Detail View", "Подробно"},
        {"Change to detail view mode", "Показать подробно"},
        {"Name", "Имя"},
        {"Size", "Размер"},
        {"Type", "Тип"},
        {"Date Modified", "Дата изменения"},
        {"Folder", "Папка"},
        {"Computer", "Компьютер"},
        {"Recent Places", "Недавние папки"},
        {"%1\nFile not found.\nPlease verify the correct file name was given.", "%1\nФайл не найден."},
    };
    if (!contexts.contains(context))
        return {};
    const auto own = texts.constFind(text);
    return own != texts.cend() ? *own : QTranslator::translate(context, text, disambiguation, n);
}
