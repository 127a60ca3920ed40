#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/ChangeTracking.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/FileSizeLimit.h"

#include <filesystem>
#include <thread>

namespace {

using namespace tolm;
using namespace tolmtest;
using Records = std::vector<std::string>;
using Ids = std::vector<wstring>;

class ChangeTracking : public StoreFixture {
protected:
    bool Note(int status, short type = 1, short discipline = 2, const wchar_t* id = L"x") {
        return MepQbaseUtilTestAccess::RecordLocalChange(path, ddq, "MTS", id, status, type, discipline);
    }
    bool Write(const wchar_t* id, const wchar_t* name = L"steel") {
        return util.WriteMaterial(path, ddq, Material(id, name).get());
    }
    bool Delete(const wchar_t* id) { return util.DeleteMaterialList(path, ddq, {Material(id, L"").get()}); }
};

TEST_F(ChangeTracking, TheFirstChangeBringsTheStatusStoreIntoBeing) {
    EXPECT_FALSE(Exists(statusPath));
    EXPECT_TRUE(Note(2));
    EXPECT_EQ(StatusRecords(), (Records{"MTS x 2 1 2"}));
    EXPECT_FALSE(Exists(path));
}

struct Transition {
    int current;
    int now;
    Records expected; ///< with type 3 and discipline 4 of the second change over type 1 and discipline 2
};

void PrintTo(const Transition& transition, std::ostream* out) {
    *out << transition.current << " then " << transition.now;
}

class TransitionTable : public ChangeTracking, public testing::WithParamInterface<Transition> {};

TEST_P(TransitionTable, Holds) {
    ASSERT_TRUE(Note(GetParam().current));
    EXPECT_TRUE(Note(GetParam().now, 3, 4));
    EXPECT_EQ(StatusRecords(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(ChangeTracking, TransitionTable,
                         testing::Values(Transition{1, 1, {"MTS x 1 1 2"}}, Transition{1, 2, {"MTS x 1 1 2"}},
                                         Transition{1, 3, {}}, Transition{2, 1, {"MTS x 1 1 2"}},
                                         Transition{2, 2, {"MTS x 2 1 2"}}, Transition{2, 3, {"MTS x 3 3 4"}},
                                         Transition{3, 1, {"MTS x 1 1 2"}}, Transition{3, 2, {"MTS x 3 1 2"}},
                                         Transition{3, 3, {"MTS x 3 1 2"}},
                                         // A status record that means nothing is left alone.
                                         Transition{0, 1, {"MTS x 0 1 2"}}, Transition{-1, 3, {"MTS x -1 1 2"}},
                                         // A status of another version gives way to a creation alone.
                                         Transition{4, 1, {"MTS x 1 1 2"}}, Transition{4, 2, {"MTS x 4 1 2"}},
                                         Transition{4, 3, {"MTS x 4 1 2"}}));

TEST_F(ChangeTracking, AStatusRecordWithoutAStatusIsLeftAlone) {
    ASSERT_TRUE(Note(2));
    Sql(statusPath, "update MTS set Status = null");
    EXPECT_TRUE(Note(1));
    EXPECT_EQ(SqlValue(statusPath, "select Status from MTS"), "NULL");
}

TEST_F(ChangeTracking, OneIdInTwoClassesIsTwoRecords) {
    ASSERT_TRUE(Note(1));
    ASSERT_TRUE(MepQbaseUtilTestAccess::RecordLocalChange(path, ddq, "PSI", L"x", 3, 2, 1));
    EXPECT_EQ(StatusRecords(), (Records{"MTS x 1 1 2", "PSI x 3 2 1"}));
}

TEST_F(ChangeTracking, AStatusStoreThatDoesNotOpenIsFalse) {
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(statusPath, "text", 4, false));
    EXPECT_FALSE(Note(1));
    EXPECT_EQ(FileBytes(statusPath), "text");
}

TEST_F(ChangeTracking, APathWithoutAPointIsNotTracked) {
    const wstring plain = folder.File(L"set");
    EXPECT_FALSE(MepQbaseUtilTestAccess::RecordLocalChange(plain, ddq, "MTS", L"x", 1, 1, 2));
    EXPECT_TRUE(util.WriteMaterial(plain, ddq, Material(L"m", L"steel").get()));
    EXPECT_TRUE(util.DeleteMaterialList(plain, ddq, {Material(L"m", L"").get()}));
    const std::filesystem::directory_iterator files(vorn::FileSystem::ToNative(folder.Path()));
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(ChangeTracking, ANoteThatIsNotOnDiskIsReportedAndFalse) {
    ASSERT_TRUE(Note(2));
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(Note(3));
    }
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::RecordLocalChange: closeDatabase 失败"}));
    EXPECT_EQ(StatusRecords(), (Records{"MTS x 2 1 2"}));
}

// --- what the edits of a user leave ------------------------------------------------------------------------------

TEST_F(ChangeTracking, CreateThenEditStaysCreated) {
    ASSERT_TRUE(Write(L"m") && Write(L"m", L"copper"));
    EXPECT_EQ(StatusRecords(), (Records{"MTS m 1 1 2"}));
}

TEST_F(ChangeTracking, EditThenRemoveIsRemovedWithTypeAndDisciplineOfTheRemoval) {
    ASSERT_TRUE(Write(L"m"));
    ASSERT_TRUE(CQbase::removeStore(statusPath));
    ASSERT_TRUE(Write(L"m"));
    EXPECT_EQ(StatusRecords(), (Records{"MTS m 2 1 2"}));
    const auto removed = Material(L"m", L"", Type::Duct, Discipline::HVAC);
    ASSERT_TRUE(util.DeleteMaterialList(path, ddq, {removed.get()}));
    EXPECT_EQ(StatusRecords(), (Records{"MTS m 3 2 1"}));
}

TEST_F(ChangeTracking, CreateThenRemoveLeavesNoTrace) {
    ASSERT_TRUE(Write(L"m") && Delete(L"m"));
    EXPECT_EQ(StatusRecords(), Records{});
}

TEST_F(ChangeTracking, RemoveThenCreateIsCreated) {
    ASSERT_TRUE(Write(L"m"));
    ASSERT_TRUE(CQbase::removeStore(statusPath));
    ASSERT_TRUE(Delete(L"m"));
    EXPECT_EQ(StatusRecords(), (Records{"MTS m 3 1 2"}));
    ASSERT_TRUE(Write(L"m"));
    EXPECT_EQ(StatusRecords(), (Records{"MTS m 1 1 2"}));
}

TEST_F(ChangeTracking, ADeletionOfWhatIsNotThereLeavesNoStatusStore) {
    MakeStore();
    EXPECT_TRUE(Delete(L"m"));
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(ChangeTracking, AStatusStoreThatDoesNotOpenLetsTheDataStand) {
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(statusPath, "text", 4, false));
    EXPECT_TRUE(Write(L"m"));
    MaterialPtr material;
    ASSERT_TRUE(util.ReadMaterial(path, ddq, L"m", material));
    EXPECT_TRUE(material);
    EXPECT_TRUE(Delete(L"m"));
    EXPECT_EQ(SqlValue(path, "select count(*) from MTS"), "0");
    EXPECT_EQ(FileBytes(statusPath), "text");
}

TEST_F(ChangeTracking, AStatusStoreThatAnotherReadsLetsTheDataStand) {
    ASSERT_TRUE(Write(L"m"));
    ASSERT_TRUE(CQbase::removeStore(statusPath));
    ASSERT_TRUE(Note(3, 1, 2, L"other"));
    const LockTimeout atOnce(0);
    CQbase reader;
    std::thread([&] { ASSERT_TRUE(reader.openDatabase(ddq, statusPath, false) && reader.lockForRead()); }).join();
    EXPECT_TRUE(Write(L"m", L"copper"));
    EXPECT_EQ(SqlValue(path, "select Name from MTS"), "copper");
    EXPECT_EQ(SqlValue(statusPath, "select count(*) from MTS"), "1");
}

TEST_F(ChangeTracking, RecordAndNoteAreOnDiskTogetherOrNotAtAll) {
    ASSERT_TRUE(Write(L"m"));
    CQbase status;
    ASSERT_TRUE(status.openDatabase(ddq, statusPath, false) && status.lockForUpdate());
    const wstring padding(200, L'x');
    for (int i = 0; i < 2000; ++i)
        NoteLocalChange(status, {"MTS", padding + std::to_wstring(i), 1, 1, 2});
    ASSERT_TRUE(status.closeDatabase());
    const std::uint64_t dataSize = vorn::FileInfo(path).Size();
    ASSERT_GT(vorn::FileInfo(statusPath).Size(), dataSize + 200'000);
    {
        const FileSizeLimit limit(dataSize + 100'000); // room for the data, none at the end of the status store
        EXPECT_FALSE(Write(L"new"));
    }
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"closeDatabase 失败"}));
    EXPECT_EQ(SqlValue(path, "select count(*) from MTS"), "1");
    EXPECT_EQ(SqlValue(statusPath, "select count(*) from MTS"), "2001");
}

TEST_F(ChangeTracking, ADeletionOfAListIsOneTransaction) {
    ASSERT_TRUE(Write(L"a") && Write(L"b"));
    const auto a = Material(L"a", L"");
    const auto b = Material(L"b", L"");
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(util.DeleteMaterialList(path, ddq, {a.get(), b.get()}));
    }
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"closeDatabase 失败"}));
    EXPECT_EQ(SqlValue(path, "select count(*) from MTS"), "2");
    EXPECT_TRUE(util.DeleteMaterialList(path, ddq, {a.get(), b.get()}));
    EXPECT_EQ(SqlValue(path, "select count(*) from MTS"), "0");
}

