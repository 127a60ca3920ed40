#include "StoreSupport/CloudTestSupport.h"
#include "Support/ClosedPort.h"

#include "Host/Session.h"

#include <cpprest/json.h>

using namespace tolmtest;

namespace {

web::json::value Marker() {
    return web::json::value::string("untouched");
}

tolm::CollaborationProjectSettingForPS::Settings Settings(const ScriptedServer& server, int timeOut) {
    return {server.Address(), L"P1", L"W1", timeOut};
}

TEST(GetVersion, AsksWithTheSessionAndWithoutAContentType) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("7"));
    const TestSession session(server.Address());
    int version = 0;
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(version, 7);
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/api/GetVersion/P1");
    EXPECT_EQ(SessionHeaders(request), WithoutContentType);
    EXPECT_EQ(request.body, "");
}

TEST(GetVersion, IsRefusedWithoutAProject) {
    ScriptedServer server;
    const TestSession session(server.Address());
    int version = 5;
    EXPECT_FALSE(Client().GetVersion(L"", version));
    EXPECT_EQ(version, 5);
    EXPECT_TRUE(server.Requests().empty());
}

TEST(GetVersion, OfMinusOneIsNoVersionAndHandedOut) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("-1"));
    const TestSession session(server.Address());
    int version = 5;
    EXPECT_FALSE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(version, -1);
}

TEST(GetVersion, TakesEveryOtherNumber) {
    const std::pair<const char*, int> cases[] = {{"0", 0},
                                                 {"-2", -2},
                                                 {"2147483647", 2147483647},
                                                 {"7.9", 7},
                                                 {"4294967303", 2147483647},
                                                 {"-1e300", -2147483647 - 1}};
    for (const auto& [data, expected] : cases) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Data(data));
        const TestSession session(server.Address());
        int version = 5;
        EXPECT_TRUE(Client().GetVersion(L"P1", version)) << data;
        EXPECT_EQ(version, expected);
    }
}

TEST(GetVersion, FailsWithAPayloadThatIsNoNumber) {
    for (const char* const data : {"null", "\"7\"", "{\"version\":7}", "[7]", "true"}) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Data(data));
        const TestSession session(server.Address());
        int version = 5;
        EXPECT_FALSE(Client().GetVersion(L"P1", version)) << data;
        EXPECT_EQ(version, 0);
    }
}

TEST(GetVersion, HeedsNoConfiguredTimeOut) {
    ScriptedServer server;
    auto answer = ScriptedAnswer::Data("7");
    answer.delay = std::chrono::milliseconds(50);
    server.Next(answer);
    const TestSession session(Settings(server, 1000));
    int version = 0;
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
}

TEST(GetVersion, FailsOnAProjectThatWouldNeedEscaping) {
    for (const wchar_t* const project : {L"P 1", L"P\r\nX-Evil: 1", L"项目", L"P<1>", L"P\\1"}) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Data("7"));
        const TestSession session(server.Address());
        int version = 5;
        EXPECT_FALSE(Client().GetVersion(project, version));
        EXPECT_EQ(version, 0);
        EXPECT_TRUE(server.Requests().empty());
    }
}

TEST(GetVersion, WithoutASessionReportsTheMissingSettings) {
    int version = 5;
    EXPECT_FALSE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(version, 0);
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"CollaborationProjectSettingForPS为空"}));
}

TEST(GetVersion, FailsWithoutAService) {
    const ClosedPort closed;
    const TestSession session(closed.Address());
    int version = 5;
    EXPECT_FALSE(Client().GetVersion(L"P1", version));
    EXPECT_EQ(version, 0);
}

TEST(GetCloudData, AsksFromTheLocalVersionOnWithTheProductVersion) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data(R"({"add":{},"del":{}})"));
    const TestSession session(server.Address());
    auto data = Marker();
    EXPECT_TRUE(Client().GetCloudData(L"P1", 12, data));
    EXPECT_EQ(data.serialize(), R"({"add":{},"del":{}})");
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/api/DownloadVersion/P1/12");
    EXPECT_EQ(SessionHeaders(request), WithContentType);
    EXPECT_EQ(request.body, R"({"tolm_version":"1.2.3"})");
    EXPECT_EQ(request.Header("Content-Length"), std::to_string(request.body.size()));
}

