#include "Vorn/Log.h"

#include "Vorn/Clock.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <atomic>
#include <cstdio>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

namespace vorn {
namespace {

constexpr std::size_t kMaxLinesKeptBack = 1000;
constexpr const wchar_t* kDefaultName = L"TolmDataSet";

constinit std::atomic<LogManager::Level> g_level = LogManager::Level::Info;
constinit std::atomic<LogManager::Sink> g_sink = nullptr;

spdlog::level::level_enum ToSpdlog(LogManager::Level level) {
    switch (level) {
    case LogManager::Level::Debug:
        return spdlog::level::debug;
    case LogManager::Level::Info:
        return spdlog::level::info;
    case LogManager::Level::Warning:
        return spdlog::level::warn;
    default:
        return spdlog::level::err;
    }
}

/// One line of the log is one line of the file: control characters become spaces.
std::string ToFileText(const std::wstring& line) {
    std::string text = StringUtil::ToString(line);
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = ' ';
    }
    return text;
}

std::shared_ptr<spdlog::logger> OpenLogger(const std::wstring& folder, const std::wstring& name, bool truncate) {
    try {
        const std::string file = FileSystem::ToNative(folder + L"/" + name + L".log");
        if (!FileSystem::CreateDirectories(folder) || file.find('\0') != std::string::npos)
            return nullptr;
        auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(file, truncate);
        auto logger = std::make_shared<spdlog::logger>("tolm", std::move(sink));
        logger->set_level(spdlog::level::trace);
        logger->flush_on(spdlog::level::warn);
        logger->set_pattern("%Y-%m-%d %H:%M:%S.%e [%l] %v");
        return logger;
    } catch (const spdlog::spdlog_ex&) {
        return nullptr;
    }
}

} // namespace

struct LogManager::State {
    struct Line {
        std::chrono::system_clock::time_point time;
        Level level;
        std::string text;
    };

    void Write(Line line, bool flush) {
        const std::lock_guard lock(mutex);
        if (logger == nullptr) {
            KeepBack(std::move(line));
            return;
        }
        WriteToFile(line);
        if (flush)
            logger->flush();
    }

    /// Goes on in the folder; the lines that were kept back come first. An empty folder closes the file.
    void Open(const std::wstring& folder, bool truncate) {
        const std::lock_guard lock(mutex);
        logger = folder.empty() ? nullptr : OpenLogger(folder, name, truncate);
        if (logger == nullptr)
            return;
        for (const Line& line : std::exchange(keptBack, {}))
            WriteToFile(line);
        logger->flush();
    }

    void WriteToFile(const Line& line) {
        logger->log(line.time, spdlog::source_loc{}, ToSpdlog(line.level), line.text);
    }

    void KeepBack(Line line) {
        keptBack.push_back(std::move(line));
        if (keptBack.size() > kMaxLinesKeptBack)
            keptBack.pop_front();
    }

    std::wstring name;
    bool isDefault = false;
    std::mutex mutex;
    std::deque<Line> keptBack;
    std::shared_ptr<spdlog::logger> logger;
};

/// All logs of the process.
class LogRegistry {
public:
    static LogRegistry& Get() {
        static LogRegistry registry;
        return registry;
    }

    LogManager* Find(const std::wstring& folder, const std::wstring& name, bool truncate) {
        const std::lock_guard lock(m_mutex);
        auto& log = m_logs[{folder, name}];
        if (log == nullptr)
            log.reset(new LogManager(folder, name, truncate));
        return log.get();
    }

private:
    std::mutex m_mutex;
    std::map<std::pair<std::wstring, std::wstring>, std::unique_ptr<LogManager>> m_logs;
};

namespace {

// The default log comes into being when the library is loaded, and so outlives what is loaded behind it.
[[maybe_unused]] const LogManager* const g_defaultLog = LogManager::CreateOrGetForWrite(L"", L"", false);

} // namespace

LogManager::LogManager(const std::wstring& folder, const std::wstring& name, bool truncate)
    : m_state(std::make_unique<State>()) {
    m_state->name = name.empty() ? kDefaultName : name;
    m_state->isDefault = folder.empty() && name.empty();
    m_state->Open(folder, truncate);
}

LogManager::~LogManager() = default;

LogManager* LogManager::CreateOrGetForWrite(const std::wstring& folder, const std::wstring& name, bool truncate) {
    return LogRegistry::Get().Find(folder, name, truncate);
}

void LogManager::DumpLine(const std::wstring& line, bool flush, bool echo) {
    DumpLine(Level::Info, line, flush, echo);
}

void LogManager::DumpLine(Level level, const std::wstring& line, bool flush, bool echo) {
    if (level < g_level.load() || level == Level::Off)
        return;
    const std::string text = ToFileText(line);
    if (echo)
        std::fprintf(stderr, "%s\n", text.c_str());
    const Sink sink = m_state->isDefault ? g_sink.load() : nullptr;
    if (sink != nullptr)
        sink(line);
    else
        m_state->Write({Clock::Now(), level, text}, flush);
}

void LogManager::SetFolder(const std::wstring& folder) {
    CreateOrGetForWrite(L"", L"", false)->m_state->Open(folder, false);
}

void LogManager::SetLevel(Level level) {
    g_level = level;
}

void LogManager::SetSink(Sink sink) {
    g_sink = sink;
}

} // namespace vorn
