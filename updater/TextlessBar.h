#pragma once

#include <QProgressBar>

/// A bar without text. Whenever the value changes, at each block of an image, the toolkit's own writes the text that an
/// empty format does not show and measures "100%": 3 microseconds, of the 20 that a block takes.
class TextlessBar : public QProgressBar
{
public:
    explicit TextlessBar(QWidget* parent)
        : QProgressBar(parent)
    {
        setTextVisible(false);
    }
    QString text() const override { return {}; }
};
