#include "CatalogueWords.h"

#include <algorithm>
#include <iterator>

namespace {

struct Row
{
    const char* kind;
    const char* effect[2];
    const char* remedy[2];
};

constexpr Row Rows[] = {
    {"not-json",
     {"This is no JSON (%1): the panel takes the whole catalogue for empty and finds no instrument",
      "Это не JSON (%1): панель считает весь каталог пустым и не находит ни одного прибора"},
     {"correct the text here or just before", "исправьте текст здесь или прямо перед этим местом"}},
    {"no-object", {"This is no object: %1", "Это не объект: %1"}, {"write an object in { }", "напишите объект в { }"}},
    {"wrong-type", {"%1 is no %2: the panel reads %3", "%1: это не %2, панель читает %3"}, {"write %4", "напишите %4"}},
    {"unknown-key", {"The panel ignores \"%1\"", "Панель не замечает «%1»"}, {"%2", "%2"}},
    {"duplicate-key",
     {"\"%1\" is here a second time: only the last one counts", "«%1» здесь повторно: считается только последнее"},
     {"keep one of them", "оставьте одно из них"}},
    {"too-many",
     {"The panel reads only the first %1 here and leaves out %2",
      "Панель читает здесь только первые %1, пропущено: %2"},
     {"remove what is not needed", "уберите лишнее"}},
    {"no-devices",
     {"There are no instruments: the panel shows an empty table", "Нет ни одного прибора: таблица панели пуста"},
     {"write a list \"Devices\" with an object for each instrument",
      "напишите список «Devices», в нём по объекту на прибор"}},
    {"no-boards",
     {"The instrument has no modules and is never found", "У прибора нет модулей, он никогда не будет найден"},
     {"write a list \"Boards\" with an object for each module",
      "напишите список «Boards», в нём по объекту на модуль"}},
    {"no-main-board",
     {"No board is asked for its type: the instrument is never found",
      "Ни одну плату не спрашивают о типе: прибор никогда не будет найден"},
     {"set \"Main\" to true on the board that knows what the instrument is",
      "задайте «Main»: true у платы, которая знает тип прибора"}},
    {"no-name",
     {"The panel shows nothing where the name should be", "Там, где должно быть имя, панель ничего не показывает"},
     {"write a \"Name\"", "напишите «Name»"}},
    {"no-number",
     {"It is missing: the panel takes 0, in the names of firmware files too",
      "Его нет: панель берёт 0, в именах файлов прошивок тоже"},
     {"write the number, even if it is 0", "напишите число, даже если это 0"}},
    {"bad-ip",
     {"\"%1\" is no IPv4 address in full: the panel takes it for a host name or reads it in its own way (010 as 8), "
      "and what it does not reach costs 10 s each time",
      "«%1» — не полный адрес IPv4: панель примет его за имя узла или прочтёт по-своему (010 как 8), а каждая "
      "неудачная попытка стоит 10 с"},
     {"write four numbers 0..255 with dots and without leading zeros",
      "напишите четыре числа 0..255 через точку, без нулей впереди"}},
    {"bad-port",
     {"No connection to port %1 ever comes up: the version stays \"???\"",
      "К порту %1 связи не будет никогда: версия останется «???»"},
     {"write the board's TCP port, 1..65535", "напишите порт TCP платы, 1..65535"}},
    {"bad-unit",
     {"There is no unit %1, and nothing is sent to it: the row shows \"???\" and takes no file",
      "Устройства %1 не бывает, и ему ничего не посылается: в строке стоит «???», файл она не берёт"},
     {"write the unit address, 0..255", "напишите адрес устройства, 0..255"}},
    {"finish-is-command",
     {"The word that closes a transfer becomes 0x%1, %2: the board never takes the image",
      "Слово, которым завершается передача, становится 0x%1, %2: плата не примет прошивку"},
     {"write the processor's number, 0..122", "напишите номер процессора, 0..122"}},
    {"finish-unanswered",
     {"The word that closes a transfer becomes the bare 0xA003, processor 0's, whose missing answer counts as success",
      "Слово, которым завершается передача, становится простым 0xA003 процессора 0, и молчание платы сочтут успехом"},
     {"write the processor's number, 0..122", "напишите номер процессора, 0..122"}},
    {"no-version-word",
     {"No answer to \"VER ?;\" has a word for this processor: with several processors on the board the version stays "
      "empty and the row cannot be marked",
      "Ни в одном ответе на «VER ?;» нет слова для этого процессора: если их на плате несколько, версия останется "
      "пустой и строку не отметить"},
     {"write the processor's number, 0..122", "напишите номер процессора, 0..122"}},
    {"empty-type",
     {"Only an answer without a type fits: a foreign board may be taken for this one, and after an update this one "
      "is waited for in vain",
      "Подойдёт только ответ без типа: чужую плату могут принять за эту, а эту после обновления не дождутся"},
     {"write what the board answers to \"DEVICETYPE ?;\"", "напишите, что плата отвечает на «DEVICETYPE ?;»"}},
    {"unmatchable-type",
     {"No answer can have this type: the board is never recognised, and after an update it is waited for in vain",
      "Такого типа нет ни в одном ответе: плату никогда не узнают, а после обновления не дождутся"},
     {"write one word of Latin characters without a space and \";\"",
      "напишите одно слово латиницей без пробела и «;»"}},
    {"no-path",
     {"Without a \"Path\" this is a board with firmware: \"Folder\" and \"File\" are not used",
      "Без «Path» это плата с прошивкой: «Folder» и «File» не используются"},
     {"write any text into \"Path\", or remove \"Folder\" and \"File\"",
      "напишите в «Path» любой текст или уберите «Folder» и «File»"}},
    {"program-is-main",
     {"The search tries to connect to a program, which costs 10 s",
      "Поиск попытается соединиться с программой, это стоит 10 с"},
     {"set \"Main\" on the instrument's board only", "задайте «Main» только у платы прибора"}},
    {"no-folder",
     {"Nothing is copied, and the update still counts as a success",
      "Ничего не копируется, а обновление всё же считается успешным"},
     {"write the program's folder in the archive", "напишите папку программы в архиве"}},
    {"never-copied-folder",
     {"A folder \"%1\" is never copied, and the update still counts as a success",
      "Папка «%1» никогда не копируется, а обновление всё же считается успешным"},
     {"name the folder otherwise", "назовите папку иначе"}},
    {"outside-folder",
     {"The panel would copy \"%1\", which is not out of the archive, over its own programs",
      "Панель скопировала бы поверх своих программ «%1», а это не из архива"},
     {"name a folder of the archive, without \"..\"", "назовите папку архива, без «..»"}},
    {"absolute-folder",
     {"The panel looks for it inside of the archive, as \"%1\"", "Панель ищет её внутри архива, как «%1»"},
     {"name a folder of the archive, without \"/\" in front", "назовите папку архива, без «/» впереди"}},
    {"dot-in-name",
     {"A path with \".\" is never taken for a program file: no archive offers anything for this row",
      "Путь с точкой никогда не берут за файл программы: ни один архив ничего не даст этой строке"},
     {"name it without \".\"", "назовите без точки"}},
    {"no-file",
     {"Every file of an archive without \".\" in its path fits, and the version is sought in \".ver\"",
      "Подходит любой файл архива без точки в пути, а версию ищут в «.ver»"},
     {"write the name of the program file", "напишите имя файла программы"}},
    {"split-file",
     {"The command that makes the file executable is split here: the update fails after the copy",
      "Команда, которая делает файл исполняемым, здесь распадается: обновление откажет после копирования"},
     {"name the file without spaces and quotation marks", "назовите файл без пробелов и кавычек"}},
    {"slash-in-file",
     {"The row's file button shows no file: no file's name has a \"/\"",
      "Кнопка файла в строке ничего не покажет: в имени файла нет «/»"},
     {"write the file's name alone; its folder belongs in \"Folder\"",
      "напишите только имя файла, его папка — это «Folder»"}},
    {"same-board",
     {"%1 is the same processor of the same board: it is updated twice with the same file",
      "%1 — тот же процессор той же платы: её обновят дважды одним файлом"},
     {"correct the address, or remove one of them", "исправьте адрес или уберите одну из них"}},
    {"two-types",
     {"%1 is the same unit and has another type: it answers only one of them, and an update of the other fails",
      "%1 — то же устройство, но другого типа: оно отвечает лишь один, и обновление другого откажет"},
     {"correct the address or the type", "исправьте адрес или тип"}},
    {"same-device-id",
     {"%1 has the same number: their firmware files have the same names",
      "Тот же номер у %1: файлы прошивок называются одинаково"},
     {"give each instrument a number of its own", "дайте каждому прибору свой номер"}},
    {"same-type",
     {"The main board %1 answers the same type and is tried first: %2",
      "Главная плата %1 отвечает тем же типом, и её спрашивают первой: %2"},
     {"give each instrument's main board a type of its own", "дайте главной плате каждого прибора свой тип"}},
    {"file-fits-another",
     {"\"%1\" of %2 fits this row too: with both in one archive, the last one there is taken",
      "«%1» от %2 подходит и этой строке: если в архиве есть оба, берётся последний"},
     {"choose numbers or names of which none is part of another's",
      "выберите числа или имена так, чтобы одно не было частью другого"}},
};

QString Fill(const QString& text, const QList<Words>& args, bool inRussian)
{
    // All at once by hand: a value that holds "%2" itself must stay as it is.
    QString filled;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isArgument = text[i] == '%' && i + 1 < text.size() && text[i + 1].isDigit();
        const Words words = isArgument ? args.value(text[i + 1].digitValue() - 1) : Words{};
        filled += isArgument ? (inRussian ? words.ru : words.en) : QString(text[i]);
        i += isArgument ? 1 : 0;
    }
    return filled;
}

} // namespace

Finding CatalogueFinding(const QString& kind, const QList<Words>& args)
{
    const auto* row = std::find_if(std::begin(Rows), std::end(Rows), [&](const Row& r) { return kind == r.kind; });
    Q_ASSERT(row != std::end(Rows));
    const auto filled = [&](const char* const(&text)[2]) {
        return Words{Fill(text[0], args, false), Fill(text[1], args, true)};
    };
    return {kind, {}, {}, filled(row->effect), filled(row->remedy)};
}

QStringList CatalogueKinds()
{
    QStringList kinds;
    for (const Row& row : Rows)
        kinds.append(row.kind);
    return kinds;
}
