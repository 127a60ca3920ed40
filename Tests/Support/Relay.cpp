#include "Support/Relay.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace tolmtest {
namespace {

class Socket {
public:
    explicit Socket(int descriptor) : m_descriptor(descriptor) {}
    Socket() : Socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}
    ~Socket() {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int Get() const { return m_descriptor; }
    bool IsOpen() const { return m_descriptor >= 0; }
    /// Ends what any thread waits for on it.
    void Shut() const { shutdown(m_descriptor, SHUT_RDWR); }

private:
    int m_descriptor;
};

sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int BindAndListen(const Socket& listener) {
    auto address = Loopback(0);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener.Get(), generic, length) != 0 || listen(listener.Get(), 16) != 0 ||
        getsockname(listener.Get(), generic, &length) != 0)
        throw std::runtime_error("the relay cannot listen");
    return ntohs(address.sin_port);
}

bool Connect(const Socket& to, int port) {
    auto address = Loopback(port);
    return connect(to.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

bool SendAll(int to, const char* bytes, std::size_t count) {
    while (count > 0) {
        const auto sent = send(to, bytes, count, MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes += sent;
        count -= static_cast<std::size_t>(sent);
    }
    return true;
}

} // namespace

class Relay::Impl {
public:
    explicit Impl(int targetPort) : m_targetPort(targetPort), m_port(BindAndListen(m_listener)) {
        m_acceptor = std::thread([this] { Accept(); });
    }

    ~Impl() {
        Close();
        m_acceptor.join();
        for (auto& connection : m_connections) {
            connection->client.Shut();
            connection->target.Shut();
            connection->thread.join();
        }
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    int Port() const { return m_port; }

    void GoAway(std::size_t connection, std::size_t answerBytes) {
        const std::lock_guard lock(m_mutex);
        m_last = connection;
        m_lastBytes = answerBytes;
    }

    void LoseAnswerTo(const std::string& text) {
        const std::lock_guard lock(m_mutex);
        m_lost = text;
        m_hasLost = false;
    }

    bool HasLost() const {
        const std::lock_guard lock(m_mutex);
        return m_hasLost;
    }

    std::size_t AnswerBytes(std::size_t connection) const {
        const std::lock_guard lock(m_mutex);
        return connection <= m_answered.size() ? m_answered[connection - 1] : 0;
    }

private:
    struct Connection {
        explicit Connection(int descriptor) : client(descriptor) {}
        Socket client;
        Socket target;
        std::thread thread;
    };

    void Close() { m_listener.Shut(); }

    void Accept() {
        for (;;) {
            auto connection = std::make_unique<Connection>(accept(m_listener.Get(), nullptr, nullptr));
            if (!connection->client.IsOpen())
                return;
            Connection& started = *connection;
            const std::size_t number = m_connections.size() + 1;
            {
                const std::lock_guard lock(m_mutex);
                m_answered.push_back(0);
            }
            m_connections.push_back(std::move(connection));
            started.thread = std::thread([this, &started, number] { Pass(started, number); });
        }
    }

    void Pass(const Connection& connection, std::size_t number) {
        if (Room(number) > 0 && Connect(connection.target, m_targetPort))
            PassBothWays(connection, number);
        if (Room(number) == 0)
            Close();
        connection.client.Shut();
        connection.target.Shut();
    }

    void PassBothWays(const Connection& connection, std::size_t number) {
        bool isLost = false;
        for (;;) {
            std::array<pollfd, 2> ends{pollfd{connection.client.Get(), POLLIN, 0},
                                       pollfd{connection.target.Get(), POLLIN, 0}};
            poll(ends.data(), ends.size(), -1);
            if (ends[0].revents != 0) {
                isLost = isLost || IsToBeLost(ends[0].fd);
                if (!PassOn(ends[0].fd, ends[1].fd, nullptr))
                    return;
            }
            if (ends[1].revents != 0 && isLost)
                return SetLost();
            if (ends[1].revents != 0 && !PassOn(ends[1].fd, ends[0].fd, &number))
                return;
        }
    }

    /// Looks at the line of the request that has come in, without taking it.
    bool IsToBeLost(int from) const {
        const std::lock_guard lock(m_mutex);
        std::array<char, 400> head{};
        const auto got = m_lost.empty() ? 0 : recv(from, head.data(), head.size(), MSG_PEEK);
        const std::string_view bytes(head.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
        return !m_lost.empty() && bytes.substr(0, bytes.find('\r')).find(m_lost) != std::string_view::npos;
    }
    void SetLost() {
        const std::lock_guard lock(m_mutex);
        m_lost.clear();
        m_hasLost = true;
    }

    /// Passes on what is there; of an answer no more than there is room for.
    bool PassOn(int from, int to, const std::size_t* answerOf) {
        std::array<char, 16384> bytes{};
        const auto got = recv(from, bytes.data(), bytes.size(), 0);
        if (got <= 0)
            return false;
        auto count = static_cast<std::size_t>(got);
        if (answerOf == nullptr)
            return SendAll(to, bytes.data(), count);
        count = std::min(count, Room(*answerOf));
        const bool sent = SendAll(to, bytes.data(), count);
        const std::lock_guard lock(m_mutex);
        m_answered[*answerOf - 1] += count;
        return sent && RoomLocked(*answerOf) > 0;
    }

    std::size_t Room(std::size_t number) const {
        const std::lock_guard lock(m_mutex);
        return RoomLocked(number);
    }
    std::size_t RoomLocked(std::size_t number) const {
        if (number < m_last)
            return std::numeric_limits<std::size_t>::max();
        return number == m_last ? m_lastBytes - m_answered[number - 1] : 0;
    }

    Socket m_listener;
    int m_targetPort;
    int m_port;
    mutable std::mutex m_mutex;
    std::size_t m_last = std::numeric_limits<std::size_t>::max();
    std::size_t m_lastBytes = 0;
    std::vector<std::size_t> m_answered;
    std::string m_lost; ///< in the line of the request whose answer is to be lost; empty for none
    bool m_hasLost = false;
    std::vector<std::unique_ptr<Connection>> m_connections; ///< the accepting thread's, and the destructor's after it
    std::thread m_acceptor;
};

Relay::Relay(int targetPort) : m_impl(std::make_unique<Impl>(targetPort)) {}

Relay::~Relay() = default;

std::wstring Relay::Address() const {
    return L"http://127.0.0.1:" + std::to_wstring(m_impl->Port());
}

void Relay::GoAway(std::size_t connection, std::size_t answerBytes) {
    m_impl->GoAway(connection, answerBytes);
}

void Relay::LoseAnswerTo(const std::string& text) {
    m_impl->LoseAnswerTo(text);
}

bool Relay::HasLost() const {
    return m_impl->HasLost();
}

std::size_t Relay::AnswerBytes(std::size_t connection) const {
    return m_impl->AnswerBytes(connection);
}

} // namespace tolmtest
