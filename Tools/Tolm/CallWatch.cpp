#include "Tolm/CallWatch.h"

#include <fcntl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tolmcli {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks(20);

/// Bytes that came in over the connection; 0 before there is one.
std::uint64_t ReceivedOver(int socket) {
    tcp_info info{};
    socklen_t size = sizeof info;
    return socket >= 0 && getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 ? info.tcpi_bytes_received : 0;
}

/// What the peer still sends is refused at once, so that it does not wait for a reader either.
void EndConnection(int socket) {
    const linger refusing{1, 0};
    setsockopt(socket, SOL_SOCKET, SO_LINGER, &refusing, sizeof refusing);
    shutdown(socket, SHUT_RDWR);
}

} // namespace

CallWatch::CallWatch(const CallLimits& limits)
    : m_limits(limits), m_latest(std::chrono::steady_clock::now() + limits.time), m_thread([this] { Run(); }) {}

CallWatch::~CallWatch() {
    {
        const std::lock_guard lock(m_mutex);
        m_isOver = true;
    }
    m_over.notify_one();
    m_thread.join();
    if (m_socket >= 0)
        close(m_socket);
}

/// A descriptor of its own: the caller's may be closed, and its number given to another file, at any moment.
void CallWatch::Watch(int socket) {
    const std::lock_guard lock(m_mutex);
    if (m_socket >= 0)
        close(m_socket);
    m_socket = fcntl(socket, F_DUPFD_CLOEXEC, 0);
}

CallWatch::End CallWatch::Ended() const {
    const std::lock_guard lock(m_mutex);
    return m_ended;
}

CallWatch::End CallWatch::Judge() const {
    if (std::chrono::steady_clock::now() > m_latest)
        return End::TooLate;
    return ReceivedOver(m_socket) > m_limits.bytes ? End::TooMuch : End::None;
}

/// Each look behind the end shuts down again: the call may have gone on to another connection.
void CallWatch::Run() {
    std::unique_lock lock(m_mutex);
    while (!m_over.wait_for(lock, kBetweenLooks, [this] { return m_isOver; })) {
        if (m_ended == End::None)
            m_ended = Judge();
        if (m_ended != End::None && m_socket >= 0)
            EndConnection(m_socket);
    }
}

} // namespace tolmcli
