#include "MepDatabase/MergeFiles.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"

#include <filesystem>
#include <fstream>

namespace tolmtest {
namespace {

class MergeFiles : public StoreFixture {
protected:
    /// A store with one material, noted as created.
    void MakeBoth() { ASSERT_TRUE(util.WriteMaterial(path, ddq, Material(L"m", L"Steel").get())); }

    bool Duplicate(const wstring& dataset) {
        return tolm::DuplicateTemporaryKsetFilesBeforeMerge(dataset, status, tempData, tempStatus, copies);
    }
    bool Duplicate() { return Duplicate(path); }
    bool Remove(bool copyBack) {
        return tolm::RemoveTemporaryKsetFilesBeforeMerge(copyBack, path, statusPath, tempPath, tempStatusPath);
    }
    static void Write(const wstring& at, const std::string& text) {
        std::ofstream(vorn::FileSystem::ToNative(at), std::ios::binary) << text;
    }
    static std::string Names(const wstring& at) { return SqlValue(at, "SELECT group_concat(Name) FROM MTS"); }

    const wstring tempPath = folder.File(L"set_temp.db");
    const wstring tempStatusPath = folder.File(L"set_Status_temp.db");
    wstring status;
    wstring tempData;
    wstring tempStatus;
    CQbaseWorkingCopies copies;
};

TEST_F(MergeFiles, TheNamesComeFromTheDatasetsName) {
    EXPECT_FALSE(Duplicate(folder.File(L"a.b.db")));
    EXPECT_EQ(status, folder.File(L"a.b_Status.db"));
    EXPECT_EQ(tempData, folder.File(L"a.b_temp.db"));
    EXPECT_EQ(tempStatus, folder.File(L"a.b_Status_temp.db"));
}

TEST_F(MergeFiles, ANameWithoutAPointHasNoCompanions) {
    EXPECT_FALSE(Duplicate(L"set"));
    EXPECT_EQ(status + tempData + tempStatus, L"");
}

TEST_F(MergeFiles, BothStoresAreNeededAndTheNamesAreToldWithoutThem) {
    MakeStore();
    EXPECT_FALSE(Duplicate());
    EXPECT_EQ(tempStatus, tempStatusPath);
    ASSERT_TRUE(CQbase::removeStore(path));
    MakeStoreAt(statusPath);
    EXPECT_FALSE(Duplicate());
    EXPECT_FALSE(Exists(tempPath) || Exists(tempStatusPath));
}

TEST_F(MergeFiles, BothStoresAreCopied) {
    MakeBoth();
    ASSERT_TRUE(Duplicate());
    EXPECT_EQ(Names(tempPath), "Steel");
    EXPECT_EQ(SqlValue(tempStatusPath, "SELECT id||Status FROM MTS"), "m1");
    EXPECT_EQ(Names(path), "Steel");
}

TEST_F(MergeFiles, LeftoversOfAnyKindAreReplaced) {
    MakeBoth();
    Write(tempPath, "no store");
    Write(tempPath + L"-journal", "a stale journal");
    ASSERT_TRUE(vorn::FileSystem::CreateDirectories(tempStatusPath + L"/with/content"));
    ASSERT_TRUE(Duplicate());
    EXPECT_EQ(Names(tempPath), "Steel");
    EXPECT_EQ(SqlValue(tempStatusPath, "SELECT count(*) FROM MTS"), "1");
    EXPECT_FALSE(Exists(tempPath + L"-journal"));
}

TEST_F(MergeFiles, AFileThatIsNoStoreIsCopiedAllTheSame) {
    MakeBoth();
    Write(path, "no store");
    ASSERT_TRUE(Duplicate());
    EXPECT_EQ(FileBytes(tempPath), "no store");
    EXPECT_EQ(SqlValue(tempStatusPath, "SELECT count(*) FROM MTS"), "1");
}

TEST_F(MergeFiles, AFailureWhileCopyingIsTold) {
    MakeBoth();
    const LockTimeout atOnce(0);
    CQbase held;
    ASSERT_TRUE(held.openDatabase(ddq, statusPath, false) && held.lockForUpdate());
    EXPECT_FALSE(Duplicate());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              Warnings{L"DuplicateTemporaryKsetFilesBeforeMerge: 复制文件失败 exception"});
}

TEST_F(MergeFiles, LeftoversInUseAreAFailureAndStay) {
    MakeBoth();
    MakeStoreAt(tempPath);
    const LockTimeout atOnce(0);
    CQbase held;
    ASSERT_TRUE(held.openDatabase(ddq, tempPath, false) && held.lockForRead());
    EXPECT_FALSE(Duplicate());
    EXPECT_EQ(TakeDebugWarnings(), Warnings{L"复制文件失败 exception"});
    EXPECT_TRUE(Exists(tempPath));
}

TEST_F(MergeFiles, CopiesAreRemoved) {
    MakeBoth();
    ASSERT_TRUE(Duplicate());
    EXPECT_TRUE(Remove(false));
    EXPECT_FALSE(Exists(tempPath) || Exists(tempStatusPath));
    EXPECT_EQ(Names(path), "Steel");
    EXPECT_TRUE(Exists(statusPath));
    EXPECT_TRUE(Remove(false)) << "nothing is left to remove";
}

TEST_F(MergeFiles, CopiesAreCopiedBackFirstWhenAskedFor) {
    MakeBoth();
    ASSERT_TRUE(Duplicate());
    Sql(tempPath, "UPDATE MTS SET Name='Copper'");
    Sql(tempStatusPath, "DELETE FROM MTS");
    EXPECT_TRUE(Remove(true));
    EXPECT_EQ(Names(path), "Copper");
    EXPECT_EQ(SqlValue(statusPath, "SELECT count(*) FROM MTS"), "0");
    EXPECT_FALSE(Exists(tempPath) || Exists(tempStatusPath));
}

TEST_F(MergeFiles, ACopyThatCannotBeRemovedIsTold) {
    MakeBoth();
    ASSERT_TRUE(Duplicate());
    const LockTimeout atOnce(0);
    CQbase held;
    ASSERT_TRUE(held.openDatabase(ddq, tempPath, false) && held.lockForRead());
    EXPECT_FALSE(Remove(false));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              Warnings{L"RemoveTemporaryKsetFilesBeforeMerge: 删除文件失败 exception"});
}

} // namespace
} // namespace tolmtest
