#pragma once

#include "MepDatabase/CloudEndpoints.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace tolm {

/// Watches a request go out and its answer come in, and gives both up by an exception: an answer that grows beyond what
/// its endpoint may say, one that is said to shrink (a chunk of negative size, which the HTTP library would allocate),
/// one that comes in drops (from its first bytes on each time-out has to bring 64 KiB, the last one less), and a call
/// that takes longer in all than its endpoint may. Called by one thread at a time.
class AnswerGuard {
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::uint64_t kBytesOfATimeOut = std::uint64_t{1} << 16;

    /// The call begins at `begin`.
    AnswerGuard(std::chrono::microseconds timeOut, CallLimits limits, Clock::time_point begin)
        : m_timeOut(timeOut), m_limits(limits), m_end(begin + timeOut * limits.timeOuts) {}

    /// Something of the request went out.
    void CheckSent(Clock::time_point now) const;
    /// `bytes` of the body are there by now.
    void Check(std::uint64_t bytes, Clock::time_point now);

private:
    std::chrono::microseconds m_timeOut;
    CallLimits m_limits;
    Clock::time_point m_end;
    std::optional<Clock::time_point> m_start; ///< of the answer
    std::uint64_t m_bytes = 0;
};

} // namespace tolm
