<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru" sourcelanguage="en">
<context>
    <name>Kit</name>
    <message>
        <source>The panel passes by whatever has &quot;.sha256&quot; in its path, and there is no file whose certificate this is</source>
        <translation>Панель пропускает всё, в пути чего есть «.sha256», а файла для такого сертификата нет</translation>
    </message>
    <message>
        <source>rename it, or add the file</source>
        <translation>переименуйте или добавьте сам файл</translation>
    </message>
    <message>
        <source>The panel does not take it and shows the box &quot;%1&quot; once for every module</source>
        <translation>Панель не берёт файл и показывает «%1» по разу на каждый модуль</translation>
    </message>
    <message>
        <source>write the certificate with fwkit certify</source>
        <translation>запишите сертификат командой fwkit certify</translation>
    </message>
    <message>
        <source>The panel cannot unpack it (damaged, encrypted, or over %1 bytes) and writes an empty file</source>
        <translation>Панель не может его распаковать (повреждён, зашифрован или больше %1 байт) и пишет пустой файл</translation>
    </message>
    <message>
        <source>pack the archive anew with fwkit pack</source>
        <translation>соберите архив заново командой fwkit pack</translation>
    </message>
    <message>
        <source>write the certificate with fwkit certify --force: 32 raw bytes</source>
        <translation>запишите сертификат командой fwkit certify --force: 32 байта как есть</translation>
    </message>
    <message>
        <source>The module &quot;%1&quot; takes this file and then, in its place, %2</source>
        <translation>Модуль «%1» берёт этот файл, а затем вместо него %2</translation>
    </message>
    <message>
        <source>leave one of them in the archive</source>
        <translation>оставьте в архиве один из них</translation>
    </message>
    <message>
        <source>Both modules &quot;%1&quot; and &quot;%2&quot; take it</source>
        <translation>Его берут оба модуля: «%1» и «%2»</translation>
    </message>
    <message>
        <source>give it a path that only one module&apos;s name is part of</source>
        <translation>дайте ему путь, в который входит имя только одного модуля</translation>
    </message>
    <message>
        <source>The module &quot;%1&quot; takes it, but the update copies the folder &quot;%2&quot; only</source>
        <translation>Модуль «%1» берёт его, но обновление копирует только папку «%2»</translation>
    </message>
    <message>
        <source>put it at %1</source>
        <translation>поместите его как %1</translation>
    </message>
    <message>
        <source>The module &quot;%1&quot; takes it, but the update never copies a folder &quot;%2&quot;</source>
        <translation>Модуль «%1» берёт его, но обновление никогда не копирует папку «%2»</translation>
    </message>
    <message>
        <source>change Folder in the catalogue</source>
        <translation>измените Folder в каталоге</translation>
    </message>
    <message>
        <source>The panel shows a box &quot;test&quot; and the version &quot;???&quot; for the module &quot;%1&quot;</source>
        <translation>Панель показывает окно «test» и версию «???» модуля «%1»</translation>
    </message>
    <message>
        <source>add its version as the file %1.ver</source>
        <translation>добавьте его версию файлом %1.ver</translation>
    </message>
    <message>
        <source>The panel reads &quot;%1&quot; as its version</source>
        <translation>Панель читает его версию как «%1»</translation>
    </message>
    <message>
        <source>The version %1 counts as no more than 0: the panel marks the module &quot;%2&quot; by itself over no version that is a number</source>
        <translation>Версия %1 считается не больше 0: панель сама не отметит модуль «%2» ни при какой версии-числе</translation>
    </message>
    <message>
        <source>use a number with one point, or have the operator mark it by hand</source>
        <translation>возьмите число с одной точкой, или пусть оператор отметит модуль сам</translation>
    </message>
    <message>
        <source>The update copies neither hidden files nor folders called base, firmware or update.old</source>
        <translation>Обновление не копирует ни скрытые файлы, ни папки base, firmware и update.old</translation>
    </message>
    <message>
        <source>rename it, or leave it out</source>
        <translation>переименуйте или уберите</translation>
    </message>
    <message>
        <source>No module takes it</source>
        <translation>Его не берёт ни один модуль</translation>
    </message>
    <message>
        <source>The module &quot;%1&quot; takes nothing with a &quot;.&quot; in its folder or name</source>
        <translation>Модуль «%1» не берёт ничего с «.» в папке или имени</translation>
    </message>
    <message>
        <source>change Folder and File in the catalogue</source>
        <translation>измените Folder и File в каталоге</translation>
    </message>
    <message>
        <source>The module &quot;%1&quot; has the name but takes %2 only</source>
        <translation>Имя подходит модулю «%1», но он берёт только %2</translation>
    </message>
    <message>
        <source>build the image for this processor</source>
        <translation>соберите образ для этого процессора</translation>
    </message>
    <message>
        <source>is a link</source>
        <translation>это ссылка</translation>
    </message>
    <message>
        <source>leads out of the folder, or is too long or too deep for it</source>
        <translation>ведёт за пределы папки либо слишком длинный или глубокий</translation>
    </message>
    <message>
        <source>is to be a file and a folder at once</source>
        <translation>должен быть и файлом, и папкой</translation>
    </message>
    <message>
        <source>The panel refuses the whole archive because this entry %1: the waiting message stays on the screen for ever</source>
        <translation>Панель отвергает весь архив, так как этот элемент %1: сообщение об ожидании остаётся на экране навсегда</translation>
    </message>
    <message>
        <source>The panel finds nothing in it (no zip archive, damaged, or empty) and says so by no word</source>
        <translation>Панель ничего в нём не находит (не zip, повреждён или пуст) и ничего об этом не говорит</translation>
    </message>
    <message>
        <source>%1: unpacks to %2 bytes, and %3 has %4; name a folder with more room in TMPDIR</source>
        <translation>%1: распаковывается в %2 байт, а в %3 есть %4; укажите в TMPDIR папку попросторнее</translation>
    </message>
    <message>
        <source>Trying</source>
        <translation>Проба</translation>
    </message>
    <message>
        <source>The panel&apos;s dialog does not show this file</source>
        <translation>Диалог панели не покажет этот файл</translation>
    </message>
    <message>
        <source>give it a name that ends with &quot;.zip&quot; and begins with no dot</source>
        <translation>дайте имя, которое кончается на «.zip» и не начинается с точки</translation>
    </message>
    <message>
        <source>The panel does not make its extraction folder for an archive with &quot;firmware&quot; in its path, and after a restart there is none: the waiting message stays on the screen for ever</source>
        <translation>Для архива с «firmware» в пути панель не создаёт папку распаковки, а после включения её нет: сообщение об ожидании остаётся на экране навсегда</translation>
    </message>
    <message>
        <source>rename the archive</source>
        <translation>переименуйте архив</translation>
    </message>
    <message>
        <source>%1: cannot be read (%2); name a readable archive</source>
        <translation>%1: не читается (%2); укажите читаемый архив</translation>
    </message>
    <message>
        <source>%1: no folder can be made there to unpack in; set TMPDIR to one where files can be written</source>
        <translation>%1: там нельзя создать папку для распаковки; укажите в TMPDIR доступную для записи</translation>
    </message>
    <message>
        <source>Unpacking</source>
        <translation>Распаковка</translation>
    </message>
    <message>
        <source>%1: cannot be unpacked in %2 (no room, or a name too long for a file); make room there</source>
        <translation>%1: не распаковывается в %2 (нет места или слишком длинное имя); освободите место</translation>
    </message>
    <message>
        <source>which reads a value</source>
        <translation>чтением значения</translation>
    </message>
    <message>
        <source>which writes a block</source>
        <translation>записью блока</translation>
    </message>
    <message>
        <source>which sends a checksum</source>
        <translation>посылкой контрольной суммы</translation>
    </message>
    <message>
        <source>this instrument is never found</source>
        <translation>этот прибор никогда не будет найден</translation>
    </message>
    <message>
        <source>this instrument is found only while that board does not answer</source>
        <translation>этот прибор найдут, только пока та плата не отвечает</translation>
    </message>
    <message>
        <source>text</source>
        <translation>текст</translation>
    </message>
    <message>
        <source>&quot;&quot;</source>
        <translation>«»</translation>
    </message>
    <message>
        <source>a text in quotes</source>
        <translation>текст в кавычках</translation>
    </message>
    <message>
        <source>whole number of 32 bits</source>
        <translation>целое число в 32 бита</translation>
    </message>
    <message>
        <source>a whole number without quotes</source>
        <translation>целое число без кавычек</translation>
    </message>
    <message>
        <source>flag</source>
        <translation>признак</translation>
    </message>
    <message>
        <source>true or false</source>
        <translation>true или false</translation>
    </message>
    <message>
        <source>list</source>
        <translation>список</translation>
    </message>
    <message>
        <source>an empty list</source>
        <translation>пустой список</translation>
    </message>
    <message>
        <source>a list in [ ]</source>
        <translation>список в [ ]</translation>
    </message>
    <message>
        <source>it belongs at the top</source>
        <translation>его место наверху</translation>
    </message>
    <message>
        <source>it belongs in a device</source>
        <translation>его место в приборе</translation>
    </message>
    <message>
        <source>it belongs in a board</source>
        <translation>его место в модуле</translation>
    </message>
    <message>
        <source>remove it</source>
        <translation>уберите его</translation>
    </message>
    <message>
        <source>write &quot;%1&quot;</source>
        <translation>напишите «%1»</translation>
    </message>
    <message>
        <source>the panel finds no instrument</source>
        <translation>панель не найдёт ни одного прибора</translation>
    </message>
    <message>
        <source>it takes its place all the same, with all values empty or 0</source>
        <translation>он всё равно занимает место, все значения пусты или 0</translation>
    </message>
    <message>
        <source>This is no JSON (%1): the panel takes the whole catalogue for empty and finds no instrument</source>
        <translation>Это не JSON (%1): панель считает весь каталог пустым и не находит ни одного прибора</translation>
    </message>
    <message>
        <source>correct the text here or just before</source>
        <translation>исправьте текст здесь или прямо перед этим местом</translation>
    </message>
    <message>
        <source>This is no object: %1</source>
        <translation>Это не объект: %1</translation>
    </message>
    <message>
        <source>write an object in { }</source>
        <translation>напишите объект в { }</translation>
    </message>
    <message>
        <source>%1 is no %2: the panel reads %3</source>
        <translation>%1: это не %2, панель читает %3</translation>
    </message>
    <message>
        <source>write %1</source>
        <translation>напишите %1</translation>
    </message>
    <message>
        <source>The panel ignores &quot;%1&quot;</source>
        <translation>Панель не замечает «%1»</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is here a second time: only the last one counts</source>
        <translation>«%1» здесь повторно: считается только последнее</translation>
    </message>
    <message>
        <source>keep one of them</source>
        <translation>оставьте одно из них</translation>
    </message>
    <message>
        <source>The panel reads only the first %1 here and leaves out %2</source>
        <translation>Панель читает здесь только первые %1, пропущено: %2</translation>
    </message>
    <message>
        <source>remove what is not needed</source>
        <translation>уберите лишнее</translation>
    </message>
    <message>
        <source>There are no instruments: the panel shows an empty table</source>
        <translation>Нет ни одного прибора: таблица панели пуста</translation>
    </message>
    <message>
        <source>write a list &quot;Devices&quot; with an object for each instrument</source>
        <translation>напишите список «Devices», в нём по объекту на прибор</translation>
    </message>
    <message>
        <source>The instrument has no modules and is never found</source>
        <translation>У прибора нет модулей, он никогда не будет найден</translation>
    </message>
    <message>
        <source>write a list &quot;Boards&quot; with an object for each module</source>
        <translation>напишите список «Boards», в нём по объекту на модуль</translation>
    </message>
    <message>
        <source>No board is asked for its type: the instrument is never found</source>
        <translation>Ни одну плату не спрашивают о типе: прибор никогда не будет найден</translation>
    </message>
    <message>
        <source>set &quot;Main&quot; to true on the board that knows what the instrument is</source>
        <translation>задайте «Main»: true у платы, которая знает тип прибора</translation>
    </message>
    <message>
        <source>The panel shows nothing where the name should be</source>
        <translation>Там, где должно быть имя, панель ничего не показывает</translation>
    </message>
    <message>
        <source>write a &quot;Name&quot;</source>
        <translation>напишите «Name»</translation>
    </message>
    <message>
        <source>It is missing: the panel takes 0, in the names of firmware files too</source>
        <translation>Его нет: панель берёт 0, в именах файлов прошивок тоже</translation>
    </message>
    <message>
        <source>write the number, even if it is 0</source>
        <translation>напишите число, даже если это 0</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no IPv4 address in full: the panel takes it for a host name or reads it in its own way (010 as 8), and what it does not reach costs 10 s each time</source>
        <translation>«%1» — не полный адрес IPv4: панель примет его за имя узла или прочтёт по-своему (010 как 8), а каждая неудачная попытка стоит 10 с</translation>
    </message>
    <message>
        <source>write four numbers 0..255 with dots and without leading zeros</source>
        <translation>напишите четыре числа 0..255 через точку, без нулей впереди</translation>
    </message>
    <message>
        <source>No connection to port %1 ever comes up: the version stays &quot;???&quot;</source>
        <translation>К порту %1 связи не будет никогда: версия останется «???»</translation>
    </message>
    <message>
        <source>write the board&apos;s TCP port, 1..65535</source>
        <translation>напишите порт TCP платы, 1..65535</translation>
    </message>
    <message>
        <source>write the unit address, 0..255</source>
        <translation>напишите адрес устройства, 0..255</translation>
    </message>
    <message>
        <source>The word that closes a transfer becomes 0x%1, %2: the board never takes the image</source>
        <translation>Слово, которым завершается передача, становится 0x%1, %2: плата не примет прошивку</translation>
    </message>
    <message>
        <source>The word that closes a transfer becomes the bare 0xA003, processor 0&apos;s, whose missing answer counts as success</source>
        <translation>Слово, которым завершается передача, становится простым 0xA003 процессора 0, и молчание платы сочтут успехом</translation>
    </message>
    <message>
        <source>No answer to &quot;VER ?;&quot; has a word for this processor: with several processors on the board the version stays empty and the row cannot be marked</source>
        <translation>Ни в одном ответе на «VER ?;» нет слова для этого процессора: если их на плате несколько, версия останется пустой и строку не отметить</translation>
    </message>
    <message>
        <source>Only an answer without a type fits: a foreign board may be taken for this one, and after an update this one is waited for in vain</source>
        <translation>Подойдёт только ответ без типа: чужую плату могут принять за эту, а эту после обновления не дождутся</translation>
    </message>
    <message>
        <source>write what the board answers to &quot;DEVICETYPE ?;&quot;</source>
        <translation>напишите, что плата отвечает на «DEVICETYPE ?;»</translation>
    </message>
    <message>
        <source>No answer can have this type: the board is never recognised, and after an update it is waited for in vain</source>
        <translation>Такого типа нет ни в одном ответе: плату никогда не узнают, а после обновления не дождутся</translation>
    </message>
    <message>
        <source>write one word of Latin characters without a space and &quot;;&quot;</source>
        <translation>напишите одно слово латиницей без пробела и «;»</translation>
    </message>
    <message>
        <source>Without a &quot;Path&quot; this is a board with firmware: &quot;Folder&quot; and &quot;File&quot; are not used</source>
        <translation>Без «Path» это плата с прошивкой: «Folder» и «File» не используются</translation>
    </message>
    <message>
        <source>write any text into &quot;Path&quot;, or remove &quot;Folder&quot; and &quot;File&quot;</source>
        <translation>напишите в «Path» любой текст или уберите «Folder» и «File»</translation>
    </message>
    <message>
        <source>The search tries to connect to a program, which costs 10 s</source>
        <translation>Поиск попытается соединиться с программой, это стоит 10 с</translation>
    </message>
    <message>
        <source>set &quot;Main&quot; on the instrument&apos;s board only</source>
        <translation>задайте «Main» только у платы прибора</translation>
    </message>
    <message>
        <source>Nothing is copied, and the update still counts as a success</source>
        <translation>Ничего не копируется, а обновление всё же считается успешным</translation>
    </message>
    <message>
        <source>write the program&apos;s folder in the archive</source>
        <translation>напишите папку программы в архиве</translation>
    </message>
    <message>
        <source>A folder &quot;%1&quot; is never copied, and the update still counts as a success</source>
        <translation>Папка «%1» никогда не копируется, а обновление всё же считается успешным</translation>
    </message>
    <message>
        <source>name the folder otherwise</source>
        <translation>назовите папку иначе</translation>
    </message>
    <message>
        <source>The panel would copy &quot;%1&quot;, which is not out of the archive, over its own programs</source>
        <translation>Панель скопировала бы поверх своих программ «%1», а это не из архива</translation>
    </message>
    <message>
        <source>name a folder of the archive, without &quot;..&quot;</source>
        <translation>назовите папку архива, без «..»</translation>
    </message>
    <message>
        <source>The panel looks for it inside of the archive, as &quot;%1&quot;</source>
        <translation>Панель ищет её внутри архива, как «%1»</translation>
    </message>
    <message>
        <source>name a folder of the archive, without &quot;/&quot; in front</source>
        <translation>назовите папку архива, без «/» впереди</translation>
    </message>
    <message>
        <source>A path with &quot;.&quot; is never taken for a program file: no archive offers anything for this row</source>
        <translation>Путь с точкой никогда не берут за файл программы: ни один архив ничего не даст этой строке</translation>
    </message>
    <message>
        <source>name it without &quot;.&quot;</source>
        <translation>назовите без точки</translation>
    </message>
    <message>
        <source>Every file of an archive without &quot;.&quot; in its path fits, and the version is sought in &quot;.ver&quot;</source>
        <translation>Подходит любой файл архива без точки в пути, а версию ищут в «.ver»</translation>
    </message>
    <message>
        <source>write the name of the program file</source>
        <translation>напишите имя файла программы</translation>
    </message>
    <message>
        <source>The command that makes the file executable is split here: the update fails after the copy</source>
        <translation>Команда, которая делает файл исполняемым, здесь распадается: обновление откажет после копирования</translation>
    </message>
    <message>
        <source>name the file without spaces and quotation marks</source>
        <translation>назовите файл без пробелов и кавычек</translation>
    </message>
    <message>
        <source>The row&apos;s file button shows no file: no file&apos;s name has a &quot;/&quot;</source>
        <translation>Кнопка файла в строке ничего не покажет: в имени файла нет «/»</translation>
    </message>
    <message>
        <source>write the file&apos;s name alone; its folder belongs in &quot;Folder&quot;</source>
        <translation>напишите только имя файла, его папка — это «Folder»</translation>
    </message>
    <message>
        <source>%1 is the same processor of the same board: it is updated twice with the same file</source>
        <translation>%1 — тот же процессор той же платы: её обновят дважды одним файлом</translation>
    </message>
    <message>
        <source>correct the address, or remove one of them</source>
        <translation>исправьте адрес или уберите одну из них</translation>
    </message>
    <message>
        <source>%1 is the same unit and has another type: it answers only one of them, and an update of the other fails</source>
        <translation>%1 — то же устройство, но другого типа: оно отвечает лишь один, и обновление другого откажет</translation>
    </message>
    <message>
        <source>correct the address or the type</source>
        <translation>исправьте адрес или тип</translation>
    </message>
    <message>
        <source>%1 has the same number: their firmware files have the same names</source>
        <translation>Тот же номер у %1: файлы прошивок называются одинаково</translation>
    </message>
    <message>
        <source>give each instrument a number of its own</source>
        <translation>дайте каждому прибору свой номер</translation>
    </message>
    <message>
        <source>The main board %1 answers the same type and is tried first: %2</source>
        <translation>Главная плата %1 отвечает тем же типом, и её спрашивают первой: %2</translation>
    </message>
    <message>
        <source>give each instrument&apos;s main board a type of its own</source>
        <translation>дайте главной плате каждого прибора свой тип</translation>
    </message>
    <message>
        <source>&quot;%1&quot; of %2 fits this row too: with both in one archive, the last one there is taken</source>
        <translation>«%1» от %2 подходит и этой строке: если в архиве есть оба, берётся последний</translation>
    </message>
    <message>
        <source>choose numbers or names of which none is part of another&apos;s</source>
        <translation>выберите числа или имена так, чтобы одно не было частью другого</translation>
    </message>
    <message>
        <source>%1: is no regular file; remove it and certify again</source>
        <translation>%1: не обычный файл; удалите его и повторите</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>пропущен</translation>
    </message>
    <message>
        <source>Certifying</source>
        <translation>Сертификаты</translation>
    </message>
    <message>
        <source>%1: cannot be read (%2); name a readable catalogue</source>
        <translation>%1: не читается (%2); назовите каталог, который читается</translation>
    </message>
    <message>
        <source>%1: over %2 bytes; name a catalogue</source>
        <translation>%1: больше %2 байт; назовите каталог</translation>
    </message>
    <message>
        <source>%1 more of these kinds</source>
        <translation>и ещё %1 того же вида</translation>
    </message>
    <message>
        <source>fine</source>
        <translation>всё в порядке</translation>
    </message>
    <message>
        <source>findings: %1</source>
        <translation>замечаний: %1</translation>
    </message>
    <message>
        <source>, devices: %1, modules: %2</source>
        <translation>, приборов: %1, модулей: %2</translation>
    </message>
    <message>
        <source>no catalogue; name at least one updater.json</source>
        <translation>нет каталога; назовите хотя бы один updater.json</translation>
    </message>
    <message>
        <source>Tells what the panel would make of a catalogue.</source>
        <translation>Говорит, что панель сделает из каталога.</translation>
    </message>
    <message>
        <source>%1: the folder cannot be listed; give yourself the right to read it</source>
        <translation>%1: папку нельзя просмотреть; дайте себе право на чтение</translation>
    </message>
    <message>
        <source>hidden</source>
        <translation>скрытый</translation>
    </message>
    <message>
        <source>temporary</source>
        <translation>временный</translation>
    </message>
    <message>
        <source>a link out of the folder or to a folder</source>
        <translation>ссылка наружу или на папку</translation>
    </message>
    <message>
        <source>no regular file</source>
        <translation>не обычный файл</translation>
    </message>
    <message>
        <source>missing</source>
        <translation>нет</translation>
    </message>
    <message>
        <source>different</source>
        <translation>другой</translation>
    </message>
    <message>
        <source>matches</source>
        <translation>верен</translation>
    </message>
    <message>
        <source>MODULE</source>
        <translation>МОДУЛЬ</translation>
    </message>
    <message>
        <source>FILE</source>
        <translation>ФАЙЛ</translation>
    </message>
    <message>
        <source>NEW VERSION</source>
        <translation>НОВАЯ ВЕРСИЯ</translation>
    </message>
    <message>
        <source>CERTIFICATE</source>
        <translation>СЕРТИФИКАТ</translation>
    </message>
    <message>
        <source>The operator sees no box.
