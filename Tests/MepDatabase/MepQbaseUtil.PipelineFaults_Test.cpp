#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/RefreshFixture.h"
#include "Support/FileSizeLimit.h"

/// Refreshes that cannot be brought to disk. The user hears of each: silence says that there was nothing to apply.
namespace tolmtest {
namespace {

using tolm::RecoverDataInfo;
namespace schema = tolm::schema;

class FailedRefresh : public RefreshFixture {
protected:
    FailedRefresh() {
        LocalHas(3);
        tolm::MepQbaseUtilTestAccess::RecoveredSystemTypeIds().clear();
    }
    ~FailedRefresh() override { tolm::MepQbaseUtilTestAccess::RecoveredSystemTypeIds().clear(); }

    /// The cloud deleted a system type of this id, whose description has so many characters.
    void CloudDeleted(const std::string& id, std::size_t length) {
        CloudHas(5, "{}",
                 R"({"ConfigTree":[],"PipeSystemType":[{"ID":")" + id +
                     R"(","version":4,"systemType":"n","code":"c","systemCategory":21,"description":")" +
                     std::string(length, 'x') + R"("}]})");
    }
    /// The cloud has materials that take more than a few pages.
    void CloudHasMuch() {
        std::string rows;
        for (int i = 0; i < 2000; ++i)
            rows += (i > 0 ? "," : "") + std::string(R"({"ID":"M)") + std::to_string(i) +
                    R"(","groupName":"MaterialSeries","parentID":"","text":")" + std::string(100, 'x') + "\"}";
        CloudHas(6, R"({"ConfigTree":[)" + rows + "]}", R"({"ConfigTree":[]})");
    }
    void RefreshOnAFullDisk(RecoverDataInfo* wanted = nullptr) {
        {
            const FileSizeLimit full(vorn::FileInfo(path).Size());
            EXPECT_FALSE(Refresh(wanted));
        }
        EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::SyncDataFromCloud: closeDatabase 失败"}));
        EXPECT_EQ(TakeNotifications(), LoadFailed);
    }
    static RecoverDataInfo Wanting(const wstring& id) {
        RecoverDataInfo wanted;
        wanted.idMap[id] = L"";
        return wanted;
    }
};

TEST_F(FailedRefresh, OfAStoreThatSomeoneElseReadsFailsAndChangesNothing) {
    CloudHasMuch();
    const LockTimeout atOnce(1);
    CQbase reader;
    ASSERT_TRUE(reader.openDatabase(ddq, path, false) && reader.lockForRead());
    EXPECT_FALSE(Refresh());
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"beginTransaction 失败"}));
    EXPECT_EQ(TakeNotifications(), LoadFailed);
    ASSERT_TRUE(reader.closeDatabase());
    EXPECT_EQ(LocalVersion(), 3);
    EXPECT_EQ(Records(schema::kMaterial), RecordLines{});
}

TEST_F(FailedRefresh, ThatDoesNotFitOnTheDiskSaysSoAndChangesNothing) {
    CloudHasMuch();
    RefreshOnAFullDisk();
    EXPECT_EQ(LocalVersion(), 3);
    EXPECT_EQ(Records(schema::kMaterial), RecordLines{});
}

TEST_F(FailedRefresh, ThatDoesNotFitOnTheDiskHasRecoveredNothing) {
    CloudDeleted("y", 200'000);
    RecoverDataInfo wanted = Wanting(L"y");
    RefreshOnAFullDisk(&wanted);
    EXPECT_FALSE(wanted.recovered);
    EXPECT_TRUE(util.RecoveredSystemTypeIds().empty());
    EXPECT_EQ(Records(schema::kSystemType), RecordLines{});
    EXPECT_TRUE(Refresh(&wanted));
    EXPECT_TRUE(wanted.recovered);
    EXPECT_EQ(util.RecoveredSystemTypeIds(), std::vector<wstring>{L"y"});
}

/// They stand in the store and are noted there: the next upload has to send them as recovered.
TEST_F(FailedRefresh, ForgetsNothingThatAnEarlierOneRecovered) {
    CloudDeleted("y", 10);
    RecoverDataInfo wanted = Wanting(L"y");
    ASSERT_TRUE(Refresh(&wanted));
    TakeNotifications();
    CloudHasMuch();
    RefreshOnAFullDisk();
    EXPECT_EQ(util.RecoveredSystemTypeIds(), std::vector<wstring>{L"y"});
    CloudDeleted("z", 200'000);
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 4));
    RecoverDataInfo more = Wanting(L"z");
    RefreshOnAFullDisk(&more);
    EXPECT_FALSE(more.recovered);
    EXPECT_EQ(util.RecoveredSystemTypeIds(), std::vector<wstring>{L"y"});
    EXPECT_EQ(Records(schema::kSystemType).size(), 1U);
}

} // namespace
} // namespace tolmtest
