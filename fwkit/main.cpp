#include "Options.h"
#include "Report.h"
#include "Spelling.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QLocale>
#include <QStringDecoder>
#include <QTranslator>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <optional>

namespace {

/// Texts of Qt's command line parser, listed for lupdate: Qt's own translation may not be installed.
[[maybe_unused]] constexpr const char* ParserTexts[] = {
    QT_TRANSLATE_NOOP("QCommandLineParser", "Options:"),
    QT_TRANSLATE_NOOP("QCommandLineParser", "[options]"),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Usage: %1"),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Unknown option '%1'."),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Unknown options: %1."),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Missing value after '%1'."),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Unexpected value after '%1'."),
};

QList<Verb> Verbs()
{
    return {CertifyVerb(), PackVerb(), VerifyVerb(), CheckVerb(), ListVerb(), DevicesVerb()};
}

QString StatusHelp()
{
    return Kit::tr("\nExit status: 0 fine, 1 findings, 2 misuse or files that cannot be used.\n");
}

QString ProgramHelp()
{
    QString text =
        Kit::tr("Usage: fwkit VERB [options] ...\n\nWhat a firmware maker needs before the stick leaves the desk, "
                "by the rules of the panel itself.\n\nVerbs:\n");
    for (const Verb& verb : Verbs())
        text += "  " + verb.name.leftJustified(9) + verb.summary + '\n';
    return text + Kit::tr("\nfwkit help VERB tells more; fwkit --version tells the version.\n") + StatusHelp();
}

void AddOptions(const Verb& verb, QCommandLineParser& parser)
{
    parser.setApplicationDescription(verb.summary);
    verb.addOptions(parser);
    AddJsonOption(parser);
    parser.addOption({{"h", "help"}, Kit::tr("This text.")});
}

QString VerbHelp(const Verb& verb)
{
    QCommandLineParser parser;
    AddOptions(verb, parser);
    const QString text = parser.helpText();
    // Qt's usage line has neither the verb nor its arguments.
    return Kit::tr("Usage: fwkit ") + verb.name + ' ' + Kit::tr("[options] ") + verb.arguments
           + text.mid(text.indexOf('\n')) + StatusHelp();
}

Status RunVerb(const Verb& verb, const QStringList& arguments)
{
    QCommandLineParser parser;
    AddOptions(verb, parser);
    if (!parser.parse(arguments))
        throw UsageError(WhyNotParsed(parser, "fwkit " + verb.name + " --help"));
    if (parser.isSet("help")) {
        Print(VerbHelp(verb));
        return Fine;
    }
    RefuseRepeated(parser);
    return verb.run(parser);
}

/// The verb of that name; nothing when there is none.
std::optional<Verb> FindVerb(const QString& name)
{
    const QList<Verb> verbs = Verbs();
    const auto verb = std::find_if(verbs.begin(), verbs.end(), [&](const Verb& one) { return one.name == name; });
    return verb == verbs.end() ? std::nullopt : std::optional(*verb);
}

[[noreturn]] void RefuseVerb(const QString& name)
{
    if (name.isEmpty())
        throw UsageError(Kit::tr("no verb; see fwkit --help"));
    QStringList names{"help"};
    for (const Verb& verb : Verbs())
        names.append(verb.name);
    const QString nearest = Nearest(name, names);
    throw UsageError(nearest.isEmpty() ? Kit::tr("%1: no such verb; see fwkit --help").arg(name)
                                       : Kit::tr("%1: no such verb; did you mean %2?").arg(name, nearest));
}

bool AsksForHelp(const QString& name)
{
    return name == "help" || name == "--help" || name == "-h";
}

/// `arguments`: the program's name, then what follows the verb, as QCommandLineParser expects it.
Status Help(const QStringList& arguments)
{
    const QString name = arguments.value(1);
    if (arguments.size() > 2)
        throw UsageError(Kit::tr("help tells of one verb; name one"));
    const std::optional<Verb> verb = FindVerb(name);
    if (!verb && !name.isEmpty() && !AsksForHelp(name))
        RefuseVerb(name);
    Print(verb ? VerbHelp(*verb) : ProgramHelp());
    return Fine;
}

/// `name`: the first argument, which should be a verb.
Status Run(const QString& name, const QStringList& arguments)
{
    if (const std::optional<Verb> verb = FindVerb(name))
        return RunVerb(*verb, arguments);
    if (AsksForHelp(name))
        return Help(arguments);
    if (name != "--version" && name != "-V")
        RefuseVerb(name);
    Print("fwkit " FWKIT_VERSION "\n");
    return Fine;
}

/// Drops Qt's own warnings about damaged archives: the findings report the damage.
void DropQtMessages(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg)
        std::fputs((text + '\n').toUtf8().constData(), stderr);
}

void Complain(const QString& name, const QString& why)
{
    const QString line = (FindVerb(name) ? "fwkit " + name : QString("fwkit")) + ": " + why;
    std::fputs((Printable(line) + '\n').toUtf8().constData(), stderr);
}

/// Throws UsageError for an argument that is no UTF-8: a QString cannot hold it, and the file would not be found.
void RefuseUnreadable(int count, char* arguments[])
{
    for (int i = 1; i < count; ++i) {
        QStringDecoder utf8(QStringDecoder::Utf8);
        const QString text = utf8(arguments[i]);
        if (utf8.hasError())
            throw UsageError(Kit::tr("%1: this name is no UTF-8, and fwkit opens no other; rename it").arg(text));
    }
}

} // namespace

int main(int argc, char* argv[])
{
    qInstallMessageHandler(DropQtMessages);
    // LC_ALL=C asks for English, whatever list of languages a desktop has set.
    qunsetenv("LANGUAGE");
    const QCoreApplication app(argc, argv);
    QTranslator russian;
    if (russian.load(QLocale(), "fwkit", "_", ":/i18n"))
        QCoreApplication::installTranslator(&russian);
    // With a limit on file sizes a write then fails instead of ending the program.
    std::signal(SIGXFSZ, SIG_IGN);
    QStringList arguments = QCoreApplication::arguments();
    const QString name = arguments.value(1);
    if (arguments.size() > 1)
        arguments.removeAt(1);
    try {
        RefuseUnreadable(argc, argv);
        const Status status = Run(name, arguments);
        RequireWritten(Kit::tr("the report cannot be written to standard output; make room where that goes"));
        return status;
    } catch (const Error& error) {
        std::fflush(stdout);
        Complain(name, error.Text());
    }
    return IsMisused;
}