</source>
        <translation>Оператор не увидит ни одного окна.
</translation>
    </message>
    <message>
        <source>Boxes that the operator sees:
</source>
        <translation>Окна, которые увидит оператор:
</translation>
    </message>
    <message>
        <source>Findings:</source>
        <translation>Найдено:</translation>
    </message>
    <message>
        <source>Notes:</source>
        <translation>Замечания:</translation>
    </message>
    <message>
        <source>The device catalogue.</source>
        <translation>Каталог приборов.</translation>
    </message>
    <message>
        <source>The instrument&apos;s IdDev in the catalogue.</source>
        <translation>IdDev прибора в каталоге.</translation>
    </message>
    <message>
        <source>Writes JSON for a script.</source>
        <translation>Пишет JSON для сценариев.</translation>
    </message>
    <message>
        <source>%1: is no regular file; choose another --output</source>
        <translation>%1: не обычный файл; смените --output</translation>
    </message>
    <message>
        <source>%1: cannot be read to its end; give a readable file</source>
        <translation>%1: не читается до конца; укажите читаемый файл</translation>
    </message>
    <message>
        <source>Its certificate on the disk is of another content</source>
        <translation>Его сертификат на диске от другого содержимого</translation>
    </message>
    <message>
        <source>restore the file, or replace the certificate with fwkit certify --force</source>
        <translation>восстановите файл или замените сертификат командой fwkit certify --force</translation>
    </message>
    <message>
        <source>%1: cannot be put in its place; choose another --output</source>
        <translation>%1: не удаётся поставить на место; смените --output</translation>
    </message>
    <message>
        <source>%1: its folder takes no files (%2); choose another --output</source>
        <translation>%1: в его папку нельзя писать (%2); смените --output</translation>
    </message>
    <message>
        <source>Its name has characters that not every system reads alike</source>
        <translation>В имени есть знаки, которые читаются не везде одинаково</translation>
    </message>
    <message>
        <source>rename it</source>
        <translation>переименуйте</translation>
    </message>
    <message>
        <source>%1 has the same place in the archive</source>
        <translation>%1 попадает в архив на то же место</translation>
    </message>
    <message>
        <source>pack one of them</source>
        <translation>упакуйте один из них</translation>
    </message>
    <message>
        <source>The panel unpacks no file over %1 bytes</source>
        <translation>Панель не распаковывает файлы больше %1 байт</translation>
    </message>
    <message>
        <source>make it smaller</source>
        <translation>уменьшите его</translation>
    </message>
    <message>
        <source>It is a certificate without its file</source>
        <translation>Это сертификат без своего файла</translation>
    </message>
    <message>
        <source>add the file, or leave it out</source>
        <translation>добавьте сам файл или уберите сертификат</translation>
    </message>
    <message>
        <source>put the file itself there</source>
        <translation>положите сам файл</translation>
    </message>
    <message>
        <source>%1 files with %2 bytes are too many for one archive; pack fewer</source>
        <translation>%1 файлов в %2 байт слишком много для одного архива; упакуйте меньше</translation>
    </message>
    <message>
        <source>the inputs hold no file to pack; name files or folders</source>
        <translation>среди указанного нет файлов для упаковки; укажите файлы или папки</translation>
    </message>
    <message>
        <source>%1: files with their certificates: %2.
