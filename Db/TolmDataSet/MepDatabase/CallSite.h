#pragma once

#include "Vorn/DebugMessage.h"

#include <string>

namespace tolm {

/// The place that a helper reports an internal fault for: the operation that called it, not the helper itself.
struct CallSite {
    const char* file;
    int line;
    const char* function;

    void Warn(const std::wstring& message) const noexcept {
        vorn::DebugMessageMgr::GetDebugMessageMgr()->ShowDebugWarn(file, line, function, message);
    }
};

} // namespace tolm

/// The enclosing function, to be handed to a helper.
#define TOLM_CALL_SITE (::tolm::CallSite{__FILE__, __LINE__, VORN_FUNCTION})
