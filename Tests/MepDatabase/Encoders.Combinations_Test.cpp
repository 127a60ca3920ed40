#include "Platform/Support/ComponentSamples.h"
#include "StoreSupport/CircuitTemplates.h"
#include "Support/DebugWarnings.h"

#include "MepDatabase/Encoders.h" // after the test framework, which its macro U would break

#include <limits>
#include <set>

namespace {

using namespace tolm;
using namespace tolmtest;
using web::json::value;
using Keys = std::set<std::string>;

const value& RowsOf(const value& encoded) {
    EXPECT_EQ(encoded.as_object().size(), 1U);
    return encoded.at("rows");
}

value OnlyRow(const value& encoded) {
    const auto& rows = RowsOf(encoded);
    EXPECT_EQ(rows.as_array().size(), 1U);
    return rows.at(0);
}

Keys KeysOf(const value& row) {
    Keys keys;
    for (const auto& [key, unused] : row.as_object())
        keys.insert(key);
    return keys;
}

value CreatedCircuit(const ITolmProjectSettingCircuitTemplate& circuit) {
    return OnlyRow(GetCreatedCircuitTemplateListJasonValue({&circuit}));
}

// --- circuit templates
// ------------------------------------------------------------------------------------------------

TEST(CircuitTemplateRows, EveryKeyHasItsValue) {
    const auto row = CreatedCircuit(*FullCircuitTemplate(L"t1"));
    EXPECT_EQ(row, value::parse(R"({"ID":"t1","SystemClassification":43,"SystemTypeId":"system-1",
        "SwitchComponentId1":"switch-1","SwitchComponentId2":"switch-2","SwitchComponentId3":"switch-3",
        "SwitchComponentType1":"断路器 1","SwitchComponentType2":"断路器 2","SwitchComponentType3":"断路器 3",
        "Phase":4,"ProtectionMaterial":"NH","WireType":"wire-1","WireSize":2.5,"WireSpec":"4x16+1x10",
        "WireCountStr":"3+1","ConduitType":"conduit-1","ConduitSizeDN":25,"IsApply":1,"LayingMode":"CC",
        "DescriptionCHN":"照明系统"})"));
    for (const char* key : {"SystemClassification", "Phase", "ConduitSizeDN", "IsApply"})
        EXPECT_TRUE(row.at(key).is_integer()) << key;
}

TEST(CircuitTemplateRows, TheWireSizeIsTheSameWhateverTheTemplateHolds) {
    for (const wchar_t* spec : {L"2.5", L"16", L""})
        EXPECT_EQ(CreatedCircuit(*CircuitTemplate(L"t", spec)).at("WireSize").serialize(), "2.5");
}

TEST(CircuitTemplateRows, AnEditedRowIsWrappedAndHasTheSameContent) {
    const auto circuit = FullCircuitTemplate(L"t1");
    const auto edited = OnlyRow(GetEditedCircuitTemplateListJasonValue({circuit.get()}));
    EXPECT_EQ(KeysOf(edited), (Keys{"id", "data"}));
    EXPECT_EQ(edited.at("id").as_string(), "t1");
    EXPECT_EQ(edited.at("data"), CreatedCircuit(*circuit));
}

TEST(CircuitTemplateRows, StandInTheOrderOfTheListAndANullTemplateLeavesANullRow) {
    const auto first = CircuitTemplate(L"t1");
    const auto third = CircuitTemplate(L"t3");
    const auto created = GetCreatedCircuitTemplateListJasonValue({first.get(), nullptr, third.get()});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetCreatedCircuitTemplateListJasonValue: pTemplate为空"}));
    const auto edited = GetEditedCircuitTemplateListJasonValue({first.get(), nullptr, third.get()});
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetEditedCircuitTemplateListJasonValue: pTemplate为空"}));
    EXPECT_EQ(RowsOf(created).at(0).at("ID").as_string(), "t1");
    EXPECT_TRUE(RowsOf(created).at(1).is_null());
    EXPECT_EQ(RowsOf(created).at(2).at("ID").as_string(), "t3");
    EXPECT_TRUE(RowsOf(edited).at(1).is_null());
    EXPECT_EQ(RowsOf(edited).at(2).at("id").as_string(), "t3");
}

TEST(CircuitTemplateRows, OfNoTemplatesAreNone) {
    EXPECT_EQ(GetCreatedCircuitTemplateListJasonValue({}).serialize(), R"({"rows":[]})");
    EXPECT_EQ(GetEditedCircuitTemplateListJasonValue({}).serialize(), R"({"rows":[]})");
}

// --- combined products, list form
// -------------------------------------------------------------------------------------

const value kListRow = value::parse(R"({"ID":"p1","Name":"组合 p1","Spacing":300,"List":[
    {"CategoryStandardCode":"b-code","ComponentId":"b-id","ComponentTypeId":"b-type"},
    {"CategoryStandardCode":"a-code","ComponentId":"a-id","ComponentTypeId":"a-type"}]})");

TEST(CombinationRows, OfTheListFormAreTheSameCreatedAndEdited) {
    for (const wchar_t* code : {L"16353515", L"16302510"}) {
        const auto product = MakeListProduct(L"p1", code);
        EXPECT_EQ(OnlyRow(GetCreatedCombinationListJasonValue(code, {product})), kListRow);
        const auto edited = OnlyRow(GetEditedCombinationListJasonValue(code, {product}));
        EXPECT_EQ(KeysOf(edited), (Keys{"id", "data"}));
        EXPECT_EQ(edited.at("id").as_string(), "p1");
        EXPECT_EQ(edited.at("data"), kListRow);
        EXPECT_TRUE(edited.at("data").at("Spacing").is_integer());
    }
}

