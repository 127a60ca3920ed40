#include "Vorn/Clock.h"

#include <array>
#include <atomic>
#include <cwchar>

namespace vorn {
namespace {

constinit std::atomic<Clock::Source> g_source = nullptr;

} // namespace

std::chrono::system_clock::time_point Clock::Now() {
    const Source source = g_source.load();
    return source != nullptr ? source() : std::chrono::system_clock::now();
}

std::tm Clock::LocalNow() {
    const std::time_t now = std::chrono::system_clock::to_time_t(Now());
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

std::wstring Clock::Format(const std::tm& time) {
    std::array<wchar_t, 64> text{};
    const std::size_t length = std::wcsftime(text.data(), text.size(), L"%Y/%m/%d %T", &time);
    return std::wstring(text.data(), length);
}

void Clock::SetSource(Source source) {
    g_source = source;
}

} // namespace vorn
