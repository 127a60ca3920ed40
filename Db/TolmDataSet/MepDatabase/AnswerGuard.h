#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace tolm {

/// Watches an answer come in, and gives it up by an exception: one that grows beyond measure, one that is said to
/// shrink (a chunk of negative size, which the HTTP library would allocate), and one that comes in drops: from its
/// first bytes on each time-out has to bring 64 KiB, the last one less. Called by one thread at a time.
class AnswerGuard {
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30;
    static constexpr std::uint64_t kBytesOfATimeOut = std::uint64_t{1} << 16;

    explicit AnswerGuard(std::chrono::microseconds timeOut) : m_timeOut(timeOut) {}

    /// `bytes` of the body are there by now.
    void Check(std::uint64_t bytes, Clock::time_point now);

private:
    std::chrono::microseconds m_timeOut;
    std::optional<Clock::time_point> m_start;
    std::uint64_t m_bytes = 0;
};

} // namespace tolm
