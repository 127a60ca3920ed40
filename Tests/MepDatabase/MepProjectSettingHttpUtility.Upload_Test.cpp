#include "StoreSupport/CloudTestSupport.h"

using namespace tolmtest;

namespace {

TEST(SendUpdateSettingDataInfo, TellsTheStatusOfTheWorkUnitsData) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Client().SendUpdateSettingDataInfo(L"P1", L"W1", {L"S1", L"系统"}, 1));
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/api/workunit/uploadData");
    EXPECT_EQ(SessionHeaders(request), WithContentType);
    EXPECT_EQ(request.body, R"({"dataIds":["S1","系统"],"dataStatus":1,"projectId":"P1","workunitId":"W1"})");
}

TEST(SendUpdateSettingDataInfo, IsRefusedWithoutProjectWorkUnitOrIds) {
    ScriptedServer server;
    const TestSession session(server.Address());
    EXPECT_FALSE(Client().SendUpdateSettingDataInfo(L"", L"W1", {L"S1"}, 0));
    EXPECT_FALSE(Client().SendUpdateSettingDataInfo(L"P1", L"", {L"S1"}, 0));
    EXPECT_FALSE(Client().SendUpdateSettingDataInfo(L"P1", L"W1", {}, 0));
    EXPECT_TRUE(server.Requests().empty());
}

TEST(SendUpdateSettingDataInfo, FailsInSilenceWhenTheServiceRefuses) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Code("10003")).Next(ScriptedAnswer::Data("1").WithStatus(500));
    const TestSession session(server.Address());
    EXPECT_FALSE(Client().SendUpdateSettingDataInfo(L"P1", L"W1", {L"S1"}, 0));
    EXPECT_FALSE(Client().SendUpdateSettingDataInfo(L"P1", L"W1", {L"S1"}, 0));
    EXPECT_TRUE(TakeNotifications().empty());
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST(SendUpdateSettingDataInfo, ReportsAnException) {
    const Warnings failed{L"TolmProjectSettingHttpUtility::SendUpdateSettingDataInfo: /api/workunit/uploadData 失败"};
    const ScriptedAnswer answers[] = {ScriptedAnswer::Html(500), ScriptedAnswer::CutAfter(10, "{}"),
                                      ScriptedAnswer::Json(R"({"code":10000,"data":1})"), ScriptedAnswer::Json("{}")};
    for (const auto& answer : answers) {
        ScriptedServer server;
        server.Next(answer);
        const TestSession session(server.Address());
        EXPECT_FALSE(Client().SendUpdateSettingDataInfo(L"P1", L"W1", {L"S1"}, 0));
        EXPECT_EQ(TakeDebugWarningsWithFunction(), failed);
        EXPECT_EQ(server.Requests().size(), 1U);
    }
}

} // namespace
