#include "Converge/ConvergeFixture.h"
#include "Converge/HostHistories.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace tolmtest {
namespace {

using nlohmann::json;

/// Histories of all shards together, unless TOLM_HOST_HISTORIES says otherwise.
constexpr std::uint64_t kHistories = 1'000;
constexpr int kShards = 4;

/// A number of the environment; `otherwise` when it is not set.
std::uint64_t Setting(const char* name, std::uint64_t otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// Where there is room in memory, the datasets stand there: what a crash leaves of them is not the matter here, and a
/// disk would make each history ten times as long. TMPDIR has the first word.
class InMemory : public testing::Environment {
public:
    void SetUp() override {
        constexpr std::uintmax_t enough = 256U << 20U;
        std::error_code error;
        const auto space = std::filesystem::space("/dev/shm", error);
        if (!error && space.available >= enough && access("/dev/shm", W_OK) == 0)
            setenv("TMPDIR", "/dev/shm", 0);
    }
};
const auto* const kInMemory = testing::AddGlobalTestEnvironment(new InMemory);

class Converge : public ConvergeFixture {};

/// Shares of the histories, so that they can be played side by side.
class ConvergeShare : public ConvergeFixture, public testing::WithParamInterface<int> {
protected:
    void TearDown() override {
        std::cout << counts.fates[Fate::Landed] << " edits landed, " << counts.fates[Fate::Overridden]
                  << " were overridden, " << counts.fates[Fate::Nothing] << " came to nothing, " << counts.skipped
                  << " could not be made; " << counts.lostAnswers << " answers were lost; " << counts.direct
                  << " calls for templates and products; " << counts.takenBack << " pulls took system types back; "
                  << counts.refused << " rounds were tried again;";
        for (const auto& [step, count] : counts.steps)
            std::cout << " " << count << " " << step;
        std::cout << "\n";
    }
};

TEST_P(ConvergeShare, AfterTheLastSynchronisationAllHostsHoldWhatTheServiceHoldsAndNoEditIsLost) {
    const auto first = Setting("TOLM_HOST_HISTORY_SEED", 1);
    const auto count = Setting("TOLM_HOST_HISTORIES", kHistories);
    for (auto seed = first + static_cast<std::uint64_t>(GetParam()); seed < first + count && !HasFailure();
         seed += kShards) {
        SCOPED_TRACE("again with TOLM_HOST_HISTORY_SEED=" + std::to_string(seed) + " TOLM_HOST_HISTORIES=1");
        Play(HostHistoryMaker(seed).History(), "seed" + std::to_string(seed));
    }
}
INSTANTIATE_TEST_SUITE_P(Histories, ConvergeShare, testing::Range(0, kShards));

/// Histories that a person wrote down, or that failed once.
constexpr const char* kCases[] = {
    // two hosts make a group of one name; the second one's gets a number
    R"case({"hosts":2,"steps":[
    {"host":0,"do":"put","slice":"pipe groups","id":"0-1","name":"B","mark":11,"n":0,"new":true},
    {"host":1,"do":"put","slice":"pipe groups","id":"1-1","name":"B","mark":12,"n":0,"new":true},
    {"host":0,"do":"sync"},{"host":1,"do":"sync"}]})case",
    // one removes what the other one edits, in both orders
    R"case({"hosts":2,"steps":[
    {"host":0,"do":"delete","slice":"pipe series","id":"first serie"},
    {"host":1,"do":"put","slice":"pipe series","id":"first serie","name":"D","mark":11,"n":5,"links":["first pipe"]},
    {"host":1,"do":"delete","slice":"duct series","id":"first duct serie"},
    {"host":0,"do":"put","slice":"duct series","id":"first duct serie","name":"D","mark":12,"n":5,"links":[]},
    {"host":0,"do":"sync"},{"host":1,"do":"sync"}]})case",
    // an upload whose answer is lost, and an edit of the same setting before it is tried again
    R"case({"hosts":2,"steps":[
    {"host":0,"do":"put","slice":"wire sizes","id":"0-1","name":"w","mark":11,"n":7,"new":true},
    {"host":0,"do":"put","slice":"pipe systems","id":"first system","name":"D","mark":12,"n":7,"links":["first serie"]},
    {"host":0,"do":"sync","lose":"/api/UpLoad/","rounds":1},
    {"host":0,"do":"put","slice":"wire sizes","id":"0-1","name":"v","mark":13,"n":3},
    {"host":0,"do":"put","slice":"pipe systems","id":"first system","name":"E","mark":14,"n":3,"links":[]},
    {"host":1,"do":"sync"},{"host":0,"do":"sync"}]})case",
    // a creation whose answer is lost and that the other host removes before it is tried again
    R"case({"hosts":2,"steps":[
    {"host":0,"do":"put","slice":"conduit sizes","id":"0-1","name":"c","mark":11,"n":2,"new":true},
    {"host":0,"do":"sync","lose":"/api/UpLoad/","rounds":1},
    {"host":1,"do":"sync"},
    {"host":1,"do":"delete","slice":"conduit sizes","id":"0-1"},
    {"host":1,"do":"sync"},{"host":0,"do":"sync"}]})case",
    // a removal that is taken back, while the other host removes the same
    R"case({"hosts":2,"steps":[
    {"host":0,"do":"delete","slice":"duct sizes","id":"first duct"},
    {"host":1,"do":"delete","slice":"duct sizes","id":"first duct"},
    {"host":0,"do":"put","slice":"duct sizes","id":"first duct","name":"A","mark":11,"n":6,"undo":true},
    {"host":1,"do":"sync"},{"host":0,"do":"sync"}]})case",
    // a record that is made and removed again between two synchronisations leaves an empty status store
    R"case({"hosts":2,"steps":[
    {"host":0,"do":"put","slice":"hvac materials","id":"0-1","name":"m","mark":11,"n":2,"new":true},
    {"host":0,"do":"delete","slice":"hvac materials","id":"0-1"},
    {"host":0,"do":"sync"},{"host":1,"do":"sync"}]})case",
};

