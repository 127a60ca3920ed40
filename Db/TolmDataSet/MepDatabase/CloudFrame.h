#pragma once

#include "MepDatabase/CloudEndpoints.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"

#include <cpprest/json.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tolm {

/// What the service answered: the status and a body that is a JSON object.
struct CloudAnswer {
    int status = 0;
    web::json::value body;

    /// Throws web::json::json_exception when the code is missing or no string.
    const std::string& Code() const;
    /// Throws web::json::json_exception when there is no payload.
    const web::json::value& Data() const;
    /// The same, which the answer then has no more.
    web::json::value TakeData();
    /// 200 and "10000", both together.
    bool IsSuccess() const;
};

/// How a call ended: as wanted, with an answer that is no success, or with an exception.
struct CloudOutcome {
    enum class Kind { Success, Refused, Exception };

    Kind kind = Kind::Refused;
    wstring exceptionText;

    explicit operator bool() const { return kind == Kind::Success; }
    bool IsException() const { return kind == Kind::Exception; }
};

/// One request to the service, as its endpoint says, and the answer to it.
struct CloudCall {
    const CloudEndpoint& endpoint;
    wstring host; ///< base address
    wstring path;
    const web::json::value* body = nullptr; ///< none when null
};

/// What a call makes of its answer: true for success. It may throw; the call has then ended with an exception.
using CloudReader = std::function<bool(CloudAnswer&)>;

/// Sends the request, waits for the answer on the caller's thread and hands it to the reader. Never throws; no
/// connection outlives the call, so that no request is ever repeated behind the caller's back; redirects are not
/// followed, so that the token goes to the base address alone.
CloudOutcome RunCloudCall(TolmProjectSettingHttpUtility& client, const CloudCall& call, const CloudReader& read);

/// The time-out of the calls that heed none of the host's; nothing restores the HTTP library's own. For tests, which
/// would take half a minute for each.
void SetLibraryTimeOut(std::optional<std::chrono::microseconds> timeOut);

} // namespace tolm
