#pragma once

#include <QCoreApplication>

/// The translation context of all texts of fwkit; i18n/fwkit_ru.ts has the Russian ones. Without a QTranslator they are
/// English.
class Kit
{
    Q_DECLARE_TR_FUNCTIONS(Kit)
};
