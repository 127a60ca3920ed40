#pragma once

namespace vorn {

/// Receives the progress of a long operation, on the thread that runs it. Implemented by the host.
class IProgressReporter {
public:
    virtual ~IProgressReporter() = default;
    /// `percentage` runs from 0 to 100 and never falls within one operation.
    virtual void ReportProgress(double percentage) = 0;
};

} // namespace vorn
