#include "Service/BoundedServer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tolm::service {
namespace {

/// What even a slow line carries in a second.
constexpr std::size_t kBytesInASecond = 16 * 1024;

/// A peer that says nothing at all is let go sooner.
constexpr std::chrono::milliseconds kPatienceForTheFirstByte{5'000};

template <class Call> ssize_t Uninterrupted(Call call) {
    ssize_t result = -1;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

} // namespace

BoundedStream::BoundedStream(socket_t socket, std::chrono::milliseconds patience)
    : m_socket(socket), m_patience(patience) {}

/// False when the time is over or the connection is gone.
bool BoundedStream::Wait(short event, const Allowance& allowance) const {
    const auto patience =
        event == POLLIN && allowance.bytes == 0 ? std::min(m_patience, kPatienceForTheFirstByte) : m_patience;
    const auto end = allowance.start + patience + std::chrono::milliseconds(allowance.bytes * 1000 / kBytesInASecond);
    // What the system has taken into its buffers is no sign of life: each single wait has an end of its own.
    const auto left = std::min(std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()), patience);
    if (left.count() <= 0)
        return false;
    pollfd watched{m_socket, event, 0};
    return Uninterrupted([&] { return poll(&watched, 1, static_cast<int>(left.count())); }) > 0;
}

bool BoundedStream::is_readable() const {
    return m_at < m_end || Wait(POLLIN, m_in);
}

bool BoundedStream::is_writable() const {
    return Wait(POLLOUT, m_out);
}

bool BoundedStream::Fill() {
    if (!Wait(POLLIN, m_in))
        return false;
    const auto count = Uninterrupted([&] { return recv(m_socket, m_buffer.data(), m_buffer.size(), 0); });
    m_at = 0;
    m_end = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    m_in.bytes += m_end;
    return m_end > 0;
}

/// 0 at the end of what comes, and where no more is waited for.
ssize_t BoundedStream::read(char* bytes, size_t size) {
    if (m_at == m_end && !Fill())
        return 0;
    const auto count = std::min(size, m_end - m_at);
    std::memcpy(bytes, m_buffer.data() + m_at, count);
    m_at += count;
    return static_cast<ssize_t>(count);
}

/// The answer's time begins with its first byte.
ssize_t BoundedStream::write(const char* bytes, size_t size) {
    if (m_out.bytes == 0)
        m_out.start = Clock::now();
    if (!is_writable())
        return -1;
    const auto count = Uninterrupted([&] { return send(m_socket, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT); });
    m_out.bytes += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    return count;
}

/// Nobody asks for addresses: they are in no log.
void BoundedStream::get_remote_ip_and_port(std::string&, int&) const {}
void BoundedStream::get_local_ip_and_port(std::string&, int&) const {}

bool BoundedServer::process_and_close_socket(socket_t socket) {
    BoundedStream stream(socket, patience);
    bool isClosed = false;
    const bool done = stream.is_readable() && process_request(stream, true, isClosed, nullptr);
    shutdown(socket, SHUT_RDWR);
    close(socket);
    return done;
}

} // namespace tolm::service
