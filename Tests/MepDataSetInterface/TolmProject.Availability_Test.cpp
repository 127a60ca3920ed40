#include "MepDataSetInterface/DatasetTestSupport.h"

#include "Host/Definitions.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class Availability : public DatasetOnStore {
protected:
    void StoreDucts() {
        for (const auto& [id, shape] : {std::pair{L"oval", SectionType::Oval}, std::pair{L"round", SectionType::Round},
                                        std::pair{L"round-2", SectionType::Round}}) {
            auto module = MakeSizeModule(id, L"", ObjectType::Duct, MEPDisciplineId::HVAC);
            module->SetDuctShape(shape);
            module->AddDuctSize({static_cast<float>(wstring(id).size()), 1.0F});
            Store(std::move(module));
        }
    }

    wstring DuctModule(SectionType shape) {
        return dataset->GetSizeModule(ObjectType::Duct, MEPDisciplineId::HVAC, L"", shape)->GetId();
    }
};

TEST_F(Availability, MaterialsComeByIdentifierAndLeaveTheTablesAlone) {
    for (const wchar_t* id : {L"b", L"a"})
        Store(MakeMaterial(id));
    Store(MakeMaterial(L"d", L"", ObjectType::Duct, MEPDisciplineId::HVAC));
    EXPECT_EQ(KeysOf(dataset->GetAvailableMaterialList(ObjectType::Pipe, MEPDisciplineId::Plumbing)),
              (Ids{L"a", L"b"}));
    EXPECT_EQ(Materials(), Ids{});
    dataset->CollectData(false, {TableId::DuctMaterials});
    EXPECT_EQ(dataset->GetAvailableMaterialList(ObjectType::Pipe, MEPDisciplineId::HVAC).size(), 0U);
    EXPECT_EQ(Materials(), (Ids{L"d"}));
}

TEST_F(Availability, SizeModulesComeByIdentifier) {
    for (const wchar_t* id : {L"b", L"a"})
        Store(MakeSizeModule(id));
    Store(MakeSizeModule(L"w", L"", ObjectType::Wire, MEPDisciplineId::Electrical));
    EXPECT_EQ(KeysOf(dataset->GetAvailableSizeModuleList(ObjectType::Pipe, MEPDisciplineId::Plumbing)),
              (Ids{L"a", L"b"}));
    EXPECT_EQ(Sizes(), Ids{});
}

TEST_F(Availability, OfAStoreThatIsNotThereIsEmpty) {
    EXPECT_TRUE(dataset->GetAvailableMaterialList(ObjectType::Pipe, MEPDisciplineId::Plumbing).empty());
    EXPECT_TRUE(dataset->GetAvailableSizeModuleList(ObjectType::Pipe, MEPDisciplineId::Plumbing).empty());
    EXPECT_FALSE(Exists(path));
}

TEST_F(Availability, TheModuleOfATypeWithoutAnyIsAFreshEmptyOne) {
    const auto module = dataset->GetSizeModule(ObjectType::Duct, MEPDisciplineId::HVAC, L"", SectionType::None);
    ASSERT_TRUE(module);
    EXPECT_TRUE(IsPlainGuid(module->GetId()));
    EXPECT_EQ(module->GetMEPType(), ObjectType::Pipe);
    EXPECT_TRUE(module->GetPipeSizeList().empty());
    EXPECT_TRUE(module->GetDuctSizeList().empty());
}

TEST_F(Availability, TheModuleOfAShapeIsTheFirstOfIt) {
    StoreDucts();
    EXPECT_EQ(DuctModule(SectionType::Round), L"round");
    EXPECT_EQ(DuctModule(SectionType::None), L"oval");
    EXPECT_TRUE(IsPlainGuid(DuctModule(SectionType::Rectangular)));
}

