#include "StoreSupport/CloudTestSupport.h"

#include "Host/Session.h"

#include <cpprest/http_msg.h>
#include <cpprest/json.h>

#include <array>
#include <memory>
#include <utility>

using namespace tolmtest;
using tolm::TolmProjectSettingHttpUtility;

namespace {

TEST(CloudClient, IsOneObjectWithTheSessionOfTheMoment) {
    const TestSession session(L"http://127.0.0.1:1");
    auto* const first = TolmProjectSettingHttpUtility::GetInstance();
    EXPECT_EQ(first->UserId(), L"user-1");
    tolm::TolmUserSessionUtils::SetUser(L"user-2", L"other");
    EXPECT_EQ(TolmProjectSettingHttpUtility::GetInstance(), first);
    EXPECT_EQ(first->UserId(), L"user-2");
}

TEST(CloudClient, PutsTheSessionHeadersOnARequest) {
    const TestSession session(L"http://127.0.0.1:1");
    web::http::http_request request("POST");
    Client().AddRequestHeader(request, false);
    EXPECT_EQ(request.headers()["x-kfe-userid"], "user-1");
    EXPECT_EQ(request.headers()["Authorization"], "secret-token");
    EXPECT_FALSE(request.headers().has("Content-Type"));
    web::http::http_request other("POST");
    Client().AddRequestHeader(other, true);
    EXPECT_EQ(other.headers()["Content-Type"], "application/json");
}

TEST(CloudClient, ReportsARequestWithoutContent) {
    const TestSession session(L"http://127.0.0.1:1");
    web::http::http_request request("POST");
    using Content = std::shared_ptr<web::http::details::_http_request>;
    const_cast<Content&>(request._get_impl()).reset();
    Client().AddRequestHeader(request, true);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmProjectSettingHttpUtility::AddRequestHeader: req为空"}));
}

TEST(CloudClient, TakesAddressAndTimeOutFromTheSettings) {
    const TestSession session({L"http://example.test", L"P1", L"W1", 1234});
    EXPECT_EQ(Client().GetProjectSettingAPIHost(), L"http://example.test");
    EXPECT_EQ(Client().GetRequestTimeOut(), 1234);
}

TEST(CloudClient, WithoutSettingsHasNoAddressAndATimeOutOfZero) {
    EXPECT_EQ(Client().GetProjectSettingAPIHost(), L"");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmProjectSettingHttpUtility::GetProjectSettingAPIHost: "
                                                         L"CollaborationProjectSettingForPS为空"}));
    EXPECT_EQ(Client().GetRequestTimeOut(), 0);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmProjectSettingHttpUtility::GetRequestTimeOut: "
                                                         L"CollaborationProjectSettingForPS为空"}));
}

TEST(CloudClient, SendsAnEmptyTokenAsAnEmptyHeader) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("7"));
    const TestSession session(server.Address());
    tolm::TolmUserSessionUtils::SetUser(L"user-1", L"");
    int version = 0;
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(OnlyRequest(server).Header("Authorization"), "");
}

TEST(CloudClient, SendsTextBeyondAsciiAsUtf8) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("7"));
    const TestSession session(server.Address());
    tolm::TolmUserSessionUtils::SetUser(L"用户", L"t");
    int version = 0;
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(OnlyRequest(server).Header("x-kfe-userid"), "用户");
}

TEST(CloudClient, RefusesASessionThatWouldInjectHeaders) {
    for (const wchar_t* const token : {L"t\r\nX-Evil: 1", L"t\nX-Evil: 1", L"t\rX-Evil: 1", L"t\u0001", L"t\u007F"}) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Data("7"));
        const TestSession session(server.Address());
        tolm::TolmUserSessionUtils::SetUser(L"user-1", token);
        int version = 5;
        EXPECT_FALSE(Client().GetVersion(L"P1", version));
        tolm::TolmUserSessionUtils::SetUser(token, L"t");
        EXPECT_FALSE(Client().GetVersion(L"P1", version));
        EXPECT_EQ(server.Requests().size(), 0U);
        EXPECT_EQ(version, 0);
    }
}

TEST(CloudClient, FollowsNoRedirectAndKeepsTheTokenAtHome) {
    ScriptedServer elsewhere;
    elsewhere.On("/", ScriptedAnswer::Data("7"));
    const std::string target = "http://127.0.0.1:" + std::to_string(elsewhere.Port()) + "/api/GetVersion/P1";
    for (const int status : {301, 302, 303, 307, 308}) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Redirect(target).WithStatus(status));
        const TestSession session(server.Address());
        int version = 5;
        EXPECT_FALSE(Client().GetVersion(L"P1", version)) << status;
        EXPECT_EQ(version, 0);
    }
    EXPECT_EQ(elsewhere.Requests().size(), 0U);
}

