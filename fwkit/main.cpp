#include "Report.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace {

/// What Qt's parser says, for lupdate: Qt's own translation may not be installed.
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
    return {CertifyVerb(), PackVerb(), VerifyVerb(), CheckVerb()};
}

QString ProgramHelp()
{
    QString text =
        Kit::tr("Usage: fwkit VERB [options] ...\n\nWhat a firmware maker needs before the stick leaves the desk, "
                "by the rules of the panel itself.\n\nVerbs:\n");
    for (const Verb& verb : Verbs())
        text += "  " + verb.name.leftJustified(9) + verb.summary + '\n';
    return text
           + Kit::tr("\nfwkit VERB --help tells more; fwkit --version tells the version.\n"
                     "Exit status: 0 fine, 1 findings, 2 misuse or files that cannot be used.\n");
}

QString VerbHelp(const Verb& verb, const QCommandLineParser& parser)
{
    const QString text = parser.helpText();
    // Qt's line of usage names neither the verb nor its arguments.
    return Kit::tr("Usage: fwkit ") + verb.name + ' ' + Kit::tr("[options] ") + verb.arguments
           + text.mid(text.indexOf('\n'));
}

Status RunVerb(const Verb& verb, const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(verb.summary);
    parser.addOption({{"h", "help"}, Kit::tr("This text.")});
    verb.addOptions(parser);
    if (!parser.parse(arguments))
        throw UsageError(Kit::tr("%1 See fwkit %2 --help.").arg(parser.errorText(), verb.name));
    if (!parser.isSet("help"))
        return verb.run(parser);
    Print(VerbHelp(verb, parser));
    return Fine;
}

/// `name`: the verb, or what stands in its place.
Status Run(const QString& name, const QStringList& arguments)
{
    const QList<Verb> verbs = Verbs();
    const auto verb = std::find_if(verbs.begin(), verbs.end(), [&](const Verb& one) { return one.name == name; });
    if (verb != verbs.end())
        return RunVerb(*verb, arguments);
    if (name == "--help" || name == "-h")
        Print(ProgramHelp());
    else if (name == "--version")
        Print("fwkit " FWKIT_VERSION "\n");
    else
        throw UsageError(name.isEmpty() ? Kit::tr("no verb; see fwkit --help")
                                        : Kit::tr("%1: no such verb; see fwkit --help").arg(name));
    return Fine;
}

/// Qt talks of an archive's faults to stderr in its own words; the findings say the same to the maker.
void Hush(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg)
        std::fputs((text + '\n').toUtf8().constData(), stderr);
}

void Complain(const QString& name, const QString& why)
{
    const QString line = "fwkit" + (name.isEmpty() ? name : ' ' + name) + ": " + why;
    std::fputs((Printable(line) + '\n').toUtf8().constData(), stderr);
}

} // namespace

int main(int argc, char* argv[])
{
    qInstallMessageHandler(Hush);
    // LC_ALL=C asks for English, whatever list of languages a desktop has set.
    qunsetenv("LANGUAGE");
    const QCoreApplication app(argc, argv);
    QTranslator russian;
    if (russian.load(QLocale(), "fwkit", "_", ":/i18n"))
        QCoreApplication::installTranslator(&russian);
    // A limit on file sizes is a write that fails, not the program's end.
    std::signal(SIGXFSZ, SIG_IGN);
    QStringList arguments = QCoreApplication::arguments();
    const QString name = arguments.value(1);
    if (arguments.size() > 1)
        arguments.removeAt(1);
    try {
        const Status status = Run(name, arguments);
        if (std::fflush(stdout) == 0 && !std::ferror(stdout))
            return status;
        Complain(name, Kit::tr("the output cannot be written; make room where it goes"));
    } catch (const Error& error) {
        std::fflush(stdout);
        Complain(name, error.Text());
    }
    return IsMisused;
}
