#include "MepDatabase/CloudFrame.h"
#include "StoreSupport/CloudCallTable.h"
#include "StoreSupport/CloudTestSupport.h"
#include "Support/HostileAnswers.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

/// Every call against every hostile answer.
namespace tolmtest {
namespace {

using Means = HostileAnswer::Means;
using Reads = CloudCallRow::Reads;

/// What the user may hear of an upload that was not taken.
const std::set<std::wstring> kUploadFailures{
    L"修改专业配置增量上传时，网络出现问题！",
    L"提交失败，项目配置中有重名项，需保证命名唯一后再次提交！",
    L"提交失败，当前项目有数据正在提交中，请稍后再次提交！",
    L"修改专业配置增量上传失败，服务器解析出现问题！",
    L"修改专业配置增量上传时，出现异常！",
};

constexpr std::chrono::microseconds kShortTimeOut{200'000};
constexpr int kLongTimeOut = 30'000'000; // microseconds

/// While it lives, calls that keep the HTTP library's time-out have this one.
class ShortLibraryTimeOut {
public:
    explicit ShortLibraryTimeOut(std::chrono::microseconds timeOut) { tolm::SetLibraryTimeOut(timeOut); }
    ~ShortLibraryTimeOut() { tolm::SetLibraryTimeOut(std::nullopt); }
    ShortLibraryTimeOut(const ShortLibraryTimeOut&) = delete;
    ShortLibraryTimeOut& operator=(const ShortLibraryTimeOut&) = delete;
};

/// The largest answers of the calls that are not answered with a status alone, in MiB.
const std::map<std::string, std::size_t> kLargeAnswers{{"GetCloudData", 1024},
                                                       {"GetCloudSystemChangeData", 64},
                                                       {"ReadProjectTemplateRowKey", 64},
                                                       {"ApplyDefaultProjectSettingTemplate", 64}};
constexpr std::size_t kMostThatIsTried = 64;

std::size_t LargestAnswerOf(const CloudCallRow& call) {
    const auto large = kLargeAnswers.find(call.name);
    return large == kLargeAnswers.end() ? 1 : large->second;
}

class HostileCalls : public testing::TestWithParam<CloudCallRow> {
protected:
    static std::string TrueBody() { return std::string(R"({"code":"10000","data":)") + GetParam().Data() + "}"; }

    /// Runs the call against the answer, and expects that it asked once, here and nowhere else. With a time-out that is
    /// to end the call it may have ended, on a busy machine, before the service had read the request.
    CallOutcome Answered(const ScriptedAnswer& answer, int timeOut, bool mayEndUnheard = false) {
        ScriptedServer server;
        server.Next(answer);
        const TestSession session({server.Address(), L"P1", L"W1", timeOut});
        const auto outcome = GetParam().run();
        const auto paths = server.Paths();
        EXPECT_TRUE(paths == std::vector<std::string>{GetParam().path} || (mayEndUnheard && paths.empty()))
            << testing::PrintToString(paths);
        EXPECT_TRUE(elsewhere.Requests().empty());
        return outcome;
    }

    void ExpectTaken(const HostileAnswer& hostile) {
        SCOPED_TRACE(hostile.name);
        const auto [done, out] =
            Answered(hostile.answer, hostile.isSlow ? TimeOutOfTheHost() : kLongTimeOut, hostile.isSlow);
        if (done) {
            EXPECT_TRUE(MaySucceed(hostile.means));
            EXPECT_EQ(out, trueOutcome.out);
            ExpectNothingTold();
        } else {
            EXPECT_EQ(out, GetParam().outOfAFailure);
            ExpectFailureTold();
        }
    }

    /// A call that is not to heed it is given none that would end it.
    static int TimeOutOfTheHost() {
        return GetParam().heedsTheTimeOut ? static_cast<int>(kShortTimeOut.count()) : kLongTimeOut;
    }

    static bool MaySucceed(Means means) {
        return means == Means::TrueContent || (means == Means::StatusAlone && !GetParam().looksAtTheStatus);
    }

    static void ExpectNothingTold() {
        EXPECT_EQ(TakeDebugWarnings(), Warnings{});
        EXPECT_TRUE(TakeLogLines().empty());
        EXPECT_TRUE(TakeNotifications().empty());
    }

    /// Each family of calls has its own way, and says what it has to say once.
    static void ExpectFailureTold() {
        const auto warnings = TakeDebugWarnings();
        const auto lines = TakeLogLines();
        const auto notifications = TakeNotifications();
        if (!warnings.empty()) {
            EXPECT_NE(GetParam().exceptionWarning, nullptr);
            EXPECT_EQ(warnings, Warnings{GetParam().exceptionWarning != nullptr ? GetParam().exceptionWarning : L""});
        }
        if (GetParam().tellsTheUser) {
            ASSERT_EQ(notifications.size(), 1U);
            EXPECT_EQ(notifications[0].type, 2);
            EXPECT_TRUE(kUploadFailures.contains(notifications[0].text));
            EXPECT_EQ(lines.size(), notifications[0].text == L"修改专业配置增量上传时，出现异常！" ? 1U : 0U);
        } else {
            EXPECT_TRUE(notifications.empty());
            const bool isLogged = GetParam().logsARefusal && warnings.empty();
            EXPECT_EQ(lines, std::vector<std::wstring>(isLogged ? 1 : 0, L"发送失败!"));
        }
    }

    ScriptedServer elsewhere;
    CallOutcome trueOutcome = Answered(ScriptedAnswer::Json(TrueBody()), kLongTimeOut);
};

TEST_P(HostileCalls, TakeTheTrueAnswer) {
    EXPECT_TRUE(trueOutcome.done);
    ExpectNothingTold();
}

TEST_P(HostileCalls, TakeNothingForASuccessThatIsNone) {
    for (const auto& hostile : HostileAnswers(TrueBody(), elsewhere.Port())) {
        if (!hostile.isSlow)
            ExpectTaken(hostile);
    }
}

/// The calls whose largest answers are small enough to be sent. The guard itself is tried with the largest of all
/// (`AnswerGuard_Test.cpp`).
class BoundedCalls : public HostileCalls {};

/// A call that holds locks meanwhile must not be fed for ever.
TEST_P(BoundedCalls, GiveUpAnAnswerLargerThanTheyMayGet) {
    const std::string body = TrueBody();
    const std::string filled = body + std::string((LargestAnswerOf(GetParam()) << 20) - body.size(), ' ');
    EXPECT_TRUE(Answered(ScriptedAnswer::Json(filled), 30'000'000).done);
    EXPECT_FALSE(Answered(ScriptedAnswer::Json(filled + ' '), 30'000'000).done);
    ExpectFailureTold();
}

TEST_P(HostileCalls, TakeNoPartOfAnAnswerForTheWhole) {
    for (const auto& hostile : CutAnswers(TrueBody()))
        ExpectTaken(hostile);
}

/// The host's, or the HTTP library's own, which is half a minute but for this test.
TEST_P(HostileCalls, EndWithTheirTimeOut) {
    const ShortLibraryTimeOut shortened(kShortTimeOut);
    for (const auto& hostile : HostileAnswers(TrueBody(), elsewhere.Port())) {
        if (!hostile.isSlow)
            continue;
        const auto start = std::chrono::steady_clock::now();
        ExpectTaken(hostile);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5)) << hostile.name;
    }
}

/// Whether the call is content with this "data".
bool Takes(Reads reads, const std::string& data) {
    switch (reads) {
    case Reads::Nothing:
        return true;
    case Reads::AnythingButNull:
        return data != "null";
    default:
        return false;
    }
}

TEST_P(HostileCalls, TakeNoOtherPayload) {
    const bool isAnObject = GetParam().reads == Reads::RowKey || GetParam().reads == Reads::Version;
    std::vector<std::string> payloads{
        "null", "true", "\"\"", "\"7\"", "[]", "[7]", "{}", "[[]]", "[null]", "{\"a\":7}", "[{\"rowKey\":\"K\"}]"};
    if (isAnObject)
        payloads.insert(payloads.end(),
                        {"7", "-1", "1e300", "0.5", R"({"rows":null,"version":null})", R"({"rows":{},"version":{}})",
                         R"({"rows":[],"version":[]})", R"({"rows":[null],"version":[8]})",
                         R"({"rows":[{}],"version":"8"})", R"({"rows":[{"rowKey":7}],"version":true})",
                         R"({"rows":[{"rowKey":""}],"version":""})", R"({"Rows":[{"rowKey":"K"}],"Version":8})"});
    for (const auto& payload : payloads) {
        SCOPED_TRACE(payload);
        const auto outcome = Answered(ScriptedAnswer::Data(payload), kLongTimeOut);
        EXPECT_EQ(outcome.done, Takes(GetParam().reads, payload));
        const bool isHandedOutNull = payload == "null" && GetParam().reads == Reads::AnythingButNull;
        if (!outcome.done) {
            EXPECT_EQ(outcome.out, isHandedOutNull && outcome.out == "null" ? "null" : GetParam().outOfAFailure);
            ExpectFailureTold();
        }
    }
}

std::vector<CloudCallRow> CallsOfSmallAnswers() {
    const auto calls = CloudCallTable();
    std::vector<CloudCallRow> small(calls.begin(), calls.end());
    std::erase_if(small, [](const CloudCallRow& call) { return LargestAnswerOf(call) > kMostThatIsTried; });
    return small;
}

/// The one call that is left out: its largest answer is a gigabyte.
TEST(LargestAnswer, ThatIsNotSentIsTheDownloads) {
    EXPECT_EQ(CallsOfSmallAnswers().size() + 1, CloudCallTable().size());
    EXPECT_EQ(tolm::CloudEndpoints::DownloadVersion.Limits().bytes,
              std::uint64_t{kLargeAnswers.at("GetCloudData")} << 20);
}

INSTANTIATE_TEST_SUITE_P(Each, HostileCalls, testing::ValuesIn(CloudCallTable()),
                         [](const auto& call) { return call.param.name; });
INSTANTIATE_TEST_SUITE_P(Each, BoundedCalls, testing::ValuesIn(CallsOfSmallAnswers()),
                         [](const auto& call) { return call.param.name; });

} // namespace
} // namespace tolmtest