</source>
        <translation>%1: файлов с сертификатами: %2.
</translation>
    </message>
    <message>
        <source>Makes an archive that the instrument&apos;s panel takes without a box. Refuses, and writes nothing, when there is none.</source>
        <translation>Собирает архив, который панель прибора принимает без единого окна. Если такой невозможен, отказывается и ничего не пишет.</translation>
    </message>
    <message>
        <source>The archive to make.</source>
        <translation>Архив, который будет собран.</translation>
    </message>
    <message>
        <source>%1: the panel reads no device from it; see what &quot;fwkit check %1&quot; says</source>
        <translation>%1: панель не находит в нём ни одного прибора; посмотрите, что скажет «fwkit check %1»</translation>
    </message>
    <message>
        <source>%1: no device has IdDev %2; choose one of %3 with --device</source>
        <translation>%1: нет прибора с IdDev %2; выберите ключом --device один из %3</translation>
    </message>
    <message>
        <source>name one archive</source>
        <translation>укажите один архив</translation>
    </message>
    <message>
        <source>Shows what the panel would do with an archive: the file that each module would take, and every box.</source>
        <translation>Показывает, что панель сделает с архивом: какой файл возьмёт каждый модуль и все окна.</translation>
    </message>
    <message>
        <source>%1: cannot be written (%2); nothing is left behind: make room, or choose another --output</source>
        <translation>%1: не записывается (%2); ничего не оставлено: освободите место или смените --output</translation>
    </message>
    <message>
        <source>Packing</source>
        <translation>Упаковка</translation>
    </message>
    <message>
        <source>Usage: fwkit VERB [options] ...

