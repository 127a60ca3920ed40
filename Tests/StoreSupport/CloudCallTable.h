#pragma once

#include <iosfwd>
#include <span>
#include <string>

namespace tolmtest {

/// How a call ended, and its out-argument as text, "-" for a call that has none.
struct CallOutcome {
    bool done = false;
    std::string out = "-";
};

/// One call to the service, with the project "P1" and the work unit "W1".
struct CloudCallRow {
    /// What the call reads of "data".
    enum class Reads { Nothing, AnythingButNull, Number, RowKey, Version };

    const char* name;
    const char* path;
    CallOutcome (*run)();
    Reads reads;
    const wchar_t* exceptionWarning; ///< null when an exception is not reported
    bool looksAtTheStatus;
    bool heedsTheTimeOut;
    bool logsARefusal;
    bool tellsTheUser; ///< of a refusal and of an exception, which goes to the log then
    const char* outOfAFailure;
    const wchar_t* noSessionWarning = L"CollaborationProjectSettingForPS为空";
    bool triesWithoutSession = true; ///< and fails with an exception then

    /// A "data" that the call is content with.
    const char* Data() const { return reads == Reads::Number ? "7" : R"({"rows":[{"rowKey":"K"}],"version":8})"; }
};

/// Every call of the client.
std::span<const CloudCallRow> CloudCallTable();

void PrintTo(const CloudCallRow& call, std::ostream* out);

} // namespace tolmtest
