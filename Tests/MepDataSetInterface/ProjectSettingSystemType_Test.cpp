#include "MepDataSetInterface/ProjectSettingSystemType.h"

#include "MepDataSetInterface/RecordTestSupport.h"
#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace tolm {

/// What tests see of a system type: its cable tables, which a test may put an empty entry into.
struct RecordTestAccess {
    static auto& CableTables(IProjectSettingSystemType& record) {
        return dynamic_cast<ProjectSettingSystemType&>(record).m_cableSpecTypeList;
    }
};

} // namespace tolm

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

TEST(SystemTypeRecord, SettingTheTypeLeavesTheDiscipline) {
    const auto systemType = SystemType::Create();
    systemType->SetMEPType(TolmProjectSettingMEPObjectType::ElectricalSystem);
    EXPECT_EQ(systemType->GetDisciplineId(), MEPDisciplineId::Plumbing);
}

TEST(SystemTypeRecord, ReleasesASerieThatIsDeletedAndTheOthersWithItself) {
    using Series = Tracked<Serie>;
    {
        const auto systemType = SystemType::Create();
        for (int i = 0; i < 4; ++i) {
            auto serie = Series::Make();
            systemType->AddSystemMaterialSerie(serie);
        }
        systemType->DeleteSystemMaterialSerie(2);
        EXPECT_EQ(Series::Living(), 3U);
        systemType->ClearMaterialSerie();
        EXPECT_EQ(Series::Living(), 0U);
        auto serie = Series::Make();
        systemType->AddSystemMaterialSerie(serie);
    }
    EXPECT_EQ(Series::Living(), 0U);
}

TEST(SystemTypeRecord, DeletingCountsAnEmptyEntryToo) {
    const auto systemType = SystemType::Create();
    vorn::OwnerPtr<Serie> none;
    systemType->AddSystemMaterialSerie(none);
    AddSerie(*systemType, L"a");
    systemType->DeleteSystemMaterialSerie(0);
    EXPECT_EQ(Names(*systemType), (std::vector<wstring>{L"a"}));
}

TEST(SystemTypeRecord, ACableTableOfAKnownTypeNameIsReleased) {
    using Tables = Tracked<IProjectSettingSizeModule>;
    {
        const auto systemType = SystemType::Create();
        systemType->AddCableSpecType(Tables::Make());
        const auto* const first = systemType->GetCableSpecTypeList().at(L"");
        systemType->AddCableSpecType(Tables::Make());
        EXPECT_EQ(Tables::Living(), 1U);
        EXPECT_EQ(systemType->GetCableSpecTypeList().at(L""), first);
        systemType->DeleteCableSpecType(L"");
        EXPECT_EQ(Tables::Living(), 0U);
        systemType->AddCableSpecType(Tables::Make());
    }
    EXPECT_EQ(Tables::Living(), 0U);
}

TEST(SystemTypeRecord, ACableTableStaysUnderTheNameThatItCameWith) {
    const auto systemType = SystemType::Create();
    auto table = CableTable(L"BV", L"first");
    auto* const held = table.get();
    systemType->AddCableSpecType(std::move(table));
    SetText(*held, &IProjectSettingSizeModule::SetCableSpecTypeName, L"YJV");
    EXPECT_EQ(systemType->GetCableSpecTypeList().count(L"BV"), 1U);
    EXPECT_EQ(systemType->GetCableSpecTypeList().count(L"YJV"), 0U);
}

TEST(SystemTypeRecord, AnEmptyEntryOfTheCableTablesIsLeftOutAndReported) {
    const auto systemType = SystemType::Create();
    systemType->AddCableSpecType(CableTable(L"BV", L"first"));
    RecordTestAccess::CableTables(*systemType)[L"YJV"] = nullptr;
    const auto list = systemType->GetCableSpecTypeList();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list.at(L"BV")->GetId(), L"first");
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"ProjectSettingSystemType::GetCableSpecTypeList: pSize为空"}));
}

TEST(SystemTypeRecord, ThatCannotBeMadeIsAnEmptyOwner) {
    const MemoryForRecords memory(0);
    EXPECT_FALSE(ProjectSettingSystemType::Create());
    EXPECT_FALSE(SystemType::Create());
}

TEST(SystemTypeRecord, IsNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<ProjectSettingSystemType>);
    EXPECT_FALSE(std::is_copy_assignable_v<ProjectSettingSystemType>);
}

TEST(SystemMaterialSerieRecord, ANewSerieTakesThePlaceOfTheOldWhichIsReleased) {
    using Series = Tracked<Serie>;
    {
        const auto link = IProjectSettingSystemMaterialSerie::Create();
        link->SetMEPMaterialSerie(Series::Make());
        link->SetMEPMaterialSerie(Series::Make());
        EXPECT_EQ(Series::Living(), 1U);
        link->SetMEPMaterialSerie({});
        EXPECT_EQ(link->GetMEPMaterialSerie(), nullptr);
        EXPECT_EQ(Series::Living(), 0U);
        link->SetMEPMaterialSerie(Series::Make());
    }
    EXPECT_EQ(Series::Living(), 0U);
}

TEST(SystemMaterialSerieRecord, ItsIdentifierIsNotThatOfItsSerie) {
    const auto link = IProjectSettingSystemMaterialSerie::Create();
    const wstring id = link->GetSerieId();
    link->SetMEPMaterialSerie(NamedSerie(L"a"));
    EXPECT_EQ(link->GetSerieId(), id);
    EXPECT_NE(link->GetMEPMaterialSerie()->GetId(), id);
}

TEST(SystemMaterialSerieRecord, ThatCannotBeMadeIsAnEmptyOwner) {
    const MemoryForRecords memory(0);
    EXPECT_FALSE(ProjectSettingSystemMaterialSerie::Create());
    EXPECT_FALSE(IProjectSettingSystemMaterialSerie::Create());
}

} // namespace
