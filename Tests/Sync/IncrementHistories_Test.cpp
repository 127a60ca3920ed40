#include "StoreSupport/HistoryMaker.h"
#include "StoreSupport/SyncFixture.h"
#include "Vorn/Text.h"

#include <cstdlib>
#include <set>
#include <vector>

namespace tolmtest {
namespace {

using nlohmann::json;
using History = std::vector<HistoryStep>;

/// Versions of a random history, and how many histories there are unless TOLM_HISTORIES says otherwise.
constexpr int kVersions = 7;
constexpr std::uint64_t kHistories = 8;

History MakeHistory(std::uint64_t seed) {
    HistoryMaker maker(seed);
    History history{maker.First()};
    while (history.size() < kVersions)
        history.push_back(maker.Next());
    return history;
}

/// A number of the environment; `otherwise` when it is not set.
std::uint64_t Setting(const char* name, std::uint64_t otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// Plays histories on the service, each as a project of its own, and pulls.
class IncrementHistories : public SyncFixture {
protected:
    /// From every version to each later one the increment leads where a full load leads, and that is what the rows
    /// say. The first difference ends it.
    void Run(const History& history, const std::string& project) {
        const auto place = vorn::StringUtil::ToWString(project) + L" ";
        std::vector<HostedDataset> loaded;
        auto copy = Dataset(place + L"copy");
        auto steady = Dataset(place + L"steady");
        for (std::size_t i = 0; i < history.size() && !HasFailure(); ++i) {
            Play(history[i], i == 0, project);
            const auto expected = Expected(project);
            loaded.push_back(Dataset(place + std::to_wstring(i + 1)));
            ExpectPull(loaded.back(), expected, "a full load of", i);
            ExpectPull(steady, expected, "version by version to", i);
            for (std::size_t from = 0; from < i && !HasFailure(); ++from) {
                copy.CopyFrom(loaded[from]);
                ExpectPull(copy, expected, "from " + std::to_string(from + 1) + " to", i);
            }
        }
        if (HasFailure())
            ADD_FAILURE() << "The case, for kCases:\n    R\"case(" << json(history).dump() << ")case\",";
    }

private:
    void Play(const HistoryStep& step, bool isFirst, const std::string& project) {
        if (isFirst)
            Open(step.at("put"), project);
        else
            Apply(step.at("put"), step.at("remove"), project);
    }

    static void ExpectPull(HostedDataset& dataset, const Facts& expected, const std::string& what, std::size_t i) {
        TakeNotifications();
        EXPECT_TRUE(dataset.Pull());
        EXPECT_EQ(TakeNotifications(), kPulled);
        EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>());
        EXPECT_EQ(Difference(expected, dataset.Content()), "") << what << " version " << i + 1;
    }
};

TEST_F(IncrementHistories, EveryIncrementLeadsWhereAFullLoadLeads) {
    const auto first = Setting("TOLM_HISTORY_SEED", 1);
    const auto count = Setting("TOLM_HISTORIES", kHistories);
    for (auto seed = first; seed < first + count && !HasFailure(); ++seed) {
        SCOPED_TRACE("again with TOLM_HISTORY_SEED=" + std::to_string(seed) + " TOLM_HISTORIES=1");
        Run(MakeHistory(seed), "seed" + std::to_string(seed));
    }
}

/// Histories that a person wrote down, or that failed once.
constexpr const char* kCases[] = {
    // rows come and go between two pulls, and come again; a material comes again as a size table
    R"case([{"put":{"ConfigTree":[{"ID":"a","groupName":"ductSeriesType","text":"a","parentID":"","content":{"shape":0,"systemPress":1,"series":"板","sizeList":[]}}]},"remove":{}},
    {"put":{"PipeType":[{"ID":"s","name":"s"}],"ConfigTree":[{"ID":"m","groupName":"MaterialSeries","text":"m","parentID":"","content":{}}]},"remove":{"ConfigTree":["a"]}},
    {"put":{"ConfigTree":[{"ID":"a","groupName":"ductSeriesType","text":"b","parentID":"","content":{"shape":1,"systemPress":0,"series":"","sizeList":[]}}]},"remove":{"PipeType":["s"],"ConfigTree":["m"]}},
    {"put":{"ConfigTree":[{"ID":"m","groupName":"MaterialSeries","text":"m","parentID":"n","content":{}}],"PipeType":[{"ID":"s","name":"s"}]},"remove":{}}])case",
    // a project whose rows all go, and come back
    R"case([{"put":{"PipeSystemType":[{"ID":"y","systemType":"y","code":"","description":"","systemCategory":1,"fittingIds":["s"]}]},"remove":{}},
    {"put":{},"remove":{"PipeSystemType":["y"]}},
    {"put":{"PipeSystemType":[{"ID":"y","systemType":"y","code":"","description":"","systemCategory":1}]},"remove":{}},
    {"put":{"PipeSystemType":[{"ID":"y","systemType":"y","code":"","description":"","systemCategory":1,"fittingIds":[]}]},"remove":{}}])case",
    // a size table becomes a material, and nothing but a file changes before and after
    R"case([{"put":{"ConfigTree":[{"ID":"m","groupName":"MaterialSeries","text":"m","parentID":"","CreateTime":1,"content":{}},{"ID":"z","groupName":"MaterialSeries","text":"z","parentID":"m","content":{"roughness":1,"sizeList":[{"DN":15}]}}]},"remove":{}},
    {"put":{"BinaryTable":[{"fileName":"f","length":1,"data":"YQ=="}]},"remove":{}},
    {"put":{"ConfigTree":[{"ID":"m","groupName":"MaterialSeries","text":"m","parentID":"z","content":{}},{"ID":"z","groupName":"MaterialSeries","text":"z","parentID":"","content":{}}]},"remove":{}},
    {"put":{},"remove":{"BinaryTable":["f"]}}])case",
    // an electrical system type loses its last cable, and its other values one by one
    R"case([{"put":{"ElectricalSystemType":[{"ID":"y","systemType":"y","code":"c","description":"d","systemCategory":41,"CreateTime":5,"bindIDs":["w"]}]},"remove":{}},
    {"put":{"ElectricalSystemType":[{"ID":"y","systemType":"y","code":"c","description":"d","systemCategory":41,"bindIDs":[]}]},"remove":{}},
    {"put":{"ElectricalSystemType":[{"ID":"y","systemType":"y","code":"","description":"","systemCategory":41}]},"remove":{}}])case",
};