What a firmware maker needs before the stick leaves the desk, by the rules of the panel itself.

Verbs:
</source>
        <translation>Использование: fwkit ДЕЙСТВИЕ [ключи] ...

Что нужно изготовителю прошивок до выезда, по правилам самой панели.

Действия:
</translation>
    </message>
    <message>
        <source>Usage: fwkit </source>
        <translation>Использование: fwkit </translation>
    </message>
    <message>
        <source>[options] </source>
        <translation>[ключи] </translation>
    </message>
    <message>
        <source>This text.</source>
        <translation>Эта справка.</translation>
    </message>
    <message>
        <source>no verb; see fwkit --help</source>
        <translation>нет действия; см. fwkit --help</translation>
    </message>
    <message>
        <source>%1: no such verb; see fwkit --help</source>
        <translation>%1: нет такого действия; см. fwkit --help</translation>
    </message>
    <message>
        <source>%1: no zip archive, damaged, or empty; name an archive</source>
        <translation>%1: не архив zip, повреждён или пуст; укажите архив</translation>
    </message>
    <message>
        <source>Reading</source>
        <translation>Чтение</translation>
    </message>
    <message>
        <source>This is no UTF-8 (perhaps Windows-1251 or UTF-16): the panel takes the whole catalogue for empty and finds no instrument</source>
        <translation>Это не UTF-8 (возможно, Windows-1251 или UTF-16): панель считает весь каталог пустым и не находит ни одного прибора</translation>
    </message>
    <message>
        <source>save it as UTF-8</source>
        <translation>сохраните его в UTF-8</translation>
    </message>
    <message>
        <source>The file is empty: the panel finds no instrument</source>
        <translation>Файл пуст: панель не находит ни одного прибора</translation>
    </message>
    <message>
        <source>write a catalogue into it and save it as UTF-8</source>
        <translation>напишите в нём каталог и сохраните в UTF-8</translation>
    </message>
    <message>
        <source>JSON has no comments: the panel takes the whole catalogue for empty and finds no instrument</source>
        <translation>В JSON нет комментариев: панель считает весь каталог пустым и не находит ни одного прибора</translation>
    </message>
    <message>
        <source>remove the comment</source>
        <translation>уберите комментарий</translation>
    </message>
    <message>
        <source>The panel sends only the low byte of it: what is meant for unit %1 goes to unit %2</source>
        <translation>Панель посылает только младший байт: предназначенное устройству %1 попадает устройству %2</translation>
    </message>
    <message>
        <source>write the processor&apos;s number, 0..28</source>
        <translation>напишите номер процессора, 0..28</translation>
    </message>
    <message>
        <source>An answer to &quot;VER ?;&quot; ends after 250 characters: a version of this processor is in it only while those before it are short, and the simulator refuses the number</source>
        <translation>Ответ на «VER ?;» кончается после 250 знаков: версия этого процессора войдёт в него, только если версии перед ней короткие, а симулятор такой номер не принимает</translation>
    </message>
    <message>
        <source>%1: cannot be written (%2); make room there</source>
        <translation>%1: не записывается (%2); освободите там место</translation>
    </message>
    <message>
        <source>%1: cannot be written (%2); give yourself the right to write there</source>
        <translation>%1: не записывается (%2); дайте себе право на запись туда</translation>
    </message>
    <message>
        <source>%1: cannot be read to its end and gets no certificate; give a readable file</source>
        <translation>%1: не читается до конца и сертификата не получает; укажите читаемый файл</translation>
    </message>
    <message>
        <source>nothing to certify: only certificates and what is left out were named; name the files themselves</source>
        <translation>сертифицировать нечего: указаны только сертификаты и то, что пропускается; укажите сами файлы</translation>
    </message>
    <message>
        <source>--check only looks and --force replaces; give one of them</source>
        <translation>--check только проверяет, а --force заменяет; укажите что-то одно</translation>
    </message>
    <message>
        <source>It is empty and gets no certificate</source>
        <translation>Он пуст и сертификата не получает</translation>
    </message>
    <message>
        <source>copy it anew, or certify it with --force when it is to be empty</source>
        <translation>скопируйте его заново, а если он должен быть пустым, сертифицируйте с --force</translation>
    </message>
    <message>
        <source>It does not match its certificate, which stays as it is</source>
        <translation>Он не соответствует своему сертификату, сертификат оставлен как есть</translation>
    </message>
    <message>
        <source>restore the file, or replace the certificate with --force</source>
        <translation>восстановите файл или замените сертификат ключом --force</translation>
    </message>
    <message>
        <source>It has no certificate</source>
        <translation>У него нет сертификата</translation>
    </message>
    <message>
        <source>new</source>
        <translation>новый</translation>
    </message>
    <message>
        <source>unchanged</source>
        <translation>без изменений</translation>
    </message>
    <message>
        <source>replaced</source>
        <translation>заменён</translation>
    </message>
    <message>
        <source>Certificates: %1 new, %2 unchanged, %3 replaced; findings: %4.
