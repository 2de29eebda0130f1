#include "CatalogueWords.h"

#include "Kit.h"

#include <algorithm>
#include <iterator>

namespace {

struct Row
{
    const char* kind;
    const char* effect;
    const char* remedy;
};

constexpr Row Rows[] = {
    {"not-json",
     QT_TRANSLATE_NOOP("Kit",
                       "This is no JSON (%1): the panel takes the whole catalogue for empty and finds no instrument"),
     QT_TRANSLATE_NOOP("Kit", "correct the text here or just before")},
    {"not-utf8",
     QT_TRANSLATE_NOOP("Kit",
                       "This is no UTF-8 (perhaps Windows-1251 or UTF-16): the panel takes the whole catalogue for "
                       "empty and finds no instrument"),
     QT_TRANSLATE_NOOP("Kit", "save it as UTF-8")},
    {"empty-file", QT_TRANSLATE_NOOP("Kit", "The file is empty: the panel finds no instrument"),
     QT_TRANSLATE_NOOP("Kit", "write a catalogue into it and save it as UTF-8")},
    {"comment",
     QT_TRANSLATE_NOOP("Kit",
                       "JSON has no comments: the panel takes the whole catalogue for empty and finds no instrument"),
     QT_TRANSLATE_NOOP("Kit", "remove the comment")},
    {"no-object", QT_TRANSLATE_NOOP("Kit", "This is no object: %1"),
     QT_TRANSLATE_NOOP("Kit", "write an object in { }")},
    {"wrong-type", QT_TRANSLATE_NOOP("Kit", "%1 is no %2: the panel reads %3"), QT_TRANSLATE_NOOP("Kit", "write %1")},
    {"unknown-key", QT_TRANSLATE_NOOP("Kit", "The panel ignores \"%1\""), "%1"},
    {"duplicate-key", QT_TRANSLATE_NOOP("Kit", "\"%1\" is here a second time: only the last one counts"),
     QT_TRANSLATE_NOOP("Kit", "keep one of them")},
    {"too-many", QT_TRANSLATE_NOOP("Kit", "The panel reads only the first %1 here and leaves out %2"),
     QT_TRANSLATE_NOOP("Kit", "remove what is not needed")},
    {"no-devices", QT_TRANSLATE_NOOP("Kit", "There are no instruments: the panel shows an empty table"),
     QT_TRANSLATE_NOOP("Kit", "write a list \"Devices\" with an object for each instrument")},
    {"no-boards", QT_TRANSLATE_NOOP("Kit", "The instrument has no modules and is never found"),
     QT_TRANSLATE_NOOP("Kit", "write a list \"Boards\" with an object for each module")},
    {"no-main-board", QT_TRANSLATE_NOOP("Kit", "No board is asked for its type: the instrument is never found"),
     QT_TRANSLATE_NOOP("Kit", "set \"Main\" to true on the board that knows what the instrument is")},
    {"no-name", QT_TRANSLATE_NOOP("Kit", "The panel shows nothing where the name should be"),
     QT_TRANSLATE_NOOP("Kit", "write a \"Name\"")},
    {"no-number", QT_TRANSLATE_NOOP("Kit", "It is missing: the panel takes 0, in the names of firmware files too"),
     QT_TRANSLATE_NOOP("Kit", "write the number, even if it is 0")},
    {"bad-ip",
     QT_TRANSLATE_NOOP(
         "Kit",
         "\"%1\" is no IPv4 address in full: the panel takes it for a host name or reads it in its own way (010 as 8), "
         "and what it does not reach costs 10 s each time"),
     QT_TRANSLATE_NOOP("Kit", "write four numbers 0..255 with dots and without leading zeros")},
    {"bad-port", QT_TRANSLATE_NOOP("Kit", "No connection to port %1 ever comes up: the version stays \"???\""),
     QT_TRANSLATE_NOOP("Kit", "write the board's TCP port, 1..65535")},
    {"bad-unit",
     QT_TRANSLATE_NOOP("Kit", "The panel sends only the low byte of it: what is meant for unit %1 goes to unit %2"),
     QT_TRANSLATE_NOOP("Kit", "write the unit address, 0..255")},
    {"finish-is-command",
     QT_TRANSLATE_NOOP("Kit", "The word that closes a transfer becomes 0x%1, %2: the board never takes the image"),
     QT_TRANSLATE_NOOP("Kit", "write the processor's number, 0..28")},
    {"finish-unanswered",
     QT_TRANSLATE_NOOP("Kit", "The word that closes a transfer becomes the bare 0xA003, processor 0's, whose missing "
                              "answer counts as success"),
     QT_TRANSLATE_NOOP("Kit", "write the processor's number, 0..28")},
    {"no-version-word",
     QT_TRANSLATE_NOOP("Kit", "No answer to \"VER ?;\" has a word for this processor: with several processors on the "
                              "board the version stays empty and the row cannot be marked"),
     QT_TRANSLATE_NOOP("Kit", "write the processor's number, 0..28")},
    {"far-processor",
     QT_TRANSLATE_NOOP("Kit",
                       "An answer to \"VER ?;\" ends after 250 characters: a version of this processor is in it only "
                       "while those before it are short, and the simulator refuses the number"),
     QT_TRANSLATE_NOOP("Kit", "write the processor's number, 0..28")},
    {"empty-type",
     QT_TRANSLATE_NOOP(
         "Kit",
         "Only an answer without a type fits: a foreign board may be taken for this one, and after an update this one "
         "is waited for in vain"),
     QT_TRANSLATE_NOOP("Kit", "write what the board answers to \"DEVICETYPE ?;\"")},
    {"unmatchable-type",
     QT_TRANSLATE_NOOP(
         "Kit",
         "No answer can have this type: the board is never recognised, and after an update it is waited for in vain"),
     QT_TRANSLATE_NOOP("Kit", "write one word of Latin characters without a space and \";\"")},
    {"no-path",
     QT_TRANSLATE_NOOP("Kit", "Without a \"Path\" this is a board with firmware: \"Folder\" and \"File\" are not used"),
     QT_TRANSLATE_NOOP("Kit", "write any text into \"Path\", or remove \"Folder\" and \"File\"")},
    {"program-is-main", QT_TRANSLATE_NOOP("Kit", "The search tries to connect to a program, which costs 10 s"),
     QT_TRANSLATE_NOOP("Kit", "set \"Main\" on the instrument's board only")},
    {"no-folder", QT_TRANSLATE_NOOP("Kit", "Nothing is copied, and the update still counts as a success"),
     QT_TRANSLATE_NOOP("Kit", "write the program's folder in the archive")},
    {"never-copied-folder",
     QT_TRANSLATE_NOOP("Kit", "A folder \"%1\" is never copied, and the update still counts as a success"),
     QT_TRANSLATE_NOOP("Kit", "name the folder otherwise")},
    {"outside-folder",
     QT_TRANSLATE_NOOP("Kit", "The panel would copy \"%1\", which is not out of the archive, over its own programs"),
     QT_TRANSLATE_NOOP("Kit", "name a folder of the archive, without \"..\"")},
    {"absolute-folder", QT_TRANSLATE_NOOP("Kit", "The panel looks for it inside of the archive, as \"%1\""),
     QT_TRANSLATE_NOOP("Kit", "name a folder of the archive, without \"/\" in front")},
    {"dot-in-name",
     QT_TRANSLATE_NOOP("Kit",
                       "A path with \".\" is never taken for a program file: no archive offers anything for this row"),
     QT_TRANSLATE_NOOP("Kit", "name it without \".\"")},
    {"no-file",
     QT_TRANSLATE_NOOP(
         "Kit", "Every file of an archive without \".\" in its path fits, and the version is sought in \".ver\""),
     QT_TRANSLATE_NOOP("Kit", "write the name of the program file")},
    {"split-file",
     QT_TRANSLATE_NOOP("Kit",
                       "The command that makes the file executable is split here: the update fails after the copy"),
     QT_TRANSLATE_NOOP("Kit", "name the file without spaces and quotation marks")},
    {"slash-in-file", QT_TRANSLATE_NOOP("Kit", "The row's file button shows no file: no file's name has a \"/\""),
     QT_TRANSLATE_NOOP("Kit", "write the file's name alone; its folder belongs in \"Folder\"")},
    {"same-board",
     QT_TRANSLATE_NOOP("Kit", "%1 is the same processor of the same board: it is updated twice with the same file"),
     QT_TRANSLATE_NOOP("Kit", "correct the address, or remove one of them")},
    {"two-types",
     QT_TRANSLATE_NOOP(
         "Kit",
         "%1 is the same unit and has another type: it answers only one of them, and an update of the other fails"),
     QT_TRANSLATE_NOOP("Kit", "correct the address or the type")},
    {"same-device-id", QT_TRANSLATE_NOOP("Kit", "%1 has the same number: their firmware files have the same names"),
     QT_TRANSLATE_NOOP("Kit", "give each instrument a number of its own")},
    {"same-type", QT_TRANSLATE_NOOP("Kit", "The main board %1 answers the same type and is tried first: %2"),
     QT_TRANSLATE_NOOP("Kit", "give each instrument's main board a type of its own")},
    {"file-fits-another",
     QT_TRANSLATE_NOOP("Kit", "\"%1\" of %2 fits this row too: with both in one archive, the last one there is taken"),
     QT_TRANSLATE_NOOP("Kit", "choose numbers or names of which none is part of another's")},
};

QString Filled(const QString& text, const QStringList& args)
{
    // In one call of arg(): a "%2" inside of a value must not be replaced.
    switch (args.size()) {
    case 0:
        return text;
    case 1:
        return text.arg(args[0]);
    case 2:
        return text.arg(args[0], args[1]);
    }
    return text.arg(args[0], args[1], args[2]);
}

} // namespace

Finding CatalogueFinding(const QString& kind, const QStringList& args, const QString& remedyArg)
{
    const auto* row = std::find_if(std::begin(Rows), std::end(Rows), [&](const Row& r) { return kind == r.kind; });
    Q_ASSERT(row != std::end(Rows));
    const QString remedy = Kit::tr(row->remedy);
    return {kind, {}, {}, Filled(Kit::tr(row->effect), args), remedyArg.isEmpty() ? remedy : remedy.arg(remedyArg)};
}

QStringList CatalogueKinds()
{
    QStringList kinds;
    for (const Row& row : Rows)
        kinds.append(row.kind);
    return kinds;
}
