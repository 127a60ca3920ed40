#include "Support/TlsServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace tolmtest {
namespace {

using Protocol = TlsServer::Protocol;
using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;
using Connection = std::unique_ptr<SSL, decltype(&SSL_free)>;

struct Versions {
    Protocol protocol;
    int lowest;
    int highest;
};
constexpr Versions kVersions[] = {
    {Protocol::Newest, 0, 0},
    {Protocol::Only12, TLS1_2_VERSION, TLS1_2_VERSION},
    {Protocol::Only13, TLS1_3_VERSION, TLS1_3_VERSION},
    {Protocol::AtMost11, TLS1_VERSION, TLS1_1_VERSION},
    {Protocol::AtMost10, TLS1_VERSION, TLS1_VERSION},
};

void Need(bool done) {
    if (!done)
        throw std::runtime_error("the TLS server cannot be made");
}

/// Old versions work with ciphers of old times only.
Context MakeContext(const Certificate& certificate, Protocol protocol) {
    Context context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
    Need(context != nullptr && SSL_CTX_use_certificate(context.get(), certificate.Get()) == 1 &&
         SSL_CTX_use_PrivateKey(context.get(), certificate.Key()) == 1);
    for (const Versions& row : kVersions) {
        if (row.protocol == protocol && row.lowest != 0)
            Need(SSL_CTX_set_cipher_list(context.get(), "ALL:@SECLEVEL=0") == 1 &&
                 SSL_CTX_set_min_proto_version(context.get(), row.lowest) == 1 &&
                 SSL_CTX_set_max_proto_version(context.get(), row.highest) == 1);
    }
    return context;
}

/// In this thread; a peer that refuses the certificate goes away at any moment.
void IgnoreBrokenPipes() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

/// Reads one request, its body as long as its header says.
std::string Receive(SSL* connection) {
    std::string text;
    std::array<char, 4096> chunk{};
    std::size_t wanted = std::string::npos;
    while (text.size() < wanted) {
        const int count = SSL_read(connection, chunk.data(), chunk.size());
        if (count <= 0)
            return text;
        text.append(chunk.data(), static_cast<std::size_t>(count));
        const auto end = text.find("\r\n\r\n");
        const auto length = text.find("Content-Length: ");
        if (end != std::string::npos)
            wanted = end + 4 + (length < end ? std::stoul(text.substr(length + 16)) : 0);
    }
    return text;
}

} // namespace

class TlsServer::Impl {
public:
    Impl(const Certificate& certificate, std::string json, Protocol protocol)
        : m_context(MakeContext(certificate, protocol)), m_json(std::move(json)),
          m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        Need(bind(m_listener, generic, length) == 0 && listen(m_listener, 16) == 0 &&
             getsockname(m_listener, generic, &length) == 0);
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { Run(); });
    }

    ~Impl() {
        m_stops = true;
        shutdown(m_listener, SHUT_RDWR);
        m_thread.join();
        close(m_listener);
    }

    void Run() {
        IgnoreBrokenPipes();
        while (!m_stops) {
            const int peer = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (peer < 0)
                continue;
            ++m_connectionCount;
            const timeval patience{10, 0};
            setsockopt(peer, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
            Serve(peer);
            close(peer);
        }
    }

    void Serve(int peer) {
        const Connection connection(SSL_new(m_context.get()), &SSL_free);
        SSL_set_fd(connection.get(), peer);
        if (SSL_accept(connection.get()) != 1)
            return;
        const std::string request = Receive(connection.get());
        if (request.empty())
            return;
        {
            const std::lock_guard lock(m_mutex);
            m_requests.push_back(request);
        }
        const std::string answer =
            "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(m_json.size()) +
            "\r\n\r\n" + m_json;
        SSL_write(connection.get(), answer.data(), static_cast<int>(answer.size()));
        SSL_shutdown(connection.get());
    }

    Context m_context;
    std::string m_json;
    int m_listener;
    int m_port = 0;
    std::atomic<bool> m_stops = false;
    std::atomic<int> m_connectionCount = 0;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_requests;
    std::thread m_thread;
};

TlsServer::TlsServer(const Certificate& certificate, std::string json, Protocol protocol)
    : m_impl(std::make_unique<Impl>(certificate, std::move(json), protocol)) {}
TlsServer::~TlsServer() = default;

std::wstring TlsServer::Address(const std::wstring& host) const {
    return L"https://" + host + L":" + std::to_wstring(m_impl->m_port);
}

std::vector<std::string> TlsServer::Requests() const {
    const std::lock_guard lock(m_impl->m_mutex);
    return m_impl->m_requests;
}

int TlsServer::ConnectionCount() const {
    return m_impl->m_connectionCount;
}

} // namespace tolmtest
