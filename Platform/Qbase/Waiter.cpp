#include "Qbase/WaiterInternal.h"

#include "Qbase/Qbase.h"

#include <algorithm>
#include <thread>

namespace qbase {
namespace {

constexpr std::chrono::microseconds kFirstPause{100};
constexpr std::chrono::microseconds kLongestPause{5000};

} // namespace

bool Waiter::Wait() noexcept {
    const auto now = std::chrono::steady_clock::now();
    if (!m_deadline) {
        m_deadline = now + std::chrono::milliseconds(CQbase::lockTimeout());
        m_pause = kFirstPause;
    }
    if (now >= *m_deadline)
        return false;
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(m_pause, *m_deadline - now));
    m_pause = std::min(m_pause * 2, kLongestPause);
    return true;
}

} // namespace qbase