TEST_F(Availability, TheModuleOfAMaterialIsFoundWhateverTheDiscipline) {
    auto module = MakeSizeModule(L"s");
    module->SetMaterial(MakeMaterial(L"copper"));
    module->AddPipeSize({0.0F, 0.0F, 15.0F, 0.0F});
    Store(std::move(module));
    Store(MakeSizeModule(L"other"));
    EXPECT_EQ(
        dataset->GetSizeModule(ObjectType::Pipe, MEPDisciplineId::Electrical, L"copper", SectionType::Oval)->GetId(),
        L"s");
    EXPECT_EQ(dataset->GetAvailableSizeList(ObjectType::Pipe, MEPDisciplineId::HVAC, L"copper", SectionType::None),
              (std::vector<float>{15.0F}));
}

TEST_F(Availability, TheModuleOfAMaterialWithoutOneIsAFreshOne) {
    MakeStore();
    const auto module = dataset->GetSizeModule(ObjectType::Pipe, MEPDisciplineId::Plumbing, L"x", SectionType::None);
    ASSERT_TRUE(module);
    EXPECT_TRUE(IsPlainGuid(module->GetId()));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadSizeModuleList: retSizeModuleList为空"}));
}

TEST_F(Availability, PipeAndConduitSizesAreNominalDiametersInTheirOrder) {
    for (const auto& [type, discipline] : {std::pair{ObjectType::Pipe, MEPDisciplineId::Plumbing},
                                           std::pair{ObjectType::Conduit, MEPDisciplineId::Electrical}}) {
        auto module = MakeSizeModule(std::to_wstring(static_cast<int>(type)), L"", type, discipline);
        for (const float dn : {25.0F, 15.0F, 25.0F})
            module->AddPipeSize({1.0F, 2.0F, dn, 3.0F});
        Store(std::move(module));
        EXPECT_EQ(dataset->GetAvailableSizeList(type, discipline, L"", SectionType::None),
                  (std::vector<float>{25.0F, 15.0F, 25.0F}));
    }
}

TEST_F(Availability, DuctAndTraySizesAreTheirSizesInTheirOrder) {
    for (const auto& [type, discipline] : {std::pair{ObjectType::Duct, MEPDisciplineId::HVAC},
                                           std::pair{ObjectType::CableTray, MEPDisciplineId::Electrical}}) {
        auto module = MakeSizeModule(std::to_wstring(static_cast<int>(type)), L"", type, discipline);
        for (const float size : {320.0F, 120.0F})
            module->AddDuctSize({size, 1.0F});
        Store(std::move(module));
        EXPECT_EQ(dataset->GetAvailableSizeList(type, discipline, L"", SectionType::None),
                  (std::vector<float>{320.0F, 120.0F}));
    }
}

TEST_F(Availability, SizesAreThoseOfTheFirstModuleWithoutAShapeAndOfTheFirstOfAShape) {
    StoreDucts();
    EXPECT_EQ(dataset->GetAvailableSizeList(ObjectType::Duct, MEPDisciplineId::HVAC, L"", SectionType::None),
              (std::vector<float>{4.0F}));
    EXPECT_EQ(dataset->GetAvailableSizeList(ObjectType::Duct, MEPDisciplineId::HVAC, L"", SectionType::Round),
              (std::vector<float>{5.0F}));
    EXPECT_TRUE(
        dataset->GetAvailableSizeList(ObjectType::Duct, MEPDisciplineId::HVAC, L"", SectionType::Rectangular).empty());
}

TEST_F(Availability, WiresHaveNoSizes) {
    auto module = MakeSizeModule(L"w", L"", ObjectType::Wire, MEPDisciplineId::Electrical);
    module->AddCableSpecification({L"2.5", 20, EnvironmentTemperature::Celsius25});
    Store(std::move(module));
    EXPECT_TRUE(
        dataset->GetAvailableSizeList(ObjectType::Wire, MEPDisciplineId::Electrical, L"", SectionType::None).empty());
}

TEST_F(Availability, ClassificationsAreTheHostsOwnMap) {
    EXPECT_EQ(&dataset->GetAvailableSystemClassificationList(MEPDisciplineId::HVAC),
              &MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(MEPDisciplineId::HVAC));
    EXPECT_FALSE(Exists(path));
}

} // namespace
