#include "BoardProcess.h"
#include "Figure.h"
#include "Watched.h"

#include "TestData.h"

#include <QFile>

#include <memory>

using namespace std::chrono_literals;

namespace {

/// A separate folder with the real program and a catalogue of `modules` modules, all reached through `board`.
QString MakeProgramFolder(const BoardProcess& board, int modules)
{
    const QDir folder = EmptyFolder("program");
    testdata::WriteCatalogue(folder.filePath("updater.json"), {BenchDevice(modules, board.Port())});
    const QString program = folder.filePath("updater");
    if (!QFile::copy(UPDATER_PROGRAM, program))
        throw Unmeasurable{program + " cannot be written"};
    return program;
}

/// New firmware for each of the first `modules` modules.
void MakeArchive(const QString& program, int modules, int64_t size)
{
    testdata::Files files;
    for (int unit = 1; unit <= modules; ++unit)
        files.append({QString("fw_1_%1_0_v2.0.bin").arg(unit), testdata::Image("2.0", int(size))});
    testdata::WriteZip(QFileInfo(program).path() + "/bench.zip", testdata::WithCertificates(files));
}

/// With one word in it the window that is otherwise empty.
const QStringList AWord{"Слово"};

double TimeToPaint(const QString& program, const QStringList& arguments = {})
{
    Watched watched(program, "paint", arguments);
    const double painted = watched.Await("painted").toDouble();
    watched.Finish();
    return painted - watched.Started();
}

Pair StartUp(int64_t modules)
{
    const auto board = std::make_shared<BoardProcess>(0us);
    const QString program = MakeProgramFolder(*board, int(modules));
    const Pair pair =
        AlternatingPair([=, keep = board] { return TimeToPaint(program); }, [] { return TimeToPaint(EMPTY_PROGRAM); });
    return [=] {
        Reading reading = pair();
        reading["floor with a word"] = TimeToPaint(EMPTY_PROGRAM, AWord);
        return reading;
    };
}

Watched::Memory IdleMemory(const QString& program, const QString& steps, const QStringList& arguments = {})
{
    Watched watched(program, steps, arguments);
    watched.Await("idle");
    return watched.Uses();
}

Pair Memory(int64_t modules)
{
    const auto board = std::make_shared<BoardProcess>(0us);
    const QString program = MakeProgramFolder(*board, int(modules));
    return [=, keep = board] {
        const Watched::Memory ours = IdleMemory(program, "idle");
        const Watched::Memory floor = IdleMemory(EMPTY_PROGRAM, "idle-empty");
        return Reading{{"ours", ours.resident},
                       {"floor", floor.resident},
                       {"floor with a word", IdleMemory(EMPTY_PROGRAM, "idle-empty", AWord).resident},
                       {"own in ours", ours.own},
                       {"own in floor", floor.own}};
    };
}

/// Each run needs a new board, because an updated one is up to date.
Reading MemoryWhileWriting(int64_t size)
{
    const BoardProcess board(0us);
    const QString program = MakeProgramFolder(board, 10);
    MakeArchive(program, 1, size);
    Watched watched(program, "write");
    watched.Await("idle");
    const double idle = watched.Uses().resident;
    watched.GoOn();
    watched.Await("taken");
    const double taken = watched.Uses().resident;
    watched.ForgetPeak();
    watched.GoOn();
    watched.Await("writing");
    const double peak = watched.Peak();
    watched.GoOn();
    watched.Finish();
    return {{"ours", peak}, {"floor", taken + double(size)}, {"idle before the archive", idle}};
}

/// The lower bound is the pause that each written module gets to restart, and the board's own time.
Reading WholeUpdate(int64_t modules)
{
    constexpr double RestartPause = 2;
    BoardProcess board(1ms, 1s);
    const QString program = MakeProgramFolder(board, int(modules));
    MakeArchive(program, int(modules), 64 * KiB);
    Watched watched(program, "update");
    watched.Await("taken");
    board.TakeWork();
    watched.GoOn();
    const double pressed = watched.Await("pressed").toDouble();
    const double seconds = watched.Await("updated").toDouble() - pressed;
    watched.Finish();
    if (testdata::ReadFile(watched.Log()).contains("WaitReboot 1"))
        throw Unmeasurable{"bench-board took longer to restart than the pause for it"};
    const BoardProcess::Work work = board.TakeWork();
    return {{"ours", seconds},
            {"floor", double(modules) * RestartPause + work.seconds},
            {"requests", double(work.requests)}};
}

} // namespace

void AddProgramFigures()
{
    AddFigure("start", {10}, StartUp);
    AddFigure("memory, idle", {10}, Memory);
    AddFigure("memory, writing", {16 * MiB}, [](int64_t size) { return [=] { return MemoryWhileWriting(size); }; });
    AddFigure("whole update, 1 ms per block", {4},
              [](int64_t modules) { return [=] { return WholeUpdate(modules); }; });
}
