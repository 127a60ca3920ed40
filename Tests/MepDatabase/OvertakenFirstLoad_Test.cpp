#include "MepDatabase/DatasetPaths.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/RefreshFixture.h"
#include "Support/Interceptor.h"
#include "Support/LockMoments.h"

#include <algorithm>
#include <functional>

namespace tolmtest {
namespace {

using tolm::DatasetPaths;
namespace schema = tolm::schema;

/// A refresh that empties the dataset first, during which somebody else writes to it before that.
class OvertakenFirstLoad : public RefreshFixture {
protected:
    OvertakenFirstLoad() {
        CloudHas(3,
                 R"({"ConfigTree":[{"ID":"m1","text":"theirs","groupName":"MaterialSeries","parentID":"",)"
                 R"("CreateTime":1,"content":{}}]})",
                 "{}");
    }
    bool Edit(const wstring& id) { return util.WriteMaterial(path, ddq, Material(id, L"mine").get()); }
    long NoteCount() const {
        CQbase status;
        long count = 0;
        EXPECT_TRUE(status.openDatabase(ddq, DatasetPaths::Of(path).status, false) && status.getNmbOfRecs(count));
        return count;
    }
    void OnVersionQuery(const std::function<void()>& happens) { between.Before("/api/GetVersion/", happens); }
    void RemoveDataset() {
        EXPECT_TRUE(CQbase::removeStore(path));
        EXPECT_TRUE(CQbase::removeStore(DatasetPaths::Of(path).status));
    }
    void ExpectAnEditIsKept() {
        OnVersionQuery([this] { EXPECT_TRUE(Edit(L"m2")); });
        EXPECT_FALSE(Refresh());
        EXPECT_EQ(DownloadCount(), 0U);
        EXPECT_EQ(Records(schema::kMaterial), RecordLines{"m2 mine 1 2"});
        EXPECT_EQ(NoteCount(), 1);
        EXPECT_EQ(TakeNotifications(), LoadFailed);
    }

    Interceptor between{server.Port()};
    TestSession sessionBetween{between.Address()};
};

TEST_F(OvertakenFirstLoad, KeepsAnEditThatWasNotedDuringTheVersionQuery) {
    LocalHas(0);
    ExpectAnEditIsKept();
}

TEST_F(OvertakenFirstLoad, OfAStoreWithoutAHeaderKeepsItToo) {
    MakeStore();
    ExpectAnEditIsKept();
}

TEST_F(OvertakenFirstLoad, OfAStoreThatWasNotThereKeepsItToo) {
    ExpectAnEditIsKept();
}

TEST_F(OvertakenFirstLoad, EmptiesAStoreThatHadNotesFromTheStart) {
    LocalHas(0);
    ASSERT_TRUE(Edit(L"m2"));
    OnVersionQuery([this] { EXPECT_TRUE(Edit(L"m3")); });
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(Records(schema::kMaterial), RecordLines{"m1 theirs 1 2"});
    EXPECT_EQ(LocalVersion(), 3);
}

/// Another process edits before each lock that the refresh takes, in turn. An edit that was taken stands in the end.
TEST_F(OvertakenFirstLoad, KeepsAnEditThatWasNotedAtAnyMoment) {
    const LockTimeout brief(20);
    LockMoments moments;
    int kept = 0;
    bool isPast = false;
    for (int moment = 1; !isPast; ++moment) {
        SCOPED_TRACE(moment);
        LocalHas(0);
        bool edited = false;
        moments.Before(moment, [&] { edited = Edit(L"m2"); });
        const bool refreshed = Refresh();
        isPast = moments.Rest();
        const auto records = Records(schema::kMaterial);
        const bool stands = std::count(records.begin(), records.end(), "m2 mine 1 2") == 1;
        EXPECT_EQ(stands, edited);
        EXPECT_TRUE(refreshed || edited);
        kept += edited ? 1 : 0;
        TakeDebugWarnings();
        TakeNotifications();
        RemoveDataset();
    }
    EXPECT_GT(kept, 3);
}

/// Another process loads the whole project before each lock, and the next download fails: the dataset has all that
/// its version says.
TEST_F(OvertakenFirstLoad, EmptiesNothingThatSomebodyElseLoadedAtAnyMoment) {
    const LockTimeout brief(20);
    LockMoments moments;
    int kept = 0;
    bool isPast = false;
    for (int moment = 1; !isPast; ++moment) {
        SCOPED_TRACE(moment);
        LocalHas(0);
        bool loaded = false;
        server.On("/api/DownloadVersion/", ScriptedAnswer::Html(500));
        moments.Before(moment, [&] {
            loaded =
                Edit(L"m2") && CQbase::removeStore(DatasetPaths::Of(path).status) && util.SetLocalVersion(path, ddq, 3);
        });
        EXPECT_FALSE(Refresh());
        isPast = moments.Rest();
        if (loaded) {
            EXPECT_EQ(LocalVersion(), 3);
            EXPECT_EQ(Records(schema::kMaterial), RecordLines{"m2 mine 1 2"});
            ++kept;
        }
        TakeDebugWarnings();
        TakeNotifications();
        RemoveDataset();
    }
    EXPECT_GT(kept, 3);
}

} // namespace
} // namespace tolmtest