TEST(CloudClient, SendsARequestOnceWhenTheConnectionIsCut) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::CutAfter(0, "")).Next(ScriptedAnswer::Data("7"));
    const TestSession session(server.Address());
    int version = 5;
    EXPECT_FALSE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(version, 0);
    EXPECT_EQ(server.Requests().size(), 1U);
}

TEST(CloudClient, KeepsNoConnectionBetweenCalls) {
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Data("7"));
    const TestSession session(server.Address());
    int version = 0;
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(server.ConnectionCount(), 2U);
}

TEST(CloudClient, TakesAnAnswerThatComesByteByByte) {
    ScriptedServer server;
    auto answer = ScriptedAnswer::Data("7");
    answer.byteByByte = true;
    server.Next(answer);
    const TestSession session(server.Address());
    int version = 0;
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(version, 7);
}

/// What the service may say instead of a success; each of it fails a call.
const ScriptedAnswer NoSuccess[] = {
    ScriptedAnswer::Code("10003"),
    ScriptedAnswer::Code("200100"),
    ScriptedAnswer::Code(""),
    ScriptedAnswer::Data("7").WithStatus(201),
    ScriptedAnswer::Data("7").WithStatus(500),
    ScriptedAnswer::Html(500),
    ScriptedAnswer::Html(200),
    ScriptedAnswer::Data("7").WithoutContentType(),
    ScriptedAnswer::Json(R"({"code":10000,"data":7})"),
    ScriptedAnswer::Json(R"({"data":7})"),
    ScriptedAnswer::Json(R"({"code":"10000"})"),
    ScriptedAnswer::Json(R"({"code":"10000","data":7)"),
    ScriptedAnswer::Json(R"(["10000",7])"),
    ScriptedAnswer::Json(R"("10000")"),
    ScriptedAnswer::Json("null"),
    ScriptedAnswer::Json(""),
    ScriptedAnswer::Json(R"({"code":"10000\ud800","data":7})"),
    ScriptedAnswer::Json(std::string(200, '[')),
    ScriptedAnswer::CutAfter(70, R"({"code":"10000","data":7})"),
};

TEST(CloudClient, FailsOnEveryAnswerThatIsNoSuccess) {
    for (const auto& answer : NoSuccess) {
        ScriptedServer server;
        server.Next(answer);
        const TestSession session(server.Address());
        int version = 5;
        EXPECT_FALSE(Client().GetVersion(L"P1", version)) << answer.status << " " << answer.body;
        EXPECT_EQ(version, 0);
        EXPECT_EQ(server.Requests().size(), 1U);
    }
    EXPECT_TRUE(TakeNotifications().empty());
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST(CloudClient, NeedsAddressesOfTheHypertextProtocol) {
    for (const wchar_t* const address : {L"", L"127.0.0.1", L"ftp://127.0.0.1:1", L"http://", L"http://a b", L"://"}) {
        const TestSession session(address);
        int version = 5;
        EXPECT_FALSE(Client().GetVersion(L"P1", version));
        EXPECT_EQ(version, 0);
    }
}

TEST(CloudClient, TakesAnAddressWithATrailingSeparator) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("7"));
    const TestSession session(server.Address() + L"/");
    int version = 0;
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(OnlyRequest(server).path, "/api/GetVersion/P1");
}

TEST(CloudClient, NamesTheTablesOfTheService) {
    using Http = TolmProjectSettingHttpUtility;
    const std::array<std::pair<std::wstring, const wchar_t*>, 11> names{{
        {Http::CircuitTemplateTable(), L"CircuitTemplate"},
        {Http::ConfigTreeTable(), L"ConfigTree"},
        {Http::PipeTypeTable(), L"PipeType"},
        {Http::HVACPipeTypeTable(), L"HVACPipeType"},
        {Http::DuctTypeTable(), L"DuctType"},
        {Http::ConduitFittingsTypeTable(), L"ConduitFittingsType"},
        {Http::CableTrayFittingsTypeTable(), L"CableTrayFittingsType"},
        {Http::PipeSystemTypeTable(), L"PipeSystemType"},
        {Http::HVACPipeSystemTypeTable(), L"HVACPipeSystemType"},
        {Http::DuctSystemTypeTable(), L"DuctSystemType"},
        {Http::ElectricalSystemTypeTable(), L"ElectricalSystemType"},
    }};
    for (const auto& [name, expected] : names)
        EXPECT_EQ(name, expected);
}

} // namespace
