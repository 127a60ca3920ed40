#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"

#include <tuple>

namespace tolmtest {
namespace {

namespace schema = tolm::schema;

const web::json::value kDuct = Row("{'ID':'d1','parentID':'','text':'Round','CreateTime':5,'content':{'shape':1,"
                                   "'systemPress':3,'series':'Zinc','sizeList':[{'Size':100.5,'Thickness':0.5},"
                                   "{'Size':125,'Thickness':'0.75'}]}}");
const web::json::value kWire =
    Row("{'ID':'w1','parentID':'','text':'BV','CreateTime':6,'content':{'series':1,"
        "'currentUseTemperature':2,'sizeList':[{'area':'2.5','current':21.9,'temperature':2},"
        "{'area':'4','current':' 28 ','temperature':0}]}}");
const web::json::value kConduit = Row("{'ID':'c1','parentID':'','text':'SC','CreateTime':7,'content':{'sizeList':["
                                      "{'DN':15,'OD':21.25,'ID':15.75,'Thickness':9.0}]}}");
const web::json::value kTray = Row("{'ID':'t1','parentID':'','text':'Trough','CreateTime':8,'content':{'type':2,"
                                   "'sizeList':[{'Size':50.0},{'Size':100},{'Size':'150'}]}}");
const web::json::value kGroup = Row("{'ID':'g1','parentID':'','text':'Group','CreateTime':9,'content':{}}");

class ConfigTreeIngest : public IngestFixture {
protected:
    bool Sync(const wstring& group, const web::json::value& element) {
        const wstring id = element.has_string_field("ID")
                               ? wstring(element.at("ID").as_string().begin(), element.at("ID").as_string().end())
                               : wstring(L"x");
        return util.SyncSizeTableExceptPipeAndGroupTableItem(&qb, group, id.c_str(), element);
    }
};

TEST_F(ConfigTreeIngest, NoStoreIsReported) {
    EXPECT_FALSE(util.SyncSizeTableExceptPipeAndGroupTableItem(nullptr, L"cableTray", L"t1", kTray));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::SyncSizeTableExceptPipeAndGroupTableItem: qb为空"}));
}

TEST_F(ConfigTreeIngest, AnUnknownGroupIsIgnoredWithoutAWord) {
    EXPECT_FALSE(Sync(L"nobodyKnows", kTray));
    EXPECT_FALSE(Sync(L"CableTray", kTray));
    EXPECT_FALSE(Sync(L"", kTray));
    EXPECT_EQ(Count("PSI"), 0);
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(ConfigTreeIngest, ADuctSizeTable) {
    EXPECT_TRUE(Sync(L"ductSeriesType", kDuct));
    EXPECT_EQ(Text("PSI", L"d1", schema::kName), L"Round");
    EXPECT_EQ(Short("PSI", L"d1", schema::kMEPType), 2);
    EXPECT_EQ(Short("PSI", L"d1", schema::kDisciplineId), 1);
    EXPECT_EQ(Double("PSI", L"d1", schema::kCreateTime), 5.0);
    EXPECT_EQ(Short("PSI", L"d1", schema::kDuctShape), 1);
    EXPECT_EQ(Short("PSI", L"d1", schema::kPressureGrade), 3);
    EXPECT_EQ(Bytes("PSI", L"d1", schema::kDuctSizeList), PackedFloats({100.5F, 0.5F, 125.0F, 0.75F}));
}

TEST_F(ConfigTreeIngest, ADuctsMaterialIsMadeHereAndKeptAcrossDownloads) {
    Sync(L"ductSeriesType", kDuct);
    const auto material = Text("PSI", L"d1", schema::kMaterialId);
    ASSERT_TRUE(material.has_value());
    EXPECT_EQ(material->size(), 36U);
    EXPECT_EQ(Text("MTS", *material, schema::kName), L"Zinc");
    EXPECT_EQ(Short("MTS", *material, schema::kMEPType), 2);
    EXPECT_EQ(Short("MTS", *material, schema::kDisciplineId), 1);
    EXPECT_EQ(Double("MTS", *material, schema::kCreateTime), std::nullopt);
    Sync(L"ductSeriesType", With(kDuct, "{'content':{'shape':0,'systemPress':1,'series':'Steel','sizeList':"
                                        "[{'Size':80,'Thickness':1}]}}"));
    EXPECT_EQ(Ids("MTS"), (Texts{*material}));
    EXPECT_EQ(Text("PSI", L"d1", schema::kMaterialId), material);
    EXPECT_EQ(Text("MTS", *material, schema::kName), L"Steel");
    EXPECT_EQ(Short("PSI", L"d1", schema::kDuctShape), 0);
    EXPECT_EQ(Bytes("PSI", L"d1", schema::kDuctSizeList), PackedFloats({80.0F, 1.0F}));
}

TEST_F(ConfigTreeIngest, ADuctsMaterialThatIsGoneIsNotMadeAgain) {
    Sync(L"ductSeriesType", kDuct);
    const auto material = Text("PSI", L"d1", schema::kMaterialId);
    ASSERT_TRUE(qb.deleteRec("MTS", *material));
    EXPECT_TRUE(Sync(L"ductSeriesType", kDuct));
    EXPECT_EQ(Count("MTS"), 0);
    EXPECT_EQ(Text("PSI", L"d1", schema::kMaterialId), material);
}

TEST_F(ConfigTreeIngest, ADuctTableThatFailsMidwayKeepsWhatItHadGot) {
    EXPECT_FALSE(Sync(L"ductSeriesType", With(kDuct, "{'content':{'shape':2,'systemPress':1,'sizeList':"
                                                     "[{'Size':80,'Thickness':1}]}}")));
    EXPECT_EQ(Short("PSI", L"d1", schema::kDuctShape), 2);
    EXPECT_EQ(Bytes("PSI", L"d1", schema::kDuctSizeList), PackedFloats({80.0F, 1.0F}));
    EXPECT_EQ(Count("MTS"), 0);
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"ductSeriesType:下载风管类型失败"}));
}

