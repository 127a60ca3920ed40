#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"
#include "Vorn/Guid.h"

#include <limits>

namespace {

using namespace tolm;
using namespace tolmtest;
using Names = std::vector<wstring>;

class MaterialStorage : public StoreFixture {
protected:
    bool Write(const MaterialPtr& material) { return util.WriteMaterial(path, ddq, material.get()); }
    MaterialPtr Read(const wstring& id) {
        MaterialPtr material;
        EXPECT_TRUE(util.ReadMaterial(path, ddq, id, material));
        return material;
    }
    Names NamesOf(Type type, Discipline discipline) {
        std::vector<MaterialPtr> list;
        const bool found = util.ReadMaterialList(path, ddq, type, discipline, list);
        EXPECT_EQ(found, !list.empty());
        Names names;
        for (const auto& material : list)
            names.push_back(material->GetName());
        return names;
    }
};

TEST_F(MaterialStorage, EveryFieldComesBack) {
    ASSERT_TRUE(Write(Material(L"m1", L"镀锌钢管 / galvanised", Type::Duct, Discipline::HVAC, 1'700'000'000'123)));
    const auto read = Read(L"m1");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->GetId(), L"m1");
    EXPECT_EQ(read->GetName(), L"镀锌钢管 / galvanised");
    EXPECT_EQ(read->GetMEPType(), Type::Duct);
    EXPECT_EQ(read->GetDisciplineId(), Discipline::HVAC);
    EXPECT_EQ(read->GetCreateTime(), 1'700'000'000'123);
}

TEST_F(MaterialStorage, TheFileShowsTheAttributesUnderTheirNames) {
    ASSERT_TRUE(Write(Material(L"m1", L"steel", Type::Conduit, Discipline::Electrical, 12)));
    EXPECT_EQ(Sql(path, "select Name, MEPType, DisciplineId, CreateTime from MTS"),
              (std::vector<SqlRow>{{"steel", "4", "3", "12.0"}}));
}

TEST_F(MaterialStorage, ATimeOfCreationIsKeptAsADoubleAndReadTruncated) {
    ASSERT_TRUE(Write(Material(L"m1", L"", Type::Pipe, Discipline::Plumbing, 1)));
    Sql(path, "update MTS set CreateTime = 1234.9");
    EXPECT_EQ(Read(L"m1")->GetCreateTime(), 1234);
    Sql(path, "update MTS set CreateTime = -1234.9");
    EXPECT_EQ(Read(L"m1")->GetCreateTime(), -1234);
}

TEST_F(MaterialStorage, ATimeOfCreationOutOfRangeIsTheNearestOne) {
    ASSERT_TRUE(Write(Material(L"m1", L"")));
    Sql(path, "update MTS set CreateTime = 1e300");
    EXPECT_EQ(Read(L"m1")->GetCreateTime(), std::numeric_limits<__int64>::max());
    Sql(path, "update MTS set CreateTime = -9e999");
    EXPECT_EQ(Read(L"m1")->GetCreateTime(), std::numeric_limits<__int64>::min());
}

TEST_F(MaterialStorage, AMissingAttributeLeavesTheDefault) {
    ASSERT_TRUE(Write(Material(L"m1", L"steel", Type::Duct, Discipline::HVAC, 5)));
    Sql(path, "update MTS set Name = null, MEPType = null, DisciplineId = null, CreateTime = null");
    const auto read = Read(L"m1");
    EXPECT_EQ(read->GetName(), L"");
    EXPECT_EQ(read->GetMEPType(), Type::Pipe);
    EXPECT_EQ(read->GetDisciplineId(), Discipline::Plumbing);
    EXPECT_EQ(read->GetCreateTime(), 0);
}

TEST_F(MaterialStorage, AnUnknownIdReadsAsTrueWithoutAMaterial) {
    ASSERT_TRUE(Write(Material(L"m1", L"steel")));
    EXPECT_FALSE(Read(L"m2"));
}

