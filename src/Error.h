#pragma once

#include <QString>

#include <stdexcept>

/// Base of everything that our code throws, so that whatever escapes still ends with a text that names its reason.
class Error : public std::runtime_error
{
public:
    /// `text`: one line for people, without a closing line break.
    explicit Error(const QString& text)
        : std::runtime_error(text.toStdString())
    {}
    QString Text() const { return QString::fromUtf8(what()); }
};
