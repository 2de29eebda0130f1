#include "Board.h"
#include "Catalogue.h"
#include "Instrument.h"
#include "Report.h"
#include "Spelling.h"
#include "UsageError.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTemporaryFile>
#include <QTime>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <optional>

#include <sys/signalfd.h>

namespace {

constexpr int MaxSerial = 64;
constexpr double MaxRestartSeconds = 3600;

/// Writes to stdout and flushes, so that a reader of a pipe gets each line at once. Throws UsageError.
void Write(const QString& text)
{
    if (std::fputs(text.toLocal8Bit().constData(), stdout) >= 0 && std::fflush(stdout) == 0)
        return;
    throw UsageError("standard output cannot be written (" + qt_error_string(errno)
                     + "); make room where it goes, or let it be read to the end");
}

/// Ends the event loop when a line cannot be written; an exception must not pass through the event loop.
class Log
{
public:
    void Line(const QString& line)
    {
        try {
            if (!m_failure)
                Write(QTime::currentTime().toString("HH:mm:ss.zzz ") + Printable(line.simplified()) + '\n');
        } catch (const UsageError& error) {
            m_failure = error;
            QCoreApplication::quit();
        }
    }
    /// Throws UsageError when a line could not be written.
    void RequireWritten() const
    {
        if (m_failure)
            throw UsageError(*m_failure);
    }

private:
    std::optional<UsageError> m_failure;
};

/// SIGHUP, SIGINT and SIGTERM end the event loop, unless whoever started the program had it ignore them.
void QuitOnSignals()
{
    sigset_t signalsToRead;
    sigemptyset(&signalsToRead);
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction present = {};
        if (sigaction(number, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            sigaddset(&signalsToRead, number);
    }
    pthread_sigmask(SIG_BLOCK, &signalsToRead, nullptr);
    auto* notifier = new QSocketNotifier(signalfd(-1, &signalsToRead, SFD_CLOEXEC), QSocketNotifier::Read,
                                         QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, &QCoreApplication::quit);
}

QString FaultHelp()
{
    QString help = "How it misbehaves, at request N counted from 1 over all units (the log has each one's number), "
                   "or at every one (KIND@always). Given several times, all of them count.";
    for (const Fault::Entry& fault : Fault::Table())
        help += "\n" + fault.name + ": " + fault.meaning + ".";
    return help;
}

void AddOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription("Plays every firmware module of one device of the catalogue on its own "
                                     "addresses. It ends on SIGHUP, SIGINT or SIGTERM.");
    parser.addOptions({
        {{"h", "help"}, "This text."},
        {{"V", "version"}, "The program's version."},
        {{"c", "catalogue"}, "The device catalogue.", "updater.json"},
        {{"d", "device"}, "The device's IdDev in the catalogue. Default: the first device.", "ID"},
        {"serial", "Serial number: ASCII without space and \";\". Default 000001.", "TEXT", "000001"},
        {"restart", "Silence after an accepted image, 0..3600, decimals allowed. Default 3.", "SECONDS", "3"},
        {"images", "An existing folder for the accepted images. Default: not saved.", "FOLDER"},
        {"fault", FaultHelp(), "KIND@N[,KIND@N...]"},
    });
}

/// Throws UsageError.
void RequireOnce(const QCommandLineParser& parser)
{
    for (const char* name : {"catalogue", "device", "serial", "restart", "images"}) {
        if (parser.values(name).size() > 1)
            throw UsageError(QString("--%1 is given more than once; give it once").arg(name));
    }
}

/// Throws UsageError.
Instrument::Options ReadOptions(const QCommandLineParser& parser)
{
    Instrument::Options options;
    options.serial = parser.value("serial");
    if (!IsAnswerWord(options.serial.toUtf8()) || options.serial.size() > MaxSerial)
        throw UsageError(QString("--serial must be 1..%1 ASCII characters without space and \";\"").arg(MaxSerial));
    bool isNumber = false;
    const double seconds = parser.value("restart").toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0 && seconds <= MaxRestartSeconds))
        throw UsageError(QString("--restart must be a number of seconds 0..%1").arg(MaxRestartSeconds));
    options.restart = std::chrono::milliseconds(std::llround(seconds * 1000));
    options.imageFolder = parser.value("images");
    // Making a file is the only reliable check that this user can write to the folder.
    const QString probe = options.imageFolder + "/probe-XXXXXX";
    if (parser.isSet("images") && (options.imageFolder.isEmpty() || !QTemporaryFile(probe).open()))
        throw UsageError("--images \"" + options.imageFolder + "\" must be a folder where files can be written");
    QString error;
    const auto faults = parser.isSet("fault") ? Fault::Parse(parser.values("fault").join(','), &error) : QList<Fault>();
    if (!faults)
        throw UsageError("--fault: " + error);
    options.faults = *faults;
    return options;
}

/// Returns when the program ends. Throws UsageError.
int Run(const QCommandLineParser& parser)
{
    RequireOnce(parser);
    if (!parser.positionalArguments().isEmpty())
        throw UsageError("\"" + parser.positionalArguments().first() + "\" belongs to no option; see --help");
    if (parser.value("catalogue").isEmpty())
        throw UsageError("no catalogue; name it with --catalogue updater.json");
    if (parser.isSet("device") && parser.value("device").isEmpty())
        throw UsageError("--device is empty; name the IdDev of a device of the catalogue");
    const Instrument::Options options = ReadOptions(parser);
    QuitOnSignals();
    const auto [device, note] = LoadDevice(parser.value("catalogue"), parser.value("device"));
    Instrument instrument(device, options);
    Log log;
    QObject::connect(&instrument, &Instrument::Event, &instrument, [&log](const QString& line) { log.Line(line); });
    QString error;
    if (!instrument.Start(&error))
        throw UsageError(parser.value("catalogue") + QString(": IdDev %1: ").arg(device.IdDev) + error);
    if (!note.isEmpty())
        log.Line(note);
    log.Line("ready: " + device.Name + QString(", modules: %1").arg(instrument.ModuleCount())
             + QString(", addresses: %1").arg(instrument.AddressCount()));
    log.RequireWritten();
    QCoreApplication::exec();
    instrument.End();
    log.RequireWritten();
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    AddOptions(parser);
    // Without a reader of the log the next write then fails and is reported, instead of ending the program silently.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        if (!parser.parse(QCoreApplication::arguments()))
            throw UsageError(WhyNotParsed(parser, "--help"));
        if (!parser.isSet("help") && !parser.isSet("version"))
            return Run(parser);
        Write(parser.isSet("help") ? parser.helpText() : "instrument-simulator " SIMULATOR_VERSION "\n");
        return 0;
    } catch (const Error& error) {
        const QString line = "instrument-simulator: " + Printable(error.Text().simplified()) + '\n';
        std::fputs(line.toLocal8Bit().constData(), stderr);
        return 2;
    }
}
