#include "Tolm/Backoff.h"

#include <algorithm>

namespace tolmcli {

std::chrono::milliseconds Backoff::Next() {
    constexpr std::chrono::milliseconds kLongest{30'000};
    const double share = std::uniform_real_distribution<double>(0.5, 1.5)(m_random);
    const auto pause = std::chrono::duration_cast<std::chrono::milliseconds>(m_next * share);
    m_next = std::min(m_next * 2, kLongest);
    return pause;
}

} // namespace tolmcli
