#include "MepDataSetInterface/ProjectSettingSystemType.h"

#include "MepDataSetInterface/RecordTestSupport.h"
#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

namespace {

using namespace tolm;
using namespace tolmtest;
using SystemType = IProjectSettingSystemType;
using Serie = IProjectSettingMEPMaterialSerie;

vorn::OwnerPtr<Serie> NamedSerie(const wstring& name) {
    auto serie = Serie::Create();
    SetText(*serie, &Serie::SetName, name);
    return serie;
}

void AddSerie(SystemType& systemType, const wstring& name) {
    auto serie = NamedSerie(name);
    systemType.AddSystemMaterialSerie(serie);
    EXPECT_FALSE(serie);
}

vorn::OwnerPtr<IProjectSettingSizeModule> CableTable(const wstring& typeName, const wstring& id) {
    auto module = IProjectSettingSizeModule::Create();
    SetText(*module, &IProjectSettingSizeModule::SetCableSpecTypeName, typeName);
    SetText(*module, &IProjectSettingSizeModule::SetId, id);
    return module;
}

std::vector<wstring> Names(const SystemType& systemType) {
    std::vector<wstring> names;
    for (const auto* serie : systemType.GetSystemMaterialSerieList())
        names.push_back(serie->GetName());
    return names;
}

TEST(SystemTypeRecord, ANewOneIsAPlumbingPipeSystemOfClassification21) {
    const auto systemType = SystemType::Create();
    EXPECT_TRUE(IsPlainGuid(systemType->GetId()));
    EXPECT_EQ(systemType->GetName(), L"");
    EXPECT_EQ(systemType->GetDescription(), L"");
    EXPECT_EQ(systemType->GetCode(), L"");
    EXPECT_EQ(systemType->GetCreateTime(), 0);
    EXPECT_EQ(static_cast<int>(systemType->GetMEPType()), 1);
    EXPECT_EQ(static_cast<int>(systemType->GetDisciplineId()), 2);
    EXPECT_EQ(static_cast<int>(systemType->GetClassification()), 21);
    EXPECT_TRUE(systemType->GetSystemMaterialSerieList().empty());
    EXPECT_TRUE(systemType->GetCableSpecTypeList().empty());
}

TEST(SystemTypeRecord, GivesBackWhatWasSet) {
    const auto systemType = SystemType::Create();
    SetText(*systemType, &SystemType::SetId, L"y-1");
    SetText(*systemType, &SystemType::SetName, L"supply");
    SetText(*systemType, &SystemType::SetDescription, L"cold water");
    SetText(*systemType, &SystemType::SetCode, L"J");
    systemType->SetCreateTime(5);
    systemType->SetDisciplineId(MEPDisciplineId::HVAC);
    systemType->SetMEPType(TolmProjectSettingMEPObjectType::Duct);
    systemType->SetClassification(static_cast<MEPSystemClassification>(7));
    EXPECT_EQ(systemType->GetId(), L"y-1");
    EXPECT_EQ(systemType->GetName(), L"supply");
    EXPECT_EQ(systemType->GetDescription(), L"cold water");
    EXPECT_EQ(systemType->GetCode(), L"J");
    EXPECT_EQ(systemType->GetCreateTime(), 5);
    EXPECT_EQ(systemType->GetDisciplineId(), MEPDisciplineId::HVAC);
    EXPECT_EQ(systemType->GetMEPType(), TolmProjectSettingMEPObjectType::Duct);
    EXPECT_EQ(static_cast<int>(systemType->GetClassification()), 7);
}

TEST(SystemTypeRecord, KeepsItsSeriesInOrder) {
    const auto systemType = SystemType::Create();
    for (const wchar_t* name : {L"a", L"b", L"c"})
        AddSerie(*systemType, name);
    systemType->DeleteSystemMaterialSerie(1);
    EXPECT_EQ(Names(*systemType), (std::vector<wstring>{L"a", L"c"}));
    systemType->ClearMaterialSerie();
    EXPECT_TRUE(systemType->GetSystemMaterialSerieList().empty());
}

TEST(SystemTypeRecord, DeletingFromNoSeriesSaysThatTheListIsEmpty) {
    const auto systemType = SystemType::Create();
    systemType->DeleteSystemMaterialSerie(0);
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"ProjectSettingSystemType::DeleteSystemMaterialSerie: m_SystemMaterialSerieList is empty"}));
}