TEST_F(ChangeTracking, ACompanionOfAStoreWithoutALockIsCommittedWithIt) {
    MakeStore();
    CQbase data;
    ASSERT_TRUE(data.openDatabase(ddq, path, false) && data.beginTransaction());
    ASSERT_TRUE(data.createRec("SYS", L"s") && data.saveRec());
    {
        StatusCompanion status(data, path, ddq);
        EXPECT_FALSE(Exists(statusPath));
        EXPECT_TRUE(status.Note({"SYS", L"s", 1, 6, 3}));
        EXPECT_TRUE(status.Note({"SYS", L"t", 3, 6, 3}));
    }
    ASSERT_TRUE(data.closeDatabase());
    EXPECT_EQ(StatusRecords(), (Records{"SYS s 1 6 3", "SYS t 3 6 3"}));
    EXPECT_EQ(SqlValue(path, "select count(*) from SYS"), "1");
}

TEST_F(ChangeTracking, ACompanionThatDoesNotOpenIsNotTriedAgain) {
    MakeStore();
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(statusPath, "text", 4, false));
    CQbase data;
    ASSERT_TRUE(data.openDatabase(ddq, path, false) && data.lockForUpdate());
    StatusCompanion status(data, path, ddq);
    EXPECT_FALSE(status.Note({"SYS", L"s", 1, 6, 3}));
    ASSERT_TRUE(vorn::FileSystem::RemoveFile(statusPath));
    EXPECT_FALSE(status.Note({"SYS", L"s", 1, 6, 3}));
    EXPECT_FALSE(Exists(statusPath));
    EXPECT_TRUE(data.createRec("SYS", L"s") && data.saveRec());
}

