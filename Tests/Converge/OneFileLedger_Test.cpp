#include "Converge/OneFileLedger.h"
#include "StoreSupport/SyncFixture.h"

namespace tolmtest {
namespace {

using nlohmann::json;

/// A material that the cloud has with mark 1 in version 1, and from there on with those that a test gives it. What the
/// workers of a file are judged by has to see a loss where there is one.
class OneFileOracle : public SyncFixture {
protected:
    OneFileOracle() { Open({{"ConfigTree", {Row(1)}}}); }

    static json Row(long mark) {
        return {{"ID", "r"},          {"groupName", "MaterialSeries"}, {"text", "r"}, {"parentID", ""},
                {"CreateTime", mark}, {"content", json::object()}};
    }
    void CloudTakes(long mark) { Apply({{"ConfigTree", {Row(mark)}}}, json::object()); }
    void CloudRemoves() { Apply(json::object(), {{"ConfigTree", {"r"}}}); }

    /// What became of the edit with this mark, after what two workers say.
    EditFate FateOf(long mark, const std::vector<std::string>& worker, const std::vector<std::string>& other = {}) {
        const VersionLog log(service.DatabasePath(), "P");
        const std::vector<Ledger> ledgers{LedgerOf(worker), LedgerOf(other)};
        const auto& attempts = ledgers.front().attempts;
        const auto edit = std::ranges::find(attempts, mark, &Attempt::mark);
        return EditJudge(ledgers, log).FateOf(ledgers.front(), static_cast<std::size_t>(edit - attempts.begin()));
    }

