#pragma once

#include "FakeBoard.h"
#include "TestData.h"
#include "WindowTexts.h"

#include <functional>

/// A board that answers correctly, except where `fault` handles a request.
struct ScriptedBoard
{
    struct Call
    {
        ScriptedBoard& scripted;
        QTcpSocket& socket;
        QByteArray request;
        int word = 0; ///< of a binary request, otherwise 0

        bool Asks(const char* command) const { return FakeBoard::Command(request) == command; }
        bool Refuse() const { return socket.write(FakeBoard::Answer(request, char(0xC8), "\3")) > 0; }
        bool HangUp() const
        {
            socket.abort();
            return true;
        }
    };
    QByteArray type = "DEV";
    QByteArray version = "1.0";
    QByteArray nextVersion = "2.0"; ///< after a finished transfer
    int blocks = 0;
    bool finished = false;
    /// Called with each request; returns true when it has handled it, so that the board sends no answer.
    std::function<bool(const Call&)> fault;
    FakeBoard board{[this](QTcpSocket& socket, const QByteArray& request) { Play(socket, request); }};

    void Play(QTcpSocket& socket, const QByteArray& request)
    {
        const bool isBinary = request.at(7) == 0x48;
        const int word = isBinary ? quint8(request.at(10)) + quint8(request.at(11)) * 256 : 0;
        const Call call{*this, socket, request, word};
        if (fault && fault(call))
            return;
        blocks += word == 0xA001;
        finished = finished || word >= 0xA003;
        version = finished ? nextVersion : version;
        const QByteArray answer = call.Asks("DEVICETYPE ?;") ? "DEVICETYPE " + type
                                  : call.Asks("SERIAL ?;")   ? QByteArray("SERIAL 55")
                                                             : "VER " + version;
        socket.write(isBinary ? FakeBoard::Answer(request, 0x48, QByteArray("\2\0", 2) + request.mid(10, 2))
                              : FakeBoard::Text(request, answer + ";"));
    }
    TBoardRecord Record(const QString& name, int unit, int cpu) const
    {
        return testdata::Board(name, type, "127.0.0.1", board.serverPort(), unit, cpu);
    }
};
using Call = ScriptedBoard::Call;
using Misbehaviour = decltype(ScriptedBoard::fault);

/// Images for unit 1, processor 0 and unit 2, processor 1 of device 7, with their certificates.
inline testdata::Files BothImages()
{
    return testdata::WithCertificates(
        {{"fw_7_1_0_v2.0.bin", testdata::Image("2.0", 2000)}, {"fw_7_2_1_v2.0.rpd", testdata::Image("2.0", 900)}});
}
