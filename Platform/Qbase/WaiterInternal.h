#pragma once

#include <chrono>
#include <optional>

namespace qbase {

/// A bounded wait for locks. The time runs from the first wait after a start.
class Waiter {
public:
    void Start() noexcept { m_deadline.reset(); }
    /// Sleeps a little; false when the time is over.
    bool Wait() noexcept;

private:
    std::optional<std::chrono::steady_clock::time_point> m_deadline;
    std::chrono::microseconds m_pause{};
};

} // namespace qbase