TEST_F(ConfigTreeIngest, AWireTable) {
    EXPECT_TRUE(Sync(L"electricWireType", kWire));
    EXPECT_EQ(Text("PSI", L"w1", schema::kName), L"BV");
    EXPECT_EQ(Text("PSI", L"w1", schema::kCableSpecTypeName), L"BV");
    EXPECT_EQ(Short("PSI", L"w1", schema::kMEPType), 5);
    EXPECT_EQ(Short("PSI", L"w1", schema::kDisciplineId), 3);
    EXPECT_EQ(Double("PSI", L"w1", schema::kCreateTime), 6.0);
    EXPECT_EQ(Short("PSI", L"w1", schema::kCableMaterial), 1);
    EXPECT_EQ(Short("PSI", L"w1", schema::kCableEnvironmentTemperature), 2);
    EXPECT_EQ(Bytes("PSI", L"w1", schema::kCableSpecificationList), PackedText("2.5", 50) + PackedInt32(21) +
                                                                        PackedInt16(2) + PackedText("4", 50) +
                                                                        PackedInt32(28) + PackedInt16(0));
    EXPECT_EQ(Count("MTS"), 0);
}

TEST_F(ConfigTreeIngest, AWiresAreaIsCutBetweenCharactersAndEndsInAZero) {
    const std::string wide = "\xE9\xA3\x8E"; // three bytes
    std::string area;
    for (int i = 0; i < 17; ++i)
        area += wide;
    Sync(L"electricWireType", With(kWire, "{'content':{'series':1,'currentUseTemperature':2,'sizeList':[{'area':'" +
                                              area + "'},{'area':'" + std::string(60, 'x') + "'}]}}"));
    EXPECT_EQ(Bytes("PSI", L"w1", schema::kCableSpecificationList),
              PackedText(area.substr(0, 48), 50) + PackedInt32(0) + PackedInt16(0) +
                  PackedText(std::string(49, 'x'), 50) + PackedInt32(0) + PackedInt16(0));
}

