#include "Util.h"

#include "FirmwareFiles.h"
#include "TimeLimits.h"
#include "TreeCopy.h"

#include <QDebug>
#include <QMessageBox>
#include <QProcess>

#include <memory>
#include <utility>

namespace {

/// Kills a command that still runs. One that runs as root cannot be killed, and waiting for it might never end: it is
/// left to end by itself.
void End(std::unique_ptr<QProcess> process)
{
    process->kill();
    if (process->state() == QProcess::NotRunning || process->waitForFinished(int(g_timeLimits.killedCommand.count())))
        return;
    QObject::connect(process.get(), &QProcess::finished, process.get(), &QObject::deleteLater);
    static_cast<void>(process.release());
}

} // namespace

bool Util::BashCommand(QString command)
{
    qDebug().noquote() << "-------- BASH --------\n";
    qDebug().noquote() << command;
    auto process = std::make_unique<QProcess>();
    // QProcess would take the program's name from an empty list.
    if (!QProcess::splitCommand(command).isEmpty()) {
        process->startCommand(command);
        process->waitForFinished(int(g_timeLimits.systemCommand.count()));
    }
    const QString errors = process->readAllStandardError();
    qDebug().noquote() << process->readAllStandardOutput();
    qDebug().noquote() << errors;
    End(std::move(process));
    qDebug().noquote() << "-------- BASH --------\n";
    return errors.isEmpty();
}

QString Util::GetVersion(QObject*, QString dir, QString name, bool)
{
    qDebug().noquote() << "Try get ver" << dir << name;
    const VersionFile file = ReadVersionFile(dir, name);
    if (file.fault.isEmpty())
        return file.version;
    qDebug().noquote() << file.fault;
    // QMessageBox::critical, spelled out: a file name is shown as text, never as markup.
    const Alert alert = file.ErrorAlert();
    QMessageBox box(QMessageBox::Critical, alert.title, alert.text, QMessageBox::Ok);
    box.setTextFormat(Qt::PlainText);
    box.exec();
    return file.version;
}

bool Util::CopyPath(QString src, QString dst)
{
    // Q_FUNC_INFO of the lambda would name the lambda.
    return CopyTree(src, dst, [function = Q_FUNC_INFO](const QString& line) {
        QMessageLogger(QT_MESSAGELOG_FILE, QT_MESSAGELOG_LINE, function).debug().noquote() << line;
    });
}
