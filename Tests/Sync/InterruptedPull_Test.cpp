#include "Host/Session.h"
#include "StoreSupport/StoreFixture.h"
#include "StoreSupport/SyncFixture.h"
#include "Support/Relay.h"

namespace tolmtest {
namespace {

using nlohmann::json;
using Settings = tolm::CollaborationProjectSettingForPS::Settings;

/// A client opens a connection for each of its calls, in this order.
constexpr std::size_t kVersionCall = 1;
constexpr std::size_t kDownloadCall = 2;
constexpr std::size_t kWorkunitCall = 3;

const Notifications kNoVersion{{2, L"获取云端配置版本失败！"}};
const Notifications kNoData{{2, L"获取数据失败！"}};

void OpenSessionAt(const std::wstring& address) {
    tolm::CollaborationProjectSettingForPS::Open({address, L"P", L"workunit-1", 30'000'000});
}

/// A dataset at version 1 and a service at version 2, with a line between them that can be cut.
class InterruptedPull : public SyncFixture {
protected:
    InterruptedPull() {
        Open({{"ConfigTree", {Material("a"), Material("b")}}});
        EXPECT_TRUE(dataset.Pull());
        before = dataset.Content();
        Apply({{"ConfigTree", {Material("b", "changed"), Material("c")}}}, {{"ConfigTree", {"a"}}});
        TakeNotifications();
    }

    static json Material(const std::string& id, const std::string& name = "name") {
        return {{"ID", id},        {"groupName", "MaterialSeries"}, {"text", name + " of " + id}, {"parentID", ""},
                {"CreateTime", 1}, {"content", json::object()}};
    }

    /// A pull on a line that goes away at the call, after so many bytes of its answer.
    bool PullUntil(std::size_t call, std::size_t bytes) {
        Relay line(service.Port());
        line.GoAway(call, bytes);
        OpenSessionAt(line.Address());
        return dataset.Pull();
    }

    /// Bytes that the service answers to a call of a whole pull.
    std::size_t AnswerBytes(std::size_t call) {
        auto other = Dataset(L"other");
        other.CopyFrom(dataset);
        Relay line(service.Port());
        OpenSessionAt(line.Address());
        EXPECT_TRUE(other.Pull());
        TakeNotifications();
        return line.AnswerBytes(call);
    }

    void ExpectUntouched() { EXPECT_EQ(Difference(before, dataset.Content()), ""); }

    void ExpectThatTheNextPullSucceeds() {
        OpenSessionAt(service.Address());
        TakeNotifications();
        EXPECT_TRUE(dataset.Pull());
        EXPECT_EQ(TakeNotifications(), kPulled);
        EXPECT_EQ(Difference(Expected(), dataset.Content()), "");
    }

    HostedDataset dataset = Dataset(L"a");
    Facts before;
};

TEST_F(InterruptedPull, AServiceThatIsGoneLeavesTheStore) {
    EXPECT_FALSE(PullUntil(kVersionCall, 0));
    EXPECT_EQ(TakeNotifications(), kNoVersion);
    ExpectUntouched();
    ExpectThatTheNextPullSucceeds();
}

TEST_F(InterruptedPull, AServiceThatGoesAwayBetweenVersionAndDownloadLeavesTheStore) {
    EXPECT_FALSE(PullUntil(kDownloadCall, 0));
    EXPECT_EQ(TakeNotifications(), kNoData);
    ExpectUntouched();
    ExpectThatTheNextPullSucceeds();
}

TEST_F(InterruptedPull, ADownloadCutAtAnyPlaceLeavesTheStore) {
    const auto whole = AnswerBytes(kDownloadCall);
    ASSERT_GT(whole, 200U);
    for (std::size_t bytes = 1; bytes < whole; bytes += whole / 23) {
        SCOPED_TRACE(bytes);
        EXPECT_FALSE(PullUntil(kDownloadCall, bytes));
        EXPECT_EQ(TakeNotifications(), kNoData);
        ExpectUntouched();
    }
    EXPECT_FALSE(PullUntil(kDownloadCall, whole - 1));
    ExpectUntouched();
    ExpectThatTheNextPullSucceeds();
}

TEST_F(InterruptedPull, AVersionThatIsCutOffIsNoVersion) {
    const auto whole = AnswerBytes(kVersionCall);
    for (std::size_t bytes = 1; bytes < whole; bytes += whole / 7) {
        SCOPED_TRACE(bytes);
        EXPECT_FALSE(PullUntil(kVersionCall, bytes));
        EXPECT_EQ(TakeNotifications(), kNoVersion);
        ExpectUntouched();
    }
    ExpectThatTheNextPullSucceeds();
}

TEST_F(InterruptedPull, AWorkUnitThatCannotBeAskedIsPassedOver) {
    for (const std::size_t bytes : {0U, 30U}) {
        auto other = Dataset(L"other " + std::to_wstring(bytes));
        other.CopyFrom(dataset);
        Relay line(service.Port());
        line.GoAway(kWorkunitCall, bytes);
        OpenSessionAt(line.Address());
        EXPECT_TRUE(other.Pull());
        EXPECT_EQ(TakeNotifications(), kPulled);
        EXPECT_EQ(Difference(Expected(), other.Content()), "");
    }
}

TEST_F(InterruptedPull, AFirstLoadThatIsCutLeavesAnEmptyStoreThatTheNextPullFills) {
    auto fresh = Dataset(L"fresh");
    {
        Relay line(service.Port());
        line.GoAway(kDownloadCall, 100);
        OpenSessionAt(line.Address());
        EXPECT_FALSE(fresh.Pull());
    }
    EXPECT_EQ(TakeNotifications(), kNoData);
    EXPECT_EQ(StoreFacts(fresh.Path()), Facts());
    OpenSessionAt(service.Address());
    EXPECT_TRUE(fresh.Pull());
    EXPECT_EQ(Difference(Expected(), fresh.Content()), "");
}

TEST_F(InterruptedPull, AServiceThatWasStartedAgainIsGoneOnWith) {
    service.Restart();
    EXPECT_FALSE(dataset.Pull());
    EXPECT_EQ(TakeNotifications(), kNoVersion);
    ExpectUntouched();
    ExpectThatTheNextPullSucceeds();
}

} // namespace
} // namespace tolmtest
