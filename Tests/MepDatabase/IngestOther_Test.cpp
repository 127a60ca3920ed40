#include "Host/Components.h"
#include "Host/Session.h"
#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"
#include "Vorn/Files.h"

#include <fstream>
#include <iterator>

namespace tolmtest {
namespace {

namespace schema = tolm::schema;

const web::json::value kTemplate =
    Row("{'ID':'r1','SystemClassification':41,'SystemTypeId':'y1','SwitchComponentId1':'i1','SwitchComponentId2':'i2',"
        "'SwitchComponentId3':'i3','SwitchComponentType1':'t1','SwitchComponentType2':'t2','SwitchComponentType3':'t3',"
        "'Phase':4,'ProtectionMaterial':'pm','WireType':'w1','WireSize':2.5,'WireSpec':'ws','WireCountStr':'3x',"
        "'ConduitType':'c1','ConduitSizeDN':20,'IsApply':1,'LayingMode':'lm','DescriptionCHN':'no one reads this'}");

const web::json::value kListProduct =
    Row("{'ID':'k1','Name':'Hanger','Spacing':1200,'List':["
        "{'CategoryStandardCode':'cat','ComponentId':'a','ComponentTypeId':'at'},"
        "{'CategoryStandardCode':'unknown','ComponentId':'b','ComponentTypeId':'bt'}]}");

const web::json::value kEquipment =
    Row("{'ID':'k2','Name':'Unit','EquipmentComponentId':'e','EquipmentComponentTypeId':'et',"
        "'EquipmentCategoryStandardCode':'cat','SupplyAirTerminalComponentId':'s','SupplyAirTerminalComponentTypeId':"
        "'st','AirTerminalCategoryStandardCode':'cat2','ReturnAirTerminalComponentId':'r',"
        "'ReturnAirTerminalComponentTypeId':'rt','SupplySystemTypeId':'ss','SupplyAirTerminalDist1':1.5,"
        "'SupplyAirTerminalDist2':2,'SupplyAirTerminalNumber':3,'SupplyDuctTypeId':'sd','SupplyHoseLength':4.25,"
        "'ReturnSystemTypeId':'rs','ReturnDuctTypeId':'rd','ReturnHoseLength':5.5}");

class OtherContent : public IngestFixture {
protected:
    void SetUp() override {
        IngestFixture::SetUp();
        ProvideCategories({"cat", "cat2", "16353515", "16302510", "16352020", "16352030"});
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(path);
        ASSERT_TRUE(vorn::FileSystem::CreateDirectories(files));
    }
    void TearDown() override {
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
        IngestFixture::TearDown();
    }

    bool Add(const web::json::value& add) { return util.AddOtherContent(add.as_object(), &qb, products, files); }
    bool Add(const std::string& key, std::vector<web::json::value> elements) { return Add(Table(key, elements)); }
    bool Delete(const web::json::value& del) { return util.DeleteOtherContent(del.as_object(), &qb, products, files); }

    static web::json::value Table(const std::string& key, const std::vector<web::json::value>& elements) {
        web::json::value table = web::json::value::object();
        table[key] = web::json::value::array(elements);
        return table;
    }

    std::vector<tolm::TolmCombinedProduct> Products(const wstring& code = L"") {
        std::vector<tolm::TolmCombinedProduct> list;
        if (code.empty())
            for (const wchar_t* each : {L"16353515", L"16302510", L"16352020", L"16352030"})
                tolm::TolmComponentSqlUtil::ReadCombinedProductList(products, each, list);
        else
            tolm::TolmComponentSqlUtil::ReadCombinedProductList(products, code, list);
        return list;
    }
    Texts ProductIds(const wstring& code = L"") {
        Texts ids;
        for (const auto& product : Products(code))
            ids.push_back(product.Id);
        return ids;
    }

