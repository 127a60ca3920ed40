#include "StoreSupport/CloudTestSupport.h"

#include "Host/Session.h"

#include <cpprest/json.h>

using namespace tolmtest;

namespace {

using web::json::value;

constexpr const char* kRows = R"({"other":1,"rows":[{"ID":"a","text":"钢"},{"ID":"b"}]})";

const ScriptedAnswer kBroken[] = {ScriptedAnswer::Html(500),          ScriptedAnswer::Html(200),
                                  ScriptedAnswer::CutAfter(10, "{}"), ScriptedAnswer::Json(R"({"code":10000})"),
                                  ScriptedAnswer::Json("{}"),         ScriptedAnswer::Json("[]")};

// --- rows and ids
// -----------------------------------------------------------------------------------------------------

TEST(SendCreatedEvent, SendsTheRowsAloneWithTheProductsVersion) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("null"));
    const TestSession session(L"http://not-asked.invalid");
    EXPECT_TRUE(Client().SendCreatedEvent(server.Address(), L"P1", L"PipeType", value::parse(kRows)));
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/api/CreateList/P1/PipeType");
    EXPECT_EQ(SessionHeaders(request), WithContentType);
    EXPECT_EQ(request.body, R"({"rows":[{"ID":"a","text":"钢"},{"ID":"b"}],"tolm_version":"1.2.3"})");
}

TEST(SendEditedEvent, SendsTheSameBodyToAnotherPath) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("null"));
    const TestSession session(L"http://not-asked.invalid");
    EXPECT_TRUE(Client().SendEditedEvent(server.Address(), L"P1", L"ConfigTree", value::parse(kRows)));
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/api/EditList/P1/ConfigTree");
    EXPECT_EQ(SessionHeaders(request), WithContentType);
    EXPECT_EQ(request.body, R"({"rows":[{"ID":"a","text":"钢"},{"ID":"b"}],"tolm_version":"1.2.3"})");
}

TEST(SendRemovedDataList, SendsTheIdsWithoutTheProductsVersion) {
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Client().SendRemovedDataList(L"P1", {L"b", L"钢"}, L"DuctType"));
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/api/RemoveList/P1/DuctType");
    EXPECT_EQ(SessionHeaders(request), WithContentType);
    EXPECT_EQ(request.body, R"({"ids":["b","钢"]})");
}

TEST(SentEvents, AreRefusedInSilenceWithoutRowsProjectOrTable) {
    ScriptedServer server;
    const TestSession session(server.Address());
    const auto rows = value::parse(kRows);
    for (const auto send : {&tolm::TolmProjectSettingHttpUtility::SendCreatedEvent,
                            &tolm::TolmProjectSettingHttpUtility::SendEditedEvent}) {
        EXPECT_FALSE((Client().*send)(server.Address(), L"P1", L"PipeType", value::null()));
        EXPECT_FALSE((Client().*send)(server.Address(), L"", L"PipeType", rows));
        EXPECT_FALSE((Client().*send)(server.Address(), L"P1", L"", rows));
    }
    EXPECT_FALSE(Client().SendRemovedDataList(L"P1", {}, L"PipeType"));
    EXPECT_FALSE(Client().SendRemovedDataList(L"", {L"a"}, L"PipeType"));
    EXPECT_FALSE(Client().SendRemovedDataList(L"P1", {L"a"}, L""));
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_TRUE(TakeLogLines().empty());
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST(SentEvents, LogARefusal) {
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Code("10003"));
    const TestSession session(server.Address());
    EXPECT_FALSE(Client().SendCreatedEvent(server.Address(), L"P1", L"PipeType", value::parse(kRows)));
    EXPECT_FALSE(Client().SendEditedEvent(server.Address(), L"P1", L"PipeType", value::parse(kRows)));
    EXPECT_FALSE(Client().SendRemovedDataList(L"P1", {L"a"}, L"PipeType"));
    EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>(3, L"发送失败!"));
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST(SentEvents, ReportAnExceptionWithTheirPath) {
    const std::wstring client = L"TolmProjectSettingHttpUtility::";
    for (const auto& answer : kBroken) {
        ScriptedServer server;
        server.On("/", answer);
        const TestSession session(server.Address());
        EXPECT_FALSE(Client().SendCreatedEvent(server.Address(), L"P1", L"PipeType", value::parse(kRows)));
        EXPECT_FALSE(Client().SendEditedEvent(server.Address(), L"P1", L"PipeType", value::parse(kRows)));
        EXPECT_FALSE(Client().SendRemovedDataList(L"P1", {L"a"}, L"PipeType"));
        EXPECT_EQ(TakeDebugWarningsWithFunction(),
                  (Warnings{client + L"SendCreatedEvent: /api/CreateList/P1/PipeType 失败",
                            client + L"SendEditedEvent: /api/EditList/P1/PipeType 失败",
                            client + L"SendRemovedDataList: /api/RemoveList/P1/PipeType 失败"}));
        EXPECT_TRUE(TakeLogLines().empty());
    }
}

TEST(SentEvents, AreNotSentWithoutAnAddress) {
    ScriptedServer server;
    const TestSession session(server.Address());
    EXPECT_FALSE(Client().SendCreatedEvent(L"", L"P1", L"PipeType", value::parse(kRows)));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"/api/CreateList/P1/PipeType 失败"}));
    EXPECT_TRUE(server.Requests().empty());
}

