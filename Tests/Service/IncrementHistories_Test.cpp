#include "ServiceTesting.h"

#include <map>
#include <random>
#include <set>

namespace tolmtest {
namespace {

/// What a client holds: rows by table and id.
using Holding = std::map<std::pair<std::string, std::string>, json>;

constexpr int kVersions = 8;
constexpr int kIds = 5; ///< few, so that the same ids come and go again and again

std::string IdKeyOf(const std::string& table) {
    return table == "BinaryTable" ? "fileName" : "ID";
}

bool IsTracked(const std::string& table) {
    return service::kSettingTables[service::FindSettingTable(table).value()].tracked;
}

/// What a client does with an increment: first it deletes, then it writes.
void TakeIn(const json& increment, Holding& holding) {
    for (const auto& [table, rows] : increment["del"].items()) {
        for (const auto& row : rows)
            holding.erase({table, row[IdKeyOf(table)]});
    }
    for (const auto& [table, rows] : increment["add"].items()) {
        for (const auto& row : rows) {
            if (table != "ConfigTree" || row["groupName"] != service::kUnknownGroup)
                holding[{table, row[IdKeyOf(table)]}] = row;
        }
    }
}

/// Random changes to a project, and what it held at each version as plain bookkeeping has it.
class History {
public:
    explicit History(std::uint64_t seed) : m_random(seed) {
        m_store.Fill("p", {});
        m_states.push_back({});
        for (int i = 1; i < kVersions; ++i)
            Step();
    }
    StoreOnly& Store() { return m_store; }
    std::int64_t Newest() const { return static_cast<std::int64_t>(m_states.size()); }
    const Holding& At(std::int64_t version) const { return m_states[static_cast<std::size_t>(version - 1)]; }

private:
    std::uint64_t Below(std::uint64_t bound) { return m_random() % bound; }

    json RandomRow(const std::string& table, const std::string& id) {
        const auto mark = std::to_string(Below(1000));
        if (table == "ConfigTree")
            return With(Node("electricWireType", id, mark), "parentID", Below(2) == 0 ? "" : "parent");
        if (table == "BinaryTable")
            return Binary(id, Below(2) == 0 ? "AAEC" : "AAED", 3);
        if (table == "CircuitTemplate")
            return Circuit(id, static_cast<int>(Below(1000)));
        return table == "PipeType" ? Series(id, id + mark) : SystemType(id, id + mark);
    }

    void Step() {
        auto next = m_states.back();
        json put = json::object();
        json remove = json::object();
        for (const char* table : {"ConfigTree", "PipeType", "DuctSystemType", "CircuitTemplate", "BinaryTable"}) {
            for (int i = 0; i < kIds; ++i)
                Decide(table, "id" + std::to_string(i), next, put, remove);
        }
        const auto version = m_store.Apply("p", {{"add", put}, {"remove", remove}});
        EXPECT_EQ(version, Newest() + (next == m_states.back() ? 0 : 1));
        if (version > Newest())
            m_states.push_back(next);
    }

    void Decide(const std::string& table, const std::string& id, Holding& next, json& put, json& remove) {
        const auto what = Below(6);
        if (what == 0) {
            put[table].push_back(next[{table, id}] = RandomRow(table, id));
        } else if (what == 1) {
            remove[table].push_back(id);
            next.erase({table, id});
        }
    }

    std::mt19937_64 m_random;
    StoreOnly m_store;
    std::vector<Holding> m_states;
};

class IncrementHistories : public testing::TestWithParam<int> {};

TEST_P(IncrementHistories, FromEachVersionToTheNewestEndAsAFullLoad) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    History history(static_cast<std::uint64_t>(GetParam()));
    for (std::int64_t since = 0; since <= history.Newest(); ++since) {
        auto holding = since == 0 ? Holding() : history.At(since);
        TakeIn(history.Store().Increment("p", since), holding);
        EXPECT_EQ(holding, history.At(history.Newest())) << "since version " << since;
    }
}

/// Checks one increment against the state that it leads to.
class RuleCheck {
public:
    RuleCheck(const json& increment, const Holding& now) : m_increment(increment), m_now(now) {}

    void DelIsWellFormed() {
        EXPECT_TRUE(m_increment["del"].contains("ConfigTree"));
        for (const auto& [table, rows] : m_increment["del"].items()) {
            EXPECT_TRUE(table == "ConfigTree" || !rows.empty()) << table;
            for (const auto& row : rows)
                NoteDeleted({table, row[IdKeyOf(table)]}, row);
        }
    }

    void TrackedRowsInAddStandInDel() const {
        for (const auto& [table, rows] : m_increment["add"].items()) {
            for (const auto& row : rows) {
                const bool asked = IsTracked(table) && row.value("groupName", "") != service::kUnknownGroup;
                EXPECT_TRUE(!asked || m_deleted.contains({table, row[IdKeyOf(table)]})) << row;
            }
        }
    }

    void OtherContentIsNotPassedOver() const {
        bool otherContent = false;
        for (const auto* part : {"add", "del"}) {
            for (const auto& [table, rows] : m_increment[part].items())
                otherContent = otherContent || !IsTracked(table);
        }
        const bool configTree = m_increment["add"].contains("ConfigTree") || !m_increment["del"]["ConfigTree"].empty();
        EXPECT_TRUE(configTree || !otherContent);
    }

    void WhatStoodAndDoesNotStandSoIsInDel(const Holding& then) const {
        for (const auto& [key, row] : then) {
            const bool standsSo = m_now.contains(key) && m_now.at(key) == row;
            EXPECT_TRUE(standsSo || m_deleted.contains(key)) << row;
        }
    }

private:
    void NoteDeleted(const std::pair<std::string, std::string>& key, const json& row) {
        EXPECT_TRUE(m_deleted.insert(key).second) << "an id stands in \"del\" once: " << row;
        EXPECT_EQ(row.contains("version"), !m_now.contains(key)) << row;
    }

    const json& m_increment;
    const Holding& m_now;
    std::set<std::pair<std::string, std::string>> m_deleted;
};

TEST_P(IncrementHistories, KeepTheRulesOfAddAndDel) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    History history(static_cast<std::uint64_t>(GetParam()));
    for (std::int64_t since = 1; since <= history.Newest(); ++since) {
        SCOPED_TRACE("since version " + std::to_string(since));
        const auto increment = history.Store().Increment("p", since);
        RuleCheck check(increment, history.At(history.Newest()));
        check.DelIsWellFormed();
        check.TrackedRowsInAddStandInDel();
        check.OtherContentIsNotPassedOver();
        check.WhatStoodAndDoesNotStandSoIsInDel(history.At(since));
    }
}

/// A client reads the version first and the increment later: it may get rows that are newer than what it stamps.
TEST_P(IncrementHistories, LeadAnOlderStampToTheSameEnd) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    std::mt19937_64 random(static_cast<std::uint64_t>(GetParam()));
    History history(static_cast<std::uint64_t>(GetParam()));
    Holding holding;
    std::int64_t stamp = 0;
    TakeIn(history.Store().Increment("p", stamp), holding);
    for (stamp = 1; stamp < history.Newest(); stamp += 1 + static_cast<std::int64_t>(random() % 2))
        TakeIn(history.Store().Increment("p", stamp), holding);
    EXPECT_EQ(holding, history.At(history.Newest()));
}

INSTANTIATE_TEST_SUITE_P(Seeds, IncrementHistories, testing::Range(1, 41));

} // namespace
} // namespace tolmtest
