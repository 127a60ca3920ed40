#include "Support/ScriptedServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <deque>
#include <list>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace tolmtest {
namespace {

/// Owner of a file descriptor.
class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {
        if (fd < 0)
            throw std::runtime_error("the scripted server got no descriptor");
    }
    ~Descriptor() { close(m_fd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return m_fd; }

private:
    int m_fd;
};

bool SameLetters(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

void ParseHeader(std::string_view line, HeaderList& headers) {
    const auto colon = line.find(':');
    if (colon == std::string_view::npos)
        headers.emplace_back(line, "");
    else
        headers.emplace_back(line.substr(0, colon), Trimmed(line.substr(colon + 1)));
}

/// Parses request line and headers, without the empty line at their end.
RecordedRequest ParseHead(std::string_view head) {
    RecordedRequest request;
    const auto lineEnd = std::min(head.find("\r\n"), head.size());
    const auto line = head.substr(0, lineEnd);
    const auto first = line.find(' ');
    const auto last = line.rfind(' ');
    request.method = line.substr(0, first);
    if (first != std::string_view::npos && last > first)
        request.path = line.substr(first + 1, last - first - 1);
    for (head.remove_prefix(lineEnd); head.size() > 2;) {
        head.remove_prefix(2);
        const auto end = std::min(head.find("\r\n"), head.size());
        ParseHeader(head.substr(0, end), request.headers);
        head.remove_prefix(end);
    }
    return request;
}

/// What the peer has not read yet is thrown away.
void SetReset(int fd) {
    const linger atOnce{1, 0};
    setsockopt(fd, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

int Listen() {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(fd, 64) != 0)
        throw std::runtime_error("the scripted server could not listen");
    return fd;
}

std::uint16_t PortOf(int fd) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        throw std::runtime_error("the scripted server has no port");
    return ntohs(address.sin_port);
}

bool SendAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto sent = send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

} // namespace

std::optional<std::string> RecordedRequest::Header(const std::string& name) const {
    for (const auto& [key, value] : headers) {
        if (SameLetters(key, name))
            return value;
    }
    return std::nullopt;
}

ScriptedAnswer ScriptedAnswer::Json(std::string body) {
    ScriptedAnswer answer;
    answer.body = std::move(body);
    return answer;
}

ScriptedAnswer ScriptedAnswer::Data(const std::string& data) {
    return Json(R"({"code":"10000","data":)" + data + "}");
}

ScriptedAnswer ScriptedAnswer::Code(const std::string& code) {
    return Json(R"({"code":")" + code + R"(","data":null})");
}

ScriptedAnswer ScriptedAnswer::Html(int status) {
    ScriptedAnswer answer = Json("<html><body>no service</body></html>");
    answer.status = status;
    answer.headers = {{"Content-Type", "text/html"}};
    return answer;
}

ScriptedAnswer ScriptedAnswer::Redirect(const std::string& location) {
    ScriptedAnswer answer = Json("{}");
    answer.status = 301;
    answer.headers.emplace_back("Location", location);
    return answer;
}

ScriptedAnswer ScriptedAnswer::Silence() {
    ScriptedAnswer answer;
    answer.never = true;
    return answer;
}

ScriptedAnswer ScriptedAnswer::CutAfter(std::size_t bytes, std::string body) {
    ScriptedAnswer answer = Json(std::move(body));
    answer.cutAfter = bytes;
    return answer;
}

ScriptedAnswer ScriptedAnswer::Raw(std::string bytes) {
    ScriptedAnswer answer;
    answer.raw = std::move(bytes);
    return answer;
}

ScriptedAnswer ScriptedAnswer::ResetAfter(std::size_t bytes, std::string body) {
    ScriptedAnswer answer = CutAfter(bytes, std::move(body));
    answer.reset = true;
    return answer;
}

ScriptedAnswer ScriptedAnswer::With(const std::string& header, const std::string& value) const {
    ScriptedAnswer answer = *this;
    answer.headers.emplace_back(header, value);
    return answer;
}

std::string ScriptedAnswer::Bytes() const {
    if (raw)
        return *raw;
    std::string text = "HTTP/1.1 " + std::to_string(status) + " Scripted\r\n";
    for (const auto& [name, value] : headers)
        text.append(name).append(": ").append(value).append("\r\n");
    return text + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

ScriptedAnswer ScriptedAnswer::WithStatus(int newStatus) const {
    ScriptedAnswer answer = *this;
    answer.status = newStatus;
    return answer;
}

ScriptedAnswer ScriptedAnswer::WithoutContentType() const {
    ScriptedAnswer answer = *this;
    std::erase_if(answer.headers, [](const auto& header) { return SameLetters(header.first, "Content-Type"); });
    return answer;
}

class ScriptedServer::Impl {
public:
    Impl() : m_listener(Listen()), m_stop(eventfd(0, EFD_CLOEXEC)), m_port(PortOf(m_listener.Get())) {
        m_acceptor = std::thread([this] { Accept(); });
    }

    ~Impl() {
        const std::uint64_t one = 1;
        if (write(m_stop.Get(), &one, sizeof one) == sizeof one)
            m_acceptor.join();
        for (auto& connection : m_connections)
            connection.join();
    }

    void Accept() {
        while (WaitFor(m_listener.Get(), POLLIN, -1)) {
            const int fd = accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC);
            if (fd >= 0)
                m_connections.emplace_back([this, fd] { Serve(fd); });
        }
    }

    /// Waits for the descriptor; false when the time ran out or the server stops.
    bool WaitFor(int fd, short events, int milliseconds) const {
        std::array<pollfd, 2> polled{{{m_stop.Get(), POLLIN, 0}, {fd, events, 0}}};
        return poll(polled.data(), polled.size(), milliseconds) > 0 && polled[0].revents == 0;
    }

    void Serve(int fd) {
        const Descriptor connection(fd);
        const int on = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        {
            const std::lock_guard lock(m_mutex);
            ++m_connectionCount;
        }
        std::string pending;
        while (ServeOne(fd, pending)) {
        }
    }

    /// Reads and answers one request; false ends the connection.
    bool ServeOne(int fd, std::string& pending) {
        RecordedRequest request;
        if (!Read(fd, pending, request))
            return false;
        const ScriptedAnswer answer = RecordAndChoose(request);
        if (answer.never || answer.delay.count() > 0)
            WaitFor(fd, POLLRDHUP, answer.never ? -1 : static_cast<int>(answer.delay.count()));
        if (answer.never)
            return false;
        const auto bytes = answer.Bytes();
        const auto sent = std::string_view(bytes).substr(0, answer.cutAfter);
        if (answer.reset)
            SetReset(fd);
        const auto send = [&](std::string_view part) {
            return answer.byteByByte ? SendByteByByte(fd, part, answer.pace) : SendAll(fd, part);
        };
        const bool isSent = send(sent);
        while (!answer.endlessly.empty() && send(answer.endlessly)) {
        }
        if (answer.staysOpen)
            WaitFor(fd, POLLRDHUP, -1);
        return isSent && sent.size() == bytes.size() && !answer.reset && !answer.raw;
    }

    /// Ends when the peer is gone.
    bool SendByteByByte(int fd, std::string_view bytes, std::chrono::milliseconds pace) const {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (!SendAll(fd, bytes.substr(i, 1)))
                return false;
            if (pace.count() > 0 && WaitFor(fd, POLLRDHUP, static_cast<int>(pace.count())))
                return false;
        }
        return true;
    }

