// A text answer of any bytes: the first line of the input is the processor's number, the rest is the answer.

#include "Answers.h"
#include "Fuzz.h"

#include <string>
#include <vector>

namespace {

std::vector<std::string> Words(const std::string& answer)
{
    std::vector<std::string> words(1);
    for (const char c : answer) {
        if (c == ' ')
            words.emplace_back();
        else if (c != ';')
            words.back() += c;
    }
    return words;
}

std::string Bytes(const QString& text)
{
    return text.toLatin1().toStdString();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> lines = Lines(data, size, 2);
    const int cpu = lines[0].toInt();
    const QByteArray bytes = lines[1].chopped(lines[1].endsWith('\n'));
    // The link makes one character of each byte.
    const QString answer = QString::fromLatin1(bytes);
    const std::vector<std::string> words = Words(bytes.toStdString());

    Require(Bytes(SerialIn(answer)) == words.back(), "the serial number is the last word");
    Require(Bytes(DeviceTypeIn(answer)) == (words.size() > 1 ? words[1] : ""), "the type is the second word");
    // A version line of one word ends the program by Qt's assertion. That is intended: no instrument answers so, and
    // a board that did must not be updated. Every other line must be handled.
    if (words.size() == 1)
        return 0;
    const std::optional<QString> version = VersionIn(answer, cpu);
    const qint64 place = words.size() == 2 ? 1 : qint64(cpu) + 1;
    const bool isThere = place >= 0 && place < qint64(words.size());
    Require(version.has_value() == isThere, "a version is there when its word is");
    Require(!isThere || Bytes(*version) == words[size_t(place)], "it is its processor's word");
    return 0;
}
