#include "MepDatabase/AnswerGuard.h"

#include <stdexcept>

namespace tolm {

void AnswerGuard::CheckSent(Clock::time_point now) const {
    if (now > m_end)
        throw std::runtime_error("The call takes too long");
}

void AnswerGuard::Check(std::uint64_t bytes, Clock::time_point now) {
    if (bytes < m_bytes || bytes > m_limits.bytes)
        throw std::runtime_error("The size of the answer cannot be believed");
    CheckSent(now);
    m_bytes = bytes;
    if (!m_start)
        m_start = now;
    const auto timeOuts = static_cast<std::int64_t>(1 + bytes / kBytesOfATimeOut);
    if (now - *m_start > m_timeOut * timeOuts)
        throw std::runtime_error("The answer comes too slowly");
}

} // namespace tolm
