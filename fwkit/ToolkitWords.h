#pragma once

#include <QTranslator>

/// What the toolkit says of options, in the language of the tool: its own translations may not be installed.
class ToolkitWords : public QTranslator
{
    Q_OBJECT

public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char* disambiguation, int n) const override;
};
