#include "Board.h"
#include "Catalogue.h"
#include "Instrument.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTemporaryFile>
#include <QTime>

#include <cmath>
#include <cstdio>

namespace {

constexpr int MaxSerial = 64;
constexpr double MaxRestartSeconds = 3600;

/// Whoever watches through a pipe sees each line when it happens.
void Print(const QString& line)
{
    const QString text = QTime::currentTime().toString("HH:mm:ss.zzz ") + line.simplified() + '\n';
    std::fputs(text.toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}

QString FaultHelp()
{
    QString help = "How it misbehaves, at request N counted from 1 over all units, or at every one (KIND@always).";
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
        {"catalogue", "The device catalogue.", "updater.json"},
        {"device", "Which device of the catalogue, counted from 0. Default 0.", "N", "0"},
        {"serial", "Serial number: ASCII without space and \";\". Default 000001.", "TEXT", "000001"},
        {"restart", "Silence after an accepted image, 0..3600, decimals allowed. Default 3.", "SECONDS", "3"},
        {"images", "An existing folder for the accepted images. Default: not saved.", "FOLDER"},
        {"fault", FaultHelp(), "KIND@N[,KIND@N...]"},
    });
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
    const auto faults = parser.isSet("fault") ? Fault::Parse(parser.value("fault"), &error) : QList<Fault>();
    if (!faults)
        throw BadInput{"--fault: " + error};
    options.faults = *faults;
    return options;
}

/// Returns when the program ends. Throws BadInput.
int Run(const QCommandLineParser& parser)
{
    if (!parser.positionalArguments().isEmpty())
        throw BadInput{"\"" + parser.positionalArguments().first() + "\" belongs to no option; see --help"};
    if (parser.value("catalogue").isEmpty())
        throw BadInput{"no catalogue; name it with --catalogue updater.json"};
    bool isNumber = false;
    const int index = parser.value("device").toInt(&isNumber);
    if (!isNumber)
        throw BadInput{"--device must be a whole number; devices count from 0"};
    const Instrument::Options options = ReadOptions(parser);
    const TDeviceRecord device = LoadDevice(parser.value("catalogue"), index);
    Instrument instrument(device, options);
    QObject::connect(&instrument, &Instrument::Event, &instrument, &Print);
    QString error;
    if (!instrument.Start(&error))
        throw BadInput{parser.value("catalogue") + QString(": device %1: ").arg(index) + error};
    Print("ready: " + device.Name + QString(", %1 modules").arg(instrument.ModuleCount())
          + QString(" on %1 addresses").arg(instrument.AddressCount()));
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    AddOptions(parser);
    try {
        if (!parser.parse(QCoreApplication::arguments()))
            throw BadInput{parser.errorText() + " See --help."};
        if (!parser.isSet("help"))
            return Run(parser);
        std::fputs(parser.helpText().toLocal8Bit().constData(), stdout);
        return 0;
    } catch (const BadInput& bad) {
        const QString line = "instrument-simulator: " + bad.why.simplified() + '\n';
        std::fputs(line.toLocal8Bit().constData(), stderr);
        return 2;
    }
}
