#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstddef>

namespace tolm::service {

/// One end of a connection, on which neither the request nor the answer may take for ever. Each may take the patience
/// and, beyond it, as long as a slow but honest line needs for the bytes that have gone through; so a peer that sends
/// a byte now and then does not hold a thread. Used by one thread; the socket stays open.
class BoundedStream : public httplib::Stream {
public:
    BoundedStream(socket_t socket, std::chrono::milliseconds patience);

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* bytes, size_t size) override;
    ssize_t write(const char* bytes, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return m_socket; }

private:
    using Clock = std::chrono::steady_clock;

    /// The time for one direction.
    struct Allowance {
        Clock::time_point start;
        std::size_t bytes = 0;
    };
    bool Wait(short event, const Allowance& allowance) const;
    bool Fill();

    socket_t m_socket;
    std::chrono::milliseconds m_patience;
    Allowance m_in{Clock::now()};
    Allowance m_out{Clock::now()};
    std::array<char, 4096> m_buffer{};
    std::size_t m_at = 0;
    std::size_t m_end = 0;
};

/// Serves one request on each connection, within bounds of time.
class BoundedServer : public httplib::Server {
public:
    std::chrono::milliseconds patience{30'000};

private:
    bool process_and_close_socket(socket_t socket) override;
};

} // namespace tolm::service
