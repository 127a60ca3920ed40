#include "Vorn/DebugMessage.h"

#include "Vorn/FunctionNameInternal.h"
#include "Vorn/HandlerSlotInternal.h"
#include "Vorn/Log.h"
#include "Vorn/Text.h"

namespace vorn {
namespace {

constinit HandlerSlot<DebugMessageMgr::Handler> g_slot;

void WriteToLog(const DebugWarning& warning) {
    const std::wstring position = StringUtil::ToWString(warning.file + ":" + std::to_string(warning.line));
    const std::wstring line =
        StringUtil::ToWString(warning.function) + L": " + warning.message + L" (" + position + L")";
    LogManager::CreateOrGetForWrite(L"", L"", false)->DumpLine(LogManager::Level::Warning, line, false, false);
}

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

DebugMessageMgr* DebugMessageMgr::GetDebugMessageMgr() {
    static DebugMessageMgr manager;
    return &manager;
}

void DebugMessageMgr::ShowDebugWarn(const char* file, int line, const char* function,
                                    const std::wstring& message) noexcept {
    try {
        const DebugWarning warning{OrEmpty(file), line, ShortFunctionName(OrEmpty(function)), message};
        if (const auto handler = g_slot.Get())
            (*handler)(warning);
        else
            WriteToLog(warning);
    } catch (...) {
        // A fault that cannot be reported is lost: the function that met it goes on to fail by its own rules.
    }
}

void DebugMessageMgr::SetHandler(Handler handler) {
    g_slot.Set(std::move(handler));
}

} // namespace vorn