TEST(GetCloudData, PutsANegativeVersionWithItsSign) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("{}"));
    const TestSession session(server.Address());
    auto data = Marker();
    EXPECT_TRUE(Client().GetCloudData(L"P1", -3, data));
    EXPECT_EQ(OnlyRequest(server).path, "/api/DownloadVersion/P1/-3");
}

TEST(GetCloudData, IsRefusedWithoutAProjectOrAnAddress) {
    ScriptedServer server;
    auto data = Marker();
    {
        const TestSession session(server.Address());
        EXPECT_FALSE(Client().GetCloudData(L"", 1, data));
    }
    const TestSession session(L"");
    EXPECT_FALSE(Client().GetCloudData(L"P1", 1, data));
    EXPECT_EQ(data, Marker());
    EXPECT_TRUE(server.Requests().empty());
}

TEST(GetCloudData, WithANullPayloadFailsAndHandsOutNull) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    auto data = Marker();
    EXPECT_FALSE(Client().GetCloudData(L"P1", 1, data));
    EXPECT_TRUE(data.is_null());
}

TEST(GetCloudData, LeavesItsOutputWhenTheServiceRefuses) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Json(R"({"code":"10003","data":{"add":{}}})"));
    server.Next(ScriptedAnswer::Data("{}").WithStatus(500));
    server.Next(ScriptedAnswer::Html(500));
    const TestSession session(server.Address());
    auto data = Marker();
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(Client().GetCloudData(L"P1", 1, data));
    EXPECT_EQ(data, Marker());
    EXPECT_EQ(server.Requests().size(), 3U);
}

TEST(GetCloudData, WaitsAsManyMicrosecondsAsConfigured) {
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Silence());
    const TestSession session(Settings(server, 400'000));
    auto data = Marker();
    EXPECT_FALSE(Client().GetCloudData(L"P1", 1, data));
    EXPECT_EQ(data, Marker());
    EXPECT_EQ(server.Requests().size(), 1U);
}

TEST(GetCloudData, PassesATimeOutOfZeroOnAsItStands) {
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Silence());
    const TestSession session(Settings(server, 0));
    auto data = Marker();
    EXPECT_FALSE(Client().GetCloudData(L"P1", 1, data));
    EXPECT_EQ(data, Marker());
}

TEST(GetCloudSystemChangeData, GetsTheChangesOfAWorkUnit) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data(R"([{"dataId":"S1","dataStatus":1}])"));
    const TestSession session(server.Address());
    auto data = Marker();
    EXPECT_TRUE(Client().GetCloudSystemChangeData(L"W1", data));
    EXPECT_EQ(data.serialize(), R"([{"dataId":"S1","dataStatus":1}])");
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/api/workunit/downloadData/W1");
    EXPECT_EQ(SessionHeaders(request), WithContentType);
    EXPECT_EQ(request.body, "");
}

TEST(GetCloudSystemChangeData, IsRefusedWithoutAWorkUnitOrAnAddress) {
    ScriptedServer server;
    auto data = Marker();
    {
        const TestSession session(server.Address());
        EXPECT_FALSE(Client().GetCloudSystemChangeData(L"", data));
    }
    const TestSession session(L"");
    EXPECT_FALSE(Client().GetCloudSystemChangeData(L"W1", data));
    EXPECT_EQ(data, Marker());
    EXPECT_TRUE(server.Requests().empty());
}

TEST(GetCloudSystemChangeData, WithANullPayloadFailsAndHandsOutNull) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    auto data = Marker();
    EXPECT_FALSE(Client().GetCloudSystemChangeData(L"W1", data));
    EXPECT_TRUE(data.is_null());
}

TEST(GetCloudSystemChangeData, WaitsAsManyMicrosecondsAsConfigured) {
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Silence());
    const TestSession session(Settings(server, 400'000));
    auto data = Marker();
    EXPECT_FALSE(Client().GetCloudSystemChangeData(L"W1", data));
    EXPECT_EQ(data, Marker());
}

TEST(ReadProjectTemplateRowKey, AsksWithoutASession) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data(R"({"rows":[{"rowKey":"K1"},{"rowKey":"K2"}]})"));
    const TestSession session(server.Address());
    std::wstring key = L"old";
    EXPECT_TRUE(Client().ReadProjectTemplateRowKey(L"P1", key));
    EXPECT_EQ(key, L"K1");
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/api/ReadProjectToTemplate/P1");
    EXPECT_EQ(SessionHeaders(request), HeaderLines{});
    EXPECT_EQ(request.body, "");
}

