#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tolmtest {

/// The canary: secrets that nothing may ever tell of. Every log line, debug warning, notification and file of a
/// temporary folder, and all that child processes say, is searched for them while the tests run, and a test that leaks
/// one fails. "secret-token", the token of each `TestSession`, is watched for from the start. Any thread may call
/// these.

/// Watches for one more, for as long as the process runs.
void WatchForSecret(const std::string& secret);

/// Whether the bytes hold a secret, as UTF-8 or as wide characters of two or four bytes.
bool HoldsSecret(std::string_view bytes);
bool HoldsSecret(std::wstring_view text);

/// Notes a leak when the text holds a secret; `where` goes into the test's failure.
void SearchForSecrets(const std::string& where, std::string_view bytes);
void SearchForSecrets(const std::string& where, std::wstring_view text);
/// The same with each file of a folder, at any depth, and with its name.
void SearchFolderForSecrets(const std::string& folder);

/// The leaks noted since the last call.
std::vector<std::string> TakeLeaks();

} // namespace tolmtest
