#pragma once

#include "Tolm/CallWatch.h"

#include <string>

namespace tolmcli {

/// What a sign-in may take: half a minute and 256 KiB.
inline constexpr CallLimits kSignInLimits{std::chrono::seconds(30), 1 << 18};

/// Sets other limits, for all sign-ins to come.
void SetSignInLimits(const CallLimits& limits);

/// Signs the user in at the service and returns the session's token. The secret is asked from the environment
/// variable TOLM_SECRET or, on a terminal, typed in without an echo. Throws Failure.
std::wstring SignIn(const std::wstring& server, const std::wstring& user);

} // namespace tolmcli
