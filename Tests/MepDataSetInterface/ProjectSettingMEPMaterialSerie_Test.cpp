#include "MepDataSetInterface/ProjectSettingMEPMaterialSerie.h"

#include "MepDataSetInterface/RecordTestSupport.h"
#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace tolm;
using namespace tolmtest;
using Serie = IProjectSettingMEPMaterialSerie;
using Group = IProjectSettingMEPMaterialSerieGroup;
using Type = TolmProjectSettingMEPObjectType;

vorn::OwnerPtr<Group> NamedGroup() {
    auto group = Group::Create();
    SetText(*group, &Group::SetId, L"g-1");
    SetText(*group, &Group::SetName, L"copper pipes");
    group->SetMEPType(Type::Duct);
    group->SetDisciplineId(MEPDisciplineId::HVAC);
    group->SetCreateTime(11);
    return group;
}

vorn::OwnerPtr<IProjectSettingSizeModule> NamedSizeModule() {
    auto module = IProjectSettingSizeModule::Create();
    SetText(*module, &IProjectSettingSizeModule::SetId, L"s-1");
    module->SetCableTrayShape(CableTrayShape::Ladder);
    module->SetDuctShape(SectionType::Round);
    module->SetCableEnvironmentTemperature(EnvironmentTemperature::Celsius25);
    return module;
}

vorn::OwnerPtr<IProjectSettingConnectionSerie> NamedConnectionSerie() {
    auto serie = IProjectSettingConnectionSerie::Create();
    SetText(*serie, &IProjectSettingConnectionSerie::SetId, L"c-1");
    SetText(*serie, &IProjectSettingConnectionSerie::SetName, L"welded");
    return serie;
}

vorn::OwnerPtr<Serie> FullSerie() {
    auto serie = Serie::Create();
    SetText(*serie, &Serie::SetId, L"p-1");
    SetText(*serie, &Serie::SetName, L"DN pipes");
    serie->SetMEPType(Type::Conduit);
    serie->SetDisciplineId(MEPDisciplineId::Electrical);
    serie->SetMinSize(15.0);
    serie->SetMaxSize(300.0);
    serie->SetCreateTime(22);
    serie->SetJunctionType(PreferredJunctionType::Tap);
    serie->SetSerieGroup(NamedGroup());
    auto sizeModule = NamedSizeModule();
    auto connectionSerie = NamedConnectionSerie();
    serie->SetSizeModule(sizeModule);
    serie->SetConnectionSerie(connectionSerie);
    EXPECT_FALSE(sizeModule);
    EXPECT_FALSE(connectionSerie);
    return serie;
}

TEST(MaterialSerieGroupRecord, ANewOneIsAPlumbingPipeGroup) {
    const auto group = Group::Create();
    EXPECT_TRUE(IsPlainGuid(group->GetId()));
    EXPECT_EQ(group->GetName(), L"");
    EXPECT_EQ(group->GetMEPType(), Type::Pipe);
    EXPECT_EQ(group->GetDisciplineId(), MEPDisciplineId::Plumbing);
    EXPECT_EQ(group->GetCreateTime(), 0);
}

TEST(MaterialSerieGroupRecord, ACloneDiffersInItsIdentifierOnly) {
    const auto clone = NamedGroup()->Clone();
    EXPECT_TRUE(IsPlainGuid(clone->GetId()));
    EXPECT_EQ(clone->GetName(), L"copper pipes");
    EXPECT_EQ(clone->GetMEPType(), Type::Duct);
    EXPECT_EQ(clone->GetDisciplineId(), MEPDisciplineId::HVAC);
    EXPECT_EQ(clone->GetCreateTime(), 11);
}

TEST(MaterialSerieGroupRecord, ACloneThatCannotBeMadeIsReported) {
    const auto group = NamedGroup();
    const MemoryForRecords memory(0);
    EXPECT_FALSE(group->Clone());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"ProjectSettingMEPMaterialSerieGroup::Clone: retGroup为空"}));
}

