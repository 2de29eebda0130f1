#include "Watched.h"

#include "Clock.h"
#include "Figure.h"

#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QRegularExpression>

namespace {

constexpr int Patience = 120000;

double Bytes(const QByteArray& text, const QString& field)
{
    static const QString number = R"(:\s+(\d+) kB)";
    double sum = 0;
    auto matches = QRegularExpression('^' + field + number, QRegularExpression::MultilineOption).globalMatch(text);
    if (!matches.hasNext())
        throw Unmeasurable{"the system does not tell a program's " + field};
    while (matches.hasNext())
        sum += matches.next().captured(1).toDouble();
    return sum * double(KiB);
}

} // namespace

Watched::Watched(const QString& program, const QString& steps, const QStringList& arguments)
    : m_log(QDir::current().filePath(QFileInfo(program).fileName() + ".log"))
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("UPDATER_UI_SCRIPT", STEPS_FOLDER "/bench-" + steps);
    environment.insert("QT_QPA_GENERIC_PLUGINS", "uidriver");
    environment.insert("QT_PLUGIN_PATH", PLUGIN_FOLDER);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardErrorFile(m_log);
    m_started = Now();
    m_process.start(program, arguments);
}

Watched::~Watched()
{
    m_process.kill();
    m_process.waitForFinished();
}

QString Watched::Await(const QString& word)
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(Patience))
            throw Unmeasurable{m_process.program() + " did not come to \"" + word + "\": see " + m_log};
    }
    const QString line = QString::fromLatin1(m_process.readLine()).trimmed();
    if (!line.startsWith(word))
        throw Unmeasurable{m_process.program() + " printed \"" + line + "\" instead of \"" + word + '"'};
    return line.mid(word.size() + 1);
}

void Watched::Finish()
{
    if (!m_process.waitForFinished(Patience) || m_process.exitCode() != 0)
        throw Unmeasurable{m_process.program() + " did not end well: see " + m_log};
}

Watched::Memory Watched::Uses() const
{
    const QByteArray maps = Proc("smaps_rollup");
    return {Bytes(maps, "Rss"), Bytes(maps, "Private_(?:Clean|Dirty)")};
}

double Watched::Peak() const
{
    return Bytes(Proc("status"), "VmHWM");
}

void Watched::ForgetPeak()
{
    QFile file(QString("/proc/%1/clear_refs").arg(m_process.processId()));
    if (!file.open(QIODevice::WriteOnly) || file.write("5") != 1)
        throw Unmeasurable{file.fileName() + ": " + file.errorString()};
}

QByteArray Watched::Proc(const QString& name) const
{
    QFile file(QString("/proc/%1/%2").arg(m_process.processId()).arg(name));
    if (!file.open(QIODevice::ReadOnly))
        throw Unmeasurable{file.fileName() + ": " + file.errorString()};
    return file.readAll();
}
