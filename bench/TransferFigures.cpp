#include "BareClient.h"
#include "BoardProcess.h"
#include "Figure.h"

#include "MainWindow.h"
#include "TcpModbus.h"
#include "TestData.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProgressBar>
#include <QWindow>

#include <memory>

using namespace std::chrono_literals;

namespace {

constexpr quint32 BlockLimit = 244;

double Blocks(const QByteArray& image)
{
    const qsizetype blocks = (image.size() + BlockLimit - 5) / (BlockLimit - 4);
    return double(blocks);
}

/// What both sides of a pair write to: one board, one image.
struct Target
{
    Target(std::chrono::microseconds blockTime, int64_t size)
        : board(blockTime)
        , image(testdata::Image("2.0", int(size)))
        , crc(TcpModbus::Crc16(0xFFFF, image))
    {}

    BoardProcess board;
    QByteArray image;
    quint16 crc;
    std::map<std::string, double> served; ///< seconds that the board took to handle requests
};

/// `watch` connects slots to the link's signals.
double WriteAsProgram(Target& target, const std::string& side, const std::function<void(TcpModbus&)>& watch = {})
{
    target.board.TakeWork();
    TcpModbus link(nullptr, "127.0.0.1", target.board.Port(), 1);
    if (!link.Connect())
        throw Unmeasurable{"bench-board cannot be reached"};
    if (watch)
        watch(link);
    const double seconds =
        Seconds("the program's transfer", [&] { return link.WriteFirmware(target.image, 0, BlockLimit); });
    target.served[side] = target.board.TakeWork().seconds;
    return seconds;
}

double WriteBare(Target& target, BareClient::Waiting waiting, const std::string& side)
{
    target.board.TakeWork();
    BareClient client(target.board.Port(), waiting);
    const double seconds = Seconds("the bare transfer", [&] { return client.WriteImage(target.image, target.crc); });
    target.served[side] = target.board.TakeWork().seconds;
    return seconds;
}

Pair WithBoardTimes(const std::shared_ptr<Target>& target, const Pair& pair)
{
    return [=] {
        Reading reading = pair();
        reading["blocks"] = Blocks(target->image);
        for (const auto& [side, seconds] : target->served)
            reading["board in " + side] = seconds;
        return reading;
    };
}

Pair AgainstBareSocket(std::chrono::microseconds blockTime, int64_t size)
{
    const auto target = std::make_shared<Target>(blockTime, size);
    const auto bare = [=] { return WriteBare(*target, BareClient::Waiting::Asleep, "floor"); };
    const Pair pair = AlternatingPair([=] { return WriteAsProgram(*target, "ours"); }, bare);
    return WithBoardTimes(target, [=] {
        Reading reading = pair();
        reading["spinning floor"] = WriteBare(*target, BareClient::Waiting::Spinning, "spinning floor");
        return reading;
    });
}

void LetSettle()
{
    const QDeadlineTimer settled(200ms);
    while (!settled.hasExpired())
        QCoreApplication::processEvents();
}

void RequireOnScreen(const QWidget& window)
{
    if (!(window.windowHandle() && window.windowHandle()->isExposed()))
        throw Unmeasurable{"the window does not reach the screen"};
}

void StartBar(QProgressBar& bar, int maximum)
{
    bar.reset();
    bar.setMaximum(maximum);
    bar.show();
    QCoreApplication::processEvents();
}

/// The program's window with a full table, found through the board.
class Window
{
public:
    explicit Window(const BoardProcess& board)
    {
        testdata::WriteCatalogue(QCoreApplication::applicationDirPath() + "/updater.json",
                                 {BenchDevice(10, board.Port())});
        window = std::make_unique<MainWindow>(nullptr);
        window->setWindowFlags(window->windowFlags() | Qt::FramelessWindowHint);
        Show(true);
        window->findChild<QPushButton*>("button_DeviceType")->click();
        if (!window->GetButton(9, MainWindow::ColumnMark))
            throw Unmeasurable{"the window did not find bench-board"};
    }

    void Show(bool on)
    {
        window->setVisible(on);
        LetSettle();
        if (on)
            RequireOnScreen(*window);
    }
    QProgressBar& Bar() const { return *window->findChild<QProgressBar*>("progressBar"); }

    std::unique_ptr<MainWindow> window;
};

Pair WithAndWithoutWindow(std::chrono::microseconds blockTime, int64_t size)
{
    const auto target = std::make_shared<Target>(blockTime, size);
    const auto window = std::make_shared<Window>(target->board);
    const auto shown = [=] {
        window->Show(true);
        StartBar(window->Bar(), int(size));
        return WriteAsProgram(*target, "ours", [=](TcpModbus& link) {
            QObject::connect(&link, &TcpModbus::onWriteBlock, window->window.get(), &MainWindow::onWriteBlock);
        });
    };
    const auto hidden = [=] {
        window->Show(false);
        return WriteAsProgram(*target, "floor");
    };
    return WithBoardTimes(target, AlternatingPair(shown, hidden));
}

} // namespace

void AddTransferFigures()
{
    AddFigure("transfer", {64 * KiB, 256 * KiB, MiB, 4 * MiB, 16 * MiB},
              [](int64_t size) { return AgainstBareSocket(0us, size); });
    AddFigure("transfer, 1 ms per block", {64 * KiB}, [](int64_t size) { return AgainstBareSocket(1ms, size); });
    AddFigure("transfer, 5 ms per block", {64 * KiB}, [](int64_t size) { return AgainstBareSocket(5ms, size); });
    // Real boards need at least 1 ms per block: the cost of the window with a faster board does not matter.
    AddFigure("transfer, 1 ms per block, window shown", {64 * KiB},
              [](int64_t size) { return WithAndWithoutWindow(1ms, size); });
}
