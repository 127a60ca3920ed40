#include "Support/ServiceCalls.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace tolmtest {
namespace {

class Connection {
public:
    explicit Connection(int port) : m_socket(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
            throw std::runtime_error("no connection");
    }
    ~Connection() { close(m_socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Sends as much as the other side takes.
    void Send(const std::string& bytes) const {
        for (std::size_t sent = 0; sent < bytes.size();) {
            const auto count = send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count <= 0)
                return;
            sent += static_cast<std::size_t>(count);
        }
    }
    void EndSending() const { shutdown(m_socket, SHUT_WR); }
    std::string ReadAll() const {
        std::string bytes;
        std::array<char, 65536> piece{};
        for (auto count = recv(m_socket, piece.data(), piece.size(), 0); count > 0;
             count = recv(m_socket, piece.data(), piece.size(), 0))
            bytes.append(piece.data(), static_cast<std::size_t>(count));
        return bytes;
    }

private:
    int m_socket;
};

WireAnswer AnswerIn(const std::string& bytes) {
    WireAnswer answer;
    const auto end = bytes.find("\r\n\r\n");
    if (end == std::string::npos || !bytes.starts_with("HTTP/1.1 "))
        return answer;
    answer.status = std::atoi(bytes.c_str() + 9);
    answer.head = bytes.substr(0, end);
    answer.body = bytes.substr(end + 4);
    return answer;
}

} // namespace

WireAnswer SendBytes(int port, const std::string& bytes) {
    const Connection connection(port);
    connection.Send(bytes);
    return AnswerIn(connection.ReadAll());
}

WireAnswer SendBytesAndNoMore(int port, const std::string& bytes) {
    const Connection connection(port);
    connection.Send(bytes);
    connection.EndSending();
    return AnswerIn(connection.ReadAll());
}

WireAnswer SendRequest(int port, const WireRequest& request) {
    std::string bytes = request.method + " " + request.path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    for (const auto& [name, value] : request.headers)
        bytes.append(name).append(": ").append(value).append("\r\n");
    bytes.append("Content-Length: ")
        .append(std::to_string(request.body.size()))
        .append("\r\n\r\n")
        .append(request.body);
    return SendBytes(port, bytes);
}

std::vector<std::pair<std::string, std::string>> UserHeaders(const std::string& userId, const std::string& token) {
    return {{"x-kfe-userid", userId}, {"Authorization", token}};
}

} // namespace tolmtest
