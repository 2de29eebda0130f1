#include "BoardProcess.h"

#include "Figure.h"

BoardProcess::BoardProcess(std::chrono::microseconds blockTime, std::chrono::milliseconds restart)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(BOARD_PROGRAM, {QString::number(blockTime.count()), QString::number(restart.count())});
    m_port = ReadLine().value(1).toUShort();
    if (m_port == 0)
        throw Unmeasurable{"bench-board has no port"};
}

BoardProcess::~BoardProcess()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished();
}

BoardProcess::Work BoardProcess::TakeWork()
{
    m_process.write("\n");
    const QStringList words = ReadLine();
    return {words.value(1).toInt(), words.value(2).toDouble()};
}

QStringList BoardProcess::ReadLine()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(10000))
            throw Unmeasurable{QString("bench-board: ") + m_process.errorString()};
    }
    return QString::fromLatin1(m_process.readLine()).trimmed().split(' ');
}
