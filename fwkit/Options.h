#pragma once

class QCommandLineParser;
class QString;

/// Options that several verbs have in common.
void AddCatalogueOption(QCommandLineParser& parser);
void AddDeviceOption(QCommandLineParser& parser);
void AddJsonOption(QCommandLineParser& parser);

/// The option's value; throws UsageError when it is not given.
QString Required(const QCommandLineParser& parser, const QString& option);
