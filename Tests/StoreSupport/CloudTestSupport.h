#pragma once

#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "Support/DebugWarnings.h"
#include "Support/ScriptedServer.h"
#include "Support/TestSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <regex>
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

/// The requests as they came in, one below the other. The port and the version of the HTTP library are not ours; lines
/// end as in any text file.
inline std::string Recorded(const ScriptedServer& server) {
    std::string text;
    for (const auto& request : server.Requests())
        text += request.raw + "\n\n";
    text = std::regex_replace(text, std::regex("127\\.0\\.0\\.1:[0-9]+"), "127.0.0.1:PORT");
    text = std::regex_replace(text, std::regex("(User-Agent: ?[a-z]+)/[0-9.]+"), "$1/VERSION");
    return std::regex_replace(text, std::regex("\r\n"), "\n");
}

} // namespace tolmtest
