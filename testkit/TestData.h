#pragma once

#include "AppConfig.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

/// Data that tests and the demo need: catalogues, images, certificates, archives.
namespace testdata {

using Files = QList<QPair<QString, QByteArray>>;

/// A free port of `ip`.
int FreePort(const QString& ip);
TBoardRecord Board(const QString& name, const QString& type, const QString& ip, int port, int unit, int cpu);
TBoardRecord Program(const QString& name, const QString& folder, const QString& file);
TDeviceRecord Device(const QString& name, int idDev, const QList<TBoardRecord>& boards);
void WriteCatalogue(const QString& path, const QList<TDeviceRecord>& devices);

/// An image that carries its version as the simulated instrument reads it; no two versions share a byte run.
QByteArray Image(const QString& version, int size);
/// `files`, each followed by its certificate.
Files WithCertificates(const Files& files);
/// Stops the program when the file cannot be written.
void WriteFile(const QString& path, const QByteArray& content);
void WriteZip(const QString& path, const Files& files);
QByteArray ReadFile(const QString& path);

} // namespace testdata
