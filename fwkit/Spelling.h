#pragma once

#include <QStringList>

class QCommandLineParser;

/// The one of `candidates` that differs least from `text`, upper and lower case aside; empty when all of them differ in
/// more than two letters.
QString Nearest(const QString& text, const QStringList& candidates);
/// Why `parser` could not parse its arguments: the option that was probably meant, or else to see `help`.
QString WhyNotParsed(const QCommandLineParser& parser, const QString& help);
