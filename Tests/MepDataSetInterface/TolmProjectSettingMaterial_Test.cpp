#include "MepDataSetInterface/TolmProjectSettingMaterial.h"

#include "MepDataSetInterface/RecordTestSupport.h"
#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace tolm;
using namespace tolmtest;

vorn::OwnerPtr<IProjectSettingMaterial> FullMaterial() {
    auto material = ProjectSettingMaterial::Create();
    wstring id = L"m-1";
    wstring name = L"铜管";
    material->SetId(id);
    material->SetName(name);
    material->SetMEPType(TolmProjectSettingMEPObjectType::Duct);
    material->SetDisciplineId(MEPDisciplineId::HVAC);
    material->SetCreateTime(1'700'000'000'123);
    return material;
}

TEST(MaterialRecord, ANewOneIsAnUnnamedPlumbingPipeMaterialOfNoTime) {
    const auto material = ProjectSettingMaterial::Create();
    EXPECT_EQ(material->GetName(), L"");
    EXPECT_EQ(material->GetMEPType(), TolmProjectSettingMEPObjectType::Pipe);
    EXPECT_EQ(material->GetDisciplineId(), MEPDisciplineId::Plumbing);
    EXPECT_EQ(material->GetCreateTime(), 0);
}

TEST(MaterialRecord, ANewOneHasAPlainGuidOfItsOwn) {
    std::set<wstring> ids;
    for (int i = 0; i < 50; ++i)
        ids.insert(ProjectSettingMaterial::Create()->GetId());
    EXPECT_EQ(ids.size(), 50U);
    for (const auto& id : ids)
        EXPECT_TRUE(IsPlainGuid(id));
}

TEST(MaterialRecord, GivesBackWhatWasSet) {
    const auto material = FullMaterial();
    EXPECT_EQ(material->GetId(), L"m-1");
    EXPECT_EQ(material->GetName(), L"铜管");
    EXPECT_EQ(material->GetMEPType(), TolmProjectSettingMEPObjectType::Duct);
    EXPECT_EQ(material->GetDisciplineId(), MEPDisciplineId::HVAC);
    EXPECT_EQ(material->GetCreateTime(), 1'700'000'000'123);
}

TEST(MaterialRecord, SettingTheTypeLeavesTheDiscipline) {
    const auto material = ProjectSettingMaterial::Create();
    material->SetMEPType(TolmProjectSettingMEPObjectType::CableTray);
    EXPECT_EQ(material->GetDisciplineId(), MEPDisciplineId::Plumbing);
}

TEST(MaterialRecord, ASetterLeavesTheCallersTextAlone) {
    const auto material = ProjectSettingMaterial::Create();
    wstring name = L"steel";
    material->SetName(name);
    EXPECT_EQ(name, L"steel");
    name = L"changed";
    EXPECT_EQ(material->GetName(), L"steel");
}

TEST(MaterialRecord, TwoClonesDifferInTheirIdentifiersAndInNothingElse) {
    const auto material = FullMaterial();
    const auto first = material->Clone();
    const auto second = material->Clone();
    EXPECT_EQ((std::set<wstring>{material->GetId(), first->GetId(), second->GetId()}.size()), 3U);
    for (const auto* clone : {first.get(), second.get()}) {
        EXPECT_TRUE(IsPlainGuid(clone->GetId()));
        EXPECT_EQ(clone->GetName(), material->GetName());
        EXPECT_EQ(clone->GetMEPType(), material->GetMEPType());
        EXPECT_EQ(clone->GetDisciplineId(), material->GetDisciplineId());
        EXPECT_EQ(clone->GetCreateTime(), material->GetCreateTime());
    }
}

TEST(MaterialRecord, ACopyHasTheSameIdentifierToo) {
    const auto owner = FullMaterial();
    const auto& material = dynamic_cast<const ProjectSettingMaterial&>(*owner);
    const ProjectSettingMaterial copy(material);
    ProjectSettingMaterial assigned(dynamic_cast<const ProjectSettingMaterial&>(*ProjectSettingMaterial::Create()));
    assigned = material;
    for (const ProjectSettingMaterial* record : {&copy, static_cast<const ProjectSettingMaterial*>(&assigned)}) {
        EXPECT_EQ(record->GetId(), L"m-1");
        EXPECT_EQ(record->GetName(), L"铜管");
        EXPECT_EQ(record->GetMEPType(), TolmProjectSettingMEPObjectType::Duct);
        EXPECT_EQ(record->GetDisciplineId(), MEPDisciplineId::HVAC);
        EXPECT_EQ(record->GetCreateTime(), 1'700'000'000'123);
    }
}

TEST(MaterialRecord, ThatCannotBeMadeIsAnEmptyOwner) {
    const MemoryForRecords memory(0);
    EXPECT_FALSE(ProjectSettingMaterial::Create());
    EXPECT_FALSE(IProjectSettingMaterial::Create());
}

TEST(MaterialRecord, ACloneThatCannotBeMadeIsReported) {
    const auto material = ProjectSettingMaterial::Create();
    const MemoryForRecords memory(0);
    EXPECT_FALSE(material->Clone());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"ProjectSettingMaterial::Clone: retMaterial为空"}));
}

} // namespace
