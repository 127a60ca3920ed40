#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"

#include <limits>

namespace tolmtest {
namespace {

namespace schema = tolm::schema;

const web::json::value kSerie =
    Row("{'ID':'s1','name':'Serie','CreateTime':11,'minSize':15.5,'maxSize':300,'preferredConnect':1,"
        "'PipeSegmentId':'p1','parentID':'g1','connective':2,"
        "'Elbow':[{'categoryCode':'cat','id':'e1','FittingPartType':1,'min':1.5,'max':20}]}");

std::string Fitting(const std::string& category, int partType, int ruleType, const std::string& id, float min,
                    float max) {
    return PackedText(category, 50) + PackedInt32(partType) + PackedInt32(ruleType) + PackedText(id, 40) +
           PackedFloats({min, max});
}

class SerieIngest : public IngestFixture {
protected:
    void SetUp() override {
        IngestFixture::SetUp();
        ProvideCategories({"cat", "cat2"});
    }
    bool Sync(const web::json::value& element, short mepType = 1, short disciplineId = 2) {
        return util.SyncMaterialSerie(element, &qb, mepType, disciplineId);
    }
    wstring ConnectionId() { return Text("SMS", L"s1", schema::kConnectionSerieId).value_or(L""); }
    std::optional<std::string> Fittings() { return Bytes("COS", ConnectionId(), schema::kFittingList); }
    void MakeTrayTable(const wstring& id, short shape, short disciplineId = 3) {
        MakeRecord("PSI", id, L"tray", 3, disciplineId);
        qb.setShort(schema::kCableTrayShape, shape);
        ASSERT_TRUE(qb.saveRec());
    }
};

TEST_F(SerieIngest, NoStoreIsReported) {
    EXPECT_FALSE(util.SyncMaterialSerie(kSerie, nullptr, 1, 2));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SyncMaterialSerie: qb为空"}));
}

TEST_F(SerieIngest, ANullElementIsNothing) {
    EXPECT_FALSE(Sync(web::json::value::null()));
    EXPECT_TRUE(TakeLogLines().empty());
    EXPECT_EQ(Count("SMS"), 0);
}

TEST_F(SerieIngest, WritesTheSeriesAndItsConnectionSeries) {
    EXPECT_TRUE(Sync(kSerie));
    EXPECT_EQ(Text("SMS", L"s1", schema::kName), L"Serie");
    EXPECT_EQ(Short("SMS", L"s1", schema::kMEPType), 1);
    EXPECT_EQ(Short("SMS", L"s1", schema::kDisciplineId), 2);
    EXPECT_EQ(Double("SMS", L"s1", schema::kCreateTime), 11.0);
    EXPECT_EQ(Float("SMS", L"s1", schema::kMinSize), 15.5F);
    EXPECT_EQ(Float("SMS", L"s1", schema::kMaxSize), 300.0F);
    EXPECT_EQ(Short("SMS", L"s1", schema::kJunctionType), 1);
    EXPECT_EQ(Text("SMS", L"s1", schema::kSizeModuleId), L"p1");
    EXPECT_EQ(Text("SMS", L"s1", schema::kSerieGroupId), L"g1");
    EXPECT_EQ(ConnectionId().size(), 36U);
    EXPECT_EQ(Ids("COS"), (Texts{ConnectionId()}));
    EXPECT_EQ(Short("COS", ConnectionId(), schema::kConnectionType), 2);
    EXPECT_EQ(Fittings(), Fitting("cat", 1, 1, "e1", 1.5F, 20.0F));
}

TEST_F(SerieIngest, OptionalMembersThatAreMissingLeaveTheirAttributes) {
    Sync(kSerie);
    EXPECT_TRUE(Sync(Row("{'ID':'s1','name':'later','parentID':'g1'}")));
    EXPECT_EQ(Text("SMS", L"s1", schema::kName), L"later");
    EXPECT_EQ(Double("SMS", L"s1", schema::kCreateTime), 11.0);
    EXPECT_EQ(Float("SMS", L"s1", schema::kMinSize), 15.5F);
    EXPECT_EQ(Float("SMS", L"s1", schema::kMaxSize), 300.0F);
    EXPECT_EQ(Short("SMS", L"s1", schema::kJunctionType), 1);
    EXPECT_EQ(Text("SMS", L"s1", schema::kSizeModuleId), L"p1");
    EXPECT_EQ(Short("COS", ConnectionId(), schema::kConnectionType), 2);
}

TEST_F(SerieIngest, SizesAreNarrowedAndClamped) {
    Sync(With(kSerie, "{'minSize':-1e300,'maxSize':1e300}"));
    EXPECT_EQ(Float("SMS", L"s1", schema::kMinSize), std::numeric_limits<float>::lowest());
    EXPECT_EQ(Float("SMS", L"s1", schema::kMaxSize), std::numeric_limits<float>::max());
}

TEST_F(SerieIngest, APipeOrDuctSeriesLosesItsGroupWithAnEmptyOrAbsentParent) {
    for (const short type : {short{1}, short{2}}) {
        for (const auto& element : {With(kSerie, "{'parentID':''}"), Without(kSerie, "parentID")}) {
            Sync(kSerie, type);
            EXPECT_EQ(Text("SMS", L"s1", schema::kSerieGroupId), L"g1");
            EXPECT_TRUE(Sync(element, type));
            EXPECT_EQ(Text("SMS", L"s1", schema::kSerieGroupId), std::nullopt);
        }
    }
}

TEST_F(SerieIngest, TheParentOfAConduitSeriesIsItsSizeTable) {
    EXPECT_TRUE(Sync(Row("{'ID':'s1','name':'n','parentID':'c1'}"), 4, 3));
    EXPECT_EQ(Text("SMS", L"s1", schema::kSizeModuleId), L"c1");
    EXPECT_EQ(Text("SMS", L"s1", schema::kSerieGroupId), std::nullopt);
    EXPECT_TRUE(Sync(Row("{'ID':'s1','name':'n'}"), 4, 3));
    EXPECT_EQ(Text("SMS", L"s1", schema::kSizeModuleId), L"c1");
}

TEST_F(SerieIngest, ATraySeriesFindsTheSizeTableOfItsShape) {
    MakeTrayTable(L"t0", 0);
    MakeTrayTable(L"other discipline", 1, 2);
    MakeTrayTable(L"t1", 1);
    MakeTrayTable(L"t1 too", 1);
    EXPECT_TRUE(Sync(Row("{'ID':'s1','name':'n','type':1,'parentID':'g1','connective':21}"), 3, 3));
    EXPECT_EQ(Text("SMS", L"s1", schema::kSizeModuleId), L"t1");
    EXPECT_EQ(Text("SMS", L"s1", schema::kSerieGroupId), std::nullopt);
    EXPECT_EQ(Short("COS", ConnectionId(), schema::kConnectionType), 21);
}

TEST_F(SerieIngest, ATraySeriesIgnoresTheFiltersOfAnEarlierStep) {
    MakeTrayTable(L"t1", 1);
    qb.setFilter(schema::kName, "=", L"nothing");
    EXPECT_TRUE(Sync(Row("{'ID':'s1','name':'n','type':1}"), 3, 3));
    EXPECT_EQ(Text("SMS", L"s1", schema::kSizeModuleId), L"t1");
}

TEST_F(SerieIngest, ATraySeriesWhoseShapeHasNoSizeTableKeepsItsLink) {
    MakeTrayTable(L"t1", 1);
    Sync(Row("{'ID':'s1','name':'n','type':1}"), 3, 3);
    EXPECT_TRUE(Sync(Row("{'ID':'s1','name':'n','type':2}"), 3, 3));
    EXPECT_EQ(Text("SMS", L"s1", schema::kSizeModuleId), L"t1");
}

TEST_F(SerieIngest, ATraySeriesNeedsItsShape) {
    EXPECT_FALSE(Sync(Row("{'ID':'s1','name':'n'}"), 3, 3));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found"}));
    EXPECT_EQ(Text("SMS", L"s1", schema::kName), L"n");
    EXPECT_EQ(Count("COS"), 0);
}

TEST_F(SerieIngest, ASpoiltParentLeavesTheOldLinkAndWhatCameBefore) {
    for (const short type : {short{1}, short{2}, short{4}}) {
        const wstring id = L"s" + std::to_wstring(type);
        const std::string named = "{'ID':'s" + std::to_string(type) + "','name':";
        EXPECT_TRUE(Sync(Row(named + "'n','parentID':'p'}"), type));
        EXPECT_FALSE(Sync(Row(named + "'later','parentID':7}"), type));
        EXPECT_EQ(Text("SMS", id, schema::kName), L"later");
        EXPECT_EQ(Text("SMS", id, type == 4 ? schema::kSizeModuleId : schema::kSerieGroupId), L"p");
    }
    EXPECT_FALSE(Sync(Row("{'ID':'new','name':'n','parentID':7}")));
    EXPECT_EQ(Text("SMS", L"new", schema::kName), L"n");
    EXPECT_EQ(Count("COS"), 3);
    EXPECT_EQ(TakeLogLines().size(), 4U);
}

TEST_F(SerieIngest, ASecondDownloadReusesTheConnectionSeriesAndReplacesItsFittings) {
    Sync(kSerie);
    const wstring connection = ConnectionId();
    EXPECT_TRUE(Sync(With(kSerie, "{'Elbow':[],'Tee':[{'categoryCode':'cat2','id':'t1','FittingPartType':2}]}")));
    EXPECT_EQ(ConnectionId(), connection);
    EXPECT_EQ(Count("COS"), 1);
    EXPECT_EQ(Fittings(), Fitting("cat2", 2, 2, "t1", 0.0F, 0.0F));
}

TEST_F(SerieIngest, AConnectionSeriesThatIsGoneIsMadeAnew) {
    Sync(kSerie);
    const wstring connection = ConnectionId();
    ASSERT_TRUE(qb.deleteRec("COS", connection));
    EXPECT_TRUE(Sync(kSerie));
    EXPECT_NE(ConnectionId(), connection);
    EXPECT_EQ(Ids("COS"), (Texts{ConnectionId()}));
    EXPECT_TRUE(Fittings().has_value());
}

TEST_F(SerieIngest, ASeriesWithoutFittingsLosesItsOldList) {
    Sync(kSerie);
    EXPECT_TRUE(Sync(Without(kSerie, "Elbow")));
    EXPECT_EQ(Fittings(), std::nullopt);
}

TEST_F(SerieIngest, AMissingRequiredKeyGoesToTheLogAlone) {
    EXPECT_FALSE(Sync(Without(kSerie, "ID")));
    EXPECT_FALSE(Sync(Without(kSerie, "name")));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", L"Key not found"}));
    EXPECT_EQ(Count("SMS"), 0);
}

TEST_F(SerieIngest, AFailureLosesTheLaterStepsAndKeepsWhatWasSaved) {
    Sync(kSerie);
    const auto before = Fittings();
    EXPECT_FALSE(Sync(With(kSerie, "{'name':'later','connective':3,'Elbow':[{'id':'e1'}]}")));
    EXPECT_EQ(Text("SMS", L"s1", schema::kName), L"later");
    EXPECT_EQ(Fittings(), before);
    EXPECT_EQ(Short("COS", ConnectionId(), schema::kConnectionType), 2);
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found"}));
}

TEST_F(SerieIngest, ValuesOfAnotherTypeSpoilTheElement) {
    for (const char* member : {"{'name':1}", "{'minSize':'15'}", "{'preferredConnect':null}", "{'PipeSegmentId':7}",
                               "{'parentID':null}", "{'connective':'2'}", "{'Elbow':{}}", "{'Elbow':[7]}"})
        EXPECT_FALSE(Sync(With(kSerie, member))) << member;
    EXPECT_FALSE(Sync(Json("[]")));
    EXPECT_EQ(TakeLogLines().size(), 9U);
}

TEST_F(SerieIngest, AnEmptyIdTouchesNoOtherRecord) {
    Sync(kSerie);
    EXPECT_FALSE(Sync(With(kSerie, "{'ID':'','name':'other'}")));
    EXPECT_EQ(Text("SMS", L"s1", schema::kName), L"Serie");
    EXPECT_EQ(Count("SMS"), 1);
    EXPECT_EQ(Count("COS"), 1);
}

// --- the rules ----------------------------------------------------------------------------------------------------

struct RuleCase {
    const char* key;
    int ruleType;
    short onlyType; // 0: any
};

constexpr RuleCase kRules[] = {
    {"Elbow", 1, 0},
    {"Bend", 1, 0},
    {"Tee", 2, 0},
    {"Cross", 3, 0},
    {"Transition", 4, 0},
    {"Union", 5, 0},
    {"Cap", 6, 0},
    {"Round", 11, 2},
    {"HorizontalBend", 1, 3},
    {"HorizontalTee", 2, 3},
    {"VerticalInsideBend", 21, 3},
    {"VerticalOutsideBend", 22, 3},
    {"VerticalLateralTee", 23, 3},
    {"VerticalLateralElbow", 24, 3},
    {"VerticalLeftLateralElbow", 26, 3},
    {"VerticalRightLateralElbow", 27, 3},
    {"VerticalDownwardTee", 28, 3},
    {"VerticalUpTee", 29, 3},
};

/// A series with one product under each key that any table knows, written in the reverse of their order.
web::json::value SerieWithEveryKey() {
    web::json::value serie = Row("{'ID':'s1','name':'n','type':0}");
    for (const char* unread : {"Duct", "Conduit", "VerticalTee"})
        serie[unread] = Row("[{'categoryCode':'cat','id':'unread','FittingPartType':0}]");
    for (const RuleCase& rule : kRules)
        serie[rule.key] = Row(std::string("[{'categoryCode':'cat','id':'") + rule.key + "','FittingPartType':9}]");
    return serie;
}

TEST_F(SerieIngest, EachKeyIsReadForItsTypesAndInItsOrder) {
    for (const short type : {short{1}, short{2}, short{3}, short{4}}) {
        EXPECT_TRUE(Sync(SerieWithEveryKey(), type, 3));
        std::string expected;
        for (const RuleCase& rule : kRules)
            if (rule.onlyType == 0 || rule.onlyType == type)
                expected += Fitting("cat", 9, rule.ruleType, rule.key, 0.0F, 0.0F);
        EXPECT_EQ(Fittings(), expected) << "type " << type;
    }
}

TEST_F(SerieIngest, TheFirstCategoryFoundStandsForAllRules) {
    EXPECT_TRUE(Sync(With(kSerie, "{'Elbow':[{'categoryCode':'unknown','id':'a','FittingPartType':1},"
                                  "{'categoryCode':'cat2','id':'b','FittingPartType':1},"
                                  "{'categoryCode':'cat','id':'c','FittingPartType':1}],"
                                  "'Tee':[{'categoryCode':'cat','id':'d','FittingPartType':2}]}")));
    EXPECT_EQ(Fittings(), Fitting("", 1, 1, "a", 0, 0) + Fitting("cat2", 1, 1, "b", 0, 0) +
                              Fitting("cat2", 1, 1, "c", 0, 0) + Fitting("cat2", 2, 2, "d", 0, 0));
}

web::json::value Products(std::size_t count) {
    return web::json::value::array(
        std::vector<web::json::value>(count, Row("{'categoryCode':'cat','id':'e','FittingPartType':1}")));
}

TEST_F(SerieIngest, ThreeHundredFittingsFitAndOneMoreLeavesTheOldList) {
    web::json::value serie = Without(kSerie, "Elbow");
    serie["Tee"] = Products(150);
    serie["Cross"] = Products(150);
    EXPECT_TRUE(Sync(serie));
    const auto before = Fittings();
    ASSERT_EQ(before.value_or("").size(), 300U * 106U);
    serie["Cap"] = Products(1);
    EXPECT_FALSE(Sync(serie));
    EXPECT_EQ(Fittings(), before);
    serie = Without(kSerie, "Elbow");
    serie["Tee"] = Products(301);
    EXPECT_FALSE(Sync(serie));
    EXPECT_EQ(Fittings(), before);
    EXPECT_EQ(TakeLogLines(), Lines(2, L"A list has more than 300 entries"));
}

TEST_F(SerieIngest, WithoutACategoryServiceEachRuleIsReportedAndTheListIsEmpty) {
    Sync(kSerie);
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
    EXPECT_TRUE(Sync(With(kSerie, "{'Tee':[{'categoryCode':'cat','id':'t','FittingPartType':2}]}")));
    EXPECT_EQ(Fittings(), std::nullopt);
    EXPECT_EQ(TakeDebugWarnings(), Warnings(2, L"pTolmCategoryInfoUtils为空"));
}

// --- deletion -----------------------------------------------------------------------------------------------------

class SerieDeletion : public SerieIngest {
protected:
    bool Delete(const std::string& del, const wstring& key = L"PipeType") {
        return util.SyncDeletedMaterialSerie(Row(del).as_object(), &qb, key);
    }
};

TEST_F(SerieDeletion, TakesTheConnectionSeriesAlong) {
    Sync(kSerie);
    Sync(With(kSerie, "{'ID':'s2'}"));
    EXPECT_TRUE(Delete("{'PipeType':[{'ID':'s1'}]}"));
    EXPECT_EQ(Ids("SMS"), (Texts{L"s2"}));
    EXPECT_EQ(Ids("COS"), (Texts{*Text("SMS", L"s2", schema::kConnectionSerieId)}));
}

TEST_F(SerieDeletion, ASeriesWithoutAConnectionSeriesGoesAlone) {
    MakeRecord("SMS", L"s1", L"n", 1, 2);
    MakeRecord("SMS", L"s2", L"n", 1, 2);
    qb.setWsz(schema::kConnectionSerieId, L"gone", -1);
    ASSERT_TRUE(qb.saveRec());
    EXPECT_TRUE(Delete("{'PipeType':[{'ID':'s1'},{'ID':'s2'},{'ID':'never was'}]}"));
    EXPECT_EQ(Count("SMS"), 0);
}

TEST_F(SerieDeletion, GoesByItsKeyAlone) {
    Sync(kSerie);
    EXPECT_TRUE(Delete("{'DuctType':[{'ID':'s1'}]}"));
    EXPECT_TRUE(Exists("SMS", L"s1"));
    EXPECT_TRUE(Delete("{'DuctType':[{'ID':'s1'}]}", L"DuctType"));
    EXPECT_FALSE(Exists("SMS", L"s1"));
}

TEST_F(SerieDeletion, AFailedElementIsReportedAndTheWalkGoesOn) {
    Sync(kSerie);
    EXPECT_TRUE(Delete("{'PipeType':[{},null,{'ID':7},{'ID':'s1'}]}"));
    EXPECT_FALSE(Exists("SMS", L"s1"));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              Warnings(3, L"MepQbaseUtil::SyncDeletedMaterialSerie: 删除管配件组合失败"));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", L"删除管配件组合失败", L"not an object", L"删除管配件组合失败",
                                     L"not a string", L"删除管配件组合失败"}));
}

TEST_F(SerieDeletion, NoStoreOrAnEmptyObjectIsFalse) {
    EXPECT_FALSE(Delete("{}"));
    EXPECT_FALSE(util.SyncDeletedMaterialSerie(Row("{'PipeType':[]}").as_object(), nullptr, L"PipeType"));
}

} // namespace
} // namespace tolmtest
