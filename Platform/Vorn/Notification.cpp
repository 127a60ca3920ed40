#include "Vorn/Notification.h"

#include "Vorn/HandlerSlotInternal.h"
#include "Vorn/Log.h"

namespace vorn {
namespace {

constinit HandlerSlot<NotificationUtils::Handler> g_slot;

void WriteToLog(NotificationTypes type, const std::wstring& text, const std::vector<std::wstring>& details) {
    const auto level = type == NotificationTypes::Failure ? LogManager::Level::Warning : LogManager::Level::Info;
    LogManager* const log = LogManager::CreateOrGetForWrite(L"", L"", false);
    log->DumpLine(level, text, false, false);
    for (const auto& detail : details)
        log->DumpLine(level, L"    " + detail, false, false);
}

} // namespace

void NotificationUtils::PostNotification(NotificationTypes type, const std::wstring& text,
                                         const std::vector<std::wstring>& details) noexcept {
    try {
        if (const auto handler = g_slot.Get())
            (*handler)(type, text, details);
        else
            WriteToLog(type, text, details);
    } catch (...) {
        // A message that cannot be shown is lost: the work that it tells of goes on.
    }
}

void NotificationUtils::SetHandler(Handler handler) {
    g_slot.Set(std::move(handler));
}

} // namespace vorn
