#include "MepDataSetInterface/TolmProjectSettingCircuitTemplate.h"

#include "MepDataSetInterface/RecordTestSupport.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace {

using namespace tolm;
using namespace tolmtest;
using Template = ITolmProjectSettingCircuitTemplate;

struct TextField {
    const char* name;
    wstring (Template::*get)() const;
    void (Template::*set)(wstring&);
    const wchar_t* defaultText;
};

const TextField kTextFields[] = {
    {"system type id", &Template::GetSystemTypeId, &Template::SetSystemTypeId, L""},
    {"system type name", &Template::GetSystemTypeName, &Template::SetSystemTypeName, L""},
    {"fire protection", &Template::GetFireProtectionMaterial, &Template::SetFireProtectionnMaterial, L"ZR"},
    {"wire type name", &Template::GetWireTypeName, &Template::SetWireTypeName, L"BV"},
    {"wire type id", &Template::GetWireTypeId, &Template::SetWireTypeId, L""},
    {"wire spec", &Template::GetWireSpec, &Template::SetWireSpec, L"2.5"},
    {"conduit type id", &Template::GetConduitTypeId, &Template::SetConduitTypeId, L""},
    {"conduit type name", &Template::GetConduitTypeName, &Template::SetConduitTypeName, L"SC"},
    {"laying mode", &Template::GetLayingMode, &Template::SetLayingMode, L"SR"},
};

struct SwitchField {
    const char* name;
    wstring (Template::*get)(int) const;
    void (Template::*set)(int, wstring);
};

const SwitchField kSwitchFields[] = {
    {"type id", &Template::GetSwitchComponentTypeId, &Template::SetSwitchComponentTypeId},
    {"id", &Template::GetSwitchComponentId, &Template::SetSwitchComponentId},
    {"type name", &Template::GetSwitchComponentTypeName, &Template::SetSwitchComponentTypeName},
};

TEST(CircuitTemplateRecord, ANewOneHasItsDefaults) {
    const auto circuit = Template::Create();
    EXPECT_TRUE(IsPlainGuid(circuit->GetId()));
    EXPECT_EQ(circuit->GetIsApply(), 0);
    EXPECT_EQ(static_cast<int>(circuit->GetSystemClassification()), 41);
    EXPECT_EQ(static_cast<int>(circuit->GetPhase()), 0);
    EXPECT_EQ(circuit->GetWireCount(), L"");
    EXPECT_EQ(circuit->GetConduitSizeDn(), 0);
    for (const auto& field : kTextFields)
        EXPECT_EQ((circuit.get()->*field.get)(), field.defaultText) << field.name;
    for (const auto& field : kSwitchFields)
        for (const int position : {0, 1, 2})
            EXPECT_EQ((circuit.get()->*field.get)(position), L"") << field.name;
}

TEST(CircuitTemplateRecord, GivesBackWhatWasSetAndEachTextHasAPlaceOfItsOwn) {
    const auto circuit = Template::Create();
    for (const auto& field : kTextFields) {
        wstring text(field.name, field.name + std::string(field.name).size());
        (circuit.get()->*field.set)(text);
    }
    for (const auto& field : kTextFields)
        EXPECT_EQ((circuit.get()->*field.get)(), wstring(field.name, field.name + std::string(field.name).size()));
    SetText(*circuit, &Template::SetId, L"t-1");
    circuit->SetIsApply(1);
    circuit->SetSystemClassification(static_cast<MEPSystemClassification>(42));
    circuit->SetPhase(Phase::Three);
    circuit->SetWireCount(L"3");
    short dn = 20;
    circuit->SetConduitSizeDn(dn);
    EXPECT_EQ(circuit->GetId(), L"t-1");
    EXPECT_EQ(circuit->GetIsApply(), 1);
    EXPECT_EQ(static_cast<int>(circuit->GetSystemClassification()), 42);
    EXPECT_EQ(circuit->GetPhase(), Phase::Three);
    EXPECT_EQ(circuit->GetWireCount(), L"3");
    EXPECT_EQ(circuit->GetConduitSizeDn(), 20);
}

TEST(CircuitTemplateRecord, EachSwitchPositionIsItsOwn) {
    const auto circuit = Template::Create();
    for (const auto& field : kSwitchFields)
        for (const int position : {0, 1, 2})
            (circuit.get()->*field.set)(position, wstring(1, static_cast<wchar_t>(L'a' + position)));
    for (const auto& field : kSwitchFields)
        for (const int position : {0, 1, 2})
            EXPECT_EQ((circuit.get()->*field.get)(position), wstring(1, static_cast<wchar_t>(L'a' + position)));
}

TEST(CircuitTemplateRecord, ASwitchPositionOutsideIsEmptyAndIgnored) {
    const auto circuit = Template::Create();
    for (const auto& field : kSwitchFields) {
        for (const int position : {-1, 3, 1000}) {
            (circuit.get()->*field.set)(position, L"x");
            EXPECT_EQ((circuit.get()->*field.get)(position), L"") << field.name;
        }
        for (const int position : {0, 1, 2})
            EXPECT_EQ((circuit.get()->*field.get)(position), L"") << field.name;
    }
}

TEST(CircuitTemplateRecord, ThatCannotBeMadeIsAnEmptyOwner) {
    const MemoryForRecords memory(0);
    EXPECT_FALSE(TolmProjectSettingCircuitTemplate::Create());
}

TEST(CircuitTemplateRecord, EachSwitchListIsItsOwn) {
    const auto circuit = Template::Create();
    for (const auto& field : kSwitchFields)
        (circuit.get()->*field.set)(1, wstring(field.name, field.name + std::string(field.name).size()));
    EXPECT_EQ(circuit->GetSwitchComponentTypeId(1), L"type id");
    EXPECT_EQ(circuit->GetSwitchComponentId(1), L"id");
    EXPECT_EQ(circuit->GetSwitchComponentTypeName(1), L"type name");
    EXPECT_EQ(circuit->GetSwitchComponentId(0), L"");
}

TEST(CircuitTemplateRecord, NumbersPassThroughWhatever) {
    const auto circuit = Template::Create();
    for (short dn : {std::numeric_limits<short>::min(), short{-1}, std::numeric_limits<short>::max()}) {
        circuit->SetConduitSizeDn(dn);
        EXPECT_EQ(circuit->GetConduitSizeDn(), dn);
        circuit->SetIsApply(dn * 65536);
        EXPECT_EQ(circuit->GetIsApply(), dn * 65536);
    }
}

TEST(CircuitTemplateRecord, ASetterLeavesTheCallersValueAlone) {
    const auto circuit = Template::Create();
    for (const auto& field : kTextFields) {
        wstring text = L"text";
        (circuit.get()->*field.set)(text);
        EXPECT_EQ(text, L"text") << field.name;
    }
    short dn = 20;
    circuit->SetConduitSizeDn(dn);
    EXPECT_EQ(dn, 20);
}

TEST(CircuitTemplateRecord, IsNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<TolmProjectSettingCircuitTemplate>);
    EXPECT_FALSE(std::is_copy_assignable_v<TolmProjectSettingCircuitTemplate>);
}

} // namespace
