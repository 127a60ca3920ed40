#include "StoreSupport/CloudTestSupport.h"

#include "Host/Session.h"
#include "MepDatabase/CloudFrame.h"

#include <cpprest/json.h>

#include <functional>

/// What holds for every call to the service.
namespace tolmtest {
namespace {

using tolm::CloudEndpoint;

struct Call {
    const char* name;
    bool (*run)();
    const wchar_t* exceptionWarning; ///< null when an exception is not reported
    bool looksAtTheStatus;
    bool heedsTheTimeOut;
    bool logsARefusal;
    bool tellsTheUser; ///< of a refusal and of an exception, which goes to the log then
};

void PrintTo(const Call& call, std::ostream* out) {
    *out << call.name;
}

using LogLines = std::vector<std::wstring>;

web::json::value NoRows() {
    auto encoded = web::json::value::object();
    encoded["rows"] = web::json::value::array();
    return encoded;
}

bool GetVersion() {
    int version = 5;
    return Client().GetVersion(L"P1", version);
}

/// Expects that a call which fails leaves its payload alone.
bool Payload(bool (*run)(web::json::value&)) {
    auto data = web::json::value::string("untouched");
    const bool done = run(data);
    EXPECT_EQ(!done, data == web::json::value::string("untouched"));
    return done;
}

bool GetCloudData() {
    return Payload([](web::json::value& data) { return Client().GetCloudData(L"P1", 1, data); });
}

bool GetCloudSystemChangeData() {
    return Payload([](web::json::value& data) { return Client().GetCloudSystemChangeData(L"W1", data); });
}

bool ReadProjectTemplateRowKey() {
    std::wstring key;
    return Client().ReadProjectTemplateRowKey(L"P1", key);
}

bool ApplyDefaultProjectSettingTemplate() {
    return Client().ApplyDefaultProjectSettingTemplate(L"P1");
}

bool SendUpdateSettingDataInfo() {
    return Client().SendUpdateSettingDataInfo(L"P1", L"W1", {L"S1"}, 1);
}

bool SendCreatedEvent() {
    return Client().SendCreatedEvent(Client().GetProjectSettingAPIHost(), L"P1", L"PipeType", NoRows());
}

bool SendEditedEvent() {
    return Client().SendEditedEvent(Client().GetProjectSettingAPIHost(), L"P1", L"PipeType", NoRows());
}

bool SendRemovedDataList() {
    return Client().SendRemovedDataList(L"P1", {L"S1"}, L"PipeType");
}

/// Expects that the version is that of the service after a success and stays as it was otherwise.
bool SendPatchDataEvent() {
    int version = 5;
    const bool done = Client().SendPatchDataEvent(L"P1", web::json::value::object(), version);
    EXPECT_EQ(version, done ? 8 : 5);
    return done;
}

constexpr Call kCalls[] = {
    {"GetVersion", &GetVersion, nullptr, true, false, false, false},
    {"GetCloudData", &GetCloudData, nullptr, true, true, false, false},
    {"GetCloudSystemChangeData", &GetCloudSystemChangeData, nullptr, true, true, false, false},
    {"ReadProjectTemplateRowKey", &ReadProjectTemplateRowKey, nullptr, false, false, false, false},
    {"ApplyDefaultProjectSettingTemplate", &ApplyDefaultProjectSettingTemplate, nullptr, true, true, false, false},
    {"SendCreatedEvent", &SendCreatedEvent, L"/api/CreateList/P1/PipeType 失败", true, false, true, false},
    {"SendEditedEvent", &SendEditedEvent, L"/api/EditList/P1/PipeType 失败", true, false, true, false},
    {"SendRemovedDataList", &SendRemovedDataList, L"/api/RemoveList/P1/PipeType 失败", true, false, true, false},
    {"SendPatchDataEvent", &SendPatchDataEvent, nullptr, true, false, false, true},
    {"SendUpdateSettingDataInfo", &SendUpdateSettingDataInfo, L"/api/workunit/uploadData 失败", true, false, false,
     false},
};

class CloudCalls : public testing::TestWithParam<Call> {
protected:
    /// A payload that each call but the version query is content with.
    static ScriptedAnswer Success() {
        return ScriptedAnswer::Data(GetParam().run == &GetVersion ? "7" : R"({"rows":[{"rowKey":"K"}],"version":8})");
    }
    static bool Answered(const ScriptedAnswer& answer) {
        ScriptedServer server;
        server.Next(answer);
        const TestSession session(server.Address());
        const bool done = GetParam().run();
        EXPECT_EQ(server.Requests().size(), 1U);
        return done;
    }
    static Warnings WarningsOfAnException() {
        return GetParam().exceptionWarning != nullptr ? Warnings{GetParam().exceptionWarning} : Warnings{};
    }
    /// The user hears of each failure or of none.
    static void ExpectNotifications(std::size_t failures) {
        EXPECT_EQ(TakeNotifications().size(), GetParam().tellsTheUser ? failures : 0);
    }
};

TEST_P(CloudCalls, SucceedWithTheCode10000) {
    EXPECT_TRUE(Answered(Success()));
}

TEST_P(CloudCalls, FailWithAnotherCodeOrStatus) {
    for (const char* code : {"10003", "200100", "1000", "10000 "}) {
        auto refused = Success();
        refused.body.replace(refused.body.find("10000"), 5, code);
        EXPECT_FALSE(Answered(refused)) << code;
    }
    EXPECT_EQ(Answered(Success().WithStatus(500)), !GetParam().looksAtTheStatus);
    ExpectNotifications(5);
    EXPECT_EQ(TakeLogLines(), LogLines(GetParam().logsARefusal ? 5 : 0, L"发送失败!"));
}

TEST_P(CloudCalls, FailWithAnExceptionOnAnAnswerOfAnotherForm) {
    const ScriptedAnswer answers[] = {
        ScriptedAnswer::Html(500),      ScriptedAnswer::Html(200),
        Success().WithoutContentType(), ScriptedAnswer::Json(R"({"code":10000,"data":{"rows":[{"rowKey":"K"}]}})"),
        ScriptedAnswer::Json("[]"),     ScriptedAnswer::Json(R"({"data":7})")};
    for (const auto& answer : answers) {
        EXPECT_FALSE(Answered(answer)) << answer.body;
        EXPECT_EQ(TakeDebugWarnings(), WarningsOfAnException()) << answer.body;
    }
    ExpectNotifications(std::size(answers));
    EXPECT_EQ(TakeLogLines().size(), GetParam().tellsTheUser ? std::size(answers) : 0);
}

TEST_P(CloudCalls, FollowNoRedirect) {
    ScriptedServer elsewhere;
    elsewhere.On("/", Success());
    for (const int status : {301, 302, 307}) {
        const auto target = "http://127.0.0.1:" + std::to_string(elsewhere.Port()) + "/api/x";
        EXPECT_FALSE(Answered(ScriptedAnswer::Redirect(target).WithStatus(status))) << status;
        TakeDebugWarnings();
    }
    EXPECT_TRUE(elsewhere.Requests().empty());
}

TEST_P(CloudCalls, WaitAsLongAsIsConfiguredOnlyWhereThatIsSaid) {
    ScriptedServer server;
    auto late = Success();
    late.delay = std::chrono::milliseconds(50);
    server.Next(late);
    const TestSession session({server.Address(), L"P1", L"W1", 1000});
    EXPECT_EQ(GetParam().run(), !GetParam().heedsTheTimeOut);
}

TEST_P(CloudCalls, FailWithoutASessionAndReportTheMissingSettings) {
    EXPECT_FALSE(GetParam().run());
    auto expected = Warnings{L"CollaborationProjectSettingForPS为空"};
    for (const auto& warning : WarningsOfAnException())
        expected.push_back(warning);
    EXPECT_EQ(TakeDebugWarnings(), expected);
}

TEST_P(CloudCalls, FailWithoutAnAddress) {
    const TestSession session(L"");
    EXPECT_FALSE(GetParam().run());
    EXPECT_EQ(TakeDebugWarnings(), WarningsOfAnException());
}

TEST_P(CloudCalls, TellNobodyOfTheToken) {
    const ScriptedAnswer answers[] = {Success(), ScriptedAnswer::Code("10003"), ScriptedAnswer::Html(401),
                                      ScriptedAnswer::CutAfter(10, "{}"), ScriptedAnswer::Redirect("http://[")};
    for (const wchar_t* token : {L"secret-token", L"secret\r\ntoken"}) {
        for (const auto& answer : answers) {
            ScriptedServer server;
            server.Next(answer);
            const TestSession session(server.Address());
            tolm::TolmUserSessionUtils::SetUser(L"user-1", token);
            GetParam().run();
        }
    }
    auto told = TakeDebugWarningsWithFunction();
    for (const auto& line : TakeLogLines())
        told.push_back(line);
    for (const auto& notification : TakeNotifications())
        told.push_back(notification.text);
    for (const auto& text : told)
        EXPECT_EQ(text.find(L"secret"), std::wstring::npos);
}

INSTANTIATE_TEST_SUITE_P(Each, CloudCalls, testing::ValuesIn(kCalls), [](const auto& call) { return call.param.name; });

TEST(CloudOutcome, SaysInItsExceptionNothingOfTheToken) {
    constexpr const auto& endpoint = tolm::CloudEndpoints::GetVersion;
    const auto answers = {ScriptedAnswer::Html(401), ScriptedAnswer::CutAfter(10, "{}"), ScriptedAnswer::Json("[]")};
    for (const wchar_t* token : {L"secret-token", L"secret\r\ntoken"}) {
        for (const auto& answer : answers) {
            ScriptedServer server;
            server.Next(answer);
            const TestSession session(server.Address());
            tolm::TolmUserSessionUtils::SetUser(L"user-1", token);
            const auto outcome = tolm::RunCloudCall(Client(), {endpoint, server.Address(), endpoint.PathOf({L"P1"})},
                                                    [](const tolm::CloudAnswer& got) { return got.IsSuccess(); });
            EXPECT_TRUE(outcome.IsException());
            EXPECT_NE(outcome.exceptionText, L"");
            EXPECT_EQ(outcome.exceptionText.find(L"secret"), std::wstring::npos);
        }
    }
}

} // namespace
} // namespace tolmtest