TEST(MaterialSerieRecord, ANewOneIsAPlumbingPipeSerieOpenToEverySize) {
    const auto serie = Serie::Create();
    EXPECT_TRUE(IsPlainGuid(serie->GetId()));
    EXPECT_EQ(serie->GetName(), L"");
    EXPECT_EQ(static_cast<int>(serie->GetJunctionType()), 0);
    EXPECT_EQ(serie->GetMinSize(), 0.0);
    EXPECT_EQ(serie->GetMaxSize(), vorn::Constants::MAX_MODEL_SIZE);
    EXPECT_GT(serie->GetMaxSize(), 0.0);
    EXPECT_EQ(serie->GetMEPType(), Type::Pipe);
    EXPECT_EQ(serie->GetDisciplineId(), MEPDisciplineId::Plumbing);
    EXPECT_EQ(serie->GetCreateTime(), 0);
    EXPECT_EQ(serie->GetSerieGroup(), nullptr);
    EXPECT_EQ(serie->GetSizeModule(), nullptr);
    EXPECT_EQ(serie->GetConnectionSerie(), nullptr);
}

TEST(MaterialSerieRecord, WithoutASizeModuleBothShapesAreNone) {
    const auto serie = Serie::Create();
    EXPECT_EQ(static_cast<int>(serie->GetTrayShape()), -1);
    EXPECT_EQ(static_cast<int>(serie->GetDuctShape()), -1);
}

TEST(MaterialSerieRecord, TheShapesAreThoseOfItsSizeModule) {
    const auto serie = FullSerie();
    EXPECT_EQ(serie->GetTrayShape(), CableTrayShape::Ladder);
    EXPECT_EQ(serie->GetDuctShape(), SectionType::Round);
}

TEST(MaterialSerieRecord, TheConnectionSeriesIdentifierIsPassedOn) {
    const auto serie = FullSerie();
    SetText(*serie, &Serie::SetConnectionSerieId, L"c-2");
    EXPECT_EQ(serie->GetConnectionSerie()->GetId(), L"c-2");
}

TEST(MaterialSerieRecord, WithoutAConnectionSerieItsIdentifierGoesNowhere) {
    const auto serie = Serie::Create();
    SetText(*serie, &Serie::SetConnectionSerieId, L"c-2");
    EXPECT_EQ(serie->GetConnectionSerie(), nullptr);
    EXPECT_FALSE(serie->CloneConnectionSerie());
}

TEST(MaterialSerieRecord, ACloneOfItsConnectionSerieHasANewIdentifier) {
    const auto clone = FullSerie()->CloneConnectionSerie();
    ASSERT_TRUE(clone);
    EXPECT_TRUE(IsPlainGuid(clone->GetId()));
    EXPECT_EQ(clone->GetName(), L"welded");
}

TEST(MaterialSerieRecord, AClonesGroupAndSizeModuleKeepTheirIdentifiers) {
    const auto serie = FullSerie();
    const auto clone = serie->Clone();
    EXPECT_TRUE(IsPlainGuid(clone->GetId()));
    EXPECT_EQ(clone->GetSerieGroup()->GetId(), L"g-1");
    EXPECT_NE(clone->GetSerieGroup(), serie->GetSerieGroup());
    EXPECT_EQ(clone->GetSizeModule()->GetId(), L"s-1");
    EXPECT_NE(clone->GetSizeModule(), serie->GetSizeModule());
    EXPECT_TRUE(IsPlainGuid(clone->GetConnectionSerie()->GetId()));
    EXPECT_EQ(clone->GetConnectionSerie()->GetName(), L"welded");
}

TEST(MaterialSerieRecord, ACloneHasAllOtherFields) {
    const auto clone = FullSerie()->Clone();
    EXPECT_EQ(clone->GetName(), L"DN pipes");
    EXPECT_EQ(clone->GetMEPType(), Type::Conduit);
    EXPECT_EQ(clone->GetDisciplineId(), MEPDisciplineId::Electrical);
    EXPECT_EQ(clone->GetMinSize(), 15.0);
    EXPECT_EQ(clone->GetMaxSize(), 300.0);
    EXPECT_EQ(clone->GetCreateTime(), 22);
    EXPECT_EQ(clone->GetJunctionType(), PreferredJunctionType::Tap);
}

