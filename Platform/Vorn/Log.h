#pragma once

#include "Vorn/Export.h"

#include <memory>
#include <string>

namespace vorn {

/// The log of the host. Any thread may write to it.
class TOLM_PLATFORM_API LogManager {
public:
    enum class Level { Debug, Info, Warning, Error, Off };

    /// The log of the given folder and name; both empty give the default log. Never null; owned by the library.
    /// `truncate` empties a log that comes into being through this call.
    static LogManager* CreateOrGetForWrite(const std::wstring& folder, const std::wstring& name, bool truncate);

    /// Writes one line of level Info. `flush` pushes it to the file at once, `echo` repeats it on the standard error
    /// stream.
    void DumpLine(const std::wstring& line, bool flush, bool echo);
    void DumpLine(Level level, const std::wstring& line, bool flush, bool echo);

    /// Folder of the default log. Until a host sets one, lines are kept back, the last thousand of them, and nothing
    /// is written to disk; so again after an empty folder.
    static void SetFolder(const std::wstring& folder);
    /// Lines below the level are dropped. Default: Info.
    static void SetLevel(Level level);
    /// Receives each line of the default log in place of the file; null restores the file. For hosts and tests.
    using Sink = void (*)(const std::wstring& line);
    static void SetSink(Sink sink);

    LogManager(const LogManager&) = delete;
    LogManager& operator=(const LogManager&) = delete;

private:
    LogManager(const std::wstring& folder, const std::wstring& name, bool truncate);
    ~LogManager();
    friend class LogRegistry;
    friend struct std::default_delete<LogManager>;
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace vorn