// --- what changed -------------------------------------------------------------------------------------------------

class ChangedIds : public ChangeTracking {
protected:
    bool Get(int type, int discipline, const char* classCode = "MTS") {
        CQbase status;
        return status.openDatabase(ddq, statusPath, false) && status.lockForRead() &&
               util.GetLocalChangedIdList(&status, type, discipline, classCode, created, edited, removed);
    }

    Ids created;
    Ids edited;
    Ids removed;
};

TEST_F(ChangedIds, AreThoseOfOneClassTypeAndDisciplineInOrderOfCreation) {
    for (const wchar_t* id : {L"b", L"a"}) {
        ASSERT_TRUE(Note(1, 1, 2, id));
        ASSERT_TRUE(Note(2, 1, 2, (wstring(id) + L"2").c_str()));
        ASSERT_TRUE(Note(3, 1, 2, (wstring(id) + L"3").c_str()));
    }
    ASSERT_TRUE(Note(1, 2, 2, L"other type"));
    ASSERT_TRUE(Note(1, 1, 1, L"other discipline"));
    ASSERT_TRUE(MepQbaseUtilTestAccess::RecordLocalChange(path, ddq, "PSI", L"other class", 1, 1, 2));
    EXPECT_TRUE(Get(1, 2));
    EXPECT_EQ(created, (Ids{L"b", L"a"}));
    EXPECT_EQ(edited, (Ids{L"b2", L"a2"}));
    EXPECT_EQ(removed, (Ids{L"b3", L"a3"}));
}

TEST_F(ChangedIds, AreAppended) {
    created = {L"before"};
    ASSERT_TRUE(Note(1));
    EXPECT_TRUE(Get(1, 2));
    EXPECT_EQ(created, (Ids{L"before", L"x"}));
}

TEST_F(ChangedIds, MayBeNone) {
    MakeStoreAt(statusPath);
    EXPECT_TRUE(Get(1, 2));
    EXPECT_TRUE(created.empty() && edited.empty() && removed.empty());
}

TEST_F(ChangedIds, OfDisciplineZeroAreRefused) {
    ASSERT_TRUE(Note(1, 1, 0));
    EXPECT_FALSE(Get(1, 0));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::GetLocalChangedIdList: disicplineType 非法"}));
    EXPECT_TRUE(created.empty() && edited.empty() && removed.empty());
}

TEST_F(ChangedIds, OfNoStoreAreRefused) {
    EXPECT_FALSE(util.GetLocalChangedIdList(nullptr, 1, 0, "MTS", created, edited, removed));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::GetLocalChangedIdList: qb_statusQbase 为空"}));
}

} // namespace