</source>
        <translation>Сертификаты: новых %1, без изменений %2, заменённых %3; найдено: %4.
</translation>
    </message>
    <message>
        <source>Writes the certificate of each file beside it: its SHA-256 as 32 raw bytes in FILE.sha256. One that does not match is told and left as it is.</source>
        <translation>Записывает рядом с каждым файлом его сертификат: SHA-256 в виде 32 байт в FILE.sha256. О несоответствующем сообщает и оставляет его как есть.</translation>
    </message>
    <message>
        <source>Only looks, and writes nothing.</source>
        <translation>Только проверяет, ничего не пишет.</translation>
    </message>
    <message>
        <source>Replaces certificates that do not match, and certifies empty files.</source>
        <translation>Заменяет несоответствующие сертификаты и сертифицирует пустые файлы.</translation>
    </message>
    <message>
        <source>%1: is there already; choose another --output, or replace it with --force</source>
        <translation>%1: уже есть; смените --output или замените его ключом --force</translation>
    </message>
    <message>
        <source>Replaces an archive that is there already.</source>
        <translation>Заменяет архив, если он уже есть.</translation>
    </message>
    <message>
        <source>%1: %2; name what is to be certified</source>
        <translation>%1: %2; укажите, что сертифицировать</translation>
    </message>
    <message>
        <source>the certificates are written; only the report cannot be, to standard output: make room where that goes</source>
        <translation>сертификаты записаны; только отчёт не записывается в стандартный вывод: освободите место там, куда он идёт</translation>
    </message>
    <message>
        <source>NAME</source>
        <translation>ИМЯ</translation>
    </message>
    <message>
        <source>MODULES</source>
        <translation>МОДУЛИ</translation>
    </message>
    <message>
        <source>name one catalogue</source>
        <translation>укажите один каталог</translation>
    </message>
    <message>
        <source>Shows the instruments of a catalogue, by the IdDev that --device takes.</source>
        <translation>Показывает приборы каталога с IdDev для ключа --device.</translation>
    </message>
    <message>
        <source>Writes the numbers alone.</source>
        <translation>Пишет только номера.</translation>
    </message>
    <message>
        <source>a link that leads nowhere</source>
        <translation>ссылка в никуда</translation>
    </message>
    <message>
        <source>its name is no UTF-8</source>
        <translation>имя не в UTF-8</translation>
    </message>
    <message>
        <source>no such file or folder</source>
        <translation>нет такого файла или папки</translation>
    </message>
    <message>
        <source>modules served: %1 of %2.</source>
        <translation>модулей обеспечено: %1 из %2.</translation>
    </message>
    <message>
        <source>damaged</source>
        <translation>повреждён</translation>
    </message>
    <message>
        <source>SIZE</source>
        <translation>РАЗМЕР</translation>
    </message>
    <message>
        <source>VERSION</source>
        <translation>ВЕРСИЯ</translation>
    </message>
    <message>
        <source>%1: files with a certificate that matches: %2 of %3.
