#pragma once

#include <QCoreApplication>

/// The context of every text of the kit; i18n/fwkit_ru.ts has them in Russian. Programs that install no translator get
/// English.
class Kit
{
    Q_DECLARE_TR_FUNCTIONS(Kit)
};
