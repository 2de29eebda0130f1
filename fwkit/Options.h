#pragma once

#include <QStringList>

class QCommandLineParser;

/// Options that several verbs have in common.
void AddCatalogueOption(QCommandLineParser& parser);
void AddDeviceOption(QCommandLineParser& parser);
void AddJsonOption(QCommandLineParser& parser);
void AddQuietOption(QCommandLineParser& parser);

/// Throws UsageError that names all of the `options`, and `arguments`, that are not given.
void Require(const QCommandLineParser& parser, const QStringList& options, const QString& arguments);
/// Throws UsageError for an option that has more than one value: which of them counts would be a guess.
void RefuseRepeated(const QCommandLineParser& parser);