TEST(SystemTypeRecord, DeletingASerieOutsideTheListSaysSo) {
    const auto systemType = SystemType::Create();
    AddSerie(*systemType, L"a");
    systemType->DeleteSystemMaterialSerie(-1);
    systemType->DeleteSystemMaterialSerie(1);
    const wchar_t* const text =
        L"ProjectSettingSystemType::DeleteSystemMaterialSerie: index row exceeds m_SystemMaterialSerieList";
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{text, text}));
    EXPECT_EQ(Names(*systemType), (std::vector<wstring>{L"a"}));
}

TEST(SystemTypeRecord, AnEmptySerieIsLeftOutAndReported) {
    const auto systemType = SystemType::Create();
    vorn::OwnerPtr<Serie> none;
    systemType->AddSystemMaterialSerie(none);
    AddSerie(*systemType, L"a");
    EXPECT_EQ(Names(*systemType), (std::vector<wstring>{L"a"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"ProjectSettingSystemType::GetSystemMaterialSerieList: m_SystemMaterialSerieList[i]为空"}));
}

TEST(SystemTypeRecord, CableTablesAreKeyedByTypeNameAndTheFirstStays) {
    const auto systemType = SystemType::Create();
    systemType->AddCableSpecType(CableTable(L"BV", L"first"));
    systemType->AddCableSpecType(CableTable(L"BV", L"second"));
    systemType->AddCableSpecType(CableTable(L"YJV", L"third"));
    const auto list = systemType->GetCableSpecTypeList();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list.at(L"BV")->GetId(), L"first");
    EXPECT_EQ(list.at(L"YJV")->GetId(), L"third");
}

TEST(SystemTypeRecord, DeletesACableTableByTypeNameAndPassesAnUnknownOver) {
    const auto systemType = SystemType::Create();
    systemType->AddCableSpecType(CableTable(L"BV", L"first"));
    systemType->DeleteCableSpecType(L"first");
    EXPECT_EQ(systemType->GetCableSpecTypeList().size(), 1U);
    systemType->DeleteCableSpecType(L"BV");
    EXPECT_TRUE(systemType->GetCableSpecTypeList().empty());
    systemType->AddCableSpecType(CableTable(L"BV", L"again"));
    systemType->ClearCableSpecTypeList();
    EXPECT_TRUE(systemType->GetCableSpecTypeList().empty());
}

TEST(SystemTypeRecord, AnEmptyCableTableIsReported) {
    const auto systemType = SystemType::Create();
    systemType->AddCableSpecType({});
    EXPECT_TRUE(systemType->GetCableSpecTypeList().empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"ProjectSettingSystemType::AddCableSpecType: cableSizeModule为空"}));
}

TEST(SystemMaterialSerieRecord, HoldsOneSerieUnderAnIdentifierOfItsOwn) {
    const auto link = IProjectSettingSystemMaterialSerie::Create();
    EXPECT_TRUE(IsPlainGuid(link->GetSerieId()));
    EXPECT_EQ(link->GetMEPMaterialSerie(), nullptr);
    wstring id = L"l-1";
    link->SetSerieId(id);
    link->SetMEPMaterialSerie(NamedSerie(L"a"));
    EXPECT_EQ(link->GetSerieId(), L"l-1");
    EXPECT_EQ(link->GetMEPMaterialSerie()->GetName(), L"a");
}

} // namespace