</source>
        <translation>%1: файлов с верным сертификатом: %2 из %3.
</translation>
    </message>
    <message>
        <source>Shows the files of an archive without a catalogue: size, version, certificate.</source>
        <translation>Показывает файлы архива без каталога: размер, версию, сертификат.</translation>
    </message>
    <message>
        <source>Writes the names alone.</source>
        <translation>Пишет только имена.</translation>
    </message>
    <message>
        <source>Writes findings and errors only.</source>
        <translation>Пишет только находки и ошибки.</translation>
    </message>
    <message>
        <source>missing: %1; see --help</source>
        <translation>не хватает: %1; см. --help</translation>
    </message>
    <message>
        <source>%1 is given more than once; give it once</source>
        <translation>%1 задан больше одного раза; задайте один раз</translation>
    </message>
    <message>
        <source>%1: %2; name what is to be packed</source>
        <translation>%1: %2; укажите, что упаковать</translation>
    </message>
    <message>
        <source>The folder&apos;s name contains &quot;firmware&quot;: from a folder with such a name the panel does not make its extraction folder</source>
        <translation>В имени папки есть «firmware»: для архива из такой папки панель не создаёт папку распаковки</translation>
    </message>
    <message>
        <source>copy the archive to a folder with another name</source>
        <translation>скопируйте архив в папку с другим именем</translation>
    </message>
    <message>
        <source>note: %1</source>
        <translation>замечание: %1</translation>
    </message>
    <message>
        <source>%1: the archive is written; only the report cannot be, to standard output: make room where that goes</source>
        <translation>%1: архив записан; только отчёт не записывается в стандартный вывод: освободите место там, куда он идёт</translation>
    </message>
    <message>
        <source>The catalogue itself has findings: %1</source>
        <translation>В самом каталоге есть замечания: %1</translation>
    </message>
    <message>
        <source>see what &quot;fwkit check %1&quot; says</source>
        <translation>посмотрите, что скажет «fwkit check %1»</translation>
    </message>
    <message>
        <source>