TEST_F(Converge, ASystemTypeThatOneWorkUnitRemovedAndAnotherTookBackStandsEverywhere) {
    OpenHosts(3, "P");
    PlayAll(json::parse(R"([
        {"host":0,"do":"delete","slice":"pipe systems","id":"first system"},
        {"host":0,"do":"sync"},
        {"host":1,"do":"sync","recover":["first system","nobody"]},
        {"host":2,"do":"sync"}])"));
    EXPECT_EQ(counts.takenBack, 1);
    Settle();
    ExpectConverged();
    for (int host = 0; host < HostCount(); ++host)
        EXPECT_EQ(Ask(host, {{"do", "list"}, {"slice", "pipe systems"}}).at("records").at(0).at("name"), "A");
    const VersionLog log(service.DatabasePath(), "P");
    const auto& states = log.Of(SliceOf("pipe systems"), "first system");
    ASSERT_EQ(states.size(), 2U);
    EXPECT_EQ(states[0].gone, 2);
    EXPECT_EQ(states[1].born, 3);
    EXPECT_EQ(counts.fates[Fate::Landed], 1) << "the removal was in the cloud all the same";
}

TEST_F(Converge, ASystemTypeIsNotTakenBackUnderANameThatSomebodyTook) {
    OpenHosts(2, "P");
    PlayAll(json::parse(R"([
        {"host":0,"do":"delete","slice":"pipe systems","id":"first system"},
        {"host":0,"do":"put","slice":"pipe systems","id":"0-1","name":"A","mark":11,"n":0,"new":true},
        {"host":0,"do":"sync"},
        {"host":1,"do":"sync","recover":["first system"]}])"));
    EXPECT_EQ(counts.takenBack, 1);
    Settle();
    ExpectConverged();
    EXPECT_EQ(Ask(1, {{"do", "list"}, {"slice", "pipe systems"}}).at("records").size(), 1U);
}

TEST_F(Converge, OfTemplatesAndProductsTheLastCallCountsWhoeverSynchronisedBefore) {
    OpenHosts(3, "P");
    PlayAll(json::parse(R"([
        {"host":0,"do":"put","slice":"pipe groups","id":"0-1","name":"B","mark":11,"n":0,"new":true},
        {"host":0,"do":"template","id":"t1","mark":1},
        {"host":1,"do":"template","id":"t1","mark":2},
        {"host":1,"do":"product","id":"k1","category":"16302510","mark":3},
        {"host":0,"do":"sync"},
        {"host":2,"do":"product","id":"k1","category":"16302510","mark":4},
        {"host":2,"do":"template","id":"t2","mark":5},
        {"host":1,"do":"sync"},
        {"host":1,"do":"template","id":"t2","remove":true},
        {"host":0,"do":"product","id":"k0","category":"16353515","mark":6},
        {"host":2,"do":"product","id":"k0","category":"16353515","remove":true}])"));
    Settle();
    ExpectConverged();
    const auto tables = json::parse(service.Tables("P"));
    EXPECT_EQ(tables.at("CircuitTemplate").size(), 1U);
    EXPECT_EQ(tables.at("CircuitTemplate")[0].at("WireSpec"), "2");
    EXPECT_EQ(tables.at("Combination_16302510")[0].at("Spacing"), 4);
    EXPECT_EQ(counts.fates[Fate::Landed], 1);
}