    bool Receive(int fd, std::string& pending) const {
        std::array<char, 16384> chunk{};
        if (!WaitFor(fd, POLLIN, -1))
            return false;
        const auto count = recv(fd, chunk.data(), chunk.size(), 0);
        if (count <= 0)
            return false;
        pending.append(chunk.data(), static_cast<std::size_t>(count));
        return true;
    }

    bool Read(int fd, std::string& pending, RecordedRequest& request) const {
        auto end = pending.find("\r\n\r\n");
        for (; end == std::string::npos; end = pending.find("\r\n\r\n")) {
            if (!Receive(fd, pending))
                return false;
        }
        request = ParseHead(std::string_view(pending).substr(0, end));
        const auto bodyStart = end + 4;
        const std::size_t length = std::stoul(request.Header("Content-Length").value_or("0"));
        while (pending.size() < bodyStart + length) {
            if (!Receive(fd, pending))
                return false;
        }
        request.body = pending.substr(bodyStart, length);
        request.raw = pending.substr(0, bodyStart + length);
        pending.erase(0, bodyStart + length);
        return true;
    }

    ScriptedAnswer RecordAndChoose(const RecordedRequest& request) {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
        if (!m_next.empty()) {
            ScriptedAnswer answer = std::move(m_next.front());
            m_next.pop_front();
            return answer;
        }
        return ByPath(request.path);
    }

    ScriptedAnswer ByPath(const std::string& path) const {
        const ScriptedAnswer* best = nullptr;
        std::size_t bestLength = 0;
        for (const auto& [prefix, answer] : m_byPrefix) {
            if (path.starts_with(prefix) && (best == nullptr || prefix.size() > bestLength)) {
                best = &answer;
                bestLength = prefix.size();
            }
        }
        return best != nullptr ? *best : ScriptedAnswer::Html(501);
    }

    Descriptor m_listener;
    Descriptor m_stop;
    std::uint16_t m_port;
    mutable std::mutex m_mutex;
    std::deque<ScriptedAnswer> m_next;
    std::map<std::string, ScriptedAnswer> m_byPrefix;
    std::vector<RecordedRequest> m_requests;
    std::size_t m_connectionCount = 0;
    std::list<std::thread> m_connections; ///< grown by the accepting thread, joined after it
    std::thread m_acceptor;
};

ScriptedServer::ScriptedServer() : m_impl(std::make_unique<Impl>()) {}
ScriptedServer::~ScriptedServer() = default;

std::uint16_t ScriptedServer::Port() const {
    return m_impl->m_port;
}

std::wstring ScriptedServer::Address() const {
    return L"http://127.0.0.1:" + std::to_wstring(m_impl->m_port);
}

ScriptedServer& ScriptedServer::On(const std::string& pathPrefix, ScriptedAnswer answer) {
    const std::lock_guard lock(m_impl->m_mutex);
    m_impl->m_byPrefix.insert_or_assign(pathPrefix, std::move(answer));
    return *this;
}

ScriptedServer& ScriptedServer::Next(ScriptedAnswer answer) {
    const std::lock_guard lock(m_impl->m_mutex);
    m_impl->m_next.push_back(std::move(answer));
    return *this;
}

std::vector<RecordedRequest> ScriptedServer::Requests() const {
    const std::lock_guard lock(m_impl->m_mutex);
    return m_impl->m_requests;
}

std::vector<std::string> ScriptedServer::Paths() const {
    std::vector<std::string> paths;
    for (const auto& request : Requests())
        paths.push_back(request.path);
    return paths;
}

std::size_t ScriptedServer::ConnectionCount() const {
    const std::lock_guard lock(m_impl->m_mutex);
    return m_impl->m_connectionCount;
}

} // namespace tolmtest
