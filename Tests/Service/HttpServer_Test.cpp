#include "ServiceTesting.h"

#include "Service/Service.h"
#include "Support/Canary.h"
#include "Support/ServiceCalls.h"
#include "Support/ServiceFixture.h"

#include <thread>

namespace tolmtest {
namespace {

class Wire : public testing::Test {
protected:
    Wire() : m_token(m_service.SignIn()) {}

    ServiceFixture& Service() { return m_service; }
    const std::string& Token() const { return m_token; }

    WireAnswer Send(const WireRequest& request) const { return SendRequest(m_service.Port(), request); }
    WireAnswer Call(const std::string& path, const std::string& body = "", const std::string& method = "POST") const {
        return Send({method, path, UserHeaders("anna", m_token), body});
    }
    /// The answer's body, which has to come with this status and as JSON.
    static json Body(const WireAnswer& answer, int status = 200) {
        EXPECT_EQ(answer.status, status) << answer.body;
        EXPECT_NE(answer.head.find("Content-Type: application/json"), std::string::npos) << answer.head;
        const auto body = json::parse(answer.body, nullptr, false);
        EXPECT_TRUE(body.is_object() && body.contains("code") && body["code"].is_string()) << answer.body;
        return body;
    }
    static json Data(const WireAnswer& answer) {
        const auto body = Body(answer);
        EXPECT_EQ(body["code"], "10000") << body;
        return body["data"];
    }
    static void ExpectRefused(const WireAnswer& answer, service::Answer kind) {
        const auto body = Body(answer, service::RowOf(kind).httpStatus);
        EXPECT_EQ(body["code"], service::RowOf(kind).code) << body;
        EXPECT_EQ(body["data"], nullptr);
        EXPECT_TRUE(body["msg"].is_string());
    }

private:
    ServiceFixture m_service;
    std::string m_token;
};

using service::Answer;

TEST_F(Wire, GetVersionAnswersABareInteger) {
    Service().FillTables("p", "{}");
    EXPECT_EQ(Call("/api/GetVersion/p").body, R"({"code":"10000","data":1})");
}

TEST_F(Wire, GetVersionOfAProjectThatWasNeverFilledIsMinusOne) {
    Service().CreateProject("p");
    EXPECT_EQ(Call("/api/GetVersion/p").body, R"({"code":"10000","data":-1})");
}

TEST_F(Wire, GetVersionOfAnUnknownProjectIsRefused) {
    ExpectRefused(Call("/api/GetVersion/p"), Answer::UnknownProject);
}

TEST_F(Wire, DownloadVersionAnswersTheIncrement) {
    Service().FillTables("p", R"({"PipeType":[{"ID":"s","name":"S"}]})");
    const json nothing{{"add", json::object()}, {"del", {{"ConfigTree", json::array()}}}};
    EXPECT_EQ(Data(Call("/api/DownloadVersion/p/1", R"({"tolm_version":"1.0"})")), nothing);
    const json everything{{"PipeType", {Series("s", "S")}}};
    EXPECT_EQ(Data(Call("/api/DownloadVersion/p/0", R"({"tolm_version":"1.0"})"))["add"], everything);
    EXPECT_EQ(Data(Call("/api/DownloadVersion/p/-5"))["add"], everything);
}

TEST_F(Wire, DownloadVersionRefusesAVersionThatIsNone) {
    Service().FillTables("p", "{}");
    for (const auto* version : {"x", "1x", "0x1", "1.0", "99999999999999999999", "--1", "-"})
        ExpectRefused(Call(std::string("/api/DownloadVersion/p/") + version), Answer::BadRequest);
    ExpectRefused(Call("/api/DownloadVersion/p/"), Answer::BadRequest);
    ExpectRefused(Call("/api/DownloadVersion/p/2"), Answer::VersionAhead);
}

TEST_F(Wire, DownloadVersionRefusesABodyThatIsNoJsonObject) {
    Service().FillTables("p", "{}");
    ExpectRefused(Call("/api/DownloadVersion/p/1", "{"), Answer::IllFormed);
    ExpectRefused(Call("/api/DownloadVersion/p/1", "{\"tolm_version\":\"\xff\"}"), Answer::IllFormed);
    ExpectRefused(Call("/api/DownloadVersion/p/1", "[]"), Answer::BadRequest);
}

TEST_F(Wire, WorkunitDataGoesUpAndComesDown) {
    Service().FillTables("p", "{}");
    EXPECT_EQ(Data(Call("/api/workunit/downloadData/w", "", "GET")), json::array());
    const json body{{"projectId", "p"}, {"workunitId", "w"}, {"dataIds", {"b", "a"}}, {"dataStatus", 0}};
    Data(Call("/api/workunit/uploadData", body.dump()));
    EXPECT_EQ(Data(Call("/api/workunit/downloadData/w", "", "GET")),
              (json{{{"dataId", "a"}, {"dataStatus", 0}}, {{"dataId", "b"}, {"dataStatus", 0}}}));
    EXPECT_EQ(Data(Call("/api/workunit/downloadData/v", "", "GET")), json::array());
    EXPECT_EQ(Service().Version("p"), 1);
}

TEST_F(Wire, WorkunitDataOfTheWrongFormIsRefusedWithHttp200) {
    Service().FillTables("p", "{}");
    const json good{{"projectId", "p"}, {"workunitId", "w"}, {"dataIds", {"d"}}, {"dataStatus", 1}};
    const auto refused = [&](const std::string& body) { return Body(Call("/api/workunit/uploadData", body))["code"]; };
    for (const auto* key : {"projectId", "workunitId", "dataIds", "dataStatus"}) {
        auto body = good;
        body.erase(key);
        EXPECT_NE(refused(body.dump()), "10000") << key;
        EXPECT_NE(refused(With(good, key, nullptr).dump()), "10000") << key;
    }
    EXPECT_EQ(refused(With(good, "projectId", "q").dump()), "40401");
    EXPECT_EQ(refused(With(good, "projectId", "a b").dump()), "40000");
    EXPECT_EQ(refused(With(good, "dataIds", {1}).dump()), "40002");
    EXPECT_EQ(refused(With(good, "dataIds", "d").dump()), "40000");
    EXPECT_EQ(refused(With(good, "dataStatus", "1").dump()), "40002");
    EXPECT_EQ(refused(""), "40001");
    EXPECT_EQ(refused("[]"), "40000");
    EXPECT_TRUE(Service().Service().Projects().WorkunitData("w").empty());
}

TEST_F(Wire, ATemplateFillsAProject) {
    Service().FillTables("default", R"({"PipeType":[{"ID":"s","name":"S"}]})");
    Service().SetTemplate("159254153455992832", "default");
    Service().CreateProject("p");
    EXPECT_EQ(Data(Call("/api/useTemplateForDesktop/159254153455992832/p")), (json{{"version", 1}}));
    EXPECT_EQ(Service().Tables("p"), Service().Tables("default"));
    ExpectRefused(Call("/api/useTemplateForDesktop/159254153455992832/p"), Answer::AlreadyFilled);
    ExpectRefused(Call("/api/useTemplateForDesktop/182943227345633280/p"), Answer::UnknownTemplate);
    ExpectRefused(Call("/api/useTemplateForDesktop/159254153455992832/q"), Answer::UnknownProject);
}

TEST_F(Wire, TheTemplateOfAProjectIsToldToWhoeverAsks) {
    Service().FillTables("default", "{}");
    Service().SetTemplate("159", "default");
    Service().CreateProject("p");
    const WireRequest request{"POST", "/api/ReadProjectToTemplate/p", {}, ""};
    EXPECT_EQ(Data(Send(request)), (json{{"rows", json::array()}}));
    Call("/api/useTemplateForDesktop/159/p");
    EXPECT_EQ(Data(Send(request)), (json{{"rows", {{{"rowKey", "159"}}}}}));
}

TEST_F(Wire, TheTemplateCallDoesNotTellWhichProjectsThereAre) {
    Service().CreateProject("p");
    EXPECT_EQ(Send({"POST", "/api/ReadProjectToTemplate/p", {}, ""}).body,
              Send({"POST", "/api/ReadProjectToTemplate/q", {}, ""}).body);
}

TEST_F(Wire, SignInGivesATokenThatWorks) {
    Service().FillTables("p", "{}");
    const json body{{"userId", "anna"}, {"secret", "anna's secret"}};
    const std::string token = Data(Send({"POST", "/api/SignIn", {}, body.dump()}))["token"];
    WatchForSecret(token);
    EXPECT_NE(token, Token());
    EXPECT_EQ(Data(Send({"POST", "/api/GetVersion/p", UserHeaders("anna", token), ""})), 1);
}

TEST_F(Wire, SignInWithAnythingWrongIsRefusedAlike) {
    const auto answer = [&](const json& body) { return Send({"POST", "/api/SignIn", {}, body.dump()}); };
    const auto wrongSecret = answer({{"userId", "anna"}, {"secret", "wrong"}});
    ExpectRefused(wrongSecret, Answer::WrongSecret);
    EXPECT_EQ(answer({{"userId", "nobody"}, {"secret", "wrong"}}).body, wrongSecret.body);
    EXPECT_EQ(answer({{"userId", "a b"}, {"secret", "anna's secret"}}).body, wrongSecret.body);
    EXPECT_EQ(answer({{"userId", "anna"}, {"secret", std::string(2000, 'x')}}).body, wrongSecret.body);
    ExpectRefused(answer({{"userId", "anna"}}), Answer::BadRequest);
    ExpectRefused(answer({{"userId", 1}, {"secret", "s"}}), Answer::BadRequest);
    ExpectRefused(answer(json::array()), Answer::BadRequest);
}

struct KnownCall {
    const char* method;
    const char* path;
    bool refusesWithOk;
};

class CallsOfAUser : public Wire, public testing::WithParamInterface<KnownCall> {};

TEST_P(CallsOfAUser, AreRefusedWithoutAGoodToken) {
    Service().AddUser("bert", "bert's secret");
    const std::vector<std::vector<std::pair<std::string, std::string>>> wrong{
        {},
        {{"x-kfe-userid", "anna"}},
        {{"Authorization", Token()}},
        UserHeaders("anna", ""),
        UserHeaders("anna", "Bearer " + Token()),
        UserHeaders("anna", Token() + "x"),
        UserHeaders("bert", Token()),
        UserHeaders("anna", Service().SignIn("bert", "bert's secret")),
    };
    for (const auto& headers : wrong) {
        const auto answer = Send({GetParam().method, GetParam().path, headers, ""});
        EXPECT_EQ(Body(answer, GetParam().refusesWithOk ? 200 : 401)["code"], "40100");
    }
    Service().PassSeconds(8 * 3600 + 1);
    EXPECT_EQ(Body(Call(GetParam().path, "", GetParam().method), GetParam().refusesWithOk ? 200 : 401)["code"], "40100")
        << "the token has expired";
}

TEST_P(CallsOfAUser, AreRefusedWithAnotherMethod) {
    const std::string other = std::string(GetParam().method) == "GET" ? "POST" : "GET";
    EXPECT_EQ(Body(Call(GetParam().path, "", other), GetParam().refusesWithOk ? 200 : 405)["code"], "40500");
    EXPECT_EQ(Body(Call(GetParam().path, "x", "PUT"), GetParam().refusesWithOk ? 200 : 405)["code"], "40500");
}

INSTANTIATE_TEST_SUITE_P(Paths, CallsOfAUser,
                         testing::Values(KnownCall{"POST", "/api/GetVersion/p", false},
                                         KnownCall{"POST", "/api/DownloadVersion/p/0", false},
                                         KnownCall{"GET", "/api/workunit/downloadData/w", false},
                                         KnownCall{"POST", "/api/workunit/uploadData", true},
                                         KnownCall{"POST", "/api/useTemplateForDesktop/t/p", false},
                                         KnownCall{"POST", "/api/UpLoad/p", true},
                                         KnownCall{"POST", "/api/CreateList/p/PipeType", true},
                                         KnownCall{"POST", "/api/EditList/p/PipeType", true},
                                         KnownCall{"POST", "/api/RemoveList/p/PipeType", true},
                                         KnownCall{"POST", "/api/CreateCombinations/p/16353515", true},
                                         KnownCall{"POST", "/api/EditCombinations/p/16353515", true},
                                         KnownCall{"POST", "/api/RemoveCombinations/p/16353515", true}));

TEST_F(Wire, UnknownPathsAreRefused) {
    for (const auto* path :
         {"/", "/api", "/api/", "/api/Nothing", "/api/GetVersion", "/api/GetVersion/p/q", "/api/SignIn/",
          "/api/getversion/p", "/x/api/GetVersion/p", "//api/GetVersion/p", "/api/workunit/uploadData/x"})
        ExpectRefused(Call(path), Answer::UnknownPath);
}

TEST_F(Wire, IdsThatAreNoneAreRefused) {
    for (const auto* id : {"", "%20", "a%00b", "%2e%2e", "..", "a%27b", "a%22b", "%e4%b8%ad", "a%3bb", "a*"})
        ExpectRefused(Call(std::string("/api/GetVersion/") + id), Answer::BadRequest);
    ExpectRefused(Call("/api/GetVersion/" + std::string(129, 'a')), Answer::BadRequest);
    ExpectRefused(Call("/api/GetVersion/a%2fb"), Answer::UnknownPath);
    ExpectRefused(Call("/api/GetVersion/" + std::string(128, 'a')), Answer::UnknownProject);
    ExpectRefused(Call("/api/GetVersion/{01234567-89ab-cdef-0123-456789abcdef}"), Answer::UnknownProject);
}

} // namespace
} // namespace tolmtest