TEST_F(IncrementHistories, TheseCasesHold) {
    int number = 0;
    for (const char* text : kCases) {
        SCOPED_TRACE("case " + std::to_string(++number));
        Run(json::parse(text), "case" + std::to_string(number));
    }
}

TEST_F(IncrementHistories, ASeedAlwaysGivesTheSameHistoryAndAnotherSeedAnotherOne) {
    EXPECT_EQ(MakeHistory(5), MakeHistory(5));
    EXPECT_NE(MakeHistory(5), MakeHistory(6));
}

TEST_F(IncrementHistories, TheHistoriesPutAndRemoveRowsOfEveryTable) {
    std::set<std::string> put;
    std::set<std::string> removed;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        for (const auto& step : MakeHistory(seed)) {
            for (const auto& [table, rows] : step.at("put").items())
                put.insert(table);
            for (const auto& [table, ids] : step.at("remove").items())
                removed.insert(table);
        }
    }
    EXPECT_EQ(put.size(), 16U);
    EXPECT_EQ(removed, put);
}

// --- where a refresh and a full load are meant to differ -------------------------------------------------------------

json Tray(const std::string& id, int type) {
    return {{"ID", id},        {"groupName", "cableTray"},
            {"text", id},      {"parentID", ""},
            {"CreateTime", 7}, {"content", {{"type", type}, {"sizeList", {{{"Size", 100.0}}}}}}};
}

json TraySerie(int type) {
    return {{"ID", "serie"}, {"name", "serie"}, {"type", type}};
}

class KnownDifferences : public IncrementHistories {
protected:
    /// Content of a dataset that was pulled before and after the change, and of one that was pulled after it.
    struct Both {
        Facts kept;
        Facts fresh;
    };
    Both PullAround(const json& tables, const json& put, const json& removed) {
        Open(tables);
        auto kept = Dataset(L"kept");
        EXPECT_TRUE(kept.Pull());
        Apply(put, removed);
        EXPECT_TRUE(kept.Pull());
        auto fresh = Dataset(L"fresh");
        EXPECT_TRUE(fresh.Pull());
        EXPECT_EQ(Difference(Expected(), fresh.Content()), "");
        return {kept.Content(), fresh.Content()};
    }
};

