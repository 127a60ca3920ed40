#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class SizeModuleReferences : public StoreFixture {
protected:
    /// A material series that names a size module.
    void Series(const wchar_t* id, const wchar_t* name, short type, short discipline, const wchar_t* module) {
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(ddq, path, true) && qb.createRec("SMS", id));
        if (name != nullptr)
            qb.setWsz(1601, name, -1);
        qb.setShort(1104, type);
        qb.setShort(1181, discipline);
        qb.setWsz(1506, module, -1);
        ASSERT_TRUE(qb.saveRec());
    }
    /// A system type with cable tables.
    void System(const wchar_t* id, const wchar_t* name, short type, short discipline,
                const std::vector<const wchar_t*>& cables) {
        CQbase qb;
        CWszArray ids;
        for (const wchar_t* cable : cables)
            ids.append(cable);
        ASSERT_TRUE(qb.openDatabase(ddq, path, true) && qb.createRec("SYS", id));
        if (name != nullptr)
            qb.setWsz(1601, name, -1);
        qb.setShort(1104, type);
        qb.setShort(1181, discipline);
        if (!cables.empty())
            qb.setWszArray(1610, ids, -1);
        ASSERT_TRUE(qb.saveRec());
    }
    bool IsReferred(Type type, Discipline discipline, const wchar_t* id = L"s") {
        return util.IsTheSizeModuleReferred(path, ddq, SizeModule(id, L"", type, discipline).get(), referrer);
    }

    wstring referrer = L"before";
};

TEST_F(SizeModuleReferences, OfAPipeTableAreTheSeriesThatNameIt) {
    Series(L"1", L"of another", 1, 2, L"other");
    Series(L"2", L"first", 1, 2, L"s");
    Series(L"3", L"second", 1, 2, L"s");
    EXPECT_TRUE(IsReferred(Type::Pipe, Discipline::Plumbing));
    EXPECT_EQ(referrer, L"first");
}

TEST_F(SizeModuleReferences, AreOfTheModulesTypeAndDiscipline) {
    Series(L"1", L"first", 1, 2, L"s");
    EXPECT_FALSE(IsReferred(Type::Pipe, Discipline::HVAC));
    EXPECT_FALSE(IsReferred(Type::Duct, Discipline::HVAC));
    EXPECT_FALSE(IsReferred(Type::Pipe, Discipline::Plumbing, L"other"));
    EXPECT_EQ(referrer, L"before");
}

TEST_F(SizeModuleReferences, OfATrayTableAreSeriesToo) {
    Series(L"1", L"tray series", 3, 3, L"s");
    EXPECT_TRUE(IsReferred(Type::CableTray, Discipline::Electrical));
    EXPECT_EQ(referrer, L"tray series");
}

TEST_F(SizeModuleReferences, OfACableTableAreElectricalSystemTypes) {
    Series(L"1", L"a series", 5, 3, L"s");
    System(L"2", L"without", 6, 3, {});
    System(L"3", L"other", 6, 3, {L"a", L"ss"});
    EXPECT_FALSE(IsReferred(Type::Wire, Discipline::Electrical));
    System(L"4", L"lighting", 6, 3, {L"a", L"s"});
    System(L"5", L"power", 6, 3, {L"s"});
    EXPECT_TRUE(IsReferred(Type::Wire, Discipline::Electrical));
    EXPECT_EQ(referrer, L"lighting");
}

TEST_F(SizeModuleReferences, OfACableTableAreSystemTypesOfTheNextTypeAndTheDisciplineAlone) {
    System(L"1", L"type 5", 5, 3, {L"s"});
    System(L"2", L"discipline 2", 6, 2, {L"s"});
    EXPECT_FALSE(IsReferred(Type::Wire, Discipline::Electrical));
    EXPECT_EQ(referrer, L"before");
}

TEST_F(SizeModuleReferences, OfACableTableAreSoughtAmongTheFirstHundredIdsOfASystemType) {
    std::vector<const wchar_t*> cables(99, L"another");
    cables.push_back(L"s");
    cables.push_back(L"t");
    System(L"1", L"large", 6, 3, cables);
    EXPECT_TRUE(IsReferred(Type::Wire, Discipline::Electrical, L"s"));
    EXPECT_EQ(referrer, L"large");
    EXPECT_FALSE(IsReferred(Type::Wire, Discipline::Electrical, L"t"));
}

TEST_F(SizeModuleReferences, WithoutANameLeaveTheText) {
    Series(L"1", nullptr, 1, 2, L"s");
    EXPECT_TRUE(IsReferred(Type::Pipe, Discipline::Plumbing));
    System(L"2", nullptr, 6, 3, {L"s"});
    EXPECT_TRUE(IsReferred(Type::Wire, Discipline::Electrical));
    EXPECT_EQ(referrer, L"before");
}

TEST_F(SizeModuleReferences, InAStoreThatDoesNotOpenAreNone) {
    EXPECT_FALSE(IsReferred(Type::Pipe, Discipline::Plumbing));
    EXPECT_FALSE(Exists(path));
}

TEST_F(SizeModuleReferences, OfNoModuleAreReported) {
    MakeStore();
    EXPECT_FALSE(util.IsTheSizeModuleReferred(path, ddq, nullptr, referrer));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::IsTheSizeModuleReferred: pSizeModule为空"}));
}

TEST_F(SizeModuleReferences, AreAskedForWithoutAChange) {
    Series(L"1", L"first", 1, 2, L"s");
    const auto before = FileBytes(path);
    EXPECT_TRUE(IsReferred(Type::Pipe, Discipline::Plumbing));
    EXPECT_EQ(FileBytes(path), before);
    EXPECT_FALSE(Exists(statusPath));
}

} // namespace
