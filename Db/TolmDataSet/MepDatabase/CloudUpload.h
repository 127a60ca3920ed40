#pragma once

#include "MepDatabase/CallSite.h"
#include "MepDatabase/CloudFrame.h"

#include <initializer_list>
#include <string_view>
#include <vector>

/// What the calls that write rows have in common.
namespace tolm {

/// Runs the call. True when the service took it. A refusal goes to the log; an exception is reported for the caller,
/// with the path.
bool RunUpload(TolmProjectSettingHttpUtility& client, const CloudCall& call, const CallSite& caller);

/// The same with {"tolm_version": the product's version, "rows": encoded["rows"]}. What is no object is not sent and
/// counts as an exception.
bool UploadRows(TolmProjectSettingHttpUtility& client, const CloudEndpoint& endpoint, const wstring& host,
                std::initializer_list<std::wstring_view> identifiers, web::json::value encoded, const CallSite& caller);

/// The same with {"ids": [...]}.
bool UploadIds(TolmProjectSettingHttpUtility& client, const CloudEndpoint& endpoint,
               std::initializer_list<std::wstring_view> identifiers, const std::vector<wstring>& ids,
               const CallSite& caller);

} // namespace tolm