    bool FileExists(const wstring& name) { return vorn::FileInfo(files + L"/" + name).Exists(); }
    std::string FileContent(const wstring& name) {
        std::ifstream file(vorn::FileSystem::ToNative(files + L"/" + name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    const wstring products = folder.File(L"products.db");
    const wstring files = folder.File(L"files");
};

TEST_F(OtherContent, NoStoreIsReported) {
    const web::json::value none = web::json::value::object();
    EXPECT_FALSE(util.AddOtherContent(none.as_object(), nullptr, products, files));
    EXPECT_FALSE(util.DeleteOtherContent(none.as_object(), nullptr, products, files));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::AddOtherContent: qb为空", L"MepQbaseUtil::DeleteOtherContent: qb is null"}));
}

TEST_F(OtherContent, NothingToDoIsDone) {
    EXPECT_TRUE(Add(web::json::value::object()));
    EXPECT_TRUE(Delete(web::json::value::object()));
    EXPECT_TRUE(TakeLogLines().empty());
    EXPECT_FALSE(vorn::FileInfo(products).Exists());
}

// --- circuit templates ----------------------------------------------------------------------------------------------

struct TemplateText {
    const char* key;
    short attribute;
    const wchar_t* text;
};
constexpr TemplateText kTemplateTexts[] = {
    {"SystemTypeId", schema::kSystemTypeId, L"y1"},
    {"SwitchComponentId1", schema::kSwitchComponentId1, L"i1"},
    {"SwitchComponentId2", schema::kSwitchComponentId2, L"i2"},
    {"SwitchComponentId3", schema::kSwitchComponentId3, L"i3"},
    {"SwitchComponentType1", schema::kSwitchComponentType1, L"t1"},
    {"SwitchComponentType2", schema::kSwitchComponentType2, L"t2"},
    {"SwitchComponentType3", schema::kSwitchComponentType3, L"t3"},
    {"ProtectionMaterial", schema::kProtectionMaterial, L"pm"},
    {"WireType", schema::kWireTypeId, L"w1"},
    {"WireSpec", schema::kWireSpec, L"ws"},
    {"WireCountStr", schema::kWireCountStr, L"3x"},
    {"ConduitType", schema::kConduitTypeId, L"c1"},
    {"LayingMode", schema::kLayingMode, L"lm"},
};
struct TemplateNumber {
    const char* key;
    short attribute;
    short number;
};
constexpr TemplateNumber kTemplateNumbers[] = {
    {"SystemClassification", schema::kSystemClassification, 41},
    {"Phase", schema::kPhase, 4},
    {"ConduitSizeDN", schema::kConduitSizeDN, 20},
    {"IsApply", schema::kIsApply, 1},
};

TEST_F(OtherContent, ACircuitTemplateIsWrittenWithAllItsMembers) {
    EXPECT_TRUE(Add("CircuitTemplate", {kTemplate}));
    EXPECT_EQ(Ids("CRT"), (Texts{L"r1"}));
    for (const auto& member : kTemplateTexts)
        EXPECT_EQ(Text("CRT", L"r1", member.attribute), member.text) << member.key;
    for (const auto& member : kTemplateNumbers)
        EXPECT_EQ(Short("CRT", L"r1", member.attribute), member.number) << member.key;
}

TEST_F(OtherContent, ACircuitTemplateThatIsThereIsOverwritten) {
    Add("CircuitTemplate", {kTemplate, With(kTemplate, "{'LayingMode':'later'}")});
    EXPECT_EQ(Count("CRT"), 1);
    EXPECT_EQ(Text("CRT", L"r1", schema::kLayingMode), L"later");
}

TEST_F(OtherContent, EachMemberOfACircuitTemplateIsRequired) {
    std::vector<web::json::value> elements;
    for (const auto& member : kTemplateTexts)
        elements.push_back(Without(kTemplate, member.key));
    for (const auto& member : kTemplateNumbers)
        elements.push_back(Without(kTemplate, member.key));
    elements.push_back(Without(kTemplate, "ID"));
    EXPECT_TRUE(Add("CircuitTemplate", elements));
    EXPECT_EQ(Count("CRT"), 0);
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              Warnings(elements.size(), L"MepQbaseUtil::AddOtherContent: CircuitTemplate:下载回路模板失败"));
}

TEST_F(OtherContent, AFailedCircuitTemplateIsReportedAndTheWalkGoesOn) {
    EXPECT_TRUE(Add("CircuitTemplate", {web::json::value::null(), With(kTemplate, "{'ID':'bad','Phase':'4'}"),
                                        With(kTemplate, "{'ID':''}"), kTemplate}));
    EXPECT_EQ(Ids("CRT"), (Texts{L"r1"}));
    EXPECT_EQ(TakeDebugWarnings(), Warnings(3, L"CircuitTemplate:下载回路模板失败"));
    EXPECT_EQ(TakeLogLines(),
              (Lines{L"not an object", L"CircuitTemplate:下载回路模板失败", L"not a number",
                     L"CircuitTemplate:下载回路模板失败", L"The record can neither be found nor be made",
                     L"CircuitTemplate:下载回路模板失败"}));
}

TEST_F(OtherContent, TablesThatAreNoArraysAreReportedAndTheOthersGoThrough) {
    web::json::value add = Row("{'CircuitTemplate':{},'Combination_16353515':7,'BinaryTable':null}");
    EXPECT_TRUE(Add(add));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"CircuitTemplate:下载回路模板失败", L"Combination_:下载组合设备失败",
                                             L"BinaryTable:下载文件失败"}));
    EXPECT_TRUE(Delete(add));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"删除回路模板失败", L"删除组合设备失败", L"删除单文件失败"}));
}