TEST(MaterialSerieRecord, AClonesSizeModuleLosesItsCableTemperature) {
    const auto clone = FullSerie()->Clone();
    EXPECT_EQ(static_cast<int>(clone->GetSizeModule()->GetCableEnvironmentTemperature()), 2);
}

TEST(MaterialSerieRecord, ACloneOfOneWithoutPartsHasNone) {
    const auto clone = Serie::Create()->Clone();
    EXPECT_EQ(clone->GetSerieGroup(), nullptr);
    EXPECT_EQ(clone->GetSizeModule(), nullptr);
    EXPECT_EQ(clone->GetConnectionSerie(), nullptr);
}

TEST(MaterialSerieRecord, ACloneThatCannotBeMadeIsReportedPartByPart) {
    const auto serie = FullSerie();
    const std::vector<Warnings> expected{
        {L"ProjectSettingMEPMaterialSerie::Clone: retSerie为空"},
        {L"ProjectSettingMEPMaterialSerieGroup::Clone: retGroup为空",
         L"ProjectSettingMEPMaterialSerie::Clone: group为空"},
        {L"ProjectSettingSizeModule::Clone: retSizeModule为空",
         L"ProjectSettingMEPMaterialSerie::Clone: sizeModule为空"},
    };
    for (std::size_t records = 0; records < expected.size(); ++records) {
        const MemoryForRecords memory(static_cast<int>(records));
        EXPECT_FALSE(serie->Clone());
        EXPECT_EQ(TakeDebugWarningsWithFunction(), expected[records]);
    }
}

TEST(MaterialSerieGroupRecord, ACopyHasTheSameIdentifier) {
    const auto owner = NamedGroup();
    const ProjectSettingMEPMaterialSerieGroup copy(dynamic_cast<const ProjectSettingMEPMaterialSerieGroup&>(*owner));
    EXPECT_EQ(copy.GetId(), L"g-1");
    EXPECT_EQ(copy.GetName(), L"copper pipes");
    EXPECT_EQ(copy.GetMEPType(), Type::Duct);
    EXPECT_EQ(copy.GetDisciplineId(), MEPDisciplineId::HVAC);
    EXPECT_EQ(copy.GetCreateTime(), 11);
}

TEST(MaterialSerieGroupRecord, SettingTheTypeLeavesTheDiscipline) {
    const auto group = Group::Create();
    group->SetMEPType(Type::CableTray);
    EXPECT_EQ(group->GetDisciplineId(), MEPDisciplineId::Plumbing);
}

TEST(MaterialSerieGroupRecord, ThatCannotBeMadeIsAnEmptyOwner) {
    const MemoryForRecords memory(0);
    EXPECT_FALSE(ProjectSettingMEPMaterialSerieGroup::Create());
    EXPECT_FALSE(Group::Create());
}

TEST(MaterialSerieRecord, GivesBackWhatWasSet) {
    const auto serie = FullSerie();
    EXPECT_EQ(serie->GetId(), L"p-1");
    EXPECT_EQ(serie->GetName(), L"DN pipes");
    EXPECT_EQ(serie->GetMEPType(), Type::Conduit);
    EXPECT_EQ(serie->GetDisciplineId(), MEPDisciplineId::Electrical);
    EXPECT_EQ(serie->GetMinSize(), 15.0);
    EXPECT_EQ(serie->GetMaxSize(), 300.0);
    EXPECT_EQ(serie->GetCreateTime(), 22);
    EXPECT_EQ(serie->GetJunctionType(), PreferredJunctionType::Tap);
    EXPECT_EQ(serie->GetSerieGroup()->GetId(), L"g-1");
    EXPECT_EQ(serie->GetSizeModule()->GetId(), L"s-1");
    EXPECT_EQ(serie->GetConnectionSerie()->GetId(), L"c-1");
}

TEST(MaterialSerieRecord, SettingTheTypeLeavesTheDiscipline) {
    const auto serie = Serie::Create();
    serie->SetMEPType(Type::CableTray);
    EXPECT_EQ(serie->GetDisciplineId(), MEPDisciplineId::Plumbing);
}

