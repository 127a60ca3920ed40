#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"

namespace {

using namespace tolm;
using namespace tolmtest;
using Rows = std::vector<SqlRow>;

/// Size modules and the materials that they name.
class SizeModuleMaterials : public StoreFixture {
protected:
    bool Write(const wstring& id, MaterialPtr material, Type type = Type::Pipe) {
        auto module = SizeModule(id, L"sizes", type);
        module->AddPipeSize({1.0F, 2.0F, 3.0F, 4.0F});
        module->AddDuctSize({100.0F, 1.0F});
        if (material)
            module->SetMaterial(std::move(material));
        return util.WriteSizeModule(path, ddq, module.get());
    }
    std::vector<SizeModulePtr> List() {
        std::vector<SizeModulePtr> list;
        util.ReadSizeModuleList(path, ddq, Type::Pipe, Discipline::Plumbing, list);
        return list;
    }
    bool OfMaterial(const wstring& materialId, SizeModulePtr& module, Type type = Type::Pipe) {
        return util.ReadSizeModuleList(path, ddq, type, materialId, module);
    }
};

TEST_F(SizeModuleMaterials, AreWrittenWithTheModuleAndNotTracked) {
    ASSERT_TRUE(Write(L"p", Material(L"m", L"steel", Type::Duct, Discipline::HVAC, 55)));
    EXPECT_EQ(Sql(path, "select Name, MEPType, DisciplineId, CreateTime from MTS"),
              (Rows{{"steel", "2", "1", "NULL"}}));
    EXPECT_EQ(SqlValue(path, "select MaterialId from PSI"), "m");
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"PSI p 1 1 2"}));
}

TEST_F(SizeModuleMaterials, ThatExistKeepTheirTimeOfCreation) {
    const auto material = Material(L"m", L"steel", Type::Pipe, Discipline::Plumbing, 55);
    ASSERT_TRUE(util.WriteMaterial(path, ddq, material.get()));
    ASSERT_TRUE(Write(L"p", Material(L"m", L"copper")));
    EXPECT_EQ(Sql(path, "select Name, CreateTime from MTS"), (Rows{{"copper", "55.0"}}));
    const auto list = List();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]->GetMaterial()->GetName(), L"copper");
    EXPECT_EQ(list[0]->GetMaterial()->GetCreateTime(), 55);
}

TEST_F(SizeModuleMaterials, OfADuctAreStoredAndOfOthersNot) {
    for (const Type type : {Type::Pipe, Type::Duct, Type::CableTray, Type::Conduit, Type::Wire})
        ASSERT_TRUE(Write(std::to_wstring(static_cast<int>(type)), Material(L"m", L"steel"), type));
    EXPECT_EQ(Sql(path, "select MEPType, MaterialId from PSI order by MEPType"),
              (Rows{{"1", "m"}, {"2", "m"}, {"3", "NULL"}, {"4", "NULL"}, {"5", "NULL"}}));
}

TEST_F(SizeModuleMaterials, AreReadForEveryTypeThatNamesOne) {
    ASSERT_TRUE(Write(L"m", Material(L"m", L"steel")) && Write(L"c", {}, Type::Conduit));
    Sql(path, "update PSI set MaterialId = 'm'");
    std::vector<SizeModulePtr> list;
    ASSERT_TRUE(util.ReadSizeModuleList(path, ddq, Type::Conduit, Discipline::Electrical, list));
    ASSERT_NE(list[0]->GetMaterial(), nullptr);
    EXPECT_EQ(list[0]->GetMaterial()->GetName(), L"steel");
}

TEST_F(SizeModuleMaterials, ThatNoLongerExistLeaveTheModuleWithoutOne) {
    ASSERT_TRUE(Write(L"a", Material(L"m", L"steel")) && Write(L"b", Material(L"m", L"steel")) && Write(L"c", {}));
    ASSERT_TRUE(util.DeleteMaterialList(path, ddq, {Material(L"m", L"").get()}));
    const auto list = List();
    ASSERT_EQ(list.size(), 3U) << "the walk goes on behind a material that is not found";
    for (const auto& module : list)
        EXPECT_EQ(module->GetMaterial(), nullptr);
}

TEST_F(SizeModuleMaterials, ThatThreeModulesShareComeBackInEach) {
    ASSERT_TRUE(util.WriteMaterial(path, ddq, Material(L"m", L"steel", Type::Pipe, Discipline::HVAC, 7).get()));
    for (const wchar_t* id : {L"a", L"b", L"c"})
        ASSERT_TRUE(Write(id, Material(L"m", L"steel", Type::Pipe, Discipline::HVAC)));
    ASSERT_TRUE(Write(L"d", Material(L"n", L"copper")));
    const auto list = List();
    ASSERT_EQ(list.size(), 4U);
    for (std::size_t i = 0; i < 3; ++i) {
        const IProjectSettingMaterial* material = list[i]->GetMaterial();
        ASSERT_NE(material, nullptr);
        EXPECT_EQ(material->GetId(), L"m");
        EXPECT_EQ(material->GetName(), L"steel");
        EXPECT_EQ(material->GetMEPType(), Type::Pipe);
        EXPECT_EQ(material->GetDisciplineId(), Discipline::HVAC);
        EXPECT_EQ(material->GetCreateTime(), 7);
    }
    EXPECT_EQ(list[3]->GetMaterial()->GetName(), L"copper");
}

TEST_F(SizeModuleMaterials, AWriteWithoutOneKeepsTheStoredReference) {
    ASSERT_TRUE(Write(L"p", Material(L"m", L"steel")) && Write(L"p", {}));
    EXPECT_EQ(SqlValue(path, "select MaterialId from PSI"), "m");
}

