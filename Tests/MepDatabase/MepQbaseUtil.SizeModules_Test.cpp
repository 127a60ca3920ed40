#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"

#include <utility>

namespace {

using namespace tolm;
using namespace tolmtest;
using Rows = std::vector<SqlRow>;

class SizeModuleStorage : public StoreFixture {
protected:
    bool Write(const SizeModulePtr& module) { return util.WriteSizeModule(path, ddq, module.get()); }

    std::vector<SizeModulePtr> List(Type type, Discipline discipline) {
        std::vector<SizeModulePtr> list;
        const bool found = util.ReadSizeModuleList(path, ddq, type, discipline, list);
        EXPECT_EQ(found, !list.empty());
        return list;
    }
    /// The one module of the type and discipline.
    SizeModulePtr Only(Type type, Discipline discipline) {
        auto list = List(type, discipline);
        EXPECT_EQ(list.size(), 1U);
        return list.empty() ? SizeModule(L"none", L"") : std::move(list[0]);
    }
};

SizeModulePtr Pipe(const wstring& id = L"p") {
    auto module = SizeModule(id, L"GB/T 3091", Type::Pipe, Discipline::HVAC, 1'700'000'000'123);
    module->SetRoughness(0.045);
    module->AddPipeSize({15.7F, 21.3F, 15.0F, 2.8F});
    module->AddPipeSize({21.2F, 26.9F, 20.0F, 2.9F});
    return module;
}

SizeModulePtr Duct() {
    auto module = SizeModule(L"d", L"rect", Type::Duct, Discipline::HVAC, 3);
    module->SetPressureGrade(PressureGrade::High);
    module->SetDuctShape(SectionType::Oval);
    module->AddDuctSize({120.0F, 0.5F});
    module->AddDuctSize({160.0F, 0.75F});
    return module;
}

SizeModulePtr Tray() {
    auto module = SizeModule(L"t", L"tray", Type::CableTray, Discipline::Electrical, 4);
    module->SetCableTrayShape(CableTrayShape::Mesh);
    module->AddDuctSize({100.0F, 1.5F});
    module->AddDuctSize({200.0F, 2.5F});
    return module;
}

SizeModulePtr Conduit() {
    auto module = SizeModule(L"c", L"conduit", Type::Conduit, Discipline::Electrical, 5);
    module->AddPipeSize({1.0F, 2.0F, 3.0F, 4.0F});
    return module;
}

SizeModulePtr Wire() {
    auto module = SizeModule(L"w", L"wire", Type::Wire, Discipline::Electrical, 6);
    wstring specName = L"BV";
    module->SetCableSpecTypeName(specName);
    module->SetCableEnvironmentTemperature(EnvironmentTemperature::Celsius40);
    module->SetCableMaterial(CableMaterial::Aluminium);
    module->AddCableSpecification({L"2.5", 24, EnvironmentTemperature::Celsius30});
    module->AddCableSpecification({L"4", 32, EnvironmentTemperature::Celsius35});
    return module;
}

TEST_F(SizeModuleStorage, EveryFieldOfAPipeTableComesBack) {
    auto module = Pipe();
    module->SetMaterial(Material(L"m", L"steel", Type::Pipe, Discipline::HVAC));
    ASSERT_TRUE(Write(module));
    const auto read = Only(Type::Pipe, Discipline::HVAC);
    EXPECT_EQ(read->GetId(), L"p");
    EXPECT_EQ(read->GetName(), L"GB/T 3091");
    EXPECT_EQ(read->GetMEPType(), Type::Pipe);
    EXPECT_EQ(read->GetDisciplineId(), Discipline::HVAC);
    EXPECT_EQ(read->GetCreateTime(), 1'700'000'000'123);
    EXPECT_EQ(read->GetRoughness(), 0.045);
    EXPECT_EQ(read->GetPipeSizeList(), module->GetPipeSizeList());
    ASSERT_NE(read->GetMaterial(), nullptr);
    EXPECT_EQ(read->GetMaterial()->GetId(), L"m");
    EXPECT_EQ(read->GetMaterial()->GetName(), L"steel");
    EXPECT_EQ(read->GetMaterial()->GetMEPType(), Type::Pipe);
    EXPECT_EQ(read->GetMaterial()->GetDisciplineId(), Discipline::HVAC);
}

TEST_F(SizeModuleStorage, EveryFieldOfADuctTableComesBack) {
    ASSERT_TRUE(Write(Duct()));
    const auto read = Only(Type::Duct, Discipline::HVAC);
    EXPECT_EQ(read->GetName(), L"rect");
    EXPECT_EQ(read->GetCreateTime(), 3);
    EXPECT_EQ(read->GetPressureGrade(), PressureGrade::High);
    EXPECT_EQ(read->GetDuctShape(), SectionType::Oval);
    EXPECT_EQ(read->GetDuctSizeList(), Duct()->GetDuctSizeList());
}

TEST_F(SizeModuleStorage, OfATraysSizesTheThicknessIsLost) {
    ASSERT_TRUE(Write(Tray()));
    const auto read = Only(Type::CableTray, Discipline::Electrical);
    EXPECT_EQ(read->GetCableTrayShape(), CableTrayShape::Mesh);
    EXPECT_EQ(read->GetDuctSizeList(), (std::vector<ProjectSettingDuctSize>{{100.0F, 0.0F}, {200.0F, 0.0F}}));
}

TEST_F(SizeModuleStorage, EveryFieldOfAConduitTableComesBack) {
    ASSERT_TRUE(Write(Conduit()));
    const auto read = Only(Type::Conduit, Discipline::Electrical);
    EXPECT_EQ(read->GetName(), L"conduit");
    EXPECT_EQ(read->GetPipeSizeList(), Conduit()->GetPipeSizeList());
}

TEST_F(SizeModuleStorage, EveryFieldOfAWireTableComesBack) {
    ASSERT_TRUE(Write(Wire()));
    const auto read = Only(Type::Wire, Discipline::Electrical);
    EXPECT_EQ(read->GetCableSpecTypeName(), L"BV");
    EXPECT_EQ(read->GetCableEnvironmentTemperature(), EnvironmentTemperature::Celsius40);
    EXPECT_EQ(read->GetCableMaterial(), CableMaterial::Aluminium);
    EXPECT_EQ(read->GetCableSpecificationList(), Wire()->GetCableSpecificationList());
}

TEST_F(SizeModuleStorage, TheFileShowsWhatEachTypeKeeps) {
    for (const auto& module : {Pipe(), Duct(), Tray(), Conduit(), Wire()})
        ASSERT_TRUE(Write(module));
    EXPECT_EQ(
        Sql(path, "select MEPType, DisciplineId, roughness is not null, length(PipeSizeList), PressureGrade, "
                  "DuctShape, length(DuctSizeList), CableTrayShape, length(CableTraySizeList), "
                  "CableSpecTypeName, CableEnvironmentTemperature, CableMaterial, "
                  "length(CableSpecificationList), MaterialId from PSI order by MEPType"),
        (Rows{{"1", "1", "1", "32", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL"},
              {"2", "1", "0", "NULL", "1", "2", "16", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL"},
              {"3", "3", "0", "NULL", "NULL", "NULL", "NULL", "3", "8", "NULL", "NULL", "NULL", "NULL", "NULL"},
              {"4", "3", "0", "16", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL"},
              {"5", "3", "0", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "BV", "3", "1", "112", "NULL"}}));
}

TEST_F(SizeModuleStorage, APipeSizeStandsInTheFileAsNominalOuterInnerThickness) {
    ASSERT_TRUE(Write(Conduit()));
    EXPECT_EQ(SqlValue(path, "select hex(PipeSizeList) from PSI"), "00004040"
                                                                   "00000040"
                                                                   "0000803F"
                                                                   "00008040");
}

TEST_F(SizeModuleStorage, AnotherTypeKeepsWhatAllHave) {
    auto module = SizeModule(L"x", L"odd", static_cast<Type>(6), Discipline::Electrical, 9);
    module->SetMaterial(Material(L"m", L"steel"));
    module->AddPipeSize({});
    ASSERT_TRUE(Write(module));
    EXPECT_EQ(Sql(path, "select MEPType, Name, CreateTime, DisciplineId, PipeSizeList, MaterialId from PSI"),
              (Rows{{"6", "odd", "9.0", "NULL", "NULL", "NULL"}}));
    EXPECT_EQ(SqlValue(path, "select count(*) from MTS"), "0");
}

TEST_F(SizeModuleStorage, AnEmptyListHasNoAttribute) {
    struct {
        SizeModulePtr module;
        const char* column;
    } const cases[] = {{Pipe(), "PipeSizeList"},
                       {Duct(), "DuctSizeList"},
                       {Tray(), "CableTraySizeList"},
                       {Conduit(), "PipeSizeList"},
                       {Wire(), "CableSpecificationList"}};
    for (const auto& [module, column] : cases) {
        ASSERT_TRUE(Write(module));
        const std::string query = std::string("select ") + column + " is null from PSI where MEPType = " +
                                  std::to_string(static_cast<int>(module->GetMEPType()));
        EXPECT_EQ(SqlValue(path, query), "0") << column;
        module->ClearPipeSizes();
        module->ClearDuctSize();
        module->ClearCableSpecifications();
        ASSERT_TRUE(Write(module));
        EXPECT_EQ(SqlValue(path, query), "1") << column;
        const auto read = Only(module->GetMEPType(), module->GetDisciplineId());
        EXPECT_TRUE(read->GetPipeSizeList().empty() && read->GetDuctSizeList().empty() &&
                    read->GetCableSpecificationList().empty());
    }
}

TEST_F(SizeModuleStorage, TheDisciplineOfAllButPipesFollowsFromTheType) {
    struct {
        SizeModulePtr module;
        const char* stored;
    } const cases[] = {{Duct(), "1"}, {Tray(), "3"}, {Conduit(), "3"}, {Wire(), "3"}};
    for (const auto& [module, stored] : cases) {
        module->SetDisciplineId(Discipline::Plumbing);
        ASSERT_TRUE(Write(module));
        EXPECT_EQ(SqlValue(path, "select DisciplineId from PSI where MEPType = " +
                                     std::to_string(static_cast<int>(module->GetMEPType()))),
                  stored);
        EXPECT_TRUE(List(module->GetMEPType(), Discipline::Plumbing).empty());
    }
    EXPECT_EQ(Only(Type::Duct, Discipline::HVAC)->GetDisciplineId(), Discipline::HVAC);
    EXPECT_EQ(Only(Type::CableTray, Discipline::Electrical)->GetDisciplineId(), Discipline::Electrical);
    // What is noted for the next upload is the record's own word.
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"PSI d 1 2 2", "PSI t 1 3 2", "PSI c 1 4 2", "PSI w 1 5 2"}));
}

TEST_F(SizeModuleStorage, ATypeThatIsMissingIsThatOfTheRecordReadInto) {
    ASSERT_TRUE(Write(Duct()));
    Sql(path, "update PSI set MEPType = null");
    CQbase qb;
    ASSERT_TRUE(MepQbaseUtilTestAccess::OpenQbase(path, ddq, &qb, false, false) && qb.fetchFirstMember("PSI"));
    auto module = SizeModule(L"", L"", Type::Duct);
    EXPECT_TRUE(util.read_sizemodule_att(&qb, module));
    EXPECT_EQ(module->GetDuctSizeList().size(), 2U);
}

TEST_F(SizeModuleStorage, AStoredDisciplineYieldsToTheType) {
    ASSERT_TRUE(Write(Duct()));
    Sql(path, "update PSI set DisciplineId = 2");
    EXPECT_EQ(Only(Type::Duct, Discipline::Plumbing)->GetDisciplineId(), Discipline::HVAC);
}

TEST_F(SizeModuleStorage, AListIsThatOfOneTypeAndDisciplineInOrderOfCreation) {
    for (const wchar_t* id : {L"b", L"a"}) {
        auto module = Pipe(id);
        module->SetMaterial(Material(L"m", L"steel"));
        ASSERT_TRUE(Write(module));
    }
    ASSERT_TRUE(Write(SizeModule(L"c", L"plumbing")) && Write(Duct()));
    const auto list = List(Type::Pipe, Discipline::HVAC);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0]->GetId(), L"b");
    EXPECT_EQ(list[1]->GetId(), L"a");
    EXPECT_NE(list[0]->GetMaterial(), list[1]->GetMaterial()) << "each module owns its material";
    EXPECT_EQ(list[1]->GetMaterial()->GetId(), L"m");
}

