#pragma once

#include "Vorn/Progress.h"

#include <string>

namespace tolmcli {

/// Shows progress on the standard error stream: a bar on a terminal, plain lines elsewhere.
class ProgressBar : public vorn::IProgressReporter {
public:
    /// `what` names the work, as "Pulling".
    explicit ProgressBar(std::string what);
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void ReportProgress(double percentage) override;

private:
    std::string m_what;
    bool m_onTerminal;
    bool m_shown = false;
    int m_last = -1;
};

} // namespace tolmcli
