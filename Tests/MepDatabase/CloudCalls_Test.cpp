#include "StoreSupport/CloudCallTable.h"
#include "StoreSupport/CloudTestSupport.h"

#include "Host/Session.h"
#include "MepDatabase/CloudFrame.h"

#include <cpprest/json.h>

#include <functional>

/// What holds for every call to the service.
namespace tolmtest {
namespace {

using tolm::CloudEndpoint;

using LogLines = std::vector<std::wstring>;

class CloudCalls : public testing::TestWithParam<CloudCallRow> {
protected:
    /// A payload that each call but the version query is content with.
    static ScriptedAnswer Success() { return ScriptedAnswer::Data(GetParam().Data()); }
    static bool Answered(const ScriptedAnswer& answer) {
        ScriptedServer server;
        server.Next(answer);
        const TestSession session(server.Address());
        const auto [done, out] = GetParam().run();
        EXPECT_EQ(server.Requests().size(), 1U);
        if (!done) {
            EXPECT_EQ(out, GetParam().outOfAFailure);
        }
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
    EXPECT_EQ(GetParam().run().done, !GetParam().heedsTheTimeOut);
}

TEST_P(CloudCalls, FailWithoutASessionAndReportTheMissingSettings) {
    EXPECT_FALSE(GetParam().run().done);
    auto expected = Warnings{GetParam().noSessionWarning};
    if (GetParam().triesWithoutSession)
        for (const auto& warning : WarningsOfAnException())
            expected.push_back(warning);
    EXPECT_EQ(TakeDebugWarnings(), expected);
}

TEST_P(CloudCalls, FailWithoutAnAddress) {
    const TestSession session(L"");
    EXPECT_FALSE(GetParam().run().done);
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

INSTANTIATE_TEST_SUITE_P(Each, CloudCalls, testing::ValuesIn(CloudCallTable()),
                         [](const auto& call) { return call.param.name; });

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