TEST_F(SizeModuleMaterials, ThatTheFactoryDoesNotMakeAreReported) {
    ASSERT_TRUE(Write(L"a", Material(L"m", L"steel")));
    CQbase qb;
    ASSERT_TRUE(MepQbaseUtilTestAccess::OpenQbase(path, ddq, &qb, false, false) && qb.fetchFirstMember("PSI"));
    auto module = SizeModule(L"", L"");
    const EmptyFactory nothing;
    EXPECT_TRUE(util.read_sizemodule_att(&qb, module));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_sizemodule_att: pMaterial为空"}));
    EXPECT_EQ(module->GetMaterial(), nullptr);
    CWsz id;
    EXPECT_TRUE(qb.getObjId(id));
    EXPECT_EQ(id.str(), L"a") << "the module's record is the current one";
}

TEST_F(SizeModuleMaterials, TheReaderAndTheWriterEndOnTheirOwnRecord) {
    auto module = SizeModule(L"p", L"sizes");
    module->SetMaterial(Material(L"m", L"steel"));
    CQbase qb;
    CWsz id;
    ASSERT_TRUE(MepQbaseUtilTestAccess::OpenQbase(path, ddq, &qb, true, true) && qb.createRec("PSI", L"p"));
    EXPECT_TRUE(util.write_sizemodule_att(&qb, module.get()));
    EXPECT_TRUE(qb.getObjId(id));
    EXPECT_EQ(id.str(), L"p");
    EXPECT_TRUE(util.read_sizemodule_att(&qb, module));
    EXPECT_TRUE(qb.getObjId(id));
    EXPECT_EQ(id.str(), L"p");
}

TEST_F(SizeModuleMaterials, AModuleIsFoundByItsMaterial) {
    ASSERT_TRUE(Write(L"a", Material(L"m", L"steel")) && Write(L"b", Material(L"n", L"copper")) &&
                Write(L"c", Material(L"n", L"copper")) && Write(L"d", Material(L"n", L"copper"), Type::Duct));
    SizeModulePtr module;
    EXPECT_TRUE(OfMaterial(L"n", module));
    ASSERT_TRUE(module);
    EXPECT_EQ(module->GetId(), L"b");
    EXPECT_EQ(module->GetMaterial()->GetName(), L"copper");
    EXPECT_TRUE(OfMaterial(L"n", module, Type::Duct));
    EXPECT_EQ(module->GetId(), L"d");
}

TEST_F(SizeModuleMaterials, AModuleWithoutSizesIsFoundAndFalse) {
    auto empty = SizeModule(L"a", L"");
    empty->SetMaterial(Material(L"m", L"steel"));
    ASSERT_TRUE(util.WriteSizeModule(path, ddq, empty.get()));
    SizeModulePtr module;
    EXPECT_FALSE(OfMaterial(L"m", module));
    ASSERT_TRUE(module);
    EXPECT_EQ(module->GetId(), L"a");
}

TEST_F(SizeModuleMaterials, NoModuleOfAMaterialIsReported) {
    ASSERT_TRUE(Write(L"a", Material(L"m", L"steel")));
    SizeModulePtr module;
    EXPECT_FALSE(OfMaterial(L"n", module));
    EXPECT_FALSE(OfMaterial(L"m", module, Type::Duct));
    EXPECT_FALSE(module);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadSizeModuleList: retSizeModuleList为空",
                                                         L"MepQbaseUtil::ReadSizeModuleList: retSizeModuleList为空"}));
}

TEST_F(SizeModuleMaterials, AModuleThatTheFactoryDoesNotMakeIsReportedTwice) {
    ASSERT_TRUE(Write(L"a", Material(L"m", L"steel")));
    const EmptyFactory nothing;
    SizeModulePtr module;
    EXPECT_FALSE(OfMaterial(L"m", module));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"ptempSize为空", L"retSizeModuleList为空"}));
}

TEST_F(SizeModuleMaterials, AListThatIsThereWithoutDataIsReported) {
    ASSERT_TRUE(Write(L"a", {}));
    Sql(path, "update PSI set PipeSizeList = x''");
    const auto list = List();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_TRUE(list[0]->GetPipeSizeList().empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_sizemodule_att: pSize为空"}));
}

TEST_F(SizeModuleMaterials, ATruncatedListGivesItsWholeEntries) {
    ASSERT_TRUE(Write(L"a", {}));
    Sql(path, "update PSI set PipeSizeList = x'00004040000000400000803F000080400000803F00'");
    const auto list = List();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]->GetPipeSizeList(), (std::vector<ProjectSettingPipeSize>{{1.0F, 2.0F, 3.0F, 4.0F}}));
}

TEST_F(SizeModuleMaterials, ReaderAndWriterRefuseNoStoreAndNoRecord) {
    CQbase qb;
    SizeModulePtr none;
    auto module = SizeModule(L"m", L"");
    EXPECT_FALSE(util.read_sizemodule_att(nullptr, module));
    EXPECT_FALSE(util.read_sizemodule_att(&qb, none));
    EXPECT_FALSE(util.write_sizemodule_att(nullptr, module.get()));
    EXPECT_FALSE(util.write_sizemodule_att(&qb, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_sizemodule_att: qb为空",
                                                         L"MepQbaseUtil::read_sizemodule_att: retSizeModule为空",
                                                         L"MepQbaseUtil::write_sizemodule_att: qb为空",
                                                         L"MepQbaseUtil::write_sizemodule_att: sizeModule为空"}));
}

} // namespace
