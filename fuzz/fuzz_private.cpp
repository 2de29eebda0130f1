// An answer with a private function code and any content: the function code, then the data, as they follow the header.

#include "Fuzz.h"
#include "ModbusClient.h"

#include <QDataStream>

namespace {

constexpr char Untouched[] = "what is no private answer leaves the result alone";

void RequireValues(const QModbusDataUnit& unit, const QByteArray& answer)
{
    Require(unit.registerType() == QModbusDataUnit::HoldingRegisters && unit.startAddress() == 1,
            "the values are holding registers from 1");
    Require(qsizetype(unit.valueCount()) == answer.size() && unit.values().size() == answer.size(),
            "one value for each byte");
    for (qsizetype i = 0; i < answer.size(); ++i)
        Require(unit.value(i) == quint8(answer[i]), "a value is its byte, 0 to 255");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static ModbusClient client;
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QModbusResponse response;
    QDataStream stream(bytes);
    stream >> response;

    const QByteArray content = response.data();
    const bool holdsLength = response.isValid() && content.size() >= 2;
    const int announced = holdsLength ? quint8(content[0]) + 256 * quint8(content[1]) + 2 : -1;
    Require(PrivateResponseDataSize(response) == announced, "the size is low byte first and counts itself");

    const int code = response.functionCode() & 0x7F;
    QModbusDataUnit unit(QModbusDataUnit::Coils, 7, 1);
    const bool taken = client.processPrivateResponse(response, &unit);
    Require(client.processPrivateResponse(response, nullptr) == taken,
            "the verdict does not hang on who wants the values");
    if (response.isValid() && (code == 0x47 || code == 0x48))
        Require(taken == holdsLength, "a private answer needs its length field and no more");
    if (taken)
        RequireValues(unit, content.mid(code == 0x47 ? 2 : 4));
    else
        Require(unit.registerType() == QModbusDataUnit::Coils, Untouched);
    return 0;
}
