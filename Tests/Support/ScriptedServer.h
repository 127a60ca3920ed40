#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tolmtest {

using HeaderList = std::vector<std::pair<std::string, std::string>>;

/// One request as it came in over the wire.
struct RecordedRequest {
    std::string raw; ///< every byte, from the request line to the end of the body
    std::string method;
    std::string path;   ///< the request target as it stands, undecoded
    HeaderList headers; ///< in their order and with their own letter case
    std::string body;

    /// Value of a header, whatever the case of its name; none when the request has no such header.
    std::optional<std::string> Header(const std::string& name) const;
};

/// What the server does with one request.
struct ScriptedAnswer {
    static constexpr std::size_t Whole = std::numeric_limits<std::size_t>::max();

    int status = 200;
    HeaderList headers{{"Content-Type", "application/json"}};
    std::string body;
    std::chrono::milliseconds delay{0}; ///< waits so long before the first byte
    std::size_t cutAfter = Whole;       ///< closes the connection after so many bytes of the answer
    bool never = false;                 ///< reads the request and stays silent
    bool byteByByte = false;            ///< sends each byte by itself
    std::chrono::milliseconds pace{0};  ///< waits so long behind each byte, where they are sent by themselves
    bool reset = false;                 ///< ends the connection behind the answer with a reset
    std::optional<std::string> raw;     ///< sends these bytes for status, headers and body, and ends the connection
    std::string endlessly;              ///< sends these bytes behind it again and again, until the peer ends it
    bool staysOpen = false;             ///< leaves the connection open, silent, until the peer ends it

    /// 200 and application/json with this body.
    static ScriptedAnswer Json(std::string body);
    /// 200 and application/json with {"code": "10000", "data": data}; `data` is JSON text.
    static ScriptedAnswer Data(const std::string& data);
    /// 200 and application/json with {"code": code, "data": null}; `code` is put in quotation marks.
    static ScriptedAnswer Code(const std::string& code);
    static ScriptedAnswer Html(int status);
    static ScriptedAnswer Redirect(const std::string& location);
    static ScriptedAnswer Silence();
    static ScriptedAnswer CutAfter(std::size_t bytes, std::string body);
    /// These bytes and no other.
    static ScriptedAnswer Raw(std::string bytes);
    /// The connection is reset behind so many bytes of an answer with this body.
    static ScriptedAnswer ResetAfter(std::size_t bytes, std::string body);

    ScriptedAnswer WithStatus(int newStatus) const;
    ScriptedAnswer WithoutContentType() const;
    ScriptedAnswer With(const std::string& header, const std::string& value) const;

    /// Every byte of it, as it would go over the wire.
    std::string Bytes() const;
};

/// An HTTP server on 127.0.0.1 and a port that the system picks, which records what it is asked and answers what the
/// test wrote down. Connections are kept alive. Answers given with `Next` are used up in their order, whatever the
/// path; behind them stands the answer of the longest prefix given with `On`; a request without an answer gets 501.
/// Any thread may call it; the destructor ends all connections and waits for its threads.
class ScriptedServer {
public:
    ScriptedServer();
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::uint16_t Port() const;
    /// "http://127.0.0.1:port"
    std::wstring Address() const;

    ScriptedServer& On(const std::string& pathPrefix, ScriptedAnswer answer);
    ScriptedServer& Next(ScriptedAnswer answer);

    /// What was asked so far. A request is recorded before its answer goes out.
    std::vector<RecordedRequest> Requests() const;
    /// Paths of the requests in order.
    std::vector<std::string> Paths() const;
    std::size_t ConnectionCount() const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace tolmtest
