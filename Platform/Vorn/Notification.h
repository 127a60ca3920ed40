#pragma once

#include "Vorn/Export.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vorn {

enum class NotificationTypes : std::int32_t { Success = 0, Failure = 2 };

/// Short messages to the user. Any thread may post; the handler runs on the posting thread.
class TOLM_PLATFORM_API NotificationUtils {
public:
    using Handler = std::function<void(NotificationTypes, const std::wstring&, const std::vector<std::wstring>&)>;

    /// Shows a message. With no handler set it goes to the log. Never throws.
    static void PostNotification(NotificationTypes type, const std::wstring& text,
                                 const std::vector<std::wstring>& details = {}) noexcept;

    /// Installs the handler; an empty one sends messages to the log again.
    static void SetHandler(Handler handler);
};

} // namespace vorn
