#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tolmtest {

/// What came back over the wire.
struct WireAnswer {
    int status = 0; ///< 0 when no answer came
    std::string head;
    std::string body;
};

/// Sends these bytes to a port of the loopback address and reads until the other side closes.
WireAnswer SendBytes(int port, const std::string& bytes);

/// The same, and tells the other side that nothing more will come.
WireAnswer SendBytesAndNoMore(int port, const std::string& bytes);

/// A request as a client makes it.
struct WireRequest {
    std::string method = "POST";
    std::string path;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
};

WireAnswer SendRequest(int port, const WireRequest& request);

/// The two headers of a signed-in user.
std::vector<std::pair<std::string, std::string>> UserHeaders(const std::string& userId, const std::string& token);

} // namespace tolmtest
