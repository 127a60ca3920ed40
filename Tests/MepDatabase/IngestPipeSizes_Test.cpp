#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"

#include <limits>

namespace tolmtest {
namespace {

namespace schema = tolm::schema;

const web::json::value kMaterial =
    Row("{'ID':'m1','groupName':'MaterialSeries','parentID':'','text':'Steel','CreateTime':1700000000,'content':{}}");
const web::json::value kSizes = Row("{'ID':'s1','groupName':'MaterialSeries','parentID':'m1','text':'Steel 10',"
                                    "'CreateTime':1700000001,'content':{'roughness':0.25,'sizeList':["
                                    "{'DN':15.0,'OD':21.3,'ID':16.1,'Thickness':2.6},"
                                    "{'DN':20,'OD':26.9,'ID':21.7,'Thickness':2.6}]}}");

class PipeSizeIngest : public IngestFixture {
protected:
    void Sync(const web::json::value& element, short disciplineId = 2) {
        util.SyncPipeSizeTableItem(&qb, disciplineId, element);
    }
    /// Syncs a size table whose content has this "sizeList".
    void SyncList(const std::string& list) { Sync(With(kSizes, "{'content':{'sizeList':" + list + "}}")); }
    std::optional<std::string> Sizes() { return Bytes("PSI", L"s1", schema::kPipeSizeList); }
};

TEST_F(PipeSizeIngest, AnElementWithoutParentIsAMaterial) {
    Sync(kMaterial);
    EXPECT_EQ(Text("MTS", L"m1", schema::kName), L"Steel");
    EXPECT_EQ(Short("MTS", L"m1", schema::kMEPType), 1);
    EXPECT_EQ(Short("MTS", L"m1", schema::kDisciplineId), 2);
    EXPECT_EQ(Double("MTS", L"m1", schema::kCreateTime), 1700000000.0);
    EXPECT_EQ(Count("PSI"), 0);
}

TEST_F(PipeSizeIngest, AMaterialReadsNoContent) {
    Sync(Without(kMaterial, "content"));
    EXPECT_TRUE(Exists("MTS", L"m1"));
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(PipeSizeIngest, TheDisciplineIsTheCallers) {
    Sync(kMaterial, 1);
    Sync(kSizes, 1);
    EXPECT_EQ(Short("MTS", L"m1", schema::kDisciplineId), 1);
    EXPECT_EQ(Short("PSI", L"s1", schema::kDisciplineId), 1);
}

TEST_F(PipeSizeIngest, AnElementWithParentIsASizeTable) {
    Sync(kSizes);
    EXPECT_EQ(Text("PSI", L"s1", schema::kName), L"Steel 10");
    EXPECT_EQ(Short("PSI", L"s1", schema::kMEPType), 1);
    EXPECT_EQ(Short("PSI", L"s1", schema::kDisciplineId), 2);
    EXPECT_EQ(Double("PSI", L"s1", schema::kCreateTime), 1700000001.0);
    EXPECT_EQ(Text("PSI", L"s1", schema::kMaterialId), L"m1");
    EXPECT_EQ(Double("PSI", L"s1", schema::kRoughness), 0.25);
    EXPECT_EQ(Sizes(), PackedFloats({15.0F, 21.3F, 16.1F, 2.6F, 20.0F, 26.9F, 21.7F, 2.6F}));
    EXPECT_EQ(Count("MTS"), 0);
}

TEST_F(PipeSizeIngest, CreateTimeIsOptional) {
    Sync(Without(kMaterial, "CreateTime"));
    EXPECT_EQ(Double("MTS", L"m1", schema::kCreateTime), std::nullopt);
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(PipeSizeIngest, AnAbsentCreateTimeLeavesTheOldOne) {
    Sync(kMaterial);
    Sync(Without(kMaterial, "CreateTime"));
    EXPECT_EQ(Double("MTS", L"m1", schema::kCreateTime), 1700000000.0);
}

TEST_F(PipeSizeIngest, CreateTimeIsAnUnsigned64BitNumberKeptAsADouble) {
    Sync(With(kMaterial, "{'CreateTime':18446744073709551615}"));
    EXPECT_EQ(Double("MTS", L"m1", schema::kCreateTime), 18446744073709551615.0);
    Sync(With(kMaterial, "{'CreateTime':1700000000.9}"));
    EXPECT_EQ(Double("MTS", L"m1", schema::kCreateTime), 1700000000.0);
    Sync(With(kMaterial, "{'CreateTime':-5}"));
    EXPECT_EQ(Double("MTS", L"m1", schema::kCreateTime), 0.0);
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(PipeSizeIngest, DownloadingAnElementTwiceLeavesOneRecordWithTheLaterValues) {
    Sync(kSizes);
    Sync(With(kSizes, "{'text':'later','parentID':'m2'}"));
    EXPECT_EQ(Count("PSI"), 1);
    EXPECT_EQ(Text("PSI", L"s1", schema::kName), L"later");
    EXPECT_EQ(Text("PSI", L"s1", schema::kMaterialId), L"m2");
}

TEST_F(PipeSizeIngest, AnEmptySizeListClearsTheOldOne) {
    Sync(kSizes);
    SyncList("[]");
    EXPECT_EQ(Sizes(), std::nullopt);
}

TEST_F(PipeSizeIngest, AMissingSizeListClearsTheOldOne) {
    Sync(kSizes);
    Sync(With(kSizes, "{'content':{}}"));
    EXPECT_EQ(Sizes(), std::nullopt);
}

TEST_F(PipeSizeIngest, ASizeListThatIsNoArrayClearsTheOldOne) {
    for (const char* list : {"null", "'[]'", "{}", "3"}) {
        Sync(kSizes);
        SyncList(list);
        EXPECT_EQ(Sizes(), std::nullopt) << list;
    }
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(PipeSizeIngest, ANullContentClearsTheListAndKeepsTheRoughness) {
    Sync(kSizes);
    Sync(With(kSizes, "{'content':null}"));
    EXPECT_EQ(Sizes(), std::nullopt);
    EXPECT_EQ(Double("PSI", L"s1", schema::kRoughness), 0.25);
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(PipeSizeIngest, AWholeNumberAsRoughnessIsSkippedAndADoubleIsWritten) {
    Sync(kSizes);
    Sync(With(kSizes, "{'content':{'roughness':1}}"));
    EXPECT_EQ(Double("PSI", L"s1", schema::kRoughness), 0.25);
    Sync(With(kSizes, "{'content':{'roughness':1.0}}"));
    EXPECT_EQ(Double("PSI", L"s1", schema::kRoughness), 1.0);
}

TEST_F(PipeSizeIngest, ARoughnessThatIsMissingOrNoNumberIsSkipped) {
    Sync(kSizes);
    for (const char* content : {"{}", "{'roughness':null}", "{'roughness':'0.3'}", "{'roughness':[]}"})
        Sync(With(kSizes, std::string("{'content':") + content + "}"));
    EXPECT_EQ(Double("PSI", L"s1", schema::kRoughness), 0.25);
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(PipeSizeIngest, ACellMayBeText) {
    SyncList("[{'DN':'25 ','OD':' 33.7','ID':'29.1','Thickness':'2.3'}]");
    EXPECT_EQ(Sizes(), PackedFloats({25.0F, 33.7F, 29.1F, 2.3F}));
}

TEST_F(PipeSizeIngest, TheTextOfADNIsAnInteger) {
    SyncList("[{'DN':'25.9','OD':'25.9','ID':'','Thickness':'x'}]");
    EXPECT_EQ(Sizes(), PackedFloats({25.0F, 25.9F, 0.0F, 0.0F}));
}

TEST_F(PipeSizeIngest, AMissingOrForeignCellIsZero) {
    SyncList("[{'DN':15},{'OD':true,'ID':null,'Thickness':[]},{}]");
    EXPECT_EQ(Sizes(), PackedFloats({15.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F}));
}

TEST_F(PipeSizeIngest, NumbersThatNoFloatHoldsAreClamped) {
    constexpr float most = std::numeric_limits<float>::max();
    SyncList("[{'DN':1e300,'OD':-1e300,'ID':'1e999','Thickness':1e-300}]");
    EXPECT_EQ(Sizes(), PackedFloats({most, -most, most, 0.0F}));
}

std::string RowsOf(int count) {
    std::string list = "[";
    for (int i = 0; i < count; ++i)
        list += (i > 0 ? ",{'DN':" : "{'DN':") + std::to_string(i) + "}";
    return list + "]";
}

TEST_F(PipeSizeIngest, ThreeHundredRowsFit) {
    SyncList(RowsOf(300));
    Floats expected;
    for (int i = 0; i < 300; ++i)
        expected.insert(expected.end(), {static_cast<float>(i), 0.0F, 0.0F, 0.0F});
    EXPECT_EQ(Sizes(), PackedFloats(expected));
}

TEST_F(PipeSizeIngest, MoreThanThreeHundredRowsLeaveTheOldList) {
    Sync(kSizes);
    const auto before = Sizes();
    SyncList(RowsOf(301));
    EXPECT_EQ(Sizes(), before);
    EXPECT_EQ(TakeLogLines(), (Lines{L"A list has more than 300 entries"}));
}

TEST_F(PipeSizeIngest, ARowThatIsNoObjectLeavesTheOldList) {
    Sync(kSizes);
    const auto before = Sizes();
    SyncList("[{'DN':1},7]");
    EXPECT_EQ(Sizes(), before);
    EXPECT_EQ(TakeLogLines(), (Lines{L"not an object"}));
}

TEST_F(PipeSizeIngest, AMissingKeyGoesToTheLogAlone) {
    for (const char* key : {"ID", "parentID", "text"})
        Sync(Without(kMaterial, key));
    EXPECT_EQ(Count("MTS"), 0);
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", L"Key not found", L"Key not found"}));
}

TEST_F(PipeSizeIngest, WhatWasSavedBeforeAFailureStays) {
    Sync(Without(kSizes, "content"));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found"}));
    EXPECT_EQ(Text("PSI", L"s1", schema::kName), L"Steel 10");
    EXPECT_EQ(Text("PSI", L"s1", schema::kMaterialId), L"m1");
}

TEST_F(PipeSizeIngest, ASpoiltListLeavesTheOldContentAndTheNewName) {
    Sync(kSizes);
    const auto sizes = Sizes();
    const auto roughness = Double("PSI", L"s1", schema::kRoughness);
    Sync(With(kSizes, "{'text':'later','parentID':'m2','content':{'roughness':9.5,'sizeList':[7]}}"));
    EXPECT_EQ(Text("PSI", L"s1", schema::kName), L"later");
    EXPECT_EQ(Text("PSI", L"s1", schema::kMaterialId), L"m2");
    EXPECT_NE(roughness, std::nullopt);
    EXPECT_EQ(Double("PSI", L"s1", schema::kRoughness), roughness);
    EXPECT_EQ(Sizes(), sizes);
    EXPECT_EQ(TakeLogLines(), (Lines{L"not an object"}));
}

TEST_F(PipeSizeIngest, ValuesOfAnotherTypeSpoilTheElement) {
    Sync(With(kMaterial, "{'ID':1}"));
    Sync(With(kMaterial, "{'parentID':null}"));
    Sync(With(kMaterial, "{'text':[]}"));
    Sync(With(kMaterial, "{'CreateTime':'now'}"));
    Sync(With(kSizes, "{'content':'x'}"));
    EXPECT_EQ(Count("MTS"), 0);
    EXPECT_EQ(TakeLogLines(),
              (Lines{L"not a string", L"not a string", L"not a string", L"not a number", L"not an object"}));
}

TEST_F(PipeSizeIngest, AnEmptyIdTouchesNoOtherRecord) {
    Sync(kMaterial);
    Sync(With(kMaterial, "{'ID':'','text':'other'}"));
    EXPECT_EQ(Count("MTS"), 1);
    EXPECT_EQ(Text("MTS", L"m1", schema::kName), L"Steel");
    EXPECT_EQ(TakeLogLines(), (Lines{L"The record can neither be found nor be made"}));
}

TEST_F(PipeSizeIngest, NoStoreOrANullElementIsNothing) {
    util.SyncPipeSizeTableItem(nullptr, 2, kMaterial);
    Sync(web::json::value::null());
    EXPECT_EQ(Count("MTS"), 0);
    EXPECT_TRUE(TakeLogLines().empty());
}

} // namespace
} // namespace tolmtest
