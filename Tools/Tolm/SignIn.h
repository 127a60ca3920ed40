#pragma once

#include <string>

namespace tolmcli {

/// Signs the user in at the service and returns the session's token. The secret is asked from the environment
/// variable TOLM_SECRET or, on a terminal, typed in without an echo. Throws Failure.
std::wstring SignIn(const std::wstring& server, const std::wstring& user);

} // namespace tolmcli