TEST_F(MaterialStorage, AListIsThatOfOneTypeAndDisciplineInOrderOfCreation) {
    ASSERT_TRUE(Write(Material(L"2", L"b")) && Write(Material(L"1", L"a")));
    ASSERT_TRUE(Write(Material(L"3", L"duct", Type::Duct, Discipline::HVAC)));
    ASSERT_TRUE(Write(Material(L"4", L"heating", Type::Pipe, Discipline::HVAC)));
    EXPECT_EQ(NamesOf(Type::Pipe, Discipline::Plumbing), (Names{L"b", L"a"}));
    EXPECT_EQ(NamesOf(Type::Duct, Discipline::HVAC), (Names{L"duct"}));
    EXPECT_EQ(NamesOf(Type::Pipe, Discipline::HVAC), (Names{L"heating"}));
}

TEST_F(MaterialStorage, AnEmptyListReadsAsFalse) {
    MakeStore();
    EXPECT_EQ(NamesOf(Type::Pipe, Discipline::Plumbing), Names{});
}

TEST_F(MaterialStorage, AListIsAppendedTo) {
    ASSERT_TRUE(Write(Material(L"1", L"a")));
    std::vector<MaterialPtr> list;
    EXPECT_TRUE(util.ReadMaterialList(path, ddq, Type::Pipe, Discipline::Plumbing, list));
    EXPECT_TRUE(util.ReadMaterialList(path, ddq, Type::Pipe, Discipline::Plumbing, list));
    EXPECT_EQ(list.size(), 2U);
    EXPECT_TRUE(util.ReadMaterialList(path, ddq, Type::Duct, Discipline::HVAC, list)) << "the list holds something";
}

TEST_F(MaterialStorage, AWriteOfAKnownIdReplaces) {
    ASSERT_TRUE(Write(Material(L"1", L"a")) && Write(Material(L"2", L"b")));
    ASSERT_TRUE(Write(Material(L"1", L"c")));
    EXPECT_EQ(NamesOf(Type::Pipe, Discipline::Plumbing), (Names{L"c", L"b"}));
}

TEST_F(MaterialStorage, AnEmptyIdIsReplacedInTheStoreAndNotInTheRecord) {
    static int made = 0;
    vorn::GuidUtils::SetGenerator([] {
        vorn::Guid guid;
        guid.bytes[15] = static_cast<std::uint8_t>(++made);
        guid.bytes[0] = 0xAB;
        return guid;
    });
    const auto material = Material(L"", L"steel");
    made = 0;
    EXPECT_TRUE(Write(material));
    EXPECT_TRUE(Write(material));
    vorn::GuidUtils::SetGenerator(nullptr);
    EXPECT_EQ(material->GetId(), L"");
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MTS ab000000-0000-0000-0000-000000000001 1 1 2",
                                                         "MTS ab000000-0000-0000-0000-000000000002 1 1 2"}));
    EXPECT_TRUE(Read(L"ab000000-0000-0000-0000-000000000001"));
}

TEST_F(MaterialStorage, AWriteNotesCreationAndEditUnderItsTypeAndDiscipline) {
    ASSERT_TRUE(Write(Material(L"1", L"a", Type::CableTray, Discipline::Electrical)));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MTS 1 1 3 3"}));
    ASSERT_TRUE(CQbase::removeStore(statusPath));
    ASSERT_TRUE(Write(Material(L"1", L"b", Type::CableTray, Discipline::Electrical)));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MTS 1 2 3 3"}));
}

