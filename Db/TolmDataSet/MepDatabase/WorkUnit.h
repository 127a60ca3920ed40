#pragma once

#include "MepDatabase/CallSite.h"
#include "MepDatabase/WireText.h"

#include <utility>

namespace tolm {

/// Writes one line to the log.
inline void WriteLogLine(const wstring& line) {
    DumpLogLine(line);
}

/// Writes what the exception under way says to the log. Only inside a handler.
inline void LogCurrentException() {
    WriteLogLine(CurrentExceptionText());
}

/// Does one unit of work, which an exception spoils without harm to the next: its text goes to the log and false
/// comes back. What the unit saved before stays.
template <class Work> bool DoUnit(Work&& work) {
    try {
        std::forward<Work>(work)();
        return true;
    } catch (...) {
        LogCurrentException();
        return false;
    }
}

/// The same, and a lost unit is told of by `text`, as a debug warning of the calling operation and as a log line.
template <class Work> bool DoUnit(const CallSite& site, const wstring& text, Work&& work) {
    if (DoUnit(std::forward<Work>(work)))
        return true;
    site.Warn(text);
    WriteLogLine(text);
    return false;
}

} // namespace tolm
