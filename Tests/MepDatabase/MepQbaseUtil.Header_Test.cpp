#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/FileHeader.h"
#include "MepDatabase/StoreFrame.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/FileSizeLimit.h"
#include "Vorn/Clock.h"

#include <ctime>

namespace {

using namespace tolm;
using namespace tolmtest;

/// Monday, 2 March 2026, 08:09:10, local time.
std::chrono::system_clock::time_point FixedTime() {
    std::tm time{};
    time.tm_year = 126;
    time.tm_mon = 2;
    time.tm_mday = 2;
    time.tm_hour = 8;
    time.tm_min = 9;
    time.tm_sec = 10;
    time.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&time));
}

class FileHeader : public StoreFixture {
protected:
    FileHeader() { vorn::Clock::SetSource(&FixedTime); }
    ~FileHeader() override { vorn::Clock::SetSource(nullptr); }

    int Version(bool* changed = nullptr) {
        bool hasLocalChanges = true;
        const int version = util.GetLocalVersion(path, ddq, hasLocalChanges);
        if (changed != nullptr)
            *changed = hasLocalChanges;
        return version;
    }
    bool HasLocalChanges() {
        bool changed = false;
        Version(&changed);
        return changed;
    }
};

TEST_F(FileHeader, TheFirstVersionCreatesTheHeaderAndTheTimePointFindsIt) {
    MakeStore();
    EXPECT_TRUE(util.SetLocalVersion(path, ddq, 5));
    EXPECT_EQ(util.SetLastUpdateTimePoint(path, ddq), L"2026/03/02 08:09:10");
    EXPECT_EQ(SqlValue(path, "select count(*) from \"000\""), "1");
    EXPECT_EQ(Version(), 5);
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"2026/03/02 08:09:10");
}

TEST_F(FileHeader, TheFirstTimePointCreatesTheHeaderAndTheVersionFindsIt) {
    MakeStore();
    EXPECT_EQ(util.SetLastUpdateTimePoint(path, ddq), L"2026/03/02 08:09:10");
    EXPECT_TRUE(util.SetLocalVersion(path, ddq, 5));
    EXPECT_EQ(SqlValue(path, "select count(*) from \"000\""), "1");
    EXPECT_EQ(Version(), 5);
}

TEST_F(FileHeader, TheHeaderRecordIsNamedFileHeader) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 5));
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, path, false));
    EXPECT_TRUE(qb.existRec("000", L"FileHeader"));
}

TEST_F(FileHeader, TheTimePointIsSixSixteenBitNumbers) {
    MakeStore();
    ASSERT_FALSE(util.SetLastUpdateTimePoint(path, ddq).empty());
    EXPECT_EQ(SqlValue(path, "select hex(LastUpdateTimePoint) from \"000\""), "EA07"
                                                                              "0300"
                                                                              "0200"
                                                                              "0800"
                                                                              "0900"
                                                                              "0A00");
}

TEST_F(FileHeader, TheVersionIsANumberInItsColumn) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 41));
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 42));
    EXPECT_EQ(SqlValue(path, "select LocalVersion from \"000\""), "42");
}

TEST_F(FileHeader, ZeroIsAVersionAndANegativeNumberIsNone) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 0));
    EXPECT_EQ(Version(), 0);
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, -7));
    EXPECT_EQ(Version(), -1);
    EXPECT_EQ(SqlValue(path, "select LocalVersion from \"000\""), "-7");
}

TEST_F(FileHeader, ANumberBeyondTheRangeOfVersionsIsTheLargest) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 1));
    Sql(path, "update \"000\" set LocalVersion = 5000000000");
    EXPECT_EQ(Version(), 2147483647);
}

TEST_F(FileHeader, AFileThatIsMissingHasNoVersionAndNoTimePoint) {
    bool changed = true;
    EXPECT_EQ(Version(&changed), -1);
    EXPECT_FALSE(changed);
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"");
    EXPECT_FALSE(Exists(path));
}

