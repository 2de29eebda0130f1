#include "Instrument.h"

#include "Endpoint.h"

#include <algorithm>
#include <utility>

Instrument::Instrument(const TDeviceRecord& device, const Options& options, QObject* parent)
    : QObject(parent)
    , m_device(device)
{
    m_plan.Set(options.faults);
    for (int b = 0; b < device.BoardCount; ++b) {
        const TBoardRecord& board = device.Boards[b];
        if (board.IsProgram())
            continue;
        Endpoint*& endpoint = m_endpoints[{board.Ip, board.Port}];
        if (endpoint == nullptr) {
            endpoint = new Endpoint(board.Ip, quint16(board.Port), options, &m_plan, this);
            connect(endpoint, &Endpoint::Event, this, &Instrument::Event);
            connect(endpoint, &Endpoint::Requested, this, &Instrument::Requested);
        }
        m_modules[b] = {endpoint, endpoint->Unit(board.MBAddr, board.Type)->AddProcessor(board.IdCPU)};
    }
}

bool Instrument::Start(QString* error)
{
    const auto listens = [error](Endpoint* endpoint) { return endpoint->Listen(error); };
    if (std::all_of(m_endpoints.begin(), m_endpoints.end(), listens))
        return true;
    for (Endpoint* endpoint : std::as_const(m_endpoints))
        endpoint->Stop();
    return false;
}

void Instrument::End()
{
    for (Endpoint* endpoint : std::as_const(m_endpoints)) {
        endpoint->Stop();
        endpoint->LogBlocks();
    }
    const QList<Fault> neverApplied = m_plan.NeverApplied();
    for (const Fault& fault : neverApplied)
        emit Event("fault " + fault.Text() + " never struck");
}

TDeviceRecord Instrument::Device() const
{
    TDeviceRecord device = m_device;
    for (auto module = m_modules.begin(); module != m_modules.end(); ++module)
        device.Boards[module.key()].Port = module->endpoint->Port();
    return device;
}

void Instrument::SetVersion(int board, const QString& version)
{
    if (Processor* processor = ProcessorOf(board)) {
        processor->version = version;
        processor->isNew = false;
    }
}

QString Instrument::Version(int board) const
{
    const Processor* processor = ProcessorOf(board);
    return processor != nullptr ? processor->version : QString();
}

QByteArray Instrument::Image(int board) const
{
    const Processor* processor = ProcessorOf(board);
    return processor != nullptr ? processor->image : QByteArray();
}