TEST(ReadProjectTemplateRowKey, LooksAtTheCodeAloneAndNotAtTheStatus) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data(R"({"rows":[{"rowKey":"K1"}]})").WithStatus(500));
    const TestSession session(server.Address());
    std::wstring key;
    EXPECT_TRUE(Client().ReadProjectTemplateRowKey(L"P1", key));
    EXPECT_EQ(key, L"K1");
}

TEST(ReadProjectTemplateRowKey, FailsWithoutAKeyAndClearsIt) {
    const ScriptedAnswer answers[] = {
        ScriptedAnswer::Data(R"({"rows":[]})"),
        ScriptedAnswer::Data(R"({"rows":[{"rowKey":""}]})"),
        ScriptedAnswer::Data(R"({"rows":[{"rowKey":5}]})"),
        ScriptedAnswer::Data(R"({"rows":[{}]})"),
        ScriptedAnswer::Data(R"({"rows":{"rowKey":"K1"}})"),
        ScriptedAnswer::Data("{}"),
        ScriptedAnswer::Data("null"),
        ScriptedAnswer::Json(R"({"code":"10003","data":{"rows":[{"rowKey":"K1"}]}})"),
        ScriptedAnswer::Html(404),
    };
    for (const auto& answer : answers) {
        ScriptedServer server;
        server.Next(answer);
        const TestSession session(server.Address());
        std::wstring key = L"old";
        EXPECT_FALSE(Client().ReadProjectTemplateRowKey(L"P1", key)) << answer.body;
        EXPECT_EQ(key, L"");
    }
}

TEST(ReadProjectTemplateRowKey, IsRefusedWithoutAProjectAndClearsTheKey) {
    ScriptedServer server;
    const TestSession session(server.Address());
    std::wstring key = L"old";
    EXPECT_FALSE(Client().ReadProjectTemplateRowKey(L"", key));
    EXPECT_EQ(key, L"");
    EXPECT_TRUE(server.Requests().empty());
}

TEST(ApplyDefaultProjectSettingTemplate, TakesTheTemplateOfTheEnvironment) {
    const std::pair<const wchar_t*, const char*> cases[] = {
        {L"production", "182943227345633280"}, {L"productionstg", "182943227345633280"},
        {L"Production", "159254153455992832"}, {L"production ", "159254153455992832"},
        {L"test", "159254153455992832"},       {L"", "159254153455992832"},
    };
    for (const auto& [environment, id] : cases) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Data("true"));
        const TestSession session(server.Address());
        tolm::TolmKfeConfigUtil::SetCurrentEnv(environment);
        EXPECT_TRUE(Client().ApplyDefaultProjectSettingTemplate(L"P1"));
        const auto request = OnlyRequest(server);
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.path, std::string("/api/useTemplateForDesktop/") + id + "/P1");
        EXPECT_EQ(SessionHeaders(request), WithContentType);
        EXPECT_EQ(request.body, "");
    }
}

TEST(ApplyDefaultProjectSettingTemplate, FailsWithANullPayloadOrARefusal) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("null")).Next(ScriptedAnswer::Code("10003")).Next(ScriptedAnswer::Html(500));
    const TestSession session(server.Address());
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(Client().ApplyDefaultProjectSettingTemplate(L"P1"));
    EXPECT_EQ(server.Requests().size(), 3U);
}

TEST(ApplyDefaultProjectSettingTemplate, IsRefusedWithoutAProjectOrAnAddress) {
    ScriptedServer server;
    {
        const TestSession session(server.Address());
        EXPECT_FALSE(Client().ApplyDefaultProjectSettingTemplate(L""));
    }
    const TestSession session(L"");
    EXPECT_FALSE(Client().ApplyDefaultProjectSettingTemplate(L"P1"));
    EXPECT_TRUE(server.Requests().empty());
}

TEST(ApplyDefaultProjectSettingTemplate, WaitsAsManyMicrosecondsAsConfigured) {
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Silence());
    const TestSession session(Settings(server, 400'000));
    EXPECT_FALSE(Client().ApplyDefaultProjectSettingTemplate(L"P1"));
}

} // namespace
