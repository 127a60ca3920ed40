#pragma once

#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "Support/DebugWarnings.h"
#include "Support/ScriptedServer.h"
#include "Support/TestSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <vector>

namespace tolmtest {

inline tolm::TolmProjectSettingHttpUtility& Client() {
    return *tolm::TolmProjectSettingHttpUtility::GetInstance();
}

/// The only request that the server has met.
inline RecordedRequest OnlyRequest(const ScriptedServer& server) {
    const auto requests = server.Requests();
    EXPECT_EQ(requests.size(), 1U);
    return requests.empty() ? RecordedRequest{} : requests.front();
}

/// The session headers of a request as "name: value" lines, in their order.
inline std::vector<std::string> SessionHeaders(const RecordedRequest& request) {
    std::vector<std::string> lines;
    for (const auto& [name, value] : request.headers) {
        std::string lower = name;
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (lower == "x-kfe-userid" || lower == "authorization" || lower == "content-type")
            lines.push_back(name + ": " + value);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

using HeaderLines = std::vector<std::string>;
inline const HeaderLines WithContentType{"Authorization: secret-token", "Content-Type: application/json",
                                         "x-kfe-userid: user-1"};
inline const HeaderLines WithoutContentType{"Authorization: secret-token", "x-kfe-userid: user-1"};

} // namespace tolmtest
