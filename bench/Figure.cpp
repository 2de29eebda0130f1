#include "Figure.h"

#include "Clock.h"
#include "TestData.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <unistd.h>

namespace {

/// Only the fixtures of the current figure are kept, because they are large.
struct Current
{
    std::string name;
    Pair pair;
    QString whyNot; ///< why measuring failed; it is not tried again for each pair
};

Current& CurrentFigure()
{
    static Current current;
    return current;
}

void Measure(benchmark::State& state, const std::string& name, const std::function<Pair(int64_t)>& make)
{
    Current& current = CurrentFigure();
    const std::string id = name + '/' + std::to_string(state.range(0));
    for ([[maybe_unused]] const auto iteration : state) {
        try {
            if (current.name != id) {
                current = {id, {}, "its first pair failed"};
                current.pair = make(state.range(0));
                current.pair();
                current.whyNot.clear();
            }
            if (!current.whyNot.isEmpty())
                throw Unmeasurable{current.whyNot};
            const Reading reading = current.pair();
            for (const auto& [key, value] : reading)
                state.counters[key] = value;
            state.SetIterationTime(reading.at("ours"));
        } catch (const Unmeasurable& reason) {
            current.whyNot = reason.Text();
            state.SkipWithError(reason.what());
            return;
        }
    }
}

} // namespace

void AddFigure(const std::string& name, const std::vector<int64_t>& sizes, std::function<Pair(int64_t size)> make)
{
    auto* figure =
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { Measure(state, name, make); });
    // A pair is one iteration: how often it is run is the number of repetitions that the command line asks for.
    figure->Iterations(1)->UseManualTime();
    for (const int64_t size : sizes)
        figure->Arg(size);
}

void DropFigure()
{
    CurrentFigure() = {};
}

Pair AlternatingPair(std::function<double()> ours, std::function<double()> floor)
{
    return [=, oursFirst = std::make_shared<bool>(false)] {
        *oursFirst = !*oursFirst;
        Reading reading;
        if (*oursFirst)
            reading["ours"] = ours();
        reading["floor"] = floor();
        if (!*oursFirst)
            reading["ours"] = ours();
        return reading;
    };
}

double Seconds(const QString& what, const std::function<bool()>& work)
{
    const double start = Now();
    const bool done = work();
    const double seconds = Now() - start;
    if (!done)
        throw Unmeasurable{what + " failed"};
    return seconds;
}

TDeviceRecord BenchDevice(int modules, quint16 port)
{
    QList<TBoardRecord> boards;
    for (int unit = 1; unit <= modules; ++unit)
        boards.append(testdata::Board(QString("Модуль %1").arg(unit), "BENCH", "127.0.0.1", port, unit, 0));
    return testdata::Device("Прибор", 1, boards);
}

QDir EmptyFolder(const QString& name)
{
    QDir folder(QDir::current().filePath(name));
    if (!folder.removeRecursively() || !folder.mkpath("."))
        throw Unmeasurable{folder.path() + " cannot be emptied: free it"};
    return folder;
}

void SettleDisk()
{
    ::sync();
}