TEST_F(OtherContent, DeletedCircuitTemplatesGoByTheirIds) {
    Add("CircuitTemplate", {kTemplate, With(kTemplate, "{'ID':'r2'}"), With(kTemplate, "{'ID':'r3'}")});
    EXPECT_TRUE(Delete(Row("{'CircuitTemplate':[{'ID':'r1'},{},{'ID':'never was'},{'ID':'r3'}]}")));
    EXPECT_EQ(Ids("CRT"), (Texts{L"r2"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteOtherContent: 删除回路模板失败"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", L"删除回路模板失败"}));
}

// --- combined products
// ------------------------------------------------------------------------------------------------

class CombinedProduct : public OtherContent {
protected:
    bool Read(const wstring& code, const web::json::value& element) {
        product = {};
        return util.GetCombinedProductFromJson(code, element, product);
    }
    /// Reads an element that is refused and gives the warning of it.
    Warnings Refusal(const wstring& code, const web::json::value& element) {
        EXPECT_FALSE(Read(code, element));
        return TakeDebugWarningsWithFunction();
    }
    static Warnings Warning(const std::wstring& text) { return {L"MepQbaseUtil::GetCombinedProductFromJson: " + text}; }

    tolm::TolmCombinedProduct product;
};

TEST_F(CombinedProduct, NeedsAnIdAndAName) {
    EXPECT_EQ(Refusal(L"16353515", Without(kListProduct, "ID")), Warning(L"ID为空"));
    EXPECT_EQ(Refusal(L"16353515", Without(kListProduct, "Name")), Warning(L"Name为空"));
    EXPECT_EQ(Refusal(L"16353515", web::json::value::null()), Warning(L"ID为空"));
}

TEST_F(CombinedProduct, NeedsTheCategoryService) {
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
    EXPECT_EQ(Refusal(L"any", kListProduct), Warning(L"pTolmCategoryInfoUtils为空"));
    EXPECT_EQ(product.Id, L"k1");
    EXPECT_EQ(product.Name, L"Hanger");
    EXPECT_EQ(product.categoryCode, L"any");
}

TEST_F(CombinedProduct, TheListFormReadsSpacingAndComponents) {
    for (const wchar_t* code : {L"16353515", L"16302510"}) {
        EXPECT_TRUE(Read(code, kListProduct));
        EXPECT_EQ(product.categoryCode, code);
        EXPECT_EQ(product.Id, L"k1");
        EXPECT_EQ(product.Name, L"Hanger");
        EXPECT_EQ(product.spacing, 1200);
        EXPECT_EQ(product.components, (std::vector<tolm::TolmComponentReference>{
                                          {L"cat", L"a", L"at", L"name of cat", L"english name of cat"},
                                          {L"unknown", L"b", L"bt", L"", L""}}));
    }
}

