#include "MepDatabase/MepProjectSettingHttpUtility.h"

#include "Host/Session.h"
#include "MepDatabase/AnswerGuard.h"
#include "MepDatabase/CloudFrame.h"
#include "MepDatabase/CloudTrust.h"
#include "MepDatabase/WireText.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Text.h"

#include <cpprest/containerstream.h>
#include <cpprest/http_client.h>
#include <cpprest/http_msg.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tolm {
namespace {

using web::http::http_request;
using web::http::client::http_client;
using web::http::client::http_client_config;

/// The value on the wire. A control character would end the header and begin another: such a value is refused, and
/// the exception does not repeat it.
std::string HeaderValue(const wstring& value) {
    std::string text = ToWire(value);
    const auto isControl = [](unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7F; };
    if (std::any_of(text.begin(), text.end(), isControl))
        throw std::invalid_argument("a session header holds a control character");
    return text;
}

constexpr std::int64_t kLibrarysOwn = -1;
std::atomic<std::int64_t> g_libraryTimeOut = kLibrarysOwn; // microseconds

/// In microseconds; `kLibrarysOwn` where nothing is to be set.
std::int64_t TimeOutOf(TolmProjectSettingHttpUtility& client, const CloudEndpoint& endpoint) {
    return endpoint.timeOut == CloudEndpoint::TimeOut::Configured ? std::int64_t{client.GetRequestTimeOut()}
                                                                  : g_libraryTimeOut.load();
}

http_client_config ConfigOf(TolmProjectSettingHttpUtility& client, const CloudEndpoint& endpoint,
                            const web::uri& address) {
    http_client_config config;
    config.set_max_redirects(0);
    if (address.scheme() == "https")
        SetTrust(config, address.host());
    if (const auto timeOut = TimeOutOf(client, endpoint); timeOut != kLibrarysOwn)
        config.set_timeout(std::chrono::microseconds(timeOut));
    return config;
}

http_client ClientFor(TolmProjectSettingHttpUtility& client, const CloudCall& call) {
    const bool whole = call.endpoint.address == CloudEndpoint::Address::Whole;
    const web::uri address(ToWire(whole ? call.host + call.path : call.host));
    return http_client(address, ConfigOf(client, call.endpoint, address));
}

void Address(TolmProjectSettingHttpUtility& client, const CloudCall& call, http_request& request) {
    const auto headers = call.endpoint.headers;
    if (headers != CloudEndpoint::Headers::None)
        client.AddRequestHeader(request, headers == CloudEndpoint::Headers::SessionAndContentType);
    if (call.endpoint.address != CloudEndpoint::Address::Whole)
        request.set_request_uri(web::uri(ToWire(call.path)));
}

/// UTF-8 text; a content type among the headers goes before the one given here. The text is handed over as unsigned
/// bytes, since the HTTP library reads a stream of plain characters through a type that it does not have.
void SetBody(const web::json::value& body, http_request& request) {
    const std::string text = body.serialize();
    const auto* first = reinterpret_cast<const unsigned char*>(text.data());
    auto bytes = concurrency::streams::bytestream::open_istream(std::vector<unsigned char>(first, first + text.size()));
    request.set_body(bytes, text.size(), "text/plain; charset=utf-8");
}

bool IsPlainJson(const std::string& contentType) {
    constexpr const wchar_t* plain[] = {L"application/json", L"application/json; charset=utf-8",
                                        L"application/json;charset=utf-8"};
    const wstring type = FromWire(contentType);
    return std::ranges::any_of(plain, [&](const wchar_t* each) { return vorn::StrICmp(type.c_str(), each) == 0; });
}

/// The whole body, taken without the copies that a task makes of its result.
std::string WholeBody(const web::http::http_response& response) {
    response.content_ready().wait();
    auto buffer = response.body().streambuf();
    std::string text(buffer.in_avail(), '\0');
    buffer.getn(reinterpret_cast<unsigned char*>(text.data()), text.size()).wait();
    return text;
}

/// The body as the HTTP library takes it for JSON, its check of the content type included. The usual content type is
/// read in a way that costs less and gives the same.
web::json::value JsonBody(const web::http::http_response& response) {
    if (IsPlainJson(response.headers().content_type())) {
        if (const std::string text = WholeBody(response); !text.empty())
            return web::json::value::parse(text);
    }
    return response.extract_json(false).get();
}

/// Throws where an object outside of lists has two members of one name: which of them counts is anybody's guess. The
/// HTTP library keeps members sorted by name. The rows of a list stand for themselves.
void RefuseDoubledNames(const web::json::value& body) {
    const std::string* before = nullptr;
    for (const auto& [name, member] : body.as_object()) {
        if (before != nullptr && *before == name)
            throw web::json::json_exception("Key found twice");
        before = &name;
        if (member.is_object())
            RefuseDoubledNames(member);
    }
}

/// What the guard throws ends the request.
void Guard(const http_client_config& config, const CloudEndpoint& endpoint, http_request& request) {
    using Clock = AnswerGuard::Clock;
    AnswerGuard guard(config.timeout<std::chrono::microseconds>(), endpoint.Limits(), Clock::now());
    request.set_progress_handler([guard](web::http::message_direction::direction direction, auto bytes) mutable {
        if (direction == web::http::message_direction::download)
            guard.Check(bytes, Clock::now());
        else
            guard.CheckSent(Clock::now());
    });
}

CloudAnswer Issue(TolmProjectSettingHttpUtility& client, const CloudCall& call) {
    http_client http = ClientFor(client, call);
    http_request request(call.endpoint.method);
    Address(client, call, request);
    if (call.body != nullptr)
        SetBody(*call.body, request);
    Guard(http.client_config(), call.endpoint, request);
    auto response = http.request(request, pplx::cancellation_token::none()).get();
    CloudAnswer answer;
    answer.body = JsonBody(response);
    answer.status = response.status_code();
    RefuseDoubledNames(answer.body);
    return answer;
}

} // namespace