TEST_F(ConfigTreeIngest, AWiresCellsAreClampedAndMayBeMissing) {
    Sync(L"electricWireType",
         With(kWire, "{'content':{'series':1,'currentUseTemperature':2,'sizeList':[{},"
                     "{'current':1e12,'temperature':40000},{'current':'-99999999999','temperature':-2.9},"
                     "{'current':'bad','temperature':1}]}}"));
    EXPECT_EQ(Bytes("PSI", L"w1", schema::kCableSpecificationList),
              PackedText("", 50) + PackedInt32(0) + PackedInt16(0) + PackedText("", 50) + PackedInt32(2147483647) +
                  PackedInt16(32767) + PackedText("", 50) + PackedInt32(-2147483647 - 1) + PackedInt16(-2) +
                  PackedText("", 50) + PackedInt32(0) + PackedInt16(1));
}

TEST_F(ConfigTreeIngest, AWiresTemperatureMustBeANumberAndItsAreaText) {
    Sync(L"electricWireType", kWire);
    const auto before = Bytes("PSI", L"w1", schema::kCableSpecificationList);
    for (const char* row : {"{'temperature':'2'}", "{'area':2.5}"})
        EXPECT_FALSE(Sync(L"electricWireType", With(kWire, std::string("{'content':{'series':1,'currentUseTemperature':"
                                                                       "2,'sizeList':[") +
                                                               row + "]}}")));
    EXPECT_EQ(Bytes("PSI", L"w1", schema::kCableSpecificationList), before);
    EXPECT_EQ(TakeDebugWarnings(),
              (Warnings{L"electricWireType:下载导线类型失败", L"electricWireType:下载导线类型失败"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"not a number", L"electricWireType:下载导线类型失败", L"not a string",
                                     L"electricWireType:下载导线类型失败"}));
}

TEST_F(ConfigTreeIngest, AConduitTableHasNoThickness) {
    EXPECT_TRUE(Sync(L"electricLinePipe", kConduit));
    EXPECT_EQ(Text("PSI", L"c1", schema::kName), L"SC");
    EXPECT_EQ(Short("PSI", L"c1", schema::kMEPType), 4);
    EXPECT_EQ(Short("PSI", L"c1", schema::kDisciplineId), 3);
    EXPECT_EQ(Double("PSI", L"c1", schema::kCreateTime), 7.0);
    EXPECT_EQ(Bytes("PSI", L"c1", schema::kPipeSizeList), PackedFloats({15.0F, 21.25F, 15.75F, 0.0F}));
}

TEST_F(ConfigTreeIngest, ATrayTableKeepsItsSizesAsFloats) {
    EXPECT_TRUE(Sync(L"cableTray", kTray));
    EXPECT_EQ(Text("PSI", L"t1", schema::kName), L"Trough");
    EXPECT_EQ(Short("PSI", L"t1", schema::kMEPType), 3);
    EXPECT_EQ(Short("PSI", L"t1", schema::kDisciplineId), 3);
    EXPECT_EQ(Double("PSI", L"t1", schema::kCreateTime), 8.0);
    EXPECT_EQ(Short("PSI", L"t1", schema::kCableTrayShape), 2);
    EXPECT_EQ(FloatList("PSI", L"t1", schema::kCableTraySizeList), (Floats{50.0F, 100.0F, 150.0F}));
}

struct ListCase {
    const wchar_t* group;
    const web::json::value* element;
    const wchar_t* id;
    short attribute;
    const wchar_t* failure;
};

const ListCase kLists[] = {
    {L"ductSeriesType", &kDuct, L"d1", schema::kDuctSizeList, L"ductSeriesType:下载风管类型失败"},
    {L"electricWireType", &kWire, L"w1", schema::kCableSpecificationList, L"electricWireType:下载导线类型失败"},
    {L"electricLinePipe", &kConduit, L"c1", schema::kPipeSizeList, L"electricLinePipe:下载线管类型失败"},
    {L"cableTray", &kTray, L"t1", schema::kCableTraySizeList, L"cableTray:下载桥架类型失败"},
};