TEST_F(Converge, TheseCasesHold) {
    int number = 0;
    for (const char* text : kCases) {
        SCOPED_TRACE("case " + std::to_string(++number));
        Play(json::parse(text), "case" + std::to_string(number));
    }
}

TEST_F(Converge, ALostAnswerToAnUploadLeavesOneEffect) {
    OpenHosts(2, "P");
    const int before = service.Version("P");
    PlayAll(json::parse(R"([
        {"host":0,"do":"put","slice":"pipe groups","id":"0-1","name":"B","mark":11,"n":0,"new":true},
        {"host":0,"do":"put","slice":"pipe groups","id":"first group","name":"C","mark":12,"n":0},
        {"host":0,"do":"delete","slice":"pipe series","id":"first serie"},
        {"host":0,"do":"sync","lose":"/api/UpLoad/"}])"));
    EXPECT_EQ(counts.lostAnswers, 1);
    Settle();
    ExpectConverged();
    EXPECT_EQ(service.Version("P"), before + 1);
    EXPECT_EQ(counts.fates[Fate::Landed], 3);
}

TEST_F(Converge, AnEditThatLosesIsNamedWithTheVersionThatOverrodeIt) {
    OpenHosts(2, "P");
    PlayAll(json::parse(R"([
        {"host":0,"do":"put","slice":"pipe groups","id":"first group","name":"B","mark":11,"n":0},
        {"host":1,"do":"put","slice":"pipe groups","id":"first group","name":"C","mark":12,"n":0},
        {"host":0,"do":"sync"},
        {"host":1,"do":"sync"}])"));
    Settle();
    ExpectConverged();
    EXPECT_EQ(counts.fates[Fate::Landed], 1);
    EXPECT_EQ(counts.fates[Fate::Overridden], 1);
    const VersionLog log(service.DatabasePath(), "P");
    const auto& states = log.Of(SliceOf("pipe groups"), "first group");
    ASSERT_EQ(states.size(), 2U);
    EXPECT_EQ(states.back().Mark(), 11);
    const json step{{"do", "put"}, {"slice", "pipe groups"}, {"id", "first group"}, {"name", "C"}, {"mark", 12}};
    const auto fate = FindFate(log, {step, 1, 2});
    EXPECT_EQ(fate.fate, Fate::Overridden);
    EXPECT_EQ(fate.version, 2);
    EXPECT_EQ(FindFate(log, {step, 2, 3}).fate, Fate::Lost) << "nothing has changed it since";
}

TEST_F(Converge, OfTwoNewRecordsOfANameTheSecondGetsANumber) {
    OpenHosts(2, "P");
    PlayAll(json::parse(kCases[0]).at("steps"));
    Settle();
    ExpectConverged();
    const VersionLog log(service.DatabasePath(), "P");
    EXPECT_EQ(log.Of(SliceOf("pipe groups"), "0-1").back().Name(), "B");
    EXPECT_EQ(log.Of(SliceOf("pipe groups"), "1-1").back().Name(), "B(1)");
}

// A creation that is removed again leaves no note, and what stood before the first removal is forgotten with it.
TEST_F(Converge, ARemovalThatIsTakenBackAndMadeAgainIsNotSent) {
    OpenHosts(1, "P");
    const json removal{{"do", "delete"}, {"slice", "pipe groups"}, {"id", "first group"}};
    json back{{"do", "put"}, {"slice", "pipe groups"}, {"id", "first group"}, {"name", "A"}};
    back.update({{"mark", 11}, {"n", 0}, {"new", true}});
    for (const auto& command : {removal, back, removal})
        EXPECT_TRUE(Ask(0, command).at("done"));
    ExpectSynced(0);
    EXPECT_EQ(Ask(0, {{"do", "list"}, {"slice", "pipe groups"}}).at("records"), json::array());
    EXPECT_EQ(service.Version("P"), 1);
}

TEST_F(Converge, ASeedAlwaysGivesTheSameHistoryAndAnotherSeedAnotherOne) {
    EXPECT_EQ(HostHistoryMaker(5).History(), HostHistoryMaker(5).History());
    EXPECT_NE(HostHistoryMaker(5).History(), HostHistoryMaker(6).History());
}

} // namespace
} // namespace tolmtest