void SetLibraryTimeOut(std::optional<std::chrono::microseconds> timeOut) {
    g_libraryTimeOut = timeOut ? timeOut->count() : kLibrarysOwn;
}

wstring CloudEndpoint::PathOf(std::initializer_list<std::wstring_view> identifiers) const {
    wstring whole = path;
    const wchar_t* separator = L"";
    for (const auto identifier : identifiers) {
        whole.append(separator).append(identifier);
        separator = L"/";
    }
    return whole;
}

const std::string& CloudAnswer::Code() const {
    return body.at("code").as_string();
}

const web::json::value& CloudAnswer::Data() const {
    return body.at("data");
}

web::json::value CloudAnswer::TakeData() {
    return std::move(body.at("data"));
}

bool CloudAnswer::IsSuccess() const {
    return status == 200 && Code() == "10000";
}

CloudOutcome RunCloudCall(TolmProjectSettingHttpUtility& client, const CloudCall& call, const CloudReader& read) {
    using Kind = CloudOutcome::Kind;
    if (call.endpoint.address == CloudEndpoint::Address::BaseRequired && call.host.empty())
        return {};
    try {
        CloudAnswer answer = Issue(client, call);
        return {read(answer) ? Kind::Success : Kind::Refused, {}};
    } catch (...) {
        return {Kind::Exception, CurrentExceptionText()};
    }
}

TolmProjectSettingHttpUtility* TolmProjectSettingHttpUtility::GetInstance() {
    static TolmProjectSettingHttpUtility instance;
    const std::lock_guard lock(instance.m_userMutex);
    TolmUser user = TolmUserSessionUtils::GetUser();
    instance.m_userId = std::move(user.id);
    instance.m_userToken = std::move(user.token);
    return &instance;
}

wstring TolmProjectSettingHttpUtility::UserId() const {
    const std::lock_guard lock(m_userMutex);
    return m_userId;
}

void TolmProjectSettingHttpUtility::AddRequestHeader(http_request& request, bool withContentType) {
    if (request._get_impl() == nullptr) {
        VORN_DEBUG_WARN(L"req为空");
        return;
    }
    auto& headers = request.headers();
    const std::lock_guard lock(m_userMutex);
    headers.add("x-kfe-userid", HeaderValue(m_userId));
    headers.add("Authorization", HeaderValue(m_userToken));
    if (withContentType)
        headers.add("Content-Type", "application/json");
}

wstring TolmProjectSettingHttpUtility::GetProjectSettingAPIHost() {
    const auto* settings = CollaborationProjectSettingForPS::Instance();
    if (settings == nullptr) {
        VORN_DEBUG_WARN(L"CollaborationProjectSettingForPS为空");
        return {};
    }
    return settings->GetHttpServer();
}

int TolmProjectSettingHttpUtility::GetRequestTimeOut() {
    const auto* settings = CollaborationProjectSettingForPS::Instance();
    if (settings == nullptr) {
        VORN_DEBUG_WARN(L"CollaborationProjectSettingForPS为空");
        return 0;
    }
    return settings->GetRequestTimeOut();
}

} // namespace tolm
