#include "Support/HostileAnswers.h"

#include <cstddef>
#include <utility>

namespace tolmtest {
namespace {

using Means = HostileAnswer::Means;
using Answers = std::vector<HostileAnswer>;

const std::string kJsonHead = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n";

std::string Hex(std::size_t number) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (; number > 0; number /= 16)
        text.insert(text.begin(), digits[number % 16]);
    return text.empty() ? "0" : text;
}

ScriptedAnswer Chunked(const std::string& chunks) {
    return ScriptedAnswer::Raw(kJsonHead + "Transfer-Encoding: chunked\r\n\r\n" + chunks);
}

ScriptedAnswer Lengthy(const std::string& lengthHeaders, const std::string& body) {
    return ScriptedAnswer::Raw(kJsonHead + lengthHeaders + "\r\n" + body);
}

std::string AsChunks(const std::string& body) {
    return Hex(body.size()) + "\r\n" + body + "\r\n0\r\n\r\n";
}

/// The body with its first `what` replaced.
std::string Spoilt(std::string body, const std::string& what, const std::string& with) {
    return body.replace(body.find(what), what.size(), with);
}

// --- what the status and the headers say ----------------------------------------------------------------------------

void AddStatuses(Answers& answers, const ScriptedAnswer& truth) {
    for (const int status :
         {201, 202, 203, 206, 226, 299, 400, 401, 403, 404, 409, 418, 429, 500, 502, 503, 504, 599}) {
        answers.push_back({"status " + std::to_string(status), truth.WithStatus(status), Means::StatusAlone});
        answers.push_back({"HTML " + std::to_string(status), ScriptedAnswer::Html(status)});
    }
    answers.push_back({"HTML 200", ScriptedAnswer::Html(200)});
    answers.push_back({"too many, later", truth.WithStatus(429).With("Retry-After", "1"), Means::StatusAlone});
    for (const int status : {204, 205, 304}) {
        const std::string line = "HTTP/1.1 " + std::to_string(status) + " No\r\nContent-Type: application/json\r\n";
        answers.push_back({"nothing " + std::to_string(status), ScriptedAnswer::Raw(line + "\r\n")});
        answers.push_back({"HTML nothing " + std::to_string(status),
                           ScriptedAnswer::Raw("HTTP/1.1 " + std::to_string(status) +
                                               " No\r\nContent-Type: text/html\r\nContent-Length: 0\r\n\r\n")});
    }
}

void AddRedirects(Answers& answers, const ScriptedAnswer& truth, int elsewhere) {
    const std::string there = "127.0.0.1:" + std::to_string(elsewhere) + "/api/x";
    for (const int status : {300, 301, 302, 303, 305, 307, 308}) {
        const std::string name = "redirect " + std::to_string(status);
        const auto redirect = truth.WithStatus(status);
        answers.push_back({name, redirect.With("Location", "http://" + there), Means::StatusAlone});
        answers.push_back({name + " without a scheme", redirect.With("Location", "//" + there), Means::StatusAlone});
        answers.push_back(
            {name + " to HTML", ScriptedAnswer::Html(status).With("Location", "http://" + there), Means::Failure});
    }
    const auto moved = truth.WithStatus(302);
    for (const char* target : {"", "http://[", "\x01", "file:///etc/passwd", "javascript:1", "http://"})
        answers.push_back({std::string("redirect to ") + target, moved.With("Location", target), Means::StatusAlone});
    answers.push_back({"true, with a place", truth.With("Location", "http://" + there), Means::TrueContent});
    answers.push_back({"refresh elsewhere", truth.With("Refresh", "0; url=http://" + there), Means::TrueContent});
}

void AddHeaders(Answers& answers, const ScriptedAnswer& truth) {
    const auto bare = truth.WithoutContentType();
    answers.push_back({"no content type", bare});
    for (const char* type : {"text/html", "text/html; charset=utf-8", "application/octet-stream", "application/xml",
                             "image/png", ";", "json", "application/json-patch"})
        answers.push_back({std::string("type ") + type, bare.With("Content-Type", type)});
    for (const char* type : {"", "application/json; charset=utf-8", "text/json", "application/json; charset=latin1",
                             "application/json; charset=utf-16", "application/json; charset=", "APPLICATION/JSON"})
        answers.push_back({std::string("type ") + type, bare.With("Content-Type", type), Means::TrueContent});
    answers.push_back({"gzip that is none", truth.With("Content-Encoding", "gzip"), Means::TrueContent});
    answers.push_back({"deflate that is none", truth.With("Content-Encoding", "deflate"), Means::TrueContent});
    answers.push_back({"an encoding of its own", truth.With("Content-Encoding", "own"), Means::TrueContent});
    answers.push_back({"a cookie", truth.With("Set-Cookie", "token=other"), Means::TrueContent});
    answers.push_back({"a header of 100 kB", truth.With("X-Long", std::string(100'000, 'x')), Means::TrueContent});
    answers.push_back({"a zero among the headers", truth.With("X", std::string("a\0b", 3)), Means::TrueContent});
    const ScriptedAnswer gzip = ScriptedAnswer::Json(
        std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03\xab\x56\x4a\xce\x4f\x49\x55\xb2\x52\x32\x34\0\x02\xa5\x5a\0", 27));
    answers.push_back({"gzip unasked", gzip.With("Content-Encoding", "gzip")});
    answers.push_back({"gzip untold", gzip});
}

// --- what the bytes on the wire say ---------------------------------------------------------------------------------

void AddChunkLies(Answers& answers, const std::string& body) {
    answers.push_back({"chunked", Chunked(AsChunks(body)), Means::TrueContent});
    answers.push_back({"chunked without an end", Chunked(Hex(body.size()) + "\r\n" + body + "\r\n")});
    const auto length = body.size();
    for (const std::string& size : {Hex(length - 1), Hex(length / 2), std::string("1")})
        answers.push_back({"chunk too small " + size, Chunked(size + "\r\n" + body + "\r\n0\r\n\r\n")});
    for (const std::string& size :
         {Hex(length + 1), Hex(length + 2), Hex(length + 100), std::string("7fffffff"), std::string("7ffffffe"),
          std::string("80000000"), std::string("ffffffff"), std::string("7fffffffffffffff"),
          std::string("ffffffffffffffff"), std::string("10000000000000000"), std::string("-1"), std::string("-2"),
          std::string("-3"), std::string("-80000000"), "-" + Hex(length), std::string("zz"), std::string(),
          std::string("g5")})
        answers.push_back({"chunk size " + size, Chunked(size + "\r\n" + body + "\r\n0\r\n\r\n")});
    for (const std::string& size : {"0x" + Hex(length), " " + Hex(length), "+" + Hex(length), Hex(length) + ";a=b",
                                    Hex(length) + " ", "000000000" + Hex(length)})
        answers.push_back({"chunk size " + size, Chunked(size + "\r\n" + body + "\r\n0\r\n\r\n"), Means::TrueContent});
    answers.push_back(
        {"chunk without its line end", Chunked(Hex(length) + "\r\n" + body + "XX0\r\n\r\n"), Means::TrueContent});
    answers.push_back({"no chunk", Chunked("0\r\n\r\n")});
    answers.push_back({"chunks and a length",
                       Lengthy("Transfer-Encoding: chunked\r\nContent-Length: 3\r\n", AsChunks(body)),
                       Means::TrueContent});
    answers.push_back({"an unknown transfer", Lengthy("Transfer-Encoding: own\r\n", body), Means::TrueContent});
}

void AddLengthLies(Answers& answers, const std::string& body) {
    const auto length = body.size();
    for (const std::string& told : {std::to_string(length - 1), std::to_string(length + 1), std::string("0"),
                                    std::string("1"), std::string("9223372036854775807"), std::string("4294967296")})
        answers.push_back({"length " + told, Lengthy("Content-Length: " + told + "\r\n", body)});
    for (const char* told : {"-1", "abc", "", "18446744073709551615", "18446744073709551616", "1e3", "0x10"})
        answers.push_back({std::string("length ") + told,
                           Lengthy(std::string("Content-Length: ") + told + "\r\n", body), Means::TrueContent});
    answers.push_back({"two lengths",
                       Lengthy("Content-Length: 5\r\nContent-Length: " + std::to_string(length) + "\r\n", body),
                       Means::TrueContent});
    answers.push_back({"no length", Lengthy("", body), Means::TrueContent});
}

void AddLines(Answers& answers, const std::string& body) {
    const std::string rest =
        "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    for (const char* line :
         {"", "HTTP/1.1", "HTTP/1.1 abc", "HTTP/1.1 -200 OK", "HTTP/1.1 99999999999 OK", "GET / HTTP/1.1", "SSH-2.0-x",
          "HTTP/1.1 000 OK", "HTTP/1.1 0 OK", "HTTP/1.1 999 OK", "HTTP/1.1 99 OK", "200", "HTTP 200 OK"})
        answers.push_back(
            {std::string("line ") + line, ScriptedAnswer::Raw(line + ("\r\n" + rest)), Means::StatusAlone});
    for (const char* line : {"HTTP/9.9 200 OK", "HTTP/1.0 200 OK", "HTTP/1.1 200", "HTTP/1.1 200 \x01"})
        answers.push_back(
            {std::string("line ") + line, ScriptedAnswer::Raw(line + ("\r\n" + rest)), Means::TrueContent});
    const std::string whole = "HTTP/1.1 200 OK\r\n" + rest;
    answers.push_back(
        {"first to go on", ScriptedAnswer::Raw("HTTP/1.1 100 Continue\r\n\r\n" + whole), Means::TrueContent});
    answers.push_back({"other protocols", ScriptedAnswer::Raw("HTTP/1.1 101 Switching\r\nUpgrade: x\r\n\r\n" + whole),
                       Means::TrueContent});
    answers.push_back({"two answers", ScriptedAnswer::Raw(whole + whole), Means::TrueContent});
    answers.push_back({"a header without a name", ScriptedAnswer::Raw("HTTP/1.1 200 OK\r\n: x\r\nnonsense\r\n" + rest),
                       Means::TrueContent});
    answers.push_back({"the body alone", ScriptedAnswer::Raw(body)});
    answers.push_back({"noise", ScriptedAnswer::Raw(std::string(5000, '\xff'))});
    answers.push_back({"zeros", ScriptedAnswer::Raw(std::string(5000, '\0'))});
    answers.push_back({"a line of a megabyte", ScriptedAnswer::Raw(std::string(1'000'000, 'x'))});
}

void AddConnections(Answers& answers, const std::string& body) {
    const auto whole = ScriptedAnswer::Json(body).Bytes().size();
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{1}, whole - body.size(), whole - 1})
        answers.push_back(
            {"reset behind " + std::to_string(bytes) + " bytes", ScriptedAnswer::ResetAfter(bytes, body)});
    answers.push_back({"silence", ScriptedAnswer::Silence(), Means::Failure, true});
    auto late = ScriptedAnswer::Json(body);
    late.byteByByte = true;
    late.pace = std::chrono::milliseconds(60);
    answers.push_back({"a byte now and then", late, Means::Failure, true});
    auto lateBody = late;
    lateBody.body.insert(1, 2000, ' ');
    lateBody.pace = std::chrono::milliseconds(5);
    answers.push_back({"a body in drops", lateBody, Means::Failure, true});
    std::string drops;
    for (int i = 0; i < 1000; ++i)
        drops += "1\r\n \r\n";
    auto dripping = Chunked(drops + AsChunks(body));
    dripping.byteByByte = true;
    dripping.pace = std::chrono::milliseconds(5);
    answers.push_back({"chunks in drops", dripping, Means::Failure, true});
    auto stuck = ScriptedAnswer::Raw(Lengthy("Content-Length: 1000000\r\n", body).Bytes());
    stuck.staysOpen = true;
    answers.push_back({"a body that never ends", stuck, Means::Failure, true});
}

// --- what the body says ---------------------------------------------------------------------------------------------

void AddCodes(Answers& answers, const std::string& body) {
    for (const char* code : {"10000",
                             "1e4",
                             "10000.0",
                             "null",
                             "true",
                             "[]",
                             "{}",
                             "[\"10000\"]",
                             "{\"code\":\"10000\"}",
                             "\"\"",
                             "\"0\"",
                             "\"1\"",
                             "\"10001\"",
                             "\"100000\"",
                             "\"1000\"",
                             "\" 10000\"",
                             "\"10000 \"",
                             "\"10000\\u0000\"",
                             "\"10000\\ud800\"",
                             "\"\xc3\x28\"",
                             "\"success\"",
                             "\"10000\xff\"",
                             "-1",
                             "1e999",
                             "NaN",
                             "\"１００００\""})
        answers.push_back({std::string("code ") + code, ScriptedAnswer::Json(Spoilt(body, "\"10000\"", code))});
    answers.push_back({"no code", ScriptedAnswer::Json(Spoilt(body, "\"code\":\"10000\",", ""))});
    answers.push_back({"a code of another case", ScriptedAnswer::Json(Spoilt(body, "code", "Code"))});
    for (const char* pair : {R"("code":"10000","code":"10003")", R"("code":"10003","code":"10000")",
                             R"("code":"10000","code":"10000")", R"("code":"10000","code":null)"})
        answers.push_back(
            {std::string("doubled ") + pair, ScriptedAnswer::Json(Spoilt(body, "\"code\":\"10000\"", pair))});
    answers.push_back({"doubled data", ScriptedAnswer::Json(Spoilt(body, "\"data\"", "\"data\":{},\"data\""))});
    answers.push_back(
        {"data doubled with null", ScriptedAnswer::Json(body.substr(0, body.size() - 1) + ",\"data\":null}")});
}

void AddForms(Answers& answers, const std::string& body) {
    for (const char* text : {"",
                             " ",
                             "null",
                             "true",
                             "0",
                             "\"10000\"",
                             "[]",
                             "{}",
                             "[\"10000\",7]",
                             "{",
                             "}",
                             "[",
                             "\"",
                             "{\"code\"}",
                             "{\"code\":}",
                             "{'code':'10000'}",
                             "\xff\xfe",
                             "\xef\xbb\xbf",
                             "{}{}",
                             "<?xml version=\"1.0\"?><code>10000</code>",
                             "code=10000&data=7",
                             "nan",
                             "\0"})
        answers.push_back({std::string("body ") + text, ScriptedAnswer::Json(text)});
    answers.push_back({"in a list", ScriptedAnswer::Json("[" + body + "]")});
    answers.push_back({"as a text", ScriptedAnswer::Json("\"" + body + "\"")});
    for (const char* tail : {"}", "x", ",", "{}", "]", "\"", "/"})
        answers.push_back({std::string("behind it ") + tail, ScriptedAnswer::Json(body + tail)});
    for (const char* tail : {"\0", " ", "\r\n", "//", "// a word", "/* a word */"})
        answers.push_back({std::string("behind it ") + tail, ScriptedAnswer::Json(body + tail), Means::TrueContent});
    answers.push_back({"a mark before it", ScriptedAnswer::Json("\xef\xbb\xbf" + body), Means::TrueContent});
    answers.push_back({"a comma too many", ScriptedAnswer::Json(Spoilt(body, "\"code\"", ",\"code\""))});
    for (const std::size_t depth : {std::size_t{200}, std::size_t{100'000}})
        for (const char* bracket : {"[", "{\"a\":"})
            for (const bool isClosed : {true, false}) {
                std::string deep;
                for (std::size_t i = 0; i < depth; ++i)
                    deep += bracket;
                if (isClosed)
                    deep += "0" + std::string(depth, bracket[0] == '[' ? ']' : '}');
                answers.push_back({"deep " + std::to_string(depth) + bracket + (isClosed ? " closed" : ""),
                                   ScriptedAnswer::Json(Spoilt(body, "\"code\"", "\"a\":" + deep + ",\"code\""))});
            }
}

/// Members that nobody asked for.
void AddExtras(Answers& answers, const std::string& body) {
    for (const char* extra : {"\"message\":\"well\"", "\"\":null", "\"Code\":\"10003\"", "\"a\":[[[[]]]]", "\"a\":-0.0",
                              "\"a\":123456789012345678901234567890", "\"a\":1e308", "\"a\":\"\\u0000\"",
                              "\"a\":\"\\ud83d\\ude00\"", "\"rows\":[]", "\"version\":1"})
        answers.push_back({std::string("extra ") + extra,
                           ScriptedAnswer::Json(Spoilt(body, "{", "{" + (extra + std::string(",")))),
                           Means::TrueContent});
    for (const char* extra : {"\"a\":\"\\ud800\"", "\"a\":\"\\udc00\\ud800\"", "\"a\":\"\xc3\x28\"", "\"\xff\":1",
                              "\"a\":\"\xed\xa0\x80\"", "\"a\":1e999", "\"a\":-1e999", "\"a\":01"})
        answers.push_back({std::string("extra ") + extra,
                           ScriptedAnswer::Json(Spoilt(body, "{", "{" + (extra + std::string(",")))),
                           Means::TrueContent});
    for (const char* extra :
         {"\"a\":NaN", "\"a\":Infinity", "\"a\":-", "\"a\":1.", "\"a\":0x1", "\"a\":+1", "\"a\":\"\\u12\"",
          "\"a\":\"\\x\"", "\"a\":'b'", "a:1", "\"a\":tru", "\"a\":\"\n\"", "null"})
        answers.push_back({std::string("extra ") + extra,
                           ScriptedAnswer::Json(Spoilt(body, "{", "{" + (extra + std::string(",")))), Means::Failure});
    answers.push_back({"a member of five megabytes",
                       ScriptedAnswer::Json(Spoilt(body, "{", "{\"a\":\"" + std::string(5'000'000, 'x') + "\",")),
                       Means::TrueContent});
}

} // namespace

std::vector<HostileAnswer> HostileAnswers(const std::string& trueBody, int elsewhere) {
    Answers answers;
    const auto truth = ScriptedAnswer::Json(trueBody);
    AddStatuses(answers, truth);
    AddRedirects(answers, truth, elsewhere);
    AddHeaders(answers, truth);
    AddChunkLies(answers, trueBody);
    AddLengthLies(answers, trueBody);
    AddLines(answers, trueBody);
    AddConnections(answers, trueBody);
    AddCodes(answers, trueBody);
    AddForms(answers, trueBody);
    AddExtras(answers, trueBody);
    return answers;
}

std::vector<HostileAnswer> CutAnswers(const std::string& trueBody) {
    const std::pair<const char*, std::string> forms[] = {
        {"by length", ScriptedAnswer::Json(trueBody).Bytes()},
        {"in chunks", Chunked(AsChunks(trueBody)).Bytes()},
        {"by its end", Lengthy("Connection: close\r\n", trueBody).Bytes()},
    };
    Answers answers;
    for (const auto& [name, bytes] : forms) {
        const auto end = bytes.find(trueBody) + trueBody.size();
        for (std::size_t count = 0; count < bytes.size(); ++count)
            answers.push_back({std::string("cut ") + name + " behind " + std::to_string(count),
                               ScriptedAnswer::Raw(bytes.substr(0, count)),
                               count < end ? Means::Failure : Means::TrueContent});
    }
    return answers;
}

} // namespace tolmtest
