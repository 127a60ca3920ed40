#include "Support/HostileAnswers.h"
#include "Tools/ToolTesting.h"

#include <cstddef>
#include <cstdlib>

namespace tolmtest {
namespace {

/// The sign-in of the command line against every hostile answer.
class HostileSignIn : public testing::Test {
protected:
    void SetUp() override {
        setenv("TOLM_SECRET", "anna's secret", 1);
        const auto run = Tolm({"new", dataset, "--server", vorn::StringUtil::ToString(server.Address()), "--project",
                               "tower", "--user", "anna"});
        ASSERT_EQ(run.code, tolmcli::Done) << run.err;
    }
    void TearDown() override { unsetenv("TOLM_SECRET"); }

    /// Runs a command that signs in first, and tells what it asked for. The secret goes out once.
    std::vector<RecordedRequest> Asked(const ScriptedAnswer& answer) {
        const auto before = static_cast<std::ptrdiff_t>(server.Requests().size());
        server.Next(answer);
        const auto run = Tolm({"compare", dataset});
        auto requests = server.Requests();
        requests.erase(requests.begin(), requests.begin() + before);
        EXPECT_EQ(requests.at(0).path, "/api/SignIn");
        if (requests.size() == 1) {
            EXPECT_EQ(run.code, tolmcli::Failed);
            EXPECT_FALSE(run.err.empty());
        }
        EXPECT_TRUE(elsewhere.Requests().empty());
        return requests;
    }

    const TempFolder folder;
    const std::string dataset = vorn::StringUtil::ToString(folder.File(L"office.db"));
    const std::string trueBody = R"({"code":"10000","data":{"token":"the true token"}})";
    ScriptedServer server;
    ScriptedServer elsewhere;
};

TEST_F(HostileSignIn, TakesTheTrueTokenOrNone) {
    EXPECT_EQ(Asked(ScriptedAnswer::Json(trueBody)).at(1).Header("Authorization"), "the true token");
    for (const auto& hostile : HostileAnswers(trueBody, elsewhere.Port())) {
        if (hostile.isSlow)
            continue;
        SCOPED_TRACE(hostile.name);
        const auto requests = Asked(hostile.answer);
        if (requests.size() > 1) {
            EXPECT_NE(hostile.means, HostileAnswer::Means::StatusAlone);
            EXPECT_EQ(requests[1].Header("Authorization"), "the true token");
        }
    }
}

TEST_F(HostileSignIn, TakesNoTokenThatIsNone) {
    for (const char* data : {"null", "7", "\"the true token\"", "[]", "{}", R"({"token":null})", R"({"token":7})",
                             R"({"token":""})", R"({"token":["the true token"]})", R"({"Token":"the true token"})"})
        EXPECT_EQ(Asked(ScriptedAnswer::Data(data)).size(), 1U) << data;
}

TEST_F(HostileSignIn, SendsNoTokenThatWouldEndItsHeader) {
    for (const char* token : {"a\\r\\nX-Evil: 1", "a\\nb", "\\u0000", "a\\u007f"})
        EXPECT_EQ(Asked(ScriptedAnswer::Data(std::string("{\"token\":\"") + token + "\"}")).size(), 1U) << token;
}

} // namespace
} // namespace tolmtest
