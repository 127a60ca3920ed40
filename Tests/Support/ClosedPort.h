#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace tolmtest {

/// A port of the loopback address that refuses every connection: it is taken, so that no server of another process can
/// get it, and nobody listens on it.
class ClosedPort {
public:
    ClosedPort() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof m_address;
        auto* const address = reinterpret_cast<sockaddr*>(&m_address);
        if (m_socket < 0 || ::bind(m_socket, address, size) != 0 || ::getsockname(m_socket, address, &size) != 0)
            throw std::runtime_error("no port to be had");
    }
    ~ClosedPort() { ::close(m_socket); }
    ClosedPort(const ClosedPort&) = delete;
    ClosedPort& operator=(const ClosedPort&) = delete;

    /// "http://127.0.0.1:" and the port.
    std::wstring Address() const { return L"http://127.0.0.1:" + std::to_wstring(ntohs(m_address.sin_port)); }

    /// From now on the system takes connections, and nobody ever reads from them.
    void TurnDeaf() {
        if (::listen(m_socket, 8) != 0)
            throw std::runtime_error("nobody listens");
    }

private:
    int m_socket;
    sockaddr_in m_address{};
};

} // namespace tolmtest
