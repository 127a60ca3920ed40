#include "Converge/ConvergeFixture.h"
#include "Converge/HostHistories.h"

#include <algorithm>
#include <iostream>
#include <string>

namespace tolmtest {
namespace {

using nlohmann::json;

constexpr int kUsers = 20;
constexpr int kTurns = 3;

/// An edit of host's own: a group that only it edits, under a name that all others want too.
json NewGroup(int host, int turn) {
    return {{"do", "put"},
            {"host", host},
            {"slice", "pipe groups"},
            {"id", "group " + std::to_string(host) + "-" + std::to_string(turn)},
            {"name", "turn " + std::to_string(turn)},
            {"mark", 1'000 + 100 * turn + host},
            {"n", 0},
            {"new", true}};
}

/// An edit of the setting that all edit.
json SharedEdit(int host, int turn) {
    return {{"do", "put"},
            {"host", host},
            {"slice", "pipe systems"},
            {"id", "first system"},
            {"name", "of " + std::to_string(host)},
            {"mark", 5'000 + 100 * turn + host},
            {"n", host},
            {"links", {"first serie"}}};
}

class Contention : public ConvergeFixture {
protected:
    json Turn(int turn) {
        json steps = json::array();
        json all = json::array();
        for (int host = 0; host < kUsers; ++host) {
            steps.push_back(NewGroup(host, turn));
            steps.push_back(SharedEdit(host, turn));
            all.push_back(host);
        }
        steps.push_back({{"do", "together"}, {"hosts", all}});
        return steps;
    }
};

TEST_F(Contention, TwentyUsersWhoUploadAtOnceAllComeThroughAndNothingOfTheirsIsLost) {
    json steps = json::array();
    for (int turn = 0; turn < kTurns; ++turn) {
        for (const auto& step : Turn(turn))
            steps.push_back(step);
    }
    Play({{"hosts", kUsers}, {"steps", steps}}, "P");
    std::cout << counts.refused << " rounds of " << kTurns * kUsers << " uploads were tried again\n";
    EXPECT_GE(counts.fates[Fate::Landed], kTurns * kUsers + kTurns) << "every group, and the first of the shared edits";
    EXPECT_EQ(counts.fates[Fate::Landed] + counts.fates[Fate::Overridden], 2 * kTurns * kUsers);
    const auto tables = json::parse(service.Tables("P"));
    const auto groups = std::ranges::count_if(
        tables.at("ConfigTree"), [](const json& row) { return row.at("ID").get<std::string>().starts_with("group "); });
    EXPECT_EQ(groups, kTurns * kUsers);
}

} // namespace
} // namespace tolmtest
