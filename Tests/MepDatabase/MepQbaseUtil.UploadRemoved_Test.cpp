#include "StoreSupport/UploadFixture.h"

using namespace tolmtest;
using nlohmann::json;
namespace schema = tolm::schema;

namespace {

using Texts = std::vector<std::string>;

/// A removed record as the status store has it, and the table of the service that it belongs to.
struct RemovedRow {
    std::optional<short> discipline;
    std::optional<short> type;
    const char* table; ///< null for the empty name
};

constexpr RemovedRow kSystemTypes[] = {
    {1, 1, "HVACPipeSystemType"},
    {1, 2, "DuctSystemType"},
    {1, 3, nullptr},
    {1, 0, nullptr},
    {1, std::nullopt, "HVACPipeSystemType"},
    {2, 1, "PipeSystemType"},
    {2, 9, "PipeSystemType"},
    {std::nullopt, 2, "PipeSystemType"},
    {std::nullopt, std::nullopt, "PipeSystemType"},
    {3, 5, "ElectricalSystemType"},
    {3, 6, "ElectricalSystemType"},
};

constexpr RemovedRow kSeries[] = {
    {1, 1, "HVACPipeType"},
    {2, 1, "PipeType"},
    {3, 1, nullptr},
    {0, 1, nullptr},
    {std::nullopt, 1, "PipeType"},
    {2, std::nullopt, "PipeType"},
    {1, std::nullopt, "HVACPipeType"},
    {1, 2, "DuctType"},
    {7, 2, "DuctType"},
    {3, 3, "CableTrayFittingsType"},
    {3, 4, "ConduitFittingsType"},
    {std::nullopt, 4, "ConduitFittingsType"},
};

class RemovedUpload : public UploadFixture {
protected:
    void SetUp() override {
        UploadFixture::SetUp();
        MakeStore();
    }
    json RemoveList() const { return Patch().at("removeList"); }
};

class RemovedRowUpload : public RemovedUpload, public testing::WithParamInterface<RemovedRow> {
protected:
    json Expected() const {
        const char* table = GetParam().table;
        return table != nullptr ? json{{table, {"gone"}}} : json::object();
    }
};

class RemovedSystemType : public RemovedRowUpload {};
class RemovedSerie : public RemovedRowUpload {};

TEST_P(RemovedSystemType, GoesIntoTheTableOfItsDisciplineAndIsToldOfBefore) {
    Note(schema::kSystemType, L"gone", Removed, GetParam().type, GetParam().discipline);
    EXPECT_TRUE(Upload());
    EXPECT_EQ(RemoveList(), Expected());
    EXPECT_EQ(server.Paths(), (Texts{"/api/workunit/uploadData", "/api/UpLoad/P1"}));
    EXPECT_EQ(server.Requests()[0].body, R"({"dataIds":["gone"],"dataStatus":0,"projectId":"P1","workunitId":"W1"})");
}

TEST_P(RemovedSerie, GoesIntoTheTableOfItsTypeAndIsNotToldOf) {
    Note(schema::kMaterialSerie, L"gone", Removed, GetParam().type, GetParam().discipline);
    EXPECT_TRUE(Upload());
    EXPECT_EQ(RemoveList(), Expected());
    EXPECT_EQ(server.Paths(), (Texts{"/api/UpLoad/P1"}));
}

TEST_P(RemovedSystemType, GoesOutByItselfTableByTable) {
    Note(schema::kSystemType, L"gone", Removed, GetParam().type, GetParam().discipline);
    EXPECT_TRUE(UploadTableByTable());
    const auto requests = Requests("/api/RemoveList/");
    const std::string table = GetParam().table != nullptr ? GetParam().table : "";
    ASSERT_EQ(requests.size(), table.empty() ? 0U : 1U);
    if (!table.empty()) {
        EXPECT_EQ(requests[0].path, "/api/RemoveList/P1/" + table);
        EXPECT_EQ(requests[0].body, R"({"ids":["gone"]})");
    }
    EXPECT_TRUE(Requests("/api/workunit").empty());
    EXPECT_FALSE(Exists(statusPath));
}

TEST_P(RemovedSerie, GoesOutByItselfTableByTable) {
    Note(schema::kMaterialSerie, L"gone", Removed, GetParam().type, GetParam().discipline);
    EXPECT_TRUE(UploadTableByTable());
    const auto requests = Requests("/api/RemoveList/");
    const std::string table = GetParam().table != nullptr ? GetParam().table : "";
    ASSERT_EQ(requests.size(), table.empty() ? 0U : 1U);
    if (!table.empty()) {
        EXPECT_EQ(requests[0].path, "/api/RemoveList/P1/" + table);
    }
    EXPECT_FALSE(Exists(statusPath));
}

INSTANTIATE_TEST_SUITE_P(EachRow, RemovedSystemType, testing::ValuesIn(kSystemTypes));
INSTANTIATE_TEST_SUITE_P(EachRow, RemovedSerie, testing::ValuesIn(kSeries));

TEST_F(RemovedUpload, TellsOfSystemTypesByTableInTheOrderOfTheNames) {
    Note(schema::kSystemType, L"pipe", Removed, 1, 2);
    Note(schema::kSystemType, L"nowhere", Removed, 7, 1);
    Note(schema::kSystemType, L"hvac", Removed, 1, 1);
    Note(schema::kSystemType, L"power", Removed, 6, 3);
    Note(schema::kSystemType, L"duct", Removed, 2, 1);
    Note(schema::kSystemType, L"pipe 2", Removed, 1, 2);
    EXPECT_TRUE(Upload());
    Texts told;
    for (const auto& request : Requests("/api/workunit/uploadData"))
        told.push_back(json::parse(request.body).at("dataIds").dump());
    EXPECT_EQ(told, (Texts{R"(["nowhere"])", R"(["duct"])", R"(["power"])", R"(["hvac"])", R"(["pipe","pipe 2"])"}));
    EXPECT_EQ(server.Paths().back(), "/api/UpLoad/P1");
    EXPECT_EQ(RemoveList(), json::parse(R"({"DuctSystemType":["duct"],"ElectricalSystemType":["power"],)"
                                        R"("HVACPipeSystemType":["hvac"],"PipeSystemType":["pipe","pipe 2"]})"));
}

TEST_F(RemovedUpload, GoesOnWhenTheServiceDoesNotHearOfARemovedSystemType) {
    server.On("/api/workunit/uploadData", ScriptedAnswer::Code("10001"));
    Note(schema::kSystemType, L"gone", Removed);
    EXPECT_TRUE(Upload());
    EXPECT_EQ(TakeNotifications(), Uploaded);
}

TEST_F(RemovedUpload, PutsSizesMaterialsAndGroupsIntoOneArrayInThisOrder) {
    for (const wchar_t* id : {L"g1", L"g2"})
        Note(schema::kMaterialSerieGroup, id, Removed);
    for (const wchar_t* id : {L"m1", L"m2"})
        Note(schema::kMaterial, id, Removed);
    for (const wchar_t* id : {L"s1", L"s2"})
        Note(schema::kSizeModule, id, Removed, 5, 3);
    EXPECT_TRUE(Upload());
    EXPECT_EQ(RemoveList(), json::parse(R"({"ConfigTree":["s1","s2","m1","m2","g1","g2"]})"));
}

TEST_F(RemovedUpload, DoesNotCrossIntoTheNextClass) {
    Note(schema::kSystemType, L"system", Removed);
    Note(schema::kMaterialSerie, L"serie", Removed);
    Note(schema::kSizeModule, L"sizes", Removed);
    Note(schema::kSystemType, L"system 2", Removed);
    EXPECT_TRUE(Upload());
    EXPECT_EQ(RemoveList(), json::parse(R"({"ConfigTree":["sizes"],"PipeSystemType":["system","system 2"],)"
                                        R"("PipeType":["serie"]})"));
}

TEST_F(RemovedUpload, ReportsARecordWithoutATableAndGoesOnToTheNext) {
    const Warnings expected{L"MepQbaseUtil::SendModifiedDataToCloud: disciplineId 非法",
                            L"MepQbaseUtil::SendModifiedDataToCloud: disciplineId 非法",
                            L"MepQbaseUtil::SendModifiedDataToCloud: mepType 非法",
                            L"MepQbaseUtil::SendModifiedDataToCloud: mepType 非法"};
    for (const bool tableByTable : {false, true}) {
        Note(schema::kSystemType, L"no discipline", Removed, 1, 0);
        Note(schema::kSystemType, L"another discipline", Removed, 1, 4);
        Note(schema::kSystemType, L"system", Removed);
        Note(schema::kMaterialSerie, L"no type", Removed, 0, 2);
        Note(schema::kMaterialSerie, L"another type", Removed, 5, 2);
        Note(schema::kMaterialSerie, L"serie", Removed);
        EXPECT_TRUE(tableByTable ? UploadTableByTable() : Upload());
        EXPECT_EQ(TakeDebugWarningsWithFunction(), expected);
        EXPECT_FALSE(Exists(statusPath));
    }
    EXPECT_EQ(RemoveList(), json::parse(R"({"PipeSystemType":["system"],"PipeType":["serie"]})"));
    EXPECT_EQ(Requests("/api/RemoveList/").size(), 2U);
}

} // namespace
