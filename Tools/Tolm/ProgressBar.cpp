#include "Tolm/ProgressBar.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace tolmcli {

ProgressBar::ProgressBar(std::string what) : m_what(std::move(what)), m_onTerminal(isatty(STDERR_FILENO) != 0) {}

ProgressBar::~ProgressBar() {
    if (m_onTerminal && m_shown)
        std::cerr << '\n';
}

void ProgressBar::ReportProgress(double percentage) {
    const int percent = static_cast<int>(std::clamp(percentage, 0.0, 100.0));
    if (percent == m_last)
        return;
    m_last = percent;
    m_shown = true;
    if (!m_onTerminal) {
        std::cerr << m_what << ": " << percent << " %\n";
        return;
    }
    constexpr int kCells = 40;
    const auto full = static_cast<std::size_t>(percent * kCells / 100);
    std::cerr << '\r' << m_what << " [" << std::string(full, '#') << std::string(kCells - full, '.') << "] " << percent
              << " %" << std::flush;
}

} // namespace tolmcli
