#pragma once

#include "Vorn/Export.h"

#include <functional>
#include <string>

namespace vorn {

/// One internal fault, as its handler receives it.
struct DebugWarning {
    std::string file;     ///< source file, as the compiler names it
    int line = 0;         ///< line of the report
    std::string function; ///< class and function without namespace and arguments, as "MepQbaseUtil::WriteMaterial"
    std::wstring message; ///< short text, mostly a variable's name and "为空"
};

/// The developer's channel for internal faults. Any thread may report; the handler runs on the reporting thread.
class TOLM_PLATFORM_API DebugMessageMgr {
public:
    using Handler = std::function<void(const DebugWarning&)>;

    static DebugMessageMgr* GetDebugMessageMgr();

    /// Reports a fault. With no handler set it goes to the log. Never throws.
    void ShowDebugWarn(const char* file, int line, const char* function, const std::wstring& message) noexcept;

    /// Installs the handler; an empty one sends faults to the log again.
    void SetHandler(Handler handler);

    DebugMessageMgr(const DebugMessageMgr&) = delete;
    DebugMessageMgr& operator=(const DebugMessageMgr&) = delete;

private:
    DebugMessageMgr() = default;
    ~DebugMessageMgr() = default;
};

} // namespace vorn

#if defined(_MSC_VER)
#define VORN_FUNCTION __FUNCSIG__
#else
#define VORN_FUNCTION __PRETTY_FUNCTION__
#endif

/// Reports an internal fault with the source position and the name of the enclosing function.
#define VORN_DEBUG_WARN(message)                                                                                       \
    ::vorn::DebugMessageMgr::GetDebugMessageMgr()->ShowDebugWarn(__FILE__, __LINE__, VORN_FUNCTION, (message))
