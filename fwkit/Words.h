#pragma once

#include <QString>

/// A text in both languages of the tool.
struct Words
{
    QString en;
    QString ru;
};

/// The texts with "%1", "%2"... filled in.
template <typename... Texts>
Words Filled(const char* en, const char* ru, const Texts&... texts)
{
    return {QString(en).arg(texts...), QString(ru).arg(texts...)};
}

/// The text in the language of the locale (LC_ALL, LC_MESSAGES, LANG, the first that is set): Russian for "ru…",
/// English for any other.
QString Say(const Words& words);