Exit status: 0 fine, 1 findings, 2 misuse or files that cannot be used.
</source>
        <translation>
Код завершения: 0 всё в порядке, 1 есть находки, 2 неверный вызов или негодные файлы.
</translation>
    </message>
    <message>
        <source>
fwkit help VERB tells more; fwkit --version tells the version.
</source>
        <translation>
fwkit help ДЕЙСТВИЕ расскажет больше; fwkit --version — версия.
</translation>
    </message>
    <message>
        <source>%1: no such verb; did you mean %2?</source>
        <translation>%1: нет такого действия; может быть, %2?</translation>
    </message>
    <message>
        <source>the report cannot be written to standard output; make room where that goes</source>
        <translation>отчёт не записывается в стандартный вывод; освободите место там, куда он идёт</translation>
    </message>
    <message>
        <source>%1 (and a line break)</source>
        <translation>%1 (и перевод строки)</translation>
    </message>
    <message>
        <source>It is empty: the update puts an empty program in the place of the module &quot;%1&quot;</source>
        <translation>Он пуст: обновление поставит на место модуля «%1» пустую программу</translation>
    </message>
    <message>
        <source>It is empty: the update passes by the module &quot;%1&quot; without a sign, and reports success</source>
        <translation>Он пуст: обновление молча пропустит модуль «%1» и сообщит об успехе</translation>
    </message>
    <message>
        <source>copy it anew</source>
        <translation>скопируйте его заново</translation>
    </message>
    <message>
        <source>No board can answer the version &quot;%1&quot;: the module &quot;%2&quot; gets the red cross after every update</source>
        <translation>Ни одна плата не может ответить версией «%1»: модуль «%2» после каждого обновления получит красный крест</translation>
    </message>
    <message>
        <source>rename it: a version is one short word of Latin letters, digits and points</source>
        <translation>переименуйте: версия — одно короткое слово из латинских букв, цифр и точек</translation>
    </message>
    <message>
        <source>Its version has a line break, and the panel shows it with that</source>
        <translation>В его версии есть перевод строки, и панель покажет её с ним</translation>
    </message>
    <message>
        <source>write %1.ver without it, as printf does and echo does not</source>
        <translation>запишите %1.ver без него: так делает printf, но не echo</translation>
    </message>
    <message>
        <source>rename it to %1</source>
        <translation>переименуйте в %1</translation>
    </message>
    <message>
        <source>give the image itself, with the extension %1</source>
        <translation>дайте сам образ, с расширением %1</translation>
    </message>
    <message>
        <source>It is for another device, &quot;%1&quot; (IdDev %2)</source>
        <translation>Он для другого прибора, «%1» (IdDev %2)</translation>
    </message>
    <message>
        <source>leave it out, or choose that device with --device</source>
        <translation>уберите его или выберите тот прибор ключом --device</translation>
    </message>
    <message>
        <source>leave it out, or give it one of these names: %1</source>
        <translation>уберите его или дайте ему одно из этих имён: %1</translation>
    </message>
    <message>
        <source>TMPDIR: %1: no such folder; make it, or set TMPDIR to another one</source>
        <translation>TMPDIR: %1: такой папки нет; создайте её или укажите в TMPDIR другую</translation>
    </message>
    <message>
        <source>%1: this name is no UTF-8, and fwkit opens no other; rename it</source>
        <translation>%1: имя не в UTF-8, а других fwkit не открывает; переименуйте</translation>
    </message>
    <message>
        <source>See %1.</source>
        <translation>См. %1.</translation>
    </message>
    <message>
        <source>Did you mean --%1?</source>
        <translation>Может быть, --%1?</translation>
    </message>
    <message>
        <source>help tells of one verb; name one</source>
        <translation>справка даётся об одном действии; назовите одно</translation>
    </message>
    <message>
        <source>write the version into %1.ver</source>
        <translation>запишите версию в %1.ver</translation>
    </message>
    <message>
        <source>end the name with a version without &quot;_&quot; and one %1</source>
        <translation>закончите имя версией без «_» и одним %1</translation>
    </message>
    <message>
        <source>The module &quot;%1&quot; does not take it: upper and lower case and spaces count</source>
        <translation>Модуль «%1» его не берёт: регистр букв и пробелы важны</translation>
    </message>
    <message>
        <source>For the panel a &quot;\&quot; divides no folders but is a part of the name</source>
        <translation>Для панели «\» — не граница папок, а часть имени</translation>
    </message>
    <message>
        <source>%1 (and another line)</source>
        <translation>%1 (и ещё одна строка)</translation>
    </message>
    <message>
        <source>%1: the folder cannot be listed to its end (%2); copy its files to another disk</source>
        <translation>%1: содержимое папки не читается до конца (%2); скопируйте её файлы на другой диск</translation>
    </message>
</context>
<context>
    <name>QCommandLineParser</name>
    <message>
        <source>Options:</source>
        <translation>Ключи:</translation>
    </message>
    <message>
        <source>[options]</source>
        <translation>[ключи]</translation>
    </message>
    <message>
        <source>Usage: %1</source>
        <translation>Использование: %1</translation>
    </message>
    <message>
        <source>Unknown option &apos;%1&apos;.</source>
        <translation>Неизвестный ключ «%1».</translation>
    </message>
    <message>
        <source>Unknown options: %1.</source>
        <translation>Неизвестные ключи: %1.</translation>
    </message>
    <message>
        <source>Missing value after &apos;%1&apos;.</source>
        <translation>Нет значения после «%1».</translation>
    </message>
    <message>
        <source>Unexpected value after &apos;%1&apos;.</source>
        <translation>Лишнее значение после «%1».</translation>
    </message>
</context>
</TS>
