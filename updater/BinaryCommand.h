#pragma once

#include <QtGlobal>

/// Command words of the binary channel.
enum BinaryCommand : quint16 {
    CmdReadValue = 0xA000,  ///< the answer carries a 32-bit value
    CmdWriteBlock = 0xA001, ///< p1, p2: low and high half of the byte offset; payload: the block
    CmdImageCrc = 0xA002,   ///< p1: CRC-16/MODBUS of the whole image
    CmdFinish = 0xA003, ///< the word that is sent is this plus the processor's IdCPU; p1, p2: low and high half of the
                        ///< image size
};

/// The word that closes the transfer to processor `idCpu`. It has 16 bits: an IdCPU out of range may make it
/// another command.
constexpr quint16 FinishCommand(int idCpu)
{
    return quint16(quint32(CmdFinish) + quint32(idCpu));
}
