#include "MepDataSetInterface/TolmProjectSettingSizeModule.h"

#include "MepDataSetInterface/RecordTestSupport.h"
#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

namespace {

using namespace tolm;
using namespace tolmtest;
using Type = TolmProjectSettingMEPObjectType;
using Module = IProjectSettingSizeModule;

constexpr auto kCold = EnvironmentTemperature::Celsius25;
constexpr auto kMild = EnvironmentTemperature::Celsius30;
constexpr auto kDefaultTemperature = EnvironmentTemperature::Celsius35;

vorn::OwnerPtr<IProjectSettingMaterial> SteelMaterial() {
    auto material = IProjectSettingMaterial::Create();
    SetText(*material, &IProjectSettingMaterial::SetId, L"steel-id");
    SetText(*material, &IProjectSettingMaterial::SetName, L"steel");
    material->SetMEPType(Type::Duct);
    material->SetDisciplineId(MEPDisciplineId::HVAC);
    material->SetCreateTime(77);
    return material;
}

/// A module with something in every field.
vorn::OwnerPtr<Module> FullModule() {
    auto module = Module::Create();
    SetText(*module, &Module::SetId, L"s-1");
    SetText(*module, &Module::SetName, L"sizes");
    module->SetMEPType(Type::Wire);
    module->SetDisciplineId(MEPDisciplineId::Plumbing);
    module->SetCreateTime(1'700'000'000'456);
    module->SetRoughness(0.045);
    module->SetDuctShape(SectionType::Oval);
    module->SetCableTrayShape(CableTrayShape::Mesh);
    module->SetPressureGrade(PressureGrade::Medium);
    SetText(*module, &Module::SetCableSpecTypeName, L"BV");
    module->SetCableMaterial(CableMaterial::Aluminium);
    module->SetCableEnvironmentTemperature(kMild);
    module->SetMaterial(SteelMaterial());
    module->AddPipeSize({1.0F, 2.0F, 3.0F, 4.0F});
    module->AddPipeSize({5.0F, 6.0F, 7.0F, 8.0F});
    module->AddDuctSize({9.0F, 10.0F});
    module->AddCableSpecification({L"2.5", 20, kMild});
    module->AddCableSpecification({L"4", 27, kDefaultTemperature});
    return module;
}

TEST(SizeModuleRecord, ANewOneIsAPipeTableOfNoDiscipline) {
    const auto module = Module::Create();
    EXPECT_TRUE(IsPlainGuid(module->GetId()));
    EXPECT_EQ(module->GetName(), L"");
    EXPECT_EQ(static_cast<int>(module->GetMEPType()), 1);
    EXPECT_EQ(static_cast<int>(module->GetDisciplineId()), 0);
    EXPECT_EQ(module->GetCreateTime(), 0);
    EXPECT_EQ(module->GetRoughness(), 0.0);
    EXPECT_EQ(static_cast<int>(module->GetDuctShape()), 0);
    EXPECT_EQ(static_cast<int>(module->GetCableTrayShape()), 0);
    EXPECT_EQ(static_cast<int>(module->GetPressureGrade()), 2);
    EXPECT_EQ(module->GetCableSpecTypeName(), L"");
    EXPECT_EQ(static_cast<int>(module->GetCableMaterial()), 0);
    EXPECT_EQ(static_cast<int>(module->GetCableEnvironmentTemperature()), 2);
    EXPECT_EQ(module->GetMaterial(), nullptr);
    EXPECT_TRUE(module->GetPipeSizeList().empty());
    EXPECT_TRUE(module->GetDuctSizeList().empty());
    EXPECT_TRUE(module->GetCableSpecificationList().empty());
}

TEST(SizeModuleRecord, GivesBackWhatWasSet) {
    const auto module = FullModule();
    EXPECT_EQ(module->GetId(), L"s-1");
    EXPECT_EQ(module->GetName(), L"sizes");
    EXPECT_EQ(module->GetMEPType(), Type::Wire);
    EXPECT_EQ(module->GetDisciplineId(), MEPDisciplineId::Plumbing);
    EXPECT_EQ(module->GetCreateTime(), 1'700'000'000'456);
    EXPECT_EQ(module->GetRoughness(), 0.045);
    EXPECT_EQ(module->GetDuctShape(), SectionType::Oval);
    EXPECT_EQ(module->GetCableTrayShape(), CableTrayShape::Mesh);
    EXPECT_EQ(module->GetPressureGrade(), PressureGrade::Medium);
    EXPECT_EQ(module->GetCableSpecTypeName(), L"BV");
    EXPECT_EQ(module->GetCableMaterial(), CableMaterial::Aluminium);
    EXPECT_EQ(module->GetCableEnvironmentTemperature(), kMild);
    EXPECT_EQ(module->GetMaterial()->GetId(), L"steel-id");
    EXPECT_EQ(module->GetPipeSizeList(),
              (std::vector<ProjectSettingPipeSize>{{1.0F, 2.0F, 3.0F, 4.0F}, {5.0F, 6.0F, 7.0F, 8.0F}}));
    EXPECT_EQ(module->GetDuctSizeList(), (std::vector<ProjectSettingDuctSize>{{9.0F, 10.0F}}));
    EXPECT_EQ(module->GetCableSpecificationList(),
              (std::vector<ProjectSettingCableSpec>{{L"2.5", 20, kMild}, {L"4", 27, kDefaultTemperature}}));
}

TEST(SizeModuleRecord, TheTypeForcesTheDisciplineOfAllButPipes) {
    struct Row {
        Type type;
        int discipline;
    };
    for (const auto& [type, discipline] : {Row{Type::Pipe, 2}, Row{Type::Duct, 1}, Row{Type::CableTray, 3},
                                           Row{Type::Conduit, 3}, Row{Type::Wire, 3}, Row{Type::ElectricalSystem, 2}}) {
        const auto module = Module::Create();
        module->SetDisciplineId(MEPDisciplineId::Plumbing);
        module->SetMEPType(type);
        EXPECT_EQ(module->GetMEPType(), type);
        EXPECT_EQ(static_cast<int>(module->GetDisciplineId()), discipline) << static_cast<int>(type);
    }
}

TEST(SizeModuleRecord, ADisciplineSetAfterTheTypeStands) {
    const auto module = Module::Create();
    module->SetMEPType(Type::Duct);
    module->SetDisciplineId(MEPDisciplineId::Electrical);
    EXPECT_EQ(module->GetDisciplineId(), MEPDisciplineId::Electrical);
}

TEST(SizeModuleRecord, ANewMaterialTakesThePlaceOfTheOld) {
    const auto module = Module::Create();
    module->SetMaterial(SteelMaterial());
    auto other = IProjectSettingMaterial::Create();
    const IProjectSettingMaterial* const held = other.get();
    module->SetMaterial(std::move(other));
    EXPECT_EQ(module->GetMaterial(), held);
    module->SetMaterial({});
    EXPECT_EQ(module->GetMaterial(), nullptr);
}

TEST(SizeModuleRecord, CurrentsAreThoseOfItsTemperatureAndTheFirstOfAnAreaCounts) {
    const auto module = Module::Create();
    module->SetCableEnvironmentTemperature(kMild);
    module->AddCableSpecification({L"4", 30, kMild});
    module->AddCableSpecification({L"2.5", 25, kCold});
    module->AddCableSpecification({L"2.5", 22, kMild});
    module->AddCableSpecification({L"2.5", 99, kMild});
    EXPECT_EQ(module->GetCableSpecificationListOfCurrentTemperature(),
              (std::map<wstring, int>{{L"2.5", 22}, {L"4", 30}}));
}

TEST(SizeModuleRecord, DeletingARowKeepsTheOrderOfTheOthers) {
    const auto module = Module::Create();
    for (const float i : {0.0F, 1.0F, 2.0F}) {
        module->AddPipeSize({i, 0.0F, 0.0F, 0.0F});
        module->AddDuctSize({i, 0.0F});
        module->AddCableSpecification({std::to_wstring(static_cast<int>(i)), 0, kCold});
    }
    module->DeletePipeSize(1);
    module->DeleteDuctSize(0);
    module->DeleteCableSpecification(2);
    ASSERT_EQ(module->GetPipeSizeList().size(), 2U);
    EXPECT_EQ(module->GetPipeSizeList()[1].innerDiameter, 2.0F);
    ASSERT_EQ(module->GetDuctSizeList().size(), 2U);
    EXPECT_EQ(module->GetDuctSizeList()[0].size, 1.0F);
    ASSERT_EQ(module->GetCableSpecificationList().size(), 2U);
    EXPECT_EQ(module->GetCableSpecificationList()[1].area, L"1");
}

TEST(SizeModuleRecord, DeletingFromAnEmptyListSaysThatItIsEmptyWhateverTheRow) {
    const auto module = Module::Create();
    for (const int row : {0, -1, 5}) {
        module->DeletePipeSize(row);
        module->DeleteDuctSize(row);
        module->DeleteCableSpecification(row);
        EXPECT_EQ(TakeDebugWarningsWithFunction(),
                  (Warnings{L"ProjectSettingSizeModule::DeletePipeSize: m_pipeList is empty",
                            L"ProjectSettingSizeModule::DeleteDuctSize: m_ductSizeList is empty",
                            L"ProjectSettingSizeModule::DeleteCableSpecification: m_cableSpecList is empty"}));
    }
}

TEST(SizeModuleRecord, DeletingARowOutsideAListSaysSoAndChangesNothing) {
    const auto module = FullModule();
    for (const int row : {-1, 2, 1000}) {
        module->DeletePipeSize(row);
        module->DeleteDuctSize(row);
        module->DeleteCableSpecification(row);
        EXPECT_EQ(TakeDebugWarningsWithFunction(),
                  (Warnings{L"ProjectSettingSizeModule::DeletePipeSize: index row exceeds m_pipeList",
                            L"ProjectSettingSizeModule::DeleteDuctSize: index row exceeds m_ductSizeList",
                            L"ProjectSettingSizeModule::DeleteCableSpecification: index row exceeds m_cableSpecList"}));
    }
    EXPECT_EQ(module->GetPipeSizeList().size(), 2U);
    EXPECT_EQ(module->GetDuctSizeList().size(), 1U);
    EXPECT_EQ(module->GetCableSpecificationList().size(), 2U);
}

TEST(SizeModuleRecord, ClearingEmptiesOneListOnly) {
    const auto module = FullModule();
    module->ClearDuctSize();
    EXPECT_TRUE(module->GetDuctSizeList().empty());
    EXPECT_EQ(module->GetPipeSizeList().size(), 2U);
    module->ClearPipeSizes();
    EXPECT_TRUE(module->GetPipeSizeList().empty());
    EXPECT_EQ(module->GetCableSpecificationList().size(), 2U);
    module->ClearCableSpecifications();
    EXPECT_TRUE(module->GetCableSpecificationList().empty());
}

TEST(SizeModuleRecord, ACloneHasEverythingButIdentifierAndTemperature) {
    const auto module = FullModule();
    const auto clone = module->Clone();
    EXPECT_TRUE(IsPlainGuid(clone->GetId()));
    EXPECT_EQ(clone->GetName(), module->GetName());
    EXPECT_EQ(clone->GetMEPType(), module->GetMEPType());
    EXPECT_EQ(clone->GetDisciplineId(), MEPDisciplineId::Plumbing);
    EXPECT_EQ(clone->GetCreateTime(), module->GetCreateTime());
    EXPECT_EQ(clone->GetRoughness(), module->GetRoughness());
    EXPECT_EQ(clone->GetDuctShape(), module->GetDuctShape());
    EXPECT_EQ(clone->GetCableTrayShape(), module->GetCableTrayShape());
    EXPECT_EQ(clone->GetPressureGrade(), module->GetPressureGrade());
    EXPECT_EQ(clone->GetCableSpecTypeName(), module->GetCableSpecTypeName());
    EXPECT_EQ(clone->GetCableMaterial(), module->GetCableMaterial());
    EXPECT_EQ(clone->GetPipeSizeList(), module->GetPipeSizeList());
    EXPECT_EQ(clone->GetDuctSizeList(), module->GetDuctSizeList());
    EXPECT_EQ(clone->GetCableSpecificationList(), module->GetCableSpecificationList());
}

TEST(SizeModuleRecord, ACloneOfAWireTableSelectsTheRowsOfTheDefaultTemperature) {
    const auto module = FullModule();
    const auto clone = module->Clone();
    EXPECT_EQ(static_cast<int>(clone->GetCableEnvironmentTemperature()), 2);
    EXPECT_EQ(module->GetCableSpecificationListOfCurrentTemperature(), (std::map<wstring, int>{{L"2.5", 20}}));
    EXPECT_EQ(clone->GetCableSpecificationListOfCurrentTemperature(), (std::map<wstring, int>{{L"4", 27}}));
}

TEST(SizeModuleRecord, TheMaterialOfACloneKeepsIdentifierNameAndTypeOnly) {
    const auto module = FullModule();
    const auto clone = module->Clone();
    const IProjectSettingMaterial* const material = clone->GetMaterial();
    ASSERT_NE(material, nullptr);
    EXPECT_NE(material, module->GetMaterial());
    EXPECT_EQ(material->GetId(), L"steel-id");
    EXPECT_EQ(material->GetName(), L"steel");
    EXPECT_EQ(material->GetMEPType(), Type::Duct);
    EXPECT_EQ(material->GetDisciplineId(), MEPDisciplineId::Plumbing);
    EXPECT_EQ(material->GetCreateTime(), 0);
}

TEST(SizeModuleRecord, ACloneOfOneWithoutMaterialHasNone) {
    const auto clone = Module::Create()->Clone();
    ASSERT_TRUE(clone);
    EXPECT_EQ(clone->GetMaterial(), nullptr);
}

TEST(SizeModuleRecord, ACloneThatCannotBeMadeIsReported) {
    const auto module = FullModule();
    const MemoryForRecords memory(0);
    EXPECT_FALSE(module->Clone());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"ProjectSettingSizeModule::Clone: retSizeModule为空"}));
}

TEST(SizeModuleRecord, ACloneWhoseMaterialCannotBeMadeIsReported) {
    const auto module = FullModule();
    const MemoryForRecords memory(1);
    EXPECT_FALSE(module->Clone());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"ProjectSettingSizeModule::Clone: material为空"}));
}

} // namespace
