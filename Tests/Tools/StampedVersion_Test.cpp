#include "StoreSupport/LockTimeout.h"
#include "Support/LockMoments.h"
#include "Tolm/VersionStamp.h"
#include "Tools/TwoUsers.h"

using namespace tolmtest;

namespace {

class ReplacedVersion : public LocalTool {
protected:
    /// What another program stamps.
    void Stamp(long version) {
        CQbase store;
        ASSERT_TRUE(OpenStore(store));
        ASSERT_TRUE(store.fetchFirstMember("000") || store.createRec("000", "FileHeader"));
        ASSERT_TRUE(store.setLong(1200, version) && store.saveRec());
    }
    /// The version that stands behind it; -9 when it fails.
    long Replaced(long expected, long version) {
        return tolmcli::ReplaceVersion(m_folder.File(L"office.db"), expected, version) ? version : -9;
    }
    long Standing() {
        CQbase store;
        long version = -1;
        EXPECT_TRUE(OpenStore(store));
        return store.fetchFirstMember("000") && store.getLong(1200, version) ? version : -1;
    }
};

/// Before each lock that a push takes, in turn, another program has sent the changes, and others made a version: the
/// cloud's is the next one then, and is not what stands here.
TEST_F(TwoUsers, APushThatHadNothingLeftToSendStampsNoVersionOfOthers) {
    const LockTimeout brief(20);
    LockMoments moments;
    int overtakenInAll = 0;
    bool isPast = false;
    for (int moment = 1; !isPast; ++moment) {
        SCOPED_TRACE(moment);
        Expect(Anna("sync"));
        Expect(Anna("edit", {"material", "m1", "--name", "Steel " + std::to_string(moment)}));
        const auto theirs = "Brass " + std::to_string(moment);
        auto renamed = std::string(kRenameBrass);
        renamed.replace(renamed.find("Red brass"), 9, theirs);
        bool overtaken = false;
        m_wire.Before("/api/GetVersion/", [&] {
            moments.Before(moment, [&] {
                overtaken = CQbase::removeStore(m_folder.File(L"anna_Status.db"));
                m_service.Apply("tower", renamed);
            });
        });
        Anna("push");
        isPast = moments.Rest();
        overtakenInAll += overtaken ? 1 : 0;
        Expect(Anna("sync"));
        EXPECT_TRUE(isPast || NameOf(m_anna, "material", "m2") == theirs) << NameOf(m_anna, "material", "m2");
    }
    EXPECT_GT(overtakenInAll, 2);
}

} // namespace

TEST_F(ReplacedVersion, IsStampedOverTheExpectedOneAlone) {
    EXPECT_EQ(Replaced(2, 5), -1);
    EXPECT_EQ(Standing(), -1);
    EXPECT_EQ(Replaced(-1, 5), 5);
    EXPECT_EQ(Standing(), 5);
    EXPECT_EQ(Replaced(4, 6), 5);
    EXPECT_EQ(Standing(), 5);
    EXPECT_EQ(Replaced(5, 6), 6);
    EXPECT_EQ(Standing(), 6);
}

TEST_F(ReplacedVersion, NeedsTheLock) {
    Stamp(3);
    CQbase store;
    ASSERT_TRUE(OpenStore(store) && store.lockForUpdate());
    EXPECT_EQ(Replaced(3, 5), -9);
    ASSERT_TRUE(store.closeDatabase());
    EXPECT_EQ(Standing(), 3);
    long version = 5;
    EXPECT_FALSE(tolmcli::ReplaceVersion(m_folder.File(L"none.db"), -1, version));
}

/// Another program stamps a higher version before each lock that a push takes when it has sent its changes, in turn.
TEST_F(TwoUsers, APushNeverTakesBackTheVersionOfAnotherProgram) {
    constexpr long kTheirs = 99;
    const LockTimeout brief(20);
    LockMoments moments;
    int stampedInAll = 0;
    bool isPast = false;
    for (int moment = 1; !isPast; ++moment) {
        SCOPED_TRACE(moment);
        Expect(Anna("sync"));
        Expect(Anna("edit", {"material", "m1", "--name", "Steel " + std::to_string(moment)}));
        bool stamped = false;
        m_wire.Before("/api/GetVersion/", [] {});
        m_wire.Before("/api/GetVersion/", [&] {
            moments.Before(moment, [&] {
                CQbase store;
                stamped =
                    store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, m_folder.File(L"anna.db"), false) &&
                    store.fetchFirstMember("000") && store.setLong(1200, kTheirs) && store.saveRec();
            });
        });
        const int before = VersionOf(m_anna);
        Anna("push");
        isPast = moments.Rest();
        stampedInAll += stamped ? 1 : 0;
        EXPECT_EQ(VersionOf(m_anna), stamped ? kTheirs : before + 1);
        long version = before + 1;
        EXPECT_TRUE(tolmcli::ReplaceVersion(m_folder.File(L"anna.db"), kTheirs, version));
    }
    EXPECT_GT(stampedInAll, 2);
}