TEST_F(KnownDifferences, ARefreshLeavesARemovedTrayTable) {
    const auto both =
        PullAround({{"ConfigTree", {Tray("a", 0), Tray("b", 1)}}}, json::object(), {{"ConfigTree", {"a"}}});
    EXPECT_EQ(Difference(both.fresh, both.kept), "+ PSI/a = \n"
                                                 "+ PSI/a/CableTrayShape = 0\n"
                                                 "+ PSI/a/CableTraySizeList = X'0000C842'\n"
                                                 "+ PSI/a/CreateTime = 7\n"
                                                 "+ PSI/a/DisciplineId = 3\n"
                                                 "+ PSI/a/MEPType = 3\n"
                                                 "+ PSI/a/Name = 'a'\n");
}

TEST_F(KnownDifferences, ATraySerieFindsATableThatCameLaterOnlyWhenItIsTakenInAgain) {
    const auto both = PullAround({{"ConfigTree", {Tray("a", 0)}}, {"CableTrayFittingsType", {TraySerie(1)}}},
                                 {{"ConfigTree", {Tray("b", 1)}}}, json::object());
    EXPECT_EQ(Difference(both.fresh, both.kept), "- SMS/serie/SizeModuleId = 'b'\n");
}

TEST_F(KnownDifferences, ATraySerieKeepsATableThatBecameAnotherType) {
    const auto both = PullAround({{"ConfigTree", {Tray("a", 0)}}, {"CableTrayFittingsType", {TraySerie(0)}}},
                                 {{"ConfigTree", {Tray("a", 1)}}}, json::object());
    EXPECT_EQ(Difference(both.fresh, both.kept), "+ SMS/serie/SizeModuleId = 'a'\n");
}

TEST_F(KnownDifferences, ATrayTableKeepsATimeOfCreationThatItsRowDrops) {
    auto without = Tray("a", 0);
    without.erase("CreateTime");
    const auto both = PullAround({{"ConfigTree", {Tray("a", 0)}}}, {{"ConfigTree", {without}}}, json::object());
    EXPECT_EQ(Difference(both.fresh, both.kept), "+ PSI/a/CreateTime = 7\n");
}

// An electrical system type with an empty list keeps its links when its row comes in over it. The service has a changed
// row deleted first, so that a refresh ends where a full load does; a service that does not would see them stay.
TEST_F(KnownDifferences, AnElectricalSystemTypeLosesItsLastCableSinceTheServiceHasItDeletedFirst) {
    const json linked{{"ID", "y"},         {"systemType", "y"},    {"code", ""},
                      {"description", ""}, {"systemCategory", 41}, {"bindIDs", {"w"}}};
    json bare = linked;
    bare["bindIDs"] = json::array();
    const auto both =
        PullAround({{"ElectricalSystemType", {linked}}}, {{"ElectricalSystemType", {bare}}}, json::object());
    EXPECT_EQ(Difference(both.fresh, both.kept), "");
    EXPECT_FALSE(both.kept.contains("SYS/y/CableSpecTypeIds"));
}

// A circuit template has no optional keys: a row that drops one is lost, with or without a row before it.
TEST_F(KnownDifferences, ACircuitTemplateThatDropsAKeyIsLostInBothWays) {
    HistoryMaker maker(1);
    json whole;
    while (whole.is_null()) {
        const auto step = maker.Next();
        if (step.at("put").contains("CircuitTemplate"))
            whole = step.at("put").at("CircuitTemplate").at(0);
    }
    json partial = whole;
    partial.erase("LayingMode");
    Open({{"CircuitTemplate", {whole}}});
    auto kept = Dataset(L"kept");
    EXPECT_TRUE(kept.Pull());
    const auto key = "CRT/" + whole.at("ID").get<std::string>();
    EXPECT_TRUE(kept.Content().contains(key));
    Apply({{"CircuitTemplate", {partial}}}, json::object());
    EXPECT_TRUE(kept.Pull());
    auto fresh = Dataset(L"fresh");
    EXPECT_TRUE(fresh.Pull());
    EXPECT_EQ(TakeDebugWarnings(),
              (Warnings{L"CircuitTemplate:下载回路模板失败", L"CircuitTemplate:下载回路模板失败"}));
    EXPECT_EQ(Difference(fresh.Content(), kept.Content()), "");
    EXPECT_FALSE(fresh.Content().contains(key));
}

} // namespace
} // namespace tolmtest