TEST_F(MaterialStorage, ADeletionTakesTheKnownAndNotesThem) {
    ASSERT_TRUE(Write(Material(L"1", L"a")) && Write(Material(L"2", L"b")) && Write(Material(L"3", L"c")));
    ASSERT_TRUE(CQbase::removeStore(statusPath));
    const auto first = Material(L"1", L"");
    const auto third = Material(L"3", L"");
    const auto unknown = Material(L"9", L"");
    EXPECT_TRUE(util.DeleteMaterialList(path, ddq, {first.get(), unknown.get(), nullptr, third.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteMaterialList: material为空"}));
    EXPECT_EQ(NamesOf(Type::Pipe, Discipline::Plumbing), (Names{L"b"}));
    EXPECT_EQ(StatusRecords(), (std::vector<std::string>{"MTS 1 3 1 2", "MTS 3 3 1 2"}));
}

TEST_F(MaterialStorage, ADeletionOfNothingIsTrue) {
    MakeStore();
    EXPECT_TRUE(util.DeleteMaterialList(path, ddq, {}));
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(MaterialStorage, ANullRecordIsNotWritten) {
    EXPECT_FALSE(util.WriteMaterial(path, ddq, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteMaterial: newMaterial为空"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(MaterialStorage, AFactoryThatMakesNothingIsReportedForEachRecord) {
    ASSERT_TRUE(Write(Material(L"1", L"a")) && Write(Material(L"2", L"b")));
    const EmptyFactory nothing;
    EXPECT_EQ(NamesOf(Type::Pipe, Discipline::Plumbing), Names{});
    EXPECT_FALSE(Read(L"1"));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadMaterialList: ptempMaterial为空",
                                                         L"MepQbaseUtil::ReadMaterialList: ptempMaterial为空",
                                                         L"MepQbaseUtil::ReadMaterial: ptempMaterial为空"}));
}

TEST_F(MaterialStorage, TheReaderRefusesNoStoreAndNoRecord) {
    CQbase qb;
    MaterialPtr none;
    auto material = Material(L"m", L"");
    EXPECT_FALSE(util.read_materialserie_att(nullptr, material));
    EXPECT_FALSE(util.read_materialserie_att(&qb, none));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_materialserie_att: qb为空",
                                                         L"MepQbaseUtil::read_materialserie_att: retMaterial为空"}));
}

class NestedMaterial : public MaterialStorage {
protected:
    bool WriteNested(const IProjectSettingMaterial* material) {
        CQbase qb;
        return MepQbaseUtilTestAccess::OpenQbase(path, ddq, &qb, true, true) &&
               util.write_materialserie_att(&qb, material) && qb.closeDatabase();
    }
};

TEST_F(NestedMaterial, OfANewMaterialHasNoTimeOfCreation) {
    EXPECT_TRUE(WriteNested(Material(L"m", L"steel", Type::Duct, Discipline::HVAC, 77).get()));
    EXPECT_EQ(Sql(path, "select Name, MEPType, DisciplineId, CreateTime from MTS"),
              (std::vector<SqlRow>{{"steel", "2", "1", "NULL"}}));
}

TEST_F(NestedMaterial, OfAKnownMaterialKeepsItsTimeOfCreation) {
    ASSERT_TRUE(Write(Material(L"m", L"steel", Type::Pipe, Discipline::Plumbing, 77)));
    EXPECT_TRUE(WriteNested(Material(L"m", L"copper", Type::Duct, Discipline::HVAC, 88).get()));
    EXPECT_EQ(Sql(path, "select Name, MEPType, DisciplineId, CreateTime from MTS"),
              (std::vector<SqlRow>{{"copper", "2", "1", "77.0"}}));
}

TEST_F(NestedMaterial, IsNotTracked) {
    EXPECT_TRUE(WriteNested(Material(L"m", L"steel").get()));
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(NestedMaterial, WithoutAnIdIsRefusedAndChangesNoOtherRecord) {
    ASSERT_TRUE(Write(Material(L"m", L"steel")));
    CQbase qb;
    ASSERT_TRUE(MepQbaseUtilTestAccess::OpenQbase(path, ddq, &qb, true, true) && qb.fetchEqualRec("MTS", L"m"));
    EXPECT_FALSE(util.write_materialserie_att(&qb, Material(L"", L"copper").get()));
    ASSERT_TRUE(qb.closeDatabase());
    EXPECT_EQ(Sql(path, "select Name from MTS"), (std::vector<SqlRow>{{"steel"}}));
}

TEST_F(NestedMaterial, WriterRefusesNoStoreAndNoRecord) {
    CQbase qb;
    EXPECT_FALSE(util.write_materialserie_att(nullptr, Material(L"m", L"").get()));
    EXPECT_FALSE(util.write_materialserie_att(&qb, nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::write_materialserie_att: qb为空",
                                                         L"MepQbaseUtil::write_materialserie_att: pMaterial为空"}));
}

} // namespace