TEST_F(CombinedProduct, TheListFormNeedsSpacingAndAList) {
    EXPECT_EQ(Refusal(L"16353515", Without(kListProduct, "Spacing")), Warning(L"ID为空"));
    EXPECT_EQ(Refusal(L"16302510", Without(kListProduct, "List")), Warning(L"ID为空"));
    EXPECT_EQ(Refusal(L"16353515", With(kListProduct, "{'List':[]}")), Warning(L"partList.size()为0"));
}

TEST_F(CombinedProduct, TheListFormThrowsForAnythingElse) {
    EXPECT_THROW(Read(L"16353515", With(kListProduct, "{'Spacing':'1'}")), web::json::json_exception);
    EXPECT_THROW(Read(L"16353515", With(kListProduct, "{'List':{}}")), web::json::json_exception);
    EXPECT_THROW(Read(L"16353515", With(kListProduct, "{'List':[{}]}")), web::json::json_exception);
    EXPECT_THROW(Read(L"16353515", With(kListProduct, "{'ID':1}")), web::json::json_exception);
}

TEST_F(CombinedProduct, TheEquipmentFormReadsItsReferencesAndFields) {
    for (const wchar_t* code : {L"16352020", L"16352030"}) {
        EXPECT_TRUE(Read(code, kEquipment));
        tolm::TolmCombinedProduct expected;
        expected.categoryCode = code;
        expected.Id = L"k2";
        expected.Name = L"Unit";
        expected.equipment = {L"cat", L"e", L"et", L"name of cat", L"english name of cat"};
        expected.supplyAirTerminal = {L"cat2", L"s", L"st", L"name of cat2", L"english name of cat2"};
        expected.returnAirTerminal = {L"cat2", L"r", L"rt", L"name of cat2", L"english name of cat2"};
        expected.supplySystemTypeId = L"ss";
        expected.supplyHoseLength = 4.25;
        expected.supplyAirTerminalNumber = 3;
        expected.supplyAirTerminalDist1 = 1.5;
        expected.supplyAirTerminalDist2 = 2.0;
        expected.supplyDuctTypeId = L"sd";
        expected.returnSystemTypeId = L"rs";
        expected.returnDuctTypeId = L"rd";
        expected.returnHoseLength = 5.5;
        EXPECT_EQ(product, expected);
    }
}

TEST_F(CombinedProduct, AnEquipmentRowAsItIsSentAtCreationGivesIdAndNameAlone) {
    EXPECT_TRUE(Read(L"16352020", Row("{'ID':'k','Name':'n','EquipmentId':'n','AirTerminal1':'n','AirTerminal2':'n',"
                                      "'List':[]}")));
    tolm::TolmCombinedProduct expected;
    expected.categoryCode = L"16352020";
    expected.Id = L"k";
    expected.Name = L"n";
    EXPECT_EQ(product, expected);
}

TEST_F(CombinedProduct, AnEquipmentRowNeedsAllItsOtherMembers) {
    for (const auto& [key, value] : kEquipment.as_object()) {
        if (key == "ID" || key == "Name" || key == "EquipmentComponentId")
            continue;
        EXPECT_THROW(Read(L"16352030", Without(kEquipment, key)), web::json::json_exception) << key;
    }
}

TEST_F(CombinedProduct, AnyOtherCodeGivesIdAndNameAlone) {
    EXPECT_TRUE(Read(L"1635202", With(kEquipment, "{'List':[]}")));
    tolm::TolmCombinedProduct expected;
    expected.categoryCode = L"1635202";
    expected.Id = L"k2";
    expected.Name = L"Unit";
    EXPECT_EQ(product, expected);
}

web::json::value AllCombinations() {
    web::json::value add = web::json::value::object();
    add["Combination_16353515"] = web::json::value::array({kListProduct});
    add["Combination_16302510"] = web::json::value::array({With(kListProduct, "{'ID':'k3'}")});
    add["Combination_16352020"] = web::json::value::array({kEquipment});
    add["Combination_16352030"] = web::json::value::array({With(kEquipment, "{'ID':'k4'}")});
    add["Combination_1"] = web::json::value::array({With(kEquipment, "{'ID':'unread'}")});
    return add;
}