TEST_F(FileHeader, AFileWithoutAHeaderHasNoVersionAndNoTimePoint) {
    MakeStore();
    EXPECT_EQ(Version(), -1);
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"");
}

TEST_F(FileHeader, AHeaderMayLackEither) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 3));
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"");
    Sql(path, "update \"000\" set LocalVersion = null");
    ASSERT_FALSE(util.SetLastUpdateTimePoint(path, ddq).empty());
    EXPECT_EQ(Version(), -1);
}

TEST_F(FileHeader, AFileThatIsNoStoreHasNoVersionAndNoTimePoint) {
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(path, "text", 4, false));
    EXPECT_EQ(Version(), -1);
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"");
    EXPECT_EQ(FileBytes(path), "text");
}

TEST_F(FileHeader, ATimePointOfAnotherLengthIsNone) {
    MakeStore();
    ASSERT_FALSE(util.SetLastUpdateTimePoint(path, ddq).empty());
    Sql(path, "update \"000\" set LastUpdateTimePoint = x'EA07'");
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"");
}

TEST_F(FileHeader, AnImpossibleTimePointIsFormattedAllTheSame) {
    MakeStore();
    ASSERT_FALSE(util.SetLastUpdateTimePoint(path, ddq).empty());
    Sql(path, "update \"000\" set LastUpdateTimePoint = x'FF7FFF7FFF7FFF7FFF7FFF7F'");
    EXPECT_NE(util.GetLastUpdateTimePoint(path, ddq), L"");
    Sql(path, "update \"000\" set LastUpdateTimePoint = x'008000800080008000800080'");
    EXPECT_NE(util.GetLastUpdateTimePoint(path, ddq), L"");
}

TEST_F(FileHeader, ASetterAtAStoreThatDoesNotOpenSaysSoAndChangesNothing) {
    EXPECT_FALSE(util.SetLocalVersion(path, ddq, 1));
    EXPECT_EQ(util.SetLastUpdateTimePoint(path, ddq), L"");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SetLocalVersion: openDatabase 失败",
                                                         L"MepQbaseUtil::SetLastUpdateTimePoint: openDatabase 失败"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(FileHeader, ASetterWithoutAHandleSaysSo) {
    const NoStoreHandles none;
    EXPECT_FALSE(util.SetLocalVersion(path, ddq, 1));
    EXPECT_EQ(util.SetLastUpdateTimePoint(path, ddq), L"");
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::SetLocalVersion: qb 为空", L"MepQbaseUtil::SetLastUpdateTimePoint: qb 为空"}));
}

TEST_F(FileHeader, AVersionThatIsNotOnDiskIsFalse) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 1));
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(util.SetLocalVersion(path, ddq, 2));
    }
    EXPECT_EQ(Version(), 1);
}

TEST_F(FileHeader, ATimePointThatIsNotOnDiskIsEmpty) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 1));
    {
        const FileSizeLimit full(0);
        EXPECT_EQ(util.SetLastUpdateTimePoint(path, ddq), L"");
    }
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SetLastUpdateTimePoint: closeDatabase 失败"}));
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"");
}

TEST_F(FileHeader, AVersionIsNotSetPastAReader) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 1));
    const LockTimeout atOnce(0);
    CQbase reader;
    ASSERT_TRUE(reader.openDatabase(ddq, path, false) && reader.lockForRead());
    EXPECT_FALSE(util.SetLocalVersion(path, ddq, 2));
    EXPECT_EQ(Version(), 1);
}

TEST_F(FileHeader, LocalChangesAreTheRecordsOfTheStatusStore) {
    MakeStore();
    EXPECT_FALSE(HasLocalChanges());
    MakeStoreAt(statusPath);
    EXPECT_FALSE(HasLocalChanges());
    ASSERT_TRUE(util.WriteMaterial(path, ddq, Material(L"m", L"steel").get()));
    EXPECT_TRUE(HasLocalChanges());
    ASSERT_TRUE(util.DeleteMaterialList(path, ddq, {Material(L"m", L"").get()}));
    EXPECT_FALSE(HasLocalChanges());
}

