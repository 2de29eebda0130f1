#pragma once

#include "AppConfig.h"
#include "Fault.h"

#include <QHash>
#include <QMap>
#include <QObject>

#include <chrono>

class Endpoint;
struct Processor;

/// Simulates all firmware modules of one catalogue device by the event loop of the thread that made it; no call blocks.
class Instrument : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        QString serial = "000001";
        std::chrono::milliseconds restart{3000};  ///< silence after an accepted image
        QString imageFolder = {};                 ///< where accepted images are saved; empty: nowhere
        QList<Fault> faults = {};                 ///< for SetFaults
        std::chrono::milliseconds late{5000};     ///< delay of Fault::Late, within the client's limit
        std::chrono::milliseconds tooLate{12000}; ///< delay of Fault::TooLate, over that limit
    };

    /// The caller must have checked that the device's addresses and numbers are in range.
    Instrument(const TDeviceRecord& device, const Options& options, QObject* parent = nullptr);

    /// Listens on every (Ip, Port) of the device's firmware modules. On failure returns false, sets *error to one line,
    /// and nothing listens. Call it once.
    bool Start(QString* error);
    /// The device with the ports in use: for a Port of 0 the system chooses one, the same for all boards of that Ip
    /// with Port 0.
    TDeviceRecord Device() const;
    int ModuleCount() const { return int(m_modules.size()); }
    int AddressCount() const { return int(m_endpoints.size()); }

    /// `board` counts from 0 in the device's Boards. For what is no firmware module SetVersion does nothing and Version
    /// returns "". SetVersion also discards the version of an accepted image whose restart is not over.
    void SetVersion(int board, const QString& version);
    QString Version(int board) const;
    /// The last image that the board's processor accepted; empty without one.
    QByteArray Image(int board) const;
    /// Requests to all units so far, answered or not. When a client repeats a request after a fault, only
    /// RepetitionCount grows, and the repetition is not answered.
    int RequestCount() const { return m_plan.RequestCount(); }
    int RepetitionCount() const { return m_plan.RepetitionCount(); }
    /// Replaces all faults; requests are still counted from the start.
    void SetFaults(const QList<Fault>& faults) { m_plan.Set(faults); }
    /// Stops listening and logs what is left: blocks that have no line yet, and faults that were never applied.
    void End();

signals:
    /// A log line without a time stamp. A line about a socket begins with "ip:port ".
    void Event(const QString& line);
    /// A request has come and is about to be handled. `isBinary`: its function code is the one that writes images.
    void Requested(int number, bool isBinary);

private:
    struct Module
    {
        const Endpoint* endpoint = nullptr;
        Processor* processor = nullptr; // owned by the endpoint
    };

    Processor* ProcessorOf(int board) const { return m_modules.value(board).processor; }

    TDeviceRecord m_device;
    FaultPlan m_plan;
    QHash<int, Module> m_modules;                     // by board
    QMap<QPair<QString, int>, Endpoint*> m_endpoints; // by Ip and Port of the catalogue; children
};
