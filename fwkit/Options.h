#pragma once

#include <QStringList>

class QCommandLineParser;

/// Options that several verbs have in common.
void AddCatalogueOption(QCommandLineParser& parser);
void AddDeviceOption(QCommandLineParser& parser);
void AddJsonOption(QCommandLineParser& parser);
void AddQuietOption(QCommandLineParser& parser);

/// Throws UsageError that names those of `options` that are not given, and `arguments` when there are no positional
/// ones.
void Require(const QCommandLineParser& parser, const QStringList& options, const QString& arguments);
/// Throws UsageError for an option with several values, since none of them is better than another.
void RefuseRepeated(const QCommandLineParser& parser);
