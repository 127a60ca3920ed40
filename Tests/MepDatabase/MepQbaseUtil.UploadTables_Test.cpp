#include "StoreSupport/UploadFixture.h"

using namespace tolmtest;
using nlohmann::json;
namespace schema = tolm::schema;

namespace {

using Texts = std::vector<std::string>;

const Texts kAllRequests{
    "/api/CreateList/P1/PipeSystemType", "/api/CreateList/P1/PipeType",       "/api/CreateList/P1/ConfigTree",
    "/api/CreateList/P1/ConfigTree",     "/api/CreateList/P1/ConfigTree",     "/api/EditList/P1/PipeSystemType",
    "/api/EditList/P1/PipeType",         "/api/EditList/P1/ConfigTree",       "/api/EditList/P1/ConfigTree",
    "/api/EditList/P1/ConfigTree",       "/api/RemoveList/P1/PipeSystemType", "/api/RemoveList/P1/DuctType",
    "/api/RemoveList/P1/ConfigTree",     "/api/RemoveList/P1/ConfigTree",     "/api/RemoveList/P1/ConfigTree"};

class TableUpload : public UploadFixture {
protected:
    /// Created, edited and removed records of every class, at version 7.
    void ChangeEverything() {
        StoreOfEachClass(L"old ", L"before");
        ForgetChanges();
        ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
        StoreOfEachClass(L"old ", L"after");
        StoreOfEachClass(L"new ", L"name");
        Note(schema::kSystemType, L"gone system", Removed);
        Note(schema::kMaterialSerie, L"gone serie", Removed, 2, 1);
        Note(schema::kMaterialSerieGroup, L"gone group", Removed);
        Note(schema::kMaterial, L"gone material", Removed);
        Note(schema::kSizeModule, L"gone sizes", Removed);
    }
    json BodyOf(std::size_t request) const { return json::parse(server.Requests().at(request).body); }
};

TEST_F(TableUpload, SendsClassByClassAndAsksForTheVersionThen) {
    ChangeEverything();
    EXPECT_TRUE(UploadTableByTable());
    Texts expected = kAllRequests;
    expected.emplace_back("/api/GetVersion/P1");
    EXPECT_EQ(server.Paths(), expected);
    EXPECT_EQ(TakeNotifications(), Uploaded);
    EXPECT_EQ(Version(), 8);
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(TableUpload, SendsCreatedRowsBareAndEditedRowsWrapped) {
    ChangeEverything();
    EXPECT_TRUE(UploadTableByTable());
    constexpr const char* kIds[] = {"system", "serie", "sizes", "material", "group"};
    for (std::size_t i = 0; i < std::size(kIds); ++i) {
        const json created = BodyOf(i);
        EXPECT_EQ(created.at("tolm_version"), "1.2.3");
        ASSERT_EQ(created.at("rows").size(), 1U);
        EXPECT_EQ(created.at("rows")[0].at("ID"), std::string("new ") + kIds[i]);
        const json edited = BodyOf(i + 5);
        ASSERT_EQ(edited.at("rows").size(), 1U);
        EXPECT_EQ(edited.at("rows")[0].at("id"), std::string("old ") + kIds[i]);
        EXPECT_EQ(edited.at("rows")[0].at("data").at("ID"), std::string("old ") + kIds[i]);
        EXPECT_EQ(BodyOf(i + 10), (json{{"ids", {std::string("gone ") + kIds[i]}}}));
    }
}

TEST_F(TableUpload, PassesOverClassesWithoutChanges) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    Note(schema::kMaterialSerieGroup, L"gone", Removed);
    EXPECT_TRUE(UploadTableByTable());
    EXPECT_EQ(server.Paths(),
              (Texts{"/api/CreateList/P1/ConfigTree", "/api/RemoveList/P1/ConfigTree", "/api/GetVersion/P1"}));
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(TableUpload, TriesNoClassAfterOneThatFailed) {
    ChangeEverything();
    const auto before = StatusRecords();
    for (std::size_t failing = 0; failing < kAllRequests.size(); ++failing) {
        ScriptedServer other;
        for (std::size_t i = 0; i < failing; ++i)
            other.Next(ScriptedAnswer::Data("null"));
        other.Next(ScriptedAnswer::Code("10001"));
        tolm::CollaborationProjectSettingForPS::Open({other.Address(), L"P1", L"W1", 30'000'000});
        EXPECT_FALSE(UploadTableByTable()) << failing;
        EXPECT_EQ(other.Paths(), Texts(kAllRequests.begin(), kAllRequests.begin() + static_cast<long>(failing) + 1));
        EXPECT_EQ(StatusRecords(), before);
        EXPECT_EQ(Version(), 7);
    }
    EXPECT_EQ(TakeNotifications(), Notifications{});
}

TEST_F(TableUpload, LeavesTheRecoveredIdsAlone) {
    ASSERT_TRUE(Write(SystemType(L"back", L"again")));
    Recovered() = {L"BACK"};
    EXPECT_TRUE(UploadTableByTable());
    EXPECT_EQ(server.Paths(), (Texts{"/api/CreateList/P1/PipeSystemType", "/api/GetVersion/P1"}));
    EXPECT_EQ(Recovered(), (std::vector<wstring>{L"BACK"}));
}

TEST_F(TableUpload, IsDoneAlsoWhenTheVersionCannotBeHad) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
    server.On("/api/GetVersion/", ScriptedAnswer::Code("10001"));
    EXPECT_TRUE(UploadTableByTable());
    EXPECT_EQ(Version(), 7);
    EXPECT_FALSE(Exists(statusPath));
    EXPECT_EQ(TakeNotifications(), Uploaded);
}

TEST_F(TableUpload, MakesAHeaderForTheVersionAndWritesNoTimePoint) {
    ASSERT_TRUE(Store(Material(L"m", L"PVC")));
    ProgressNotes progress;
    EXPECT_TRUE(UploadTableByTable(true, &progress));
    EXPECT_EQ(Version(), 8);
    EXPECT_TRUE(util.GetLastUpdateTimePoint(path, ddq).empty());
    EXPECT_TRUE(progress.percentages.empty());
}

} // namespace