TEST_F(SizeModuleStorage, AWriteNotesCreationAndEdit) {
    ASSERT_TRUE(Write(Pipe()));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"PSI p 1 1 1"}));
    ASSERT_TRUE(CQbase::removeStore(statusPath));
    ASSERT_TRUE(Write(Pipe()));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"PSI p 2 1 1"}));
}

TEST_F(SizeModuleStorage, ADeletionTakesTheKnownAndLeavesTheMaterial) {
    auto module = Pipe();
    module->SetMaterial(Material(L"m", L"steel"));
    ASSERT_TRUE(Write(module) && Write(Duct()));
    ASSERT_TRUE(CQbase::removeStore(statusPath));
    const auto unknown = SizeModule(L"unknown", L"");
    EXPECT_TRUE(util.DeleteSizeModuleList(path, ddq, {nullptr, module.get(), unknown.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteSizeModuleList: size为空"}));
    EXPECT_EQ(SqlValue(path, "select MEPType from PSI"), "2");
    EXPECT_EQ(SqlValue(path, "select count(*) from MTS"), "1");
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"PSI p 3 1 1"}));
}

TEST_F(SizeModuleStorage, ANullRecordIsNotWritten) {
    EXPECT_FALSE(util.WriteSizeModule(path, ddq, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteSizeModule: newSize为空"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(SizeModuleStorage, AnEmptyIdIsReplacedAlsoWithAMaterial) {
    auto module = Pipe(L"");
    module->SetMaterial(Material(L"m", L"steel"));
    EXPECT_TRUE(Write(module));
    const auto read = Only(Type::Pipe, Discipline::HVAC);
    EXPECT_EQ(read->GetId().size(), 36U);
    EXPECT_EQ(read->GetPipeSizeList().size(), 2U);
    ASSERT_NE(read->GetMaterial(), nullptr);
    EXPECT_EQ(Sql(path, "select Name, MEPType from MTS"), (Rows{{"steel", "1"}}));
}

TEST_F(SizeModuleStorage, AFactoryThatMakesNothingIsReported) {
    ASSERT_TRUE(Write(Pipe()));
    const EmptyFactory nothing;
    EXPECT_TRUE(List(Type::Pipe, Discipline::HVAC).empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadSizeModuleList: ptempSize为空"}));
}

// --- lists at and over their capacity -----------------------------------------------------------------------------

SizeModulePtr WithSizes(Type type, int count) {
    auto module = SizeModule(L"long", L"", type);
    module->SetMEPType(type); // the discipline follows
    for (int i = 0; i < count; ++i) {
        module->AddPipeSize({1.0F, 2.0F, static_cast<float>(i), 4.0F});
        module->AddDuctSize({static_cast<float>(i), 0.0F});
        module->AddCableSpecification({L"1", i, EnvironmentTemperature::Celsius30});
    }
    return module;
}

class ListCapacity : public SizeModuleStorage, public testing::WithParamInterface<std::pair<Type, const wchar_t*>> {};

TEST_P(ListCapacity, ThreeHundredEntriesAreKept) {
    const auto module = WithSizes(GetParam().first, 300);
    ASSERT_TRUE(Write(module));
    const auto read = Only(module->GetMEPType(), module->GetDisciplineId());
    EXPECT_EQ(read->GetPipeSizeList().size() + read->GetDuctSizeList().size() +
                  read->GetCableSpecificationList().size(),
              300U);
}

TEST_P(ListCapacity, OneMoreIsRefusedBeforeTheStoreIsOpened) {
    EXPECT_FALSE(Write(WithSizes(GetParam().first, 301)));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{wstring(L"MepQbaseUtil::WriteSizeModule: ") + GetParam().second + L" 超过300条: 301"}));
    EXPECT_FALSE(Exists(path));
}

TEST_P(ListCapacity, OneMoreLeavesTheStoreAsItWas) {
    ASSERT_TRUE(Write(WithSizes(GetParam().first, 3)));
    const auto before = FileBytes(path);
    EXPECT_FALSE(Write(WithSizes(GetParam().first, 301)));
    EXPECT_EQ(TakeDebugWarnings().size(), 1U);
    EXPECT_EQ(FileBytes(path), before);
}

TEST_P(ListCapacity, TheNestedWriterRefusesItToo) {
    CQbase qb;
    ASSERT_TRUE(MepQbaseUtilTestAccess::OpenQbase(path, ddq, &qb, true, true) && qb.createRec("PSI", L"long"));
    EXPECT_FALSE(util.write_sizemodule_att(&qb, WithSizes(GetParam().first, 301).get()));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{wstring(L"MepQbaseUtil::write_sizemodule_att: ") + GetParam().second + L" 超过300条: 301"}));
}

INSTANTIATE_TEST_SUITE_P(SizeModuleStorage, ListCapacity,
                         testing::Values(std::pair{Type::Pipe, L"PipeSizeList"}, std::pair{Type::Duct, L"DuctSizeList"},
                                         std::pair{Type::CableTray, L"CableTraySizeList"},
                                         std::pair{Type::Conduit, L"PipeSizeList"},
                                         std::pair{Type::Wire, L"CableSpecificationList"}));

TEST_F(SizeModuleStorage, AListThatTheTypeDoesNotKeepMayBeLong) {
    auto module = SizeModule(L"p", L"", Type::Pipe);
    for (int i = 0; i < 301; ++i)
        module->AddDuctSize({});
    EXPECT_TRUE(Write(module));
}

} // namespace