TEST_F(CombinedProduct, AllFourKeysReachTheDatabase) {
    EXPECT_TRUE(Add(AllCombinations()));
    EXPECT_EQ(ProductIds(), (Texts{L"k1", L"k3", L"k2", L"k4"}));
    EXPECT_EQ(Products(L"16353515").at(0).spacing, 1200);
    EXPECT_EQ(Products(L"16352030").at(0).equipment.componentId, L"e");
}

TEST_F(CombinedProduct, AllFourKeysStandOrFallInOneCall) {
    web::json::value add = AllCombinations();
    add["Combination_16352030"] = Row("[{'ID':7,'Name':'n'}]");
    EXPECT_TRUE(Add(add));
    EXPECT_TRUE(ProductIds().empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::AddOtherContent: Combination_:下载组合设备失败"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"not a string", L"Combination_:下载组合设备失败"}));
}

TEST_F(CombinedProduct, AnElementWithoutANameIsSkippedAndTheOthersGoThrough) {
    EXPECT_TRUE(Add("Combination_16353515", {Without(kListProduct, "Name"), With(kListProduct, "{'ID':'k5'}")}));
    EXPECT_EQ(ProductIds(), (Texts{L"k5"}));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"Name为空"}));
}

TEST_F(CombinedProduct, AFailureOfTheSectionLeavesTheFiles) {
    EXPECT_TRUE(Add(Row("{'Combination_16353515':{},'BinaryTable':[{'fileName':'f','length':3,'data':'Zm9v'}]}")));
    EXPECT_EQ(FileContent(L"f"), "foo");
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"Combination_:下载组合设备失败"}));
}

TEST_F(CombinedProduct, ADatabaseThatTakesNothingIsNotLookedAt) {
    ASSERT_TRUE(vorn::FileSystem::CreateDirectories(products));
    web::json::value add = AllCombinations();
    add["BinaryTable"] = Row("[{'fileName':'f','length':3,'data':'Zm9v'}]");
    EXPECT_TRUE(Add(add));
    EXPECT_EQ(FileContent(L"f"), "foo");
    EXPECT_TRUE(Delete(Row("{'Combination_16353515':[{'ID':'k1'}],'BinaryTable':[{'fileName':'f'}]}")));
    EXPECT_FALSE(FileExists(L"f"));
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(CombinedProduct, DeletedProductsGoByCategory) {
    Add(AllCombinations());
    EXPECT_TRUE(Delete(Row("{'Combination_16353515':[{'ID':'k1'},{'ID':'k3'}],'Combination_16352020':[{'ID':'k2'}]}")));
    EXPECT_EQ(ProductIds(), (Texts{L"k3", L"k4"}));
}

TEST_F(CombinedProduct, ProductsOfACategoryThatNobodyKnowsGoByItsCode) {
    Add(AllCombinations());
    ProvideCategories({"other"});
    ASSERT_TRUE(vorn::FileSystem::RemoveFile(folder.File(L"components.db")));
    ProvideCategories({"other"});
    EXPECT_TRUE(Delete(Row("{'Combination_16353515':[{'ID':'k1'}]}")));
    EXPECT_EQ(ProductIds(), (Texts{L"k3", L"k2", L"k4"}));
}

TEST_F(CombinedProduct, DeletionNeedsTheCategoryService) {
    Add(AllCombinations());
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
    EXPECT_TRUE(Delete(Row("{'CircuitTemplate':[]}")));
    EXPECT_TRUE(TakeDebugWarnings().empty());
    EXPECT_TRUE(Delete(Row("{'Combination_16353515':[{'ID':'k1'}]}")));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteOtherContent: pUtil为空"}));
    EXPECT_EQ(ProductIds().size(), 4U);
}

TEST_F(CombinedProduct, AFailedDeletionIsReportedAndNoneIsRemoved) {
    Add(AllCombinations());
    EXPECT_TRUE(Delete(Row("{'Combination_16353515':[{'ID':'k1'}],'Combination_16352020':[{}]}")));
    EXPECT_EQ(ProductIds().size(), 4U);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteOtherContent: 删除组合设备失败"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found", L"删除组合设备失败"}));
}

