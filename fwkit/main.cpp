#include "Report.h"
#include "ToolkitWords.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace {

QList<Verb> Verbs()
{
    return {CertifyVerb(), PackVerb(), VerifyVerb(), CheckVerb()};
}

QString ProgramHelp()
{
    QString text =
        Say({"Usage: fwkit VERB [options] ...\n\nWhat a firmware maker needs before the stick leaves the desk, "
             "by the rules of the panel itself.\n\nVerbs:\n",
             "Использование: fwkit ДЕЙСТВИЕ [ключи] ...\n\nЧто нужно изготовителю прошивок до выезда, по "
             "правилам самой панели.\n\nДействия:\n"});
    for (const Verb& verb : Verbs())
        text += "  " + verb.name.leftJustified(9) + Say(verb.summary) + '\n';
    return text
           + Say({"\nfwkit VERB --help tells more; fwkit --version tells the version.\n"
                  "Exit status: 0 fine, 1 findings, 2 misuse or files that cannot be used.\n",
                  "\nfwkit ДЕЙСТВИЕ --help расскажет больше; fwkit --version — версия.\n"
                  "Код завершения: 0 всё в порядке, 1 есть находки, 2 неверный вызов или негодные файлы.\n"});
}

QString VerbHelp(const Verb& verb, const QCommandLineParser& parser)
{
    const QString text = parser.helpText();
    // The toolkit's line of usage names neither the verb nor its arguments.
    return Say({"Usage: fwkit ", "Использование: fwkit "}) + verb.name + ' ' + Say({"[options] ", "[ключи] "})
           + Say(verb.arguments) + text.mid(text.indexOf('\n'));
}

Status RunVerb(const Verb& verb, const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(Say(verb.summary));
    parser.addOption({{"h", "help"}, Say({"This text.", "Эта справка."})});
    verb.addOptions(parser);
    if (!parser.parse(arguments))
        throw Misuse{Filled("%1 See fwkit %2 --help.", "%1 См. fwkit %2 --help.", parser.errorText(), verb.name)};
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
        throw Misuse{name.isEmpty() ? Words{"no verb; see fwkit --help", "нет действия; см. fwkit --help"}
                                    : Filled("%1: no such verb; see fwkit --help", //
                                             "%1: нет такого действия; см. fwkit --help", name)};
    return Fine;
}

/// The toolkit talks of an archive's faults to stderr in its own words; the findings say the same to the maker.
void Hush(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg)
        std::fputs((text + '\n').toUtf8().constData(), stderr);
}

void Complain(const QString& name, const Words& why)
{
    const QString line = "fwkit" + (name.isEmpty() ? name : ' ' + name) + ": " + Say(why);
    std::fputs((Printable(line) + '\n').toUtf8().constData(), stderr);
}

} // namespace

int main(int argc, char* argv[])
{
    qInstallMessageHandler(Hush);
    const QCoreApplication app(argc, argv);
    ToolkitWords words;
    QCoreApplication::installTranslator(&words);
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
        Complain(name, {"the output cannot be written; make room where it goes",
                        "вывод не записывается; освободите место там, куда он идёт"});
    } catch (const Misuse& misuse) {
        std::fflush(stdout);
        Complain(name, misuse.why);
    }
    return IsMisused;
}
