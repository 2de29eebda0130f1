// The fastest possible board: blocking sockets, one process, no output but answers. It answers the same requests as the
// boards of the simulated instrument, on a free port, and writes to standard output
//   port PORT                     at the start
//   served REQUESTS SECONDS       for each line on standard input: requests since the last line, and the time that they
//                                 took, from their arrival until the answer was ready to be sent
// It ends when standard input does.

#include "Board.h"

#include <QList>

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void GiveUp(const char* what)
{
    std::perror(what);
    std::exit(1);
}

struct Connection
{
    int socket;
    QByteArray stream;
};

class Server
{
public:
    Server(std::chrono::microseconds blockTime, std::chrono::milliseconds restart)
        : m_blockTime(blockTime)
        , m_restart(restart)
    {
        for (int unit = 1; unit <= Units; ++unit)
            m_boards.try_emplace(unit, "BENCH", "1").first->second.AddProcessor(0);
        Listen();
        std::printf("port %d\n", ntohs(m_address.sin_port));
        std::fflush(stdout);
    }

    void Serve()
    {
        for (;;) {
            std::vector<pollfd> ready{{STDIN_FILENO, POLLIN, 0}, {m_listener, POLLIN, 0}};
            for (const Connection& connection : m_connections)
                ready.push_back({connection.socket, POLLIN, 0});
            if (poll(ready.data(), ready.size(), IsExpecting() ? 0 : -1) < 0)
                GiveUp("poll");
            if (ready[0].revents != 0 && !Report())
                return;
            // A restart has closed the remaining sockets of `ready`.
            m_restarted = false;
            for (size_t i = 2; i < ready.size() && !m_restarted; ++i) {
                if (ready[i].revents != 0)
                    Read(ready[i].fd);
            }
            if (!m_restarted && ready[1].revents != 0)
                Accept();
        }
    }

private:
    static constexpr int Units = 10;

    /// The next block is expected soon. A processor that goes idle in the meantime would take longer to wake up than
    /// the whole exchange takes, and the measured cost of the program would depend on it.
    bool IsExpecting() const
    {
        return m_blockTime.count() == 0 && Clock::now() - m_answered < std::chrono::milliseconds(2);
    }

    /// The first time on any free port, later on the same one.
    void Listen()
    {
        m_listener = socket(AF_INET, SOCK_STREAM, 0);
        const int on = 1;
        setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        auto* address = reinterpret_cast<sockaddr*>(&m_address);
        socklen_t size = sizeof m_address;
        if (bind(m_listener, address, size) != 0 || listen(m_listener, 5) != 0
            || getsockname(m_listener, address, &size) != 0)
            GiveUp("the board's port");
    }

    void Accept()
    {
        const int socket = accept(m_listener, nullptr, nullptr);
        if (socket < 0)
            GiveUp("accept");
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        m_connections.append(Connection{socket, {}});
    }

    void HangUp(int socket)
    {
        close(socket);
        m_connections.removeIf([=](const Connection& connection) { return connection.socket == socket; });
    }

    void Read(int socket)
    {
        char bytes[1024];
        const ssize_t count = recv(socket, bytes, sizeof bytes, 0);
        if (count <= 0)
            return HangUp(socket);
        const Clock::time_point arrival = Clock::now();
        const auto connection = std::find_if(m_connections.begin(), m_connections.end(),
                                             [=](const Connection& one) { return one.socket == socket; });
        connection->stream.append(bytes, count);
        Frame::Request request;
        while (Frame::TakeRequest(connection->stream, request) == Frame::Taken::Whole) {
            Board& board = m_boards.at(std::clamp(request.unit, 1, Units));
            // Only block requests are this large.
            if (request.pdu.size() > 20 && m_blockTime.count() > 0)
                std::this_thread::sleep_until(arrival + m_blockTime);
            const Board::Outcome outcome = board.Handle(request.pdu);
            const QByteArray answer = Frame::Answer(request, outcome.pdu);
            ++m_requests;
            m_own += Clock::now() - arrival;
            if (send(socket, answer.constData(), size_t(answer.size()), MSG_NOSIGNAL) < 0)
                return HangUp(socket);
            m_answered = Clock::now();
            if (outcome.accepted != nullptr)
                return Restart(board);
        }
    }

    void Restart(Board& board)
    {
        board.GoSilent();
        if (m_restart.count() > 0) {
            while (!m_connections.isEmpty())
                HangUp(m_connections.first().socket);
            close(m_listener);
            std::this_thread::sleep_for(m_restart);
            Listen();
            m_restarted = true;
        }
        board.ComeBack();
    }

    /// False when standard input is closed: the parent process has ended.
    bool Report()
    {
        char line[16];
        if (read(STDIN_FILENO, line, sizeof line) <= 0)
            return false;
        std::printf("served %d %.9f\n", m_requests, std::chrono::duration<double>(m_own).count());
        std::fflush(stdout);
        m_requests = 0;
        m_own = {};
        return true;
    }

    std::chrono::microseconds m_blockTime;
    std::chrono::milliseconds m_restart;
    std::map<int, Board> m_boards;
    int m_listener = -1;
    sockaddr_in m_address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
    QList<Connection> m_connections;
    bool m_restarted = false;
    int m_requests = 0;
    Clock::duration m_own{};
    Clock::time_point m_answered{};
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench-board MICROSECONDS-PER-BLOCK MILLISECONDS-TO-RESTART\n");
        return 2;
    }
    // The system rounds a sleep up by 50 microseconds otherwise.
    prctl(PR_SET_TIMERSLACK, 1);
    Server server(std::chrono::microseconds(std::atoi(argv[1])), std::chrono::milliseconds(std::atoi(argv[2])));
    server.Serve();
    return 0;
}
