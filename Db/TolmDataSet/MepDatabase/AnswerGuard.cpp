#include "MepDatabase/AnswerGuard.h"

#include <stdexcept>

namespace tolm {

void AnswerGuard::Check(std::uint64_t bytes, Clock::time_point now) {
    if (bytes < m_bytes || bytes > kMostBytes)
        throw std::runtime_error("The size of the answer cannot be believed");
    m_bytes = bytes;
    if (!m_start)
        m_start = now;
    const auto timeOuts = static_cast<std::int64_t>(1 + bytes / kBytesOfATimeOut);
    if (now - *m_start > m_timeOut * timeOuts)
        throw std::runtime_error("The answer comes too slowly");
}

} // namespace tolm
