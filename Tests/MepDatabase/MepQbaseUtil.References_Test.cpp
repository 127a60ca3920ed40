#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/SeriesFixture.h"
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

// --- material series -----------------------------------------------------------------------------------------------

class SeriesReferences : public SeriesFixture {
protected:
    bool System(const wchar_t* id, const wchar_t* name, const std::vector<const wchar_t*>& series,
                Type type = Type::Pipe, Discipline discipline = Discipline::Plumbing) {
        auto systemType = SystemType(id, name, type, discipline);
        for (const wchar_t* serieId : series) {
            auto serie = Serie(serieId);
            systemType->AddSystemMaterialSerie(serie);
        }
        return Write(systemType);
    }
    bool IsReferred(Type type = Type::Pipe, Discipline discipline = Discipline::Plumbing, const wchar_t* id = L"s") {
        return util.IsTheMEPMaterialSeireReferred(path, ddq, Serie(id, L"", type, discipline).get(), referrer);
    }

    wstring referrer = L"before";
};

TEST_F(SeriesReferences, AreTheSystemTypesThatListIt) {
    ASSERT_TRUE(System(L"1", L"without", {}) && System(L"2", L"other", {L"a", L"ss"}));
    EXPECT_FALSE(IsReferred());
    EXPECT_EQ(referrer, L"before");
    ASSERT_TRUE(System(L"3", L"cold water", {L"a", L"s"}) && System(L"4", L"hot water", {L"s"}));
    EXPECT_TRUE(IsReferred());
    EXPECT_EQ(referrer, L"cold water") << "the first that the store yields";
}

TEST_F(SeriesReferences, OfDuctsAreFoundToo) {
    ASSERT_TRUE(System(L"1", L"supply", {L"s"}, Type::Duct, Discipline::HVAC));
    EXPECT_TRUE(IsReferred(Type::Duct, Discipline::HVAC));
    EXPECT_EQ(referrer, L"supply");
}

TEST_F(SeriesReferences, AreOfTheSeriesTypeAndDiscipline) {
    ASSERT_TRUE(System(L"1", L"cold water", {L"s"}));
    EXPECT_FALSE(IsReferred(Type::Pipe, Discipline::HVAC));
    EXPECT_FALSE(IsReferred(Type::Duct, Discipline::Plumbing));
    EXPECT_FALSE(IsReferred(Type::Pipe, Discipline::Plumbing, L"S"));
}

TEST_F(SeriesReferences, OfOtherTypesAreNeverAskedFor) {
    for (const Type type : {Type::CableTray, Type::Conduit, Type::Wire, Type::ElectricalSystem}) {
        ASSERT_TRUE(System(L"1", L"odd", {L"s"}, type, Discipline::Electrical));
        CQbase holder;
        ASSERT_TRUE(holder.openDatabase(ddq, path, false) && holder.lockForUpdate());
        EXPECT_FALSE(IsReferred(type, Discipline::Electrical));
    }
    const NoStoreHandles none;
    EXPECT_FALSE(IsReferred(Type::CableTray, Discipline::Electrical)) << "no handle is asked for";
}

TEST_F(SeriesReferences, WithoutANameLeaveTheText) {
    ASSERT_TRUE(System(L"1", L"cold water", {L"s"}));
    Sql(path, "update SYS set Name = null");
    EXPECT_TRUE(IsReferred());
    EXPECT_EQ(referrer, L"before");
}

TEST_F(SeriesReferences, BeyondTheHundredthAreNotSeen) {
    std::vector<const wchar_t*> series(100, L"a");
    series.push_back(L"s");
    ASSERT_TRUE(System(L"1", L"cold water", series));
    EXPECT_FALSE(IsReferred());
}

TEST_F(SeriesReferences, InAStoreThatDoesNotOpenAreNone) {
    EXPECT_FALSE(IsReferred());
    EXPECT_FALSE(Exists(path));
}

TEST_F(SeriesReferences, OfNoSeriesAreReported) {
    MakeStore();
    EXPECT_FALSE(util.IsTheMEPMaterialSeireReferred(path, ddq, nullptr, referrer));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::IsTheMEPMaterialSeireReferred: pSerie为空"}));
}

} // namespace