TEST_F(FileHeader, AStatusStoreOfAMissingDatasetIsNotLookedAt) {
    ASSERT_TRUE(util.WriteMaterial(path, ddq, Material(L"m", L"steel").get()));
    ASSERT_TRUE(CQbase::removeStore(path));
    EXPECT_FALSE(HasLocalChanges());
}

TEST_F(FileHeader, AStatusStoreThatDoesNotOpenTellsOfNoChanges) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 4));
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(statusPath, "text", 4, false));
    bool changed = true;
    EXPECT_EQ(Version(&changed), 4);
    EXPECT_FALSE(changed);
}

TEST_F(FileHeader, AFilterOfAnEarlierStepDoesNotHideIt) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 4));
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, path, false));
    ASSERT_TRUE(qb.setFilter(1104, "=", static_cast<short>(1)));
    EXPECT_TRUE(StampVersion(qb, 5));
    ASSERT_TRUE(qb.setFilter(1104, "=", static_cast<short>(1)));
    EXPECT_EQ(StampTimePoint(qb), L"2026/03/02 08:09:10");
    ASSERT_TRUE(qb.closeDatabase());
    EXPECT_EQ(SqlValue(path, "select count(*) from \"000\""), "1");
    EXPECT_EQ(Version(), 5);
}

TEST_F(FileHeader, AStampUnderAReadLockIsNotSaved) {
    MakeStore();
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, path, false) && qb.lockForRead());
    EXPECT_FALSE(StampVersion(qb, 5));
    EXPECT_EQ(StampTimePoint(qb), L"");
}

class Reset : public FileHeader {
protected:
    static constexpr const char* kAll[] = {"SYS", "COS", "MTS", "PSI", "SMS", "MSG", "CRT", "BMD", "ISS", "PSM"};

    /// Two records in each class, and the header.
    void Fill() {
        MakeStore();
        ASSERT_TRUE(util.SetLocalVersion(path, ddq, 9));
        ASSERT_FALSE(util.SetLastUpdateTimePoint(path, ddq).empty());
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(ddq, path, false) && qb.lockForUpdate());
        for (const char* classCode : kAll)
            for (const wchar_t* id : {L"a", L"b"})
                ASSERT_TRUE(qb.createRec(classCode, id) && qb.saveRec());
        ASSERT_TRUE(qb.closeDatabase());
    }
    std::string Count(const std::string& classCode) { return SqlValue(path, "select count(*) from " + classCode); }
};

TEST_F(Reset, EmptiesTheClassesOfADownloadAndLeavesHeaderAndMethods) {
    Fill();
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, path, false) && qb.lockForUpdate());
    EXPECT_TRUE(util.ResetQbase(&qb));
    ASSERT_TRUE(qb.closeDatabase());
    for (const char* classCode : {"SYS", "COS", "MTS", "PSI", "SMS", "MSG", "CRT"})
        EXPECT_EQ(Count(classCode), "0") << classCode;
    for (const char* classCode : {"BMD", "ISS", "PSM"})
        EXPECT_EQ(Count(classCode), "2") << classCode;
    EXPECT_EQ(Version(), 9);
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"2026/03/02 08:09:10");
}

TEST_F(Reset, OfACategoryEmptiesThatOne) {
    Fill();
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, path, false) && qb.lockForUpdate());
    EXPECT_TRUE(util.ResetQbaseCategory(&qb, "BMD"));
    EXPECT_TRUE(util.ResetQbaseCategory(&qb, "BMD"));
    ASSERT_TRUE(qb.closeDatabase());
    for (const char* classCode : kAll)
        EXPECT_EQ(Count(classCode), std::string(classCode) == "BMD" ? "0" : "2") << classCode;
}

TEST_F(Reset, OfNoStoreIsReported) {
    EXPECT_FALSE(util.ResetQbase(nullptr));
    EXPECT_FALSE(util.ResetQbaseCategory(nullptr, "MTS"));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::ResetQbase: qb为空", L"MepQbaseUtil::ResetQbaseCategory: qb为空"}));
}

} // namespace