    /// All uploads that nobody closed made version 2.
    static Ledger LedgerOf(const std::vector<std::string>& lines) {
        Ledger ledger;
        ledger.BeginRun("token");
        for (const auto& line : lines)
            ledger.Take(line);
        ledger.TakeLastVersions([](const std::string& token) { return token == "token" ? 2 : 0; });
        return ledger;
    }
};

TEST_F(OneFileOracle, AnEditLandsWithItsMark) {
    CloudTakes(5);
    CloudTakes(6);
    EXPECT_EQ(FateOf(5, {"put r 5 1", "ok 1 100"}), EditFate::Landed);
    EXPECT_EQ(FateOf(7, {"put r 7 1", "ok 1 100"}), EditFate::Lost);
    EXPECT_EQ(FateOf(7, {"del r 7 1", "ok 1 100"}), EditFate::Lost);
    CloudRemoves();
    EXPECT_EQ(FateOf(7, {"del r 7 1", "ok 1 100"}), EditFate::Landed);
}

TEST_F(OneFileOracle, AnEditIsFollowedByOneThatWasMadeOrCanBeSeen) {
    CloudTakes(6);
    const auto fate = [&](long next, const std::string& end) {
        return FateOf(5, {"put r 5 2", "ok 1 100", "put r " + std::to_string(next) + " 2", end});
    };
    EXPECT_EQ(fate(7, "ok 1 200"), EditFate::Followed);
    EXPECT_EQ(fate(7, "no 1 200"), EditFate::Lost);
    EXPECT_EQ(fate(7, "warn the process ended"), EditFate::Lost);
    EXPECT_EQ(fate(6, "warn the process ended"), EditFate::Followed);
}

/// The edit after the one that went up in version 2.
TEST_F(OneFileOracle, AnEditGivesWayToAnUploadOfTheFileThatHadReadItBefore) {
    CloudTakes(5);
    const auto fate = [&](const std::string& edit, const std::vector<std::string>& upload) {
        return FateOf(6, {"put r 5 1", "ok 1 100", edit, "ok 1 300"}, upload);
    };
    const std::string edit = "put r 6 1";
    EXPECT_EQ(fate(edit, {"send 200 1", "sync 2 1 1 2 9"}), EditFate::OverriddenByOwnUpload);
    EXPECT_EQ(fate(edit, {"send 200 1"}), EditFate::OverriddenByOwnUpload) << "it was killed behind the upload";
    EXPECT_EQ(fate(edit, {"send 400 1", "sync 2 1 1 2 9"}), EditFate::Lost) << "the upload would have sent it";
    EXPECT_EQ(fate(edit, {"send 200 1", "sync 2 1 1 3 9"}), EditFate::Lost) << "that upload made another version";
    EXPECT_EQ(fate(edit, {"send 200 2"}), EditFate::Lost) << "that version was there before";
    EXPECT_EQ(fate("put r 6 2", {"send 200 1", "sync 2 1 1 2 9"}), EditFate::Lost) << "the file told that version";
    EXPECT_EQ(fate(edit, {}), EditFate::Lost) << "nobody sent anything";
}

TEST_F(OneFileOracle, AnEditGivesWayToOthersUntilItIsSent) {
    CloudTakes(5);
    CloudTakes(kOutsideMarks + 1);
    const auto fate = [&](const std::string& edit, const std::vector<std::string>& upload) {
        return FateOf(6, {"put r 5 1", "ok 1 100", edit, "ok 1 300"}, upload);
    };
    EXPECT_EQ(fate("put r 6 2", {}), EditFate::OverriddenFromOutside);
    EXPECT_EQ(fate("put r 6 3", {}), EditFate::Lost) << "the file told that version";
    EXPECT_EQ(fate("put r 6 1", {"send 400 1", "sync 2 1 1 2 9"}), EditFate::Lost) << "it should have gone up before";
    EXPECT_EQ(fate("put r 6 1", {"send 400 1", "sync 2 1 0 2 9"}), EditFate::OverriddenFromOutside);
}

TEST_F(OneFileOracle, AnEditOfWhatHadComeBackGoesWithTheDeletionThatIsStillNoted) {
    CloudTakes(5);
    CloudRemoves();
    const auto fate = [&](const std::vector<std::string>& upload) {
        return FateOf(7, {"put r 5 1", "ok 1 100", "del r 6 1", "ok 1 300", "put r 7 3", "ok 1 500"}, upload);
    };
    EXPECT_EQ(fate({"send 200 1", "sync 2 1 1 2 9"}), EditFate::OnARecordThatHadComeBack);
    EXPECT_EQ(fate({"send 400 1", "sync 2 1 1 2 9"}), EditFate::Lost);
}

TEST_F(OneFileOracle, AMergeStampsWhatOthersSentMeanwhileWhereItWasDoneOrKilled) {
    EXPECT_TRUE(LedgerOf({"merge 10 1", "sync 3 1 1 3 9"}).Merges(2));
    EXPECT_TRUE(LedgerOf({"merge 10 1"}).Merges(2));
    EXPECT_FALSE(LedgerOf({"merge 10 1", "sync 3 1 1 3 9"}).Merges(1));
    EXPECT_FALSE(LedgerOf({"merge 10 1", "sync 3 1 1 3 9"}).Merges(4));
    EXPECT_FALSE(LedgerOf({"merge 10 1", "sync 3 1 0 3 9", "sync 1 0 1 3 9"}).Merges(2));
    EXPECT_FALSE(LedgerOf({"send 10 1", "sync 3 1 1 3 9"}).Merges(2));
}

TEST_F(OneFileOracle, TheLongestWaitsAreNoted) {
    const auto ledger = LedgerOf(
        {"put r 5 1", "ok 70 100", "put r 6 1", "no 1500 200", "sync 1 0 1 1 30", "sync 0 0 1 1 20", "warn F: text"});
    EXPECT_EQ(ledger.longestEdit, 1500);
    EXPECT_EQ(ledger.longestSync, 30);
    EXPECT_EQ(ledger.warnings, std::vector<std::string>{"warn F: text"});
    EXPECT_EQ(ledger.next, 7);
}

} // namespace
} // namespace tolmtest
