#pragma once

#include <QTranslator>

/// Russian for what Qt itself writes into the file dialog: from Qt's translation where that is installed and loaded,
/// and for what an operator meets there also without it. Everything else of Qt's stays as it is: the texts of system
/// errors stand in the log and in a message box, and must not depend on what is installed.
class DialogTexts : public QTranslator
{
public:
    /// Loads Qt's translation if it is there.
    DialogTexts();
    QString translate(const char* context, const char* text, const char* disambiguation, int n) const override;
};
