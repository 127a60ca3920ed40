#pragma once

#include "Vorn/Export.h"

#include <chrono>
#include <ctime>
#include <string>

namespace vorn {

/// The one source of the time of day. Any thread may call it.
class TOLM_PLATFORM_API Clock {
public:
    using Source = std::chrono::system_clock::time_point (*)();

    static std::chrono::system_clock::time_point Now();
    /// The present moment, broken down in local time.
    static std::tm LocalNow();
    /// `time` in the form "%Y/%m/%d %T".
    static std::wstring Format(const std::tm& time);
    /// Puts another source in place, for tests; null restores the system's clock.
    static void SetSource(Source source);
};

} // namespace vorn