// --- binary files
// -----------------------------------------------------------------------------------------------------

TEST_F(OtherContent, AFileIsWrittenFromBase64) {
    EXPECT_TRUE(Add("BinaryTable", {Row("{'fileName':'a.rfa','length':6,'data':'Zm9vYmFy'}"),
                                    Row("{'fileName':'empty','length':0,'data':''}")}));
    EXPECT_EQ(FileContent(L"a.rfa"), "foobar");
    EXPECT_TRUE(FileExists(L"empty"));
    EXPECT_EQ(FileContent(L"empty"), "");
}

TEST_F(OtherContent, AFileThatIsThereIsOverwrittenAndTheStatedLengthHasNoEffect) {
    Add("BinaryTable", {Row("{'fileName':'f','length':6,'data':'Zm9vYmFy'}")});
    EXPECT_TRUE(Add("BinaryTable", {Row("{'fileName':'f','length':99,'data':'Zm9v'}")}));
    EXPECT_EQ(FileContent(L"f"), "foo");
}

TEST_F(OtherContent, AFailedFileIsReportedAndTheWalkGoesOn) {
    EXPECT_TRUE(Add("BinaryTable", {Row("{'length':3,'data':'Zm9v'}"), Row("{'fileName':'f','data':'Zm9v'}"),
                                    Row("{'fileName':'f','length':3}"), Row("{'fileName':'../f','length':3,'data':''}"),
                                    Row("null"), Row("{'fileName':'g','length':3,'data':'Zm9v'}")}));
    EXPECT_FALSE(FileExists(L"f"));
    EXPECT_EQ(FileContent(L"g"), "foo");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warnings(5, L"MepQbaseUtil::AddOtherContent: BinaryTable:下载文件失败"));
}

TEST_F(OtherContent, ADeletedFileIsRemovedAndNoRecordTouched) {
    Add("CircuitTemplate", {kTemplate});
    Add("BinaryTable", {Row("{'fileName':'f','length':3,'data':'Zm9v'}")});
    EXPECT_TRUE(Delete(Row("{'BinaryTable':[{'fileName':'never was'},{'fileName':'f'}]}")));
    EXPECT_FALSE(FileExists(L"f"));
    EXPECT_EQ(Count("CRT"), 1);
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(OtherContent, AFailedRemovalIsReportedAndTheWalkGoesOn) {
    Add("BinaryTable", {Row("{'fileName':'f','length':3,'data':'Zm9v'}")});
    EXPECT_TRUE(Delete(Row("{'BinaryTable':[{},{'fileName':'../set.db'},{'fileName':'f'}]}")));
    EXPECT_FALSE(FileExists(L"f"));
    EXPECT_TRUE(vorn::FileInfo(path).Exists());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warnings(2, L"MepQbaseUtil::DeleteOtherContent: 删除单文件失败"));
}

TEST_F(OtherContent, TheFilesOfTheDatasetThatIsSynchronisedAreKept) {
    const wstring dataset = files + L"\\other.db";
    const auto add = Row("{'BinaryTable':[{'fileName':'other.db','length':3,'data':'Zm9v'}]}");
    const auto del = Row("{'BinaryTable':[{'fileName':'other_Status.db'}]}");
    EXPECT_TRUE(util.AddOtherContent(add.as_object(), &qb, products, files, dataset));
    EXPECT_TRUE(util.DeleteOtherContent(del.as_object(), &qb, products, files, dataset));
    EXPECT_TRUE(util.MergeOtherContent(add, del, &qb, nullptr, products, files, dataset));
    EXPECT_FALSE(FileExists(L"other.db"));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"BinaryTable:下载文件失败", L"删除单文件失败", L"删除单文件失败",
                                             L"BinaryTable:下载文件失败"}));
}

} // namespace
} // namespace tolmtest