TEST(CombinationRows, OfAListFormWithoutComponentsHaveAnEmptyList) {
    TolmCombinedProduct product;
    product.Id = L"p";
    EXPECT_EQ(OnlyRow(GetCreatedCombinationListJasonValue(L"16353515", {product})).serialize(),
              R"({"ID":"p","List":[],"Name":"","Spacing":0})");
}

// --- combined products, terminal form
// ---------------------------------------------------------------------------------

TEST(CombinationRows, OfACreatedTerminalFormRepeatTheName) {
    auto product = MakeEquipmentProduct(L"e1");
    product.components = {MakeReference(L"c")};
    for (const wchar_t* code : {L"16352020", L"16352030"}) {
        const auto row = OnlyRow(GetCreatedCombinationListJasonValue(code, {product}));
        EXPECT_EQ(row, value::parse(R"({"ID":"e1","Name":"风机盘管","EquipmentId":"风机盘管",
            "AirTerminal1":"风机盘管","AirTerminal2":"风机盘管","List":[
            {"CategoryStandardCode":"c-code","ComponentId":"c-id","ComponentTypeId":"c-type"}]})"));
    }
}

TEST(CombinationRows, OfAnEditedTerminalFormTellAllPartsAndHaveNoList) {
    const auto product = MakeEquipmentProduct(L"e1");
    for (const wchar_t* code : {L"16352020", L"16352030"}) {
        const auto row = OnlyRow(GetEditedCombinationListJasonValue(code, {product}));
        EXPECT_EQ(row.at("id").as_string(), "e1");
        EXPECT_EQ(row.at("data"), value::parse(R"({"ID":"e1","Name":"风机盘管",
            "EquipmentComponentId":"equipment-id","EquipmentComponentTypeId":"equipment-type",
            "EquipmentCategoryStandardCode":"equipment-code","SupplyAirTerminalComponentId":"supply-id",
            "SupplyAirTerminalComponentTypeId":"supply-id","AirTerminalCategoryStandardCode":"supply-code",
            "ReturnAirTerminalComponentId":"return-id","ReturnAirTerminalComponentTypeId":"return-type",
            "SupplySystemTypeId":"supply-system","SupplyAirTerminalDist1":800.25,"SupplyAirTerminalDist2":0.1,
            "SupplyAirTerminalNumber":3,"SupplyDuctTypeId":"supply-duct","SupplyHoseLength":1200.5,
            "ReturnSystemTypeId":"return-system","ReturnDuctTypeId":"return-duct","ReturnHoseLength":-7.75})"));
        EXPECT_TRUE(row.at("data").at("SupplyAirTerminalNumber").is_integer());
    }
}

TEST(CombinationRows, AWholeLengthIsADoubleAndOneThatIsNoNumberNeverGoesOut) {
    auto product = MakeEquipmentProduct(L"e1");
    product.supplyHoseLength = 1200.0;
    product.returnHoseLength = std::numeric_limits<double>::quiet_NaN();
    product.supplyAirTerminalDist1 = std::numeric_limits<double>::infinity();
    const auto row = OnlyRow(GetEditedCombinationListJasonValue(L"16352020", {product})).at("data");
    EXPECT_TRUE(row.at("SupplyHoseLength").is_double());
    EXPECT_EQ(row.at("ReturnHoseLength").as_double(), 0.0);
    EXPECT_EQ(row.at("SupplyAirTerminalDist1").as_double(), std::numeric_limits<double>::max());
    EXPECT_EQ(row.serialize().find("inf"), std::string::npos);
    EXPECT_EQ(row.serialize().find("nan"), std::string::npos);
}

TEST(CombinationRows, OfNoProductsAreNone) {
    for (const wchar_t* code : {L"16353515", L"16352020", L"unknown"}) {
        EXPECT_EQ(GetCreatedCombinationListJasonValue(code, {}).serialize(), R"({"rows":[]})");
        EXPECT_EQ(GetEditedCombinationListJasonValue(code, {}).serialize(), R"({"rows":[]})");
    }
}

TEST(CombinationRows, OfAnUnknownCodeAreNulls) {
    const std::vector<TolmCombinedProduct> products{MakeListProduct(L"1"), MakeEquipmentProduct(L"2")};
    for (const wchar_t* code : {L"16353516", L"1635351", L"16352020 ", L""}) {
        EXPECT_EQ(GetCreatedCombinationListJasonValue(code, products).serialize(), R"({"rows":[null,null]})");
        EXPECT_EQ(GetEditedCombinationListJasonValue(code, products).serialize(), R"({"rows":[null,null]})");
    }
}

TEST(CombinationRows, StandInTheOrderOfTheList) {
    const auto rows =
        GetCreatedCombinationListJasonValue(L"16353515", {MakeListProduct(L"b"), MakeListProduct(L"a")}).at("rows");
    EXPECT_EQ(rows.at(0).at("ID").as_string(), "b");
    EXPECT_EQ(rows.at(1).at("ID").as_string(), "a");
}

} // namespace
