#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace tolmcli {

/// What a call may take in all.
struct CallLimits {
    std::chrono::milliseconds time;
    std::uint64_t bytes; ///< that come in: headers and encryption count
};

/// Watches one call from a thread of its own while it lives, and shuts its connection down when it takes too long or
/// brings too much. Whoever waits on the connection then finds it ended. Any thread may call it.
class CallWatch {
public:
    enum class End { None, TooLate, TooMuch };

    explicit CallWatch(const CallLimits& limits);
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

    /// This socket is the call's from now on; the caller may close it when it likes.
    void Watch(int socket);
    /// Why the watch ended the call.
    End Ended() const;

private:
    void Run();
    End Judge() const;

    const CallLimits m_limits;
    const std::chrono::steady_clock::time_point m_latest;
    mutable std::mutex m_mutex;
    std::condition_variable m_over;
    bool m_isOver = false;
    int m_socket = -1;
    End m_ended = End::None;
    std::thread m_thread; // last: it uses all others
};

} // namespace tolmcli