class SizeListIngest : public ConfigTreeIngest, public testing::WithParamInterface<ListCase> {
protected:
    web::json::value WithList(const web::json::value& list) {
        web::json::value element = *GetParam().element;
        element["content"]["sizeList"] = list;
        return element;
    }
    /// The list as bytes, whichever way it is kept.
    std::string List() {
        if (GetParam().attribute == schema::kCableTraySizeList)
            return PackedFloats(FloatList("PSI", GetParam().id, GetParam().attribute).value_or(Floats{}));
        return Bytes("PSI", GetParam().id, GetParam().attribute).value_or("");
    }
};

TEST_P(SizeListIngest, AnEmptyOrMissingListRemovesTheOldOne) {
    web::json::value without = *GetParam().element;
    without["content"].erase("sizeList");
    for (const auto& element : {WithList(web::json::value::array()), WithList(web::json::value::null()), without}) {
        EXPECT_TRUE(Sync(GetParam().group, *GetParam().element));
        EXPECT_FALSE(List().empty());
        EXPECT_TRUE(Sync(GetParam().group, element));
        EXPECT_EQ(List(), "");
    }
}

TEST_P(SizeListIngest, ThreeHundredRowsFitAndOneMoreLeavesTheOldList) {
    std::vector<web::json::value> rows(300, web::json::value::object());
    EXPECT_TRUE(Sync(GetParam().group, WithList(web::json::value::array(rows))));
    const std::string before = List();
    EXPECT_EQ(before.size() % 300, 0U);
    EXPECT_FALSE(before.empty());
    rows.push_back(web::json::value::object());
    EXPECT_FALSE(Sync(GetParam().group, WithList(web::json::value::array(rows))));
    EXPECT_EQ(List(), before);
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{GetParam().failure}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"A list has more than 300 entries", GetParam().failure}));
}

