#include "Board.h"
#include "Catalogue.h"
#include "Instrument.h"

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

/// Whoever watches through a pipe sees each line when it happens. Throws BadInput.
void Write(const QString& text)
{
    if (std::fputs(text.toLocal8Bit().constData(), stdout) >= 0 && std::fflush(stdout) == 0)
        return;
    throw BadInput{"standard output cannot be written (" + qt_error_string(errno)
                   + "); make room where it goes, or let it be read to the end"};
}

/// The first failure to write the log ends the program; nothing may be thrown through the event loop.
class Log
{
public:
    void Line(const QString& line)
    {
        try {
            if (!m_failure)
                Write(QTime::currentTime().toString("HH:mm:ss.zzz ") + line.simplified() + '\n');
        } catch (const BadInput& bad) {
            m_failure = bad;
            QCoreApplication::quit();
        }
    }
    /// Throws BadInput when a line could not be written.
    void RequireWritten() const
    {
        if (m_failure)
            throw BadInput(*m_failure);
    }

private:
    std::optional<BadInput> m_failure;
};

/// SIGINT and SIGTERM end the event loop, unless whoever started the program had it ignore them.
void QuitOnSignals()
{
    sigset_t signalsToRead;
    sigemptyset(&signalsToRead);
    for (const int number : {SIGINT, SIGTERM}) {
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
    QString help = "How it misbehaves, at request N counted from 1 over all units (the log tells each one's number), "
                   "or at every one (KIND@always). Given several times, all of them count.";
    for (const Fault::Entry& fault : Fault::Table())
        help += "\n" + fault.name + ": " + fault.meaning + ".";
    return help;
}

void AddOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription("Plays every firmware module of one device of the catalogue on its own "
                                     "addresses. It ends on SIGINT or SIGTERM.");
    parser.addOptions({
        {{"h", "help"}, "This text."},
        {"version", "The program's version."},
        {"catalogue", "The device catalogue.", "updater.json"},
        {"device", "Which device of the catalogue, counted from 0. Default 0.", "N", "0"},
        {"serial", "Serial number: ASCII without space and \";\". Default 000001.", "TEXT", "000001"},
        {"restart", "Silence after an accepted image, 0..3600, decimals allowed. Default 3.", "SECONDS", "3"},
        {"images", "An existing folder for the accepted images. Default: not saved.", "FOLDER"},
        {"fault", FaultHelp(), "KIND@N[,KIND@N...]"},
    });
}

/// Throws BadInput.
void RequireOnce(const QCommandLineParser& parser)
{
    for (const char* name : {"catalogue", "device", "serial", "restart", "images"}) {
        if (parser.values(name).size() > 1)
            throw BadInput{QString("--%1 is given more than once; give it once").arg(name)};
    }
}

/// Throws BadInput.
Instrument::Options ReadOptions(const QCommandLineParser& parser)
{
    Instrument::Options options;
    options.serial = parser.value("serial");
    if (!IsAnswerWord(options.serial.toUtf8()) || options.serial.size() > MaxSerial)
        throw BadInput{QString("--serial must be 1..%1 ASCII characters without space and \";\"").arg(MaxSerial)};
    bool isNumber = false;
    const double seconds = parser.value("restart").toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0 && seconds <= MaxRestartSeconds))
        throw BadInput{QString("--restart must be a number of seconds 0..%1").arg(MaxRestartSeconds)};
    options.restart = std::chrono::milliseconds(std::llround(seconds * 1000));
    options.imageFolder = parser.value("images");
    // Only a file really made there tells that the folder takes files, whoever runs this.
    const QString probe = options.imageFolder + "/probe-XXXXXX";
    if (parser.isSet("images") && (options.imageFolder.isEmpty() || !QTemporaryFile(probe).open()))
        throw BadInput{"--images \"" + options.imageFolder + "\" must be a folder where files can be written"};
    QString error;
    const auto faults = parser.isSet("fault") ? Fault::Parse(parser.values("fault").join(','), &error) : QList<Fault>();
    if (!faults)
        throw BadInput{"--fault: " + error};
    options.faults = *faults;
    return options;
}

/// Returns when the program ends. Throws BadInput.
int Run(const QCommandLineParser& parser)
{
    RequireOnce(parser);
    if (!parser.positionalArguments().isEmpty())
        throw BadInput{"\"" + parser.positionalArguments().first() + "\" belongs to no option; see --help"};
    if (parser.value("catalogue").isEmpty())
        throw BadInput{"no catalogue; name it with --catalogue updater.json"};
    bool isNumber = false;
    const int index = parser.value("device").toInt(&isNumber);
    if (!isNumber)
        throw BadInput{"--device must be a whole number; devices count from 0"};
    const Instrument::Options options = ReadOptions(parser);
    QuitOnSignals();
    const TDeviceRecord device = LoadDevice(parser.value("catalogue"), index);
    Instrument instrument(device, options);
    Log log;
    QObject::connect(&instrument, &Instrument::Event, &instrument, [&log](const QString& line) { log.Line(line); });
    QString error;
    if (!instrument.Start(&error))
        throw BadInput{parser.value("catalogue") + QString(": device %1: ").arg(index) + error};
    log.Line("ready: " + device.Name + QString(", %1 modules").arg(instrument.ModuleCount())
             + QString(" on %1 addresses").arg(instrument.AddressCount()));
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
    // A reader of the log that is gone is an error of the next line, which names it.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        if (!parser.parse(QCoreApplication::arguments()))
            throw BadInput{parser.errorText() + " See --help."};
        if (!parser.isSet("help") && !parser.isSet("version"))
            return Run(parser);
        Write(parser.isSet("help") ? parser.helpText() : "instrument-simulator " SIMULATOR_VERSION "\n");
        return 0;
    } catch (const BadInput& bad) {
        const QString line = "instrument-simulator: " + bad.why.simplified() + '\n';
        std::fputs(line.toLocal8Bit().constData(), stderr);
        return 2;
    }
}
