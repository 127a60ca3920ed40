#include "UploadTesting.h"

#include "Service/MemberStore.h"

namespace tolmtest {
namespace {

using Users = std::vector<std::string>;

class Members : public testing::Test {
protected:
    Members() { m_store.Fill("p", json::object()); }

private:
    StoreOnly m_store;

protected:
    service::MemberStore members{m_store.Db()};
};

TEST_F(Members, AProjectIsForEveryUserUntilItIsGranted) {
    EXPECT_FALSE(members.IsClosed("p"));
    EXPECT_TRUE(members.MayUse("anna", "p"));
    EXPECT_TRUE(members.MayUse("ben", "p"));
}

TEST_F(Members, AGrantedProjectIsForItsMembersAlone) {
    members.Grant("p", "anna");
    members.Grant("p", "anna");
    EXPECT_TRUE(members.IsClosed("p"));
    EXPECT_EQ(members.List("p"), Users{"anna"});
    EXPECT_TRUE(members.MayUse("anna", "p"));
    EXPECT_FALSE(members.MayUse("ben", "p"));
    EXPECT_FALSE(members.MayUse("Anna", "p"));
    EXPECT_FALSE(members.MayUse("' OR '1'='1", "p"));
    EXPECT_TRUE(members.MayUse("ben", "q")) << "another project";
}

TEST_F(Members, AProjectWhoseLastMemberWentIsForNobody) {
    members.Grant("p", "anna");
    EXPECT_TRUE(members.Revoke("p", "anna"));
    EXPECT_FALSE(members.Revoke("p", "anna"));
    EXPECT_FALSE(members.MayUse("anna", "p"));
    EXPECT_FALSE(members.MayUse("ben", "p"));
}

TEST_F(Members, AProjectCanBeOpenedToAllAgain) {
    members.Grant("p", "anna");
    members.OpenToAll("p");
    EXPECT_FALSE(members.IsClosed("p"));
    EXPECT_TRUE(members.MayUse("ben", "p"));
    EXPECT_TRUE(members.List("p").empty());
}

TEST_F(Members, OfAProjectThatThereIsNotCannotBe) {
    RefusalOf(service::Answer::UnknownProject, [&] { members.Grant("q", "anna"); });
    RefusalOf(service::Answer::UnknownProject, [&] { members.OpenToAll("q"); });
    EXPECT_TRUE(members.MayUse("anna", "q"));
}

/// The wire of a project that is anna's alone, and ben, who is signed in too.
class ClosedProject : public UploadWire {
protected:
    ClosedProject() {
        Fill({{"PipeType", {Series("s", "S")}}});
        Service().Service().Members().Grant("p", "anna");
        Service().AddUser("ben", "ben's secret");
        m_ben = Service().SignIn("ben", "ben's secret");
    }

    WireAnswer AsBen(const std::string& method, const std::string& path, const json& body) {
        return SendRequest(Service().Port(), {method, path, UserHeaders("ben", m_ben), body.dump()});
    }
    static std::string CodeOf(const WireAnswer& answer) { return json::parse(answer.body)["code"]; }

private:
    std::string m_ben;
};

TEST_F(ClosedProject, IsClosedToOthersInEveryCallThatTouchesIt) {
    Service().FillTables("template", R"({"PipeType":[{"ID":"t","name":"T"}]})");
    Service().SetTemplate("t", "template");
    const auto before = Tables();
    const auto patch = Creation(1, Series("t", "T"));
    const std::pair<const char*, json> calls[] = {
        {"/api/GetVersion/p", json::object()},
        {"/api/DownloadVersion/p/0", json::object()},
        {"/api/useTemplateForDesktop/t/p", json::object()},
        {"/api/UpLoad/p", patch},
        {"/api/CreateList/p/PipeType", Rows({Series("t", "T")})},
        {"/api/EditList/p/PipeType", Rows({Wrapped(Series("s", "T"))})},
        {"/api/RemoveList/p/PipeType", {{"ids", {"s"}}}},
        {"/api/CreateCombinations/p/1", Rows({Combination("c", "C")})},
        {"/api/EditCombinations/p/1", Rows({Wrapped(Combination("c", "C"))})},
        {"/api/RemoveCombinations/p/1", {{"ids", {"c"}}}},
        {"/api/workunit/uploadData", {{"projectId", "p"}, {"workunitId", "w"}, {"dataIds", {"d"}}, {"dataStatus", 1}}},
    };
    for (const auto& [path, body] : calls) {
        const auto answer = AsBen("POST", path, body);
        EXPECT_EQ(CodeOf(answer), "40300") << path;
        EXPECT_TRUE(answer.status == 403 || answer.status == 200) << path;
    }
    EXPECT_EQ(Tables(), before);
    EXPECT_EQ(Version(), 1);
    EXPECT_EQ(Upload(patch), 2) << "its member goes on";
}

TEST_F(ClosedProject, KeepsWhatItsWorkUnitsWereToldToItself) {
    const json told{{"projectId", "p"}, {"workunitId", "w"}, {"dataIds", {"d"}}, {"dataStatus", 1}};
    EXPECT_EQ(Call("/api/workunit/uploadData", told)["code"], "10000");
    EXPECT_EQ(json::parse(AsBen("GET", "/api/workunit/downloadData/w", json::object()).body)["data"], json::array());
    Service().FillTables("bens", "{}");
    EXPECT_EQ(CodeOf(AsBen("POST", "/api/workunit/uploadData", With(With(told, "projectId", "bens"), "dataStatus", 0))),
              "10000");
    const auto entries = Service().Service().Projects().WorkunitData("w");
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].dataStatus, 1);
    EXPECT_EQ(entries[0].projectId, "p");
}

TEST_F(ClosedProject, IsClosedToAUserOfTheSameNameWhoComesLater) {
    Service().Service().Members().Grant("p", "ben");
    EXPECT_EQ(CodeOf(AsBen("POST", "/api/GetVersion/p", json::object())), "10000");
    Service().Service().Users().Remove("ben");
    Service().AddUser("ben", "another secret");
    EXPECT_FALSE(Service().Service().Members().MayUse("ben", "p"));
}

TEST_F(ClosedProject, ASecretThatIsReplacedLeavesTheMember) {
    Service().AddUser("anna", "a new secret");
    EXPECT_TRUE(Service().Service().Members().MayUse("anna", "p"));
}

} // namespace
} // namespace tolmtest
