#pragma once

#include "AppConfig.h"
#include "Fault.h"

#include <QHash>
#include <QMap>
#include <QObject>

#include <chrono>

class Endpoint;
struct Processor;

/// Plays all firmware modules of one catalogue device in the thread that made it; nothing in it blocks.
class Instrument : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        QString serial = "000001";
        std::chrono::milliseconds restart{3000};  ///< silence after an accepted image
        QString imageFolder = {};                 ///< accepted images are saved there; empty: nowhere
        QList<Fault> faults = {};                 ///< how it misbehaves
        std::chrono::milliseconds late{5000};     ///< delay of an answer inside the client's limit
        std::chrono::milliseconds tooLate{12000}; ///< and behind it
    };

    /// The device's addresses and numbers must be in range: the program checks them before.
    Instrument(const TDeviceRecord& device, const Options& options, QObject* parent = nullptr);

    /// Listens on every (Ip, Port) of the device's firmware modules. False with one line in *error, and
    /// then nothing listens. Call it once.
    bool Start(QString* error);
    /// The device with the ports really in use: the system gives out a Port of 0, one for all boards of
    /// the same Ip that have it.
    TDeviceRecord Device() const;
    int ModuleCount() const { return int(m_modules.size()); }
    int AddressCount() const { return int(m_endpoints.size()); }

    /// `board` counts from 0 in the device's Boards. Nothing happens, and "" is the answer, for what is
    /// no firmware module. A new image's version shows after the restart.
    void SetVersion(int board, const QString& version);
    QString Version(int board) const;
    /// The last image that processor accepted, empty if none.
    QByteArray Image(int board) const;
    /// Requests seen so far by all units, answered or not. A client that repeats one that a fault left without an
    /// answer is not counted again, and meets the same fault.
    int RequestCount() const { return m_plan.RequestCount(); }
    int RepetitionCount() const { return m_plan.RepetitionCount(); }
    /// From now on it misbehaves like this; numbers go on counting from the start.
    void SetFaults(const QList<Fault>& faults) { m_plan.Set(faults); }
    /// Stops listening and logs what is known at the end only: blocks of a transfer under way, faults that never
    /// struck.
    void End();

signals:
    /// One line without a time stamp. What happens at a socket begins with "ip:port ".
    void Event(const QString& line);
    /// A request has come and is about to be dealt with; the binary ones write images.
    void Requested(int number, bool isBinary);

private:
    struct Module
    {
        const Endpoint* endpoint = nullptr;
        Processor* processor = nullptr; // the endpoint's
    };

    Processor* ProcessorOf(int board) const { return m_modules.value(board).processor; }

    TDeviceRecord m_device;
    FaultPlan m_plan;
    QHash<int, Module> m_modules;                     // by board
    QMap<QPair<QString, int>, Endpoint*> m_endpoints; // by Ip and Port of the catalogue; children
};
