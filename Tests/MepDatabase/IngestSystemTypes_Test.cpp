#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"

#include <map>

namespace tolmtest {
namespace {

namespace schema = tolm::schema;

const web::json::value kPipeType = Row("{'ID':'y1','systemType':'Cold water','code':'CW','description':'d',"
                                       "'systemCategory':21,'CreateTime':12,'fittingIds':['s1','s2']}");
const web::json::value kElectricalType = Row("{'ID':'y1','systemType':'Lighting','code':'L','description':'d',"
                                             "'systemCategory':41,'CreateTime':13,'bindIDs':['w1','w2']}");

class SystemTypeIngest : public IngestFixture {
protected:
    bool Sync(std::vector<web::json::value> elements, short mepType = 1, short disciplineId = 2) {
        return util.SyncSystemTypes(&qb, mepType, disciplineId, std::move(elements));
    }
    std::optional<Texts> SerieLinks() { return TextList("SYS", L"y1", schema::kMaterialSerieIds); }
    std::optional<Texts> CableLinks() { return TextList("SYS", L"y1", schema::kCableSpecTypeIds); }
};

TEST_F(SystemTypeIngest, NoStoreOrNoElementIsFalse) {
    EXPECT_FALSE(util.SyncSystemTypes(nullptr, 1, 2, {kPipeType}));
    EXPECT_FALSE(Sync({}));
}

TEST_F(SystemTypeIngest, WritesAPipeOrDuctSystemType) {
    EXPECT_TRUE(Sync({kPipeType}));
    EXPECT_EQ(Text("SYS", L"y1", schema::kName), L"Cold water");
    EXPECT_EQ(Text("SYS", L"y1", schema::kCode), L"CW");
    EXPECT_EQ(Text("SYS", L"y1", schema::kDescription), L"d");
    EXPECT_EQ(Short("SYS", L"y1", schema::kSystemClassification), 21);
    EXPECT_EQ(Double("SYS", L"y1", schema::kCreateTime), 12.0);
    EXPECT_EQ(Short("SYS", L"y1", schema::kMEPType), 1);
    EXPECT_EQ(Short("SYS", L"y1", schema::kDisciplineId), 2);
    EXPECT_EQ(SerieLinks(), (Texts{L"s1", L"s2"}));
    EXPECT_EQ(CableLinks(), std::nullopt);
}

TEST_F(SystemTypeIngest, AnElectricalSystemTypeIsStoredWithType6) {
    EXPECT_TRUE(Sync({kElectricalType}, 5, 3));
    EXPECT_EQ(Text("SYS", L"y1", schema::kName), L"Lighting");
    EXPECT_EQ(Text("SYS", L"y1", schema::kCode), L"L");
    EXPECT_EQ(Text("SYS", L"y1", schema::kDescription), L"d");
    EXPECT_EQ(Short("SYS", L"y1", schema::kSystemClassification), 41);
    EXPECT_EQ(Double("SYS", L"y1", schema::kCreateTime), 13.0);
    EXPECT_EQ(Short("SYS", L"y1", schema::kMEPType), 6);
    EXPECT_EQ(Short("SYS", L"y1", schema::kDisciplineId), 3);
    EXPECT_EQ(CableLinks(), (Texts{L"w1", L"w2"}));
    EXPECT_EQ(SerieLinks(), std::nullopt);
}

TEST_F(SystemTypeIngest, EachTableReadsItsOwnLinksOnly) {
    Sync({With(kPipeType, "{'bindIDs':['w1']}")});
    EXPECT_EQ(CableLinks(), std::nullopt);
    Sync({With(kElectricalType, "{'ID':'y2','fittingIds':['s1']}")}, 5, 3);
    EXPECT_EQ(TextList("SYS", L"y2", schema::kMaterialSerieIds), std::nullopt);
}

TEST_F(SystemTypeIngest, AnEmptyListClearsTheSeriesOfAPipeSystem) {
    Sync({kPipeType});
    EXPECT_TRUE(Sync({With(kPipeType, "{'fittingIds':[]}")}));
    EXPECT_EQ(SerieLinks(), std::nullopt);
}

TEST_F(SystemTypeIngest, AnAbsentListOrOneThatIsNoArrayLeavesTheSeries) {
    Sync({kPipeType});
    EXPECT_TRUE(Sync({Without(kPipeType, "fittingIds"), With(kPipeType, "{'fittingIds':null}"),
                      With(kPipeType, "{'fittingIds':'s9'}")}));
    EXPECT_EQ(SerieLinks(), (Texts{L"s1", L"s2"}));
}

TEST_F(SystemTypeIngest, AnEmptyListKeepsTheCablesOfAnElectricalSystem) {
    Sync({kElectricalType}, 5, 3);
    EXPECT_TRUE(Sync({With(kElectricalType, "{'bindIDs':[]}"), Without(kElectricalType, "bindIDs"),
                      With(kElectricalType, "{'bindIDs':null}")},
                     5, 3));
    EXPECT_EQ(CableLinks(), (Texts{L"w1", L"w2"}));
}

TEST_F(SystemTypeIngest, OnlyTheTextsOfAListAreLinks) {
    Sync({With(kPipeType, "{'fittingIds':[null,'s3',7,[],'s4']}")});
    EXPECT_EQ(SerieLinks(), (Texts{L"s3", L"s4"}));
    Sync({With(kPipeType, "{'fittingIds':[null]}")});
    EXPECT_EQ(SerieLinks(), std::nullopt);
}

TEST_F(SystemTypeIngest, AnIdOfAnotherTableIsOverwritten) {
    Sync({kElectricalType}, 5, 3);
    EXPECT_TRUE(Sync({kPipeType}, 2, 1));
    EXPECT_EQ(Count("SYS"), 1);
    EXPECT_EQ(Short("SYS", L"y1", schema::kMEPType), 2);
    EXPECT_EQ(Short("SYS", L"y1", schema::kDisciplineId), 1);
    EXPECT_EQ(Text("SYS", L"y1", schema::kName), L"Cold water");
}

TEST_F(SystemTypeIngest, ANullElementIsLoggedAndSkipped) {
    EXPECT_TRUE(Sync({web::json::value::null(), kPipeType}));
    EXPECT_EQ(Ids("SYS"), (Texts{L"y1"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"not an object"}));
}

TEST_F(SystemTypeIngest, AFailedElementIsLoggedAndTheWalkGoesOn) {
    std::vector<web::json::value> elements;
    for (const char* key : {"ID", "systemType", "code", "description", "systemCategory"})
        elements.push_back(With(Without(kPipeType, key), key == std::string("ID") ? "{}" : "{'ID':'failed'}"));
    elements.push_back(With(kPipeType, "{'ID':'failed','systemCategory':'21'}"));
    elements.push_back(kPipeType);
    EXPECT_TRUE(Sync(elements));
    EXPECT_EQ(Ids("SYS"), (Texts{L"y1"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", L"Key not found", L"Key not found", L"Key not found",
                                     L"Key not found", L"not a number"}));
}

TEST_F(SystemTypeIngest, NoElementDoneIsFalse) {
    EXPECT_FALSE(Sync({web::json::value::null(), Row("{'ID':'y1'}")}));
    EXPECT_EQ(TakeLogLines().size(), 2U);
}

TEST_F(SystemTypeIngest, AnEmptyIdTouchesNoOtherRecord) {
    EXPECT_TRUE(Sync({kPipeType, With(kPipeType, "{'ID':'','systemType':'other'}")}));
    EXPECT_EQ(Count("SYS"), 1);
    EXPECT_EQ(Text("SYS", L"y1", schema::kName), L"Cold water");
}

TEST_F(SystemTypeIngest, RecoveredIdsAreThoseThatHadToBeCreated) {
    MakeRecord("SYS", L"there", L"n", 1, 2);
    std::map<wstring, bool> created;
    EXPECT_TRUE(util.SyncRecoveredSystemTypes(
        &qb, 1, 2, {kPipeType, With(kPipeType, "{'ID':'there'}"), With(Without(kPipeType, "code"), "{'ID':'failed'}")},
        created));
    EXPECT_EQ(created, (std::map<wstring, bool>{{L"y1", true}}));
    EXPECT_EQ(Text("SYS", L"there", schema::kName), L"Cold water");
}

TEST_F(SystemTypeIngest, RecoveryOfNothingIsFalse) {
    std::map<wstring, bool> created;
    EXPECT_FALSE(util.SyncRecoveredSystemTypes(nullptr, 1, 2, {kPipeType}, created));
    EXPECT_FALSE(util.SyncRecoveredSystemTypes(&qb, 1, 2, {}, created));
    EXPECT_TRUE(created.empty());
}

class SystemTypeDeletion : public SystemTypeIngest {
protected:
    bool Delete(const std::string& del, const wstring& key = L"PipeSystemType") {
        return util.SyncDeletedSystemType(Row(del).as_object(), &qb, key);
    }
};

TEST_F(SystemTypeDeletion, DeletesWhatItsKeyLists) {
    for (const wchar_t* id : {L"a", L"b", L"c"})
        MakeRecord("SYS", id, L"n", 1, 2);
    EXPECT_TRUE(Delete("{'PipeSystemType':[{'ID':'a'},{'ID':'never was'},{'ID':'c'}],'DuctSystemType':[{'ID':'b'}]}"));
    EXPECT_EQ(Ids("SYS"), (Texts{L"b"}));
}

TEST_F(SystemTypeDeletion, AKeyThatIsMissingDeletesNothing) {
    MakeRecord("SYS", L"a", L"n", 1, 2);
    EXPECT_TRUE(Delete("{'DuctSystemType':[{'ID':'a'}]}"));
    EXPECT_EQ(Count("SYS"), 1);
}

TEST_F(SystemTypeDeletion, AFailureEndsTheWalkAndIsReported) {
    for (const wchar_t* id : {L"a", L"b"})
        MakeRecord("SYS", id, L"n", 1, 2);
    EXPECT_FALSE(Delete("{'PipeSystemType':[{'ID':'a'},{},{'ID':'b'}]}"));
    EXPECT_EQ(Ids("SYS"), (Texts{L"b"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SyncDeletedSystemType: 删除系统类型失败"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", L"删除系统类型失败"}));
}

TEST_F(SystemTypeDeletion, AValueThatIsNoArrayIsReported) {
    EXPECT_FALSE(Delete("{'PipeSystemType':{}}"));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"删除系统类型失败"}));
}

TEST_F(SystemTypeDeletion, NoStoreOrAnEmptyObjectIsFalse) {
    EXPECT_FALSE(Delete("{}"));
    EXPECT_FALSE(util.SyncDeletedSystemType(Row("{'PipeSystemType':[]}").as_object(), nullptr, L"PipeSystemType"));
}

} // namespace
} // namespace tolmtest