TEST(MaterialSerieRecord, TheMaxSizeOfANewOneIsTheHostsLargestModelSize) {
    struct Restore {
        double size = vorn::Constants::MAX_MODEL_SIZE;
        ~Restore() { vorn::Constants::MAX_MODEL_SIZE = size; }
    } const restore;
    const auto older = Serie::Create();
    vorn::Constants::MAX_MODEL_SIZE = 12345.5;
    EXPECT_EQ(Serie::Create()->GetMaxSize(), 12345.5);
    EXPECT_EQ(older->GetMaxSize(), restore.size);
}

TEST(MaterialSerieRecord, ANewPartTakesThePlaceOfTheOldWhichIsReleased) {
    using Groups = Tracked<Group>;
    using Modules = Tracked<IProjectSettingSizeModule>;
    using Connections = Tracked<IProjectSettingConnectionSerie>;
    {
        const auto serie = Serie::Create();
        for (int i = 0; i < 2; ++i) {
            auto module = Modules::Make();
            auto connection = Connections::Make();
            serie->SetSerieGroup(Groups::Make());
            serie->SetSizeModule(module);
            serie->SetConnectionSerie(connection);
            EXPECT_EQ(Groups::Living(), 1U);
            EXPECT_EQ(Modules::Living(), 1U);
            EXPECT_EQ(Connections::Living(), 1U);
        }
    }
    EXPECT_EQ(Groups::Living() + Modules::Living() + Connections::Living(), 0U);
}

TEST(MaterialSerieRecord, AnEmptyOwnerTakesAPartAway) {
    const auto serie = FullSerie();
    vorn::OwnerPtr<IProjectSettingSizeModule> noModule;
    vorn::OwnerPtr<IProjectSettingConnectionSerie> noConnection;
    serie->SetSerieGroup({});
    serie->SetSizeModule(noModule);
    serie->SetConnectionSerie(noConnection);
    EXPECT_EQ(serie->GetSerieGroup(), nullptr);
    EXPECT_EQ(serie->GetSizeModule(), nullptr);
    EXPECT_EQ(serie->GetConnectionSerie(), nullptr);
    EXPECT_EQ(static_cast<int>(serie->GetTrayShape()), -1);
    EXPECT_EQ(static_cast<int>(serie->GetDuctShape()), -1);
}

TEST(MaterialSerieRecord, ACloneOfItsConnectionSerieThatCannotBeMadeIsReportedByThatSerie) {
    const auto serie = FullSerie();
    const MemoryForRecords memory(0);
    EXPECT_FALSE(serie->CloneConnectionSerie());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"ProjectSettingConnectionSerie::Clone: retSerie为空"}));
}

TEST(MaterialSerieRecord, ACloneWhoseConnectionSerieCannotBeMadeHasNone) {
    const auto serie = FullSerie();
    const MemoryForRecords memory(3);
    const auto clone = serie->Clone();
    ASSERT_TRUE(clone);
    EXPECT_EQ(clone->GetSerieGroup()->GetId(), L"g-1");
    EXPECT_EQ(clone->GetSizeModule()->GetId(), L"s-1");
    EXPECT_EQ(clone->GetConnectionSerie(), nullptr);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"ProjectSettingConnectionSerie::Clone: retSerie为空"}));
}

TEST(MaterialSerieRecord, ACloneWhoseSizeModulesMaterialCannotBeMadeIsReportedByBoth) {
    const auto serie = FullSerie();
    auto module = NamedSizeModule();
    module->SetMaterial(IProjectSettingMaterial::Create());
    serie->SetSizeModule(module);
    const MemoryForRecords memory(3);
    EXPECT_FALSE(serie->Clone());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"ProjectSettingSizeModule::Clone: material为空",
                                                         L"ProjectSettingMEPMaterialSerie::Clone: sizeModule为空"}));
}

TEST(MaterialSerieRecord, ThatCannotBeMadeIsAnEmptyOwner) {
    const MemoryForRecords memory(0);
    EXPECT_FALSE(ProjectSettingMEPMaterialSerie::Create());
    EXPECT_FALSE(Serie::Create());
}

TEST(MaterialSerieRecord, IsNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<ProjectSettingMEPMaterialSerie>);
    EXPECT_FALSE(std::is_copy_assignable_v<ProjectSettingMEPMaterialSerie>);
}

} // namespace