TEST(SentEvents, AreNotSentWhenTheRowsAreNoObject) {
    ScriptedServer server;
    const TestSession session(server.Address());
    EXPECT_FALSE(Client().SendCreatedEvent(server.Address(), L"P1", L"PipeType", value::parse("[1]")));
    EXPECT_FALSE(Client().SendEditedEvent(server.Address(), L"P1", L"PipeType", value::string("rows")));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"TolmProjectSettingHttpUtility::SendCreatedEvent: /api/CreateList/P1/PipeType 失败",
                        L"TolmProjectSettingHttpUtility::SendEditedEvent: /api/EditList/P1/PipeType 失败"}));
    EXPECT_TRUE(server.Requests().empty());
}

// --- patches
// ----------------------------------------------------------------------------------------------------------

/// What the user has heard since the last call.
std::vector<Notification> Told() {
    return TakeNotifications();
}

std::vector<Notification> Failure(const wchar_t* words) {
    return {{2, words}};
}

class SendPatchDataEvent : public testing::Test {
protected:
    /// Sends a patch that is answered so; the version must be untouched after a failure.
    bool Send(const ScriptedAnswer& answer) {
        ScriptedServer server;
        server.Next(answer);
        const TestSession session(server.Address());
        version = 5;
        const bool done = Client().SendPatchDataEvent(L"P1", value::parse(patch), version);
        EXPECT_TRUE(done || version == 5);
        request = OnlyRequest(server);
        return done;
    }

    std::string patch = R"({"createList":{"ConfigTree":[{"ID":"钢"}]},"force":1})";
    int version = 0;
    RecordedRequest request;
};

TEST_F(SendPatchDataEvent, SendsThePatchAsItStandsAndTakesTheNewVersion) {
    EXPECT_TRUE(Send(ScriptedAnswer::Data(R"({"version":17})")));
    EXPECT_EQ(version, 17);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/api/UpLoad/P1");
    EXPECT_EQ(SessionHeaders(request), WithContentType);
    EXPECT_EQ(request.body, patch);
    EXPECT_TRUE(Told().empty());
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(SendPatchDataEvent, IsRefusedInSilenceWithoutPatchOrProject) {
    ScriptedServer server;
    const TestSession session(server.Address());
    version = 5;
    EXPECT_FALSE(Client().SendPatchDataEvent(L"P1", value::null(), version));
    EXPECT_FALSE(Client().SendPatchDataEvent(L"", value::object(), version));
    EXPECT_EQ(version, 5);
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_TRUE(Told().empty());
}

TEST_F(SendPatchDataEvent, TellsTheUserOfNamesThatStandTwice) {
    EXPECT_FALSE(Send(ScriptedAnswer::Json(R"({"code":"10003","data":{"version":9}})")));
    EXPECT_EQ(Told(), Failure(L"提交失败，项目配置中有重名项，需保证命名唯一后再次提交！"));
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(SendPatchDataEvent, TellsTheUserOfAnotherUpload) {
    EXPECT_FALSE(Send(ScriptedAnswer::Code("200100")));
    EXPECT_EQ(Told(), Failure(L"提交失败，当前项目有数据正在提交中，请稍后再次提交！"));
}

TEST_F(SendPatchDataEvent, TellsTheUserOfAnyOtherCodeInTheSameWords) {
    for (const char* code : {"10001", "0", "", "10000 ", "1000"}) {
        EXPECT_FALSE(Send(ScriptedAnswer::Code(code)));
        EXPECT_EQ(Told(), Failure(L"修改专业配置增量上传失败，服务器解析出现问题！")) << code;
    }
}

TEST_F(SendPatchDataEvent, TellsTheUserOfAnotherStatusWhateverTheCode) {
    for (const char* body : {R"({"code":"10000","data":{"version":9}})", R"({"code":"10003"})", "{}"}) {
        EXPECT_FALSE(Send(ScriptedAnswer::Json(body).WithStatus(500)));
        EXPECT_EQ(Told(), Failure(L"修改专业配置增量上传时，网络出现问题！")) << body;
    }
}

TEST_F(SendPatchDataEvent, TellsTheUserOfAnExceptionAndLogsItsText) {
    for (const auto& answer : kBroken) {
        EXPECT_FALSE(Send(answer));
        EXPECT_EQ(Told(), Failure(L"修改专业配置增量上传时，出现异常！")) << answer.body;
        const auto lines = TakeLogLines();
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_NE(lines[0], L"");
    }
}

TEST_F(SendPatchDataEvent, TakesAnAnswerWithoutAVersionForAnException) {
    for (const char* data : {"null", "{}", R"({"version":"17"})", "17", "[17]"}) {
        EXPECT_FALSE(Send(ScriptedAnswer::Data(data)));
        EXPECT_EQ(Told(), Failure(L"修改专业配置增量上传时，出现异常！")) << data;
        EXPECT_EQ(TakeLogLines().size(), 1U);
    }
}

TEST_F(SendPatchDataEvent, WithoutAnAddressIsAnException) {
    const TestSession session(L"");
    EXPECT_FALSE(Client().SendPatchDataEvent(L"P1", value::object(), version));
    EXPECT_EQ(Told(), Failure(L"修改专业配置增量上传时，出现异常！"));
    EXPECT_EQ(TakeLogLines().size(), 1U);
}

// --- the work unit
// ----------------------------------------------------------------------------------------------------

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