TEST_P(SizeListIngest, AFailureIsReportedByTheGroupsName) {
    EXPECT_FALSE(Sync(GetParam().group, Without(*GetParam().element, "content")));
    EXPECT_EQ(
        TakeDebugWarningsWithFunction(),
        (Warnings{std::wstring(L"MepQbaseUtil::SyncSizeTableExceptPipeAndGroupTableItem: ") + GetParam().failure}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", GetParam().failure}));
}

TEST_P(SizeListIngest, AnElementThatIsNoObjectIsReported) {
    for (const char* element : {"null", "3", "'x'", "[]"})
        EXPECT_FALSE(util.SyncSizeTableExceptPipeAndGroupTableItem(&qb, GetParam().group, L"x", Row(element)));
    EXPECT_EQ(TakeDebugWarnings(), Warnings(4, GetParam().failure));
    EXPECT_EQ(Count("PSI"), 0);
}

TEST_P(SizeListIngest, WithoutAnIdNothingIsWritten) {
    for (const wchar_t* id : {static_cast<const wchar_t*>(nullptr), L""})
        EXPECT_FALSE(util.SyncSizeTableExceptPipeAndGroupTableItem(&qb, GetParam().group, id, *GetParam().element));
    EXPECT_EQ(TakeDebugWarnings(), Warnings(2, GetParam().failure));
    EXPECT_EQ(Count("PSI"), 0);
}

TEST_P(SizeListIngest, CreateTimeIsOptional) {
    EXPECT_TRUE(Sync(GetParam().group, Without(*GetParam().element, "CreateTime")));
    EXPECT_EQ(Double("PSI", GetParam().id, schema::kCreateTime), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Groups, SizeListIngest, testing::ValuesIn(kLists), [](const auto& group) {
    return std::string(group.param.group, group.param.group + std::wcslen(group.param.group));
});

struct RequiredCase {
    const wchar_t* group;
    const web::json::value* element;
    std::vector<const char*> keys;
    const wchar_t* failure;
};

TEST_F(ConfigTreeIngest, EachMemberOfTheContentIsRequired) {
    const RequiredCase cases[] = {
        {L"ductSeriesType", &kDuct, {"shape", "systemPress", "series"}, L"ductSeriesType:下载风管类型失败"},
        {L"electricWireType", &kWire, {"series", "currentUseTemperature"}, L"electricWireType:下载导线类型失败"},
        {L"cableTray", &kTray, {"type"}, L"cableTray:下载桥架类型失败"},
    };
    for (const RequiredCase& test : cases) {
        for (const char* key : test.keys) {
            web::json::value element = *test.element;
            element["content"].erase(key);
            EXPECT_FALSE(Sync(test.group, element)) << key;
            EXPECT_EQ(TakeDebugWarnings(), (Warnings{test.failure})) << key;
            element["content"][key] = web::json::value::null();
            EXPECT_FALSE(Sync(test.group, element)) << key;
            EXPECT_EQ(TakeDebugWarnings(), (Warnings{test.failure})) << key;
        }
    }
}

TEST_F(ConfigTreeIngest, NumbersOfTheContentAreClamped) {
    Sync(L"cableTray", With(kTray, "{'content':{'type':99999}}"));
    EXPECT_EQ(Short("PSI", L"t1", schema::kCableTrayShape), 32767);
}

struct GroupCase {
    const wchar_t* group;
    short mepType;
    short disciplineId;
    std::optional<double> createTime;
    const wchar_t* failure;
};

const GroupCase kGroups[] = {
    {L"pipeFittingGroup", 1, 2, 9.0, L"pipeFittingGroup:下载管配件组合的分组失败"},
    {L"havcFittingGroup", 1, 1, 9.0, L"havcFittingGroup:下载管配件组合的分组失败"},
    {L"ductFittingGroup", 2, 1, std::nullopt, L"ductFittingGroup:下载管配件组合的分组失败"},
};

class SerieGroupIngest : public ConfigTreeIngest, public testing::WithParamInterface<GroupCase> {};

TEST_P(SerieGroupIngest, IsWrittenWithItsTypeAndDiscipline) {
    EXPECT_TRUE(util.SyncSizeTableExceptPipeAndGroupTableItem(&qb, GetParam().group, L"ignored", kGroup));
    EXPECT_EQ(Ids("MSG"), (Texts{L"g1"}));
    EXPECT_EQ(Text("MSG", L"g1", schema::kName), L"Group");
    EXPECT_EQ(Short("MSG", L"g1", schema::kMEPType), GetParam().mepType);
    EXPECT_EQ(Short("MSG", L"g1", schema::kDisciplineId), GetParam().disciplineId);
    EXPECT_EQ(Double("MSG", L"g1", schema::kCreateTime), GetParam().createTime);
}

TEST_P(SerieGroupIngest, ASecondDownloadOverwrites) {
    Sync(GetParam().group, kGroup);
    EXPECT_TRUE(Sync(GetParam().group, With(kGroup, "{'text':'later'}")));
    EXPECT_EQ(Count("MSG"), 1);
    EXPECT_EQ(Text("MSG", L"g1", schema::kName), L"later");
}

TEST_P(SerieGroupIngest, ReadsNoContent) {
    EXPECT_TRUE(Sync(GetParam().group, Without(kGroup, "content")));
}

TEST_P(SerieGroupIngest, AMissingIdOrTextIsReported) {
    EXPECT_FALSE(Sync(GetParam().group, Without(kGroup, "ID")));
    EXPECT_FALSE(Sync(GetParam().group, Without(kGroup, "text")));
    EXPECT_EQ(TakeDebugWarnings(), Warnings(2, GetParam().failure));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", GetParam().failure, L"Key not found", GetParam().failure}));
    EXPECT_EQ(Count("MSG"), 0);
}

INSTANTIATE_TEST_SUITE_P(Groups, SerieGroupIngest, testing::ValuesIn(kGroups), [](const auto& group) {
    return std::string(group.param.group, group.param.group + std::wcslen(group.param.group));
});

} // namespace
} // namespace tolmtest
