#include "Host/Session.h"
#include "StoreSupport/StoreFixture.h"
#include "StoreSupport/SyncFixture.h"

namespace tolmtest {
namespace {

using nlohmann::json;
using Texts = std::vector<std::wstring>;

json SystemType(const std::string& id, const char* links) {
    return {{"ID", id},
            {"systemType", "name of " + id},
            {"code", "J1"},
            {"description", "说明"},
            {"systemCategory", 21},
            {"CreateTime", 1709585100000},
            {links, {"link"}}};
}

/// The one system type of each table, and where it stands in the store and in the status store.
struct Table {
    const char* name;
    const char* id;
    const char* links;
    const char* status;
};
constexpr Table kTables[] = {
    {"PipeSystemType", "pipe", "fittingIds", "pipe 1 1 2"},
    {"DuctSystemType", "duct", "fittingIds", "duct 1 2 1"},
    {"HVACPipeSystemType", "hvac", "fittingIds", "hvac 1 1 1"},
    {"ElectricalSystemType", "power", "bindIDs", "power 1 5 3"}, // noted under 5, stored under 6
};

/// A dataset with four system types, all of which the cloud removes.
class RecoveryOverTheWire : public SyncFixture {
protected:
    RecoveryOverTheWire() {
        json tables = json::object();
        for (const auto& table : kTables)
            tables[table.name] = json::array({SystemType(table.id, table.links)});
        Open(tables);
        EXPECT_TRUE(dataset.Pull());
        before = dataset.Content();
    }

    void RemoveAll() {
        json removed = json::object();
        for (const auto& table : kTables)
            removed[table.name] = {table.id};
        Apply(json::object(), removed);
    }

    /// A work unit's entries for the system types; the session's is "workunit-1".
    void Note(const std::string& workunit, const json& entries) {
        const json change{{"format", "tolm-change"}, {"formatVersion", 1}, {"workunits", {{workunit, entries}}}};
        service.Apply("P", change.dump());
    }

    static Texts Wanted() {
        return tolm::CollaborationProjectSettingForPS::Instance()->GetRecoverSystemTypeRecordIds();
    }

    std::vector<std::string> Status() const {
        std::vector<std::string> lines;
        for (const auto& row : Sql(dataset.StatusPath(), "SELECT id, Status, MEPType, DisciplineId FROM SYS"))
            lines.push_back(row[0] + " " + row[1] + " " + row[2] + " " + row[3]);
        return lines;
    }

    HostedDataset dataset = Dataset(L"a");
    Facts before;
};

TEST_F(RecoveryOverTheWire, AllFourTablesAreTakenBackInAsTheyWere) {
    RemoveAll();
    Note("workunit-1", json::array({{{"dataId", "pipe"}, {"dataStatus", 1}}}));
    tolm::RecoverDataInfo info;
    std::vector<std::string> status;
    for (const auto& table : kTables) {
        info.idMap[std::wstring(table.id, table.id + std::string_view(table.id).size())] = L"";
        status.emplace_back(table.status);
    }
    EXPECT_TRUE(dataset.Pull(&info));
    EXPECT_TRUE(info.recovered);
    EXPECT_EQ(Status(), status);
    auto expected = before;
    expected["000/FileHeader/LocalVersion"] = "2";
    EXPECT_EQ(Difference(expected, dataset.Content()), "");
}

TEST_F(RecoveryOverTheWire, WhatIsNotNamedStaysGone) {
    RemoveAll();
    Note("workunit-1", json::array({{{"dataId", "pipe"}, {"dataStatus", 1}}, {{"dataId", "duct"}, {"dataStatus", 1}}}));
    tolm::RecoverDataInfo info;
    info.idMap[L"PIPE"] = L"named in another case";
    EXPECT_TRUE(dataset.Pull(&info));
    EXPECT_TRUE(info.recovered);
    EXPECT_EQ(Status(), std::vector<std::string>{"pipe 1 1 2"});
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT group_concat(id) FROM SYS"), "pipe");
}

TEST_F(RecoveryOverTheWire, TheSessionHearsWhichOnesThisWorkUnitNeeds) {
    RemoveAll();
    Note("workunit-1", json::array({{{"dataId", "power"}, {"dataStatus", 1}},
                                    {{"dataId", "hvac"}, {"dataStatus", 2}},
                                    {{"dataId", "duct"}, {"dataStatus", 1}}}));
    Note("workunit-2", json::array({{{"dataId", "pipe"}, {"dataStatus", 1}}}));
    EXPECT_TRUE(dataset.Pull());
    EXPECT_EQ(Wanted(), (Texts{L"duct", L"power"}));
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT count(*) FROM SYS"), "0");
    EXPECT_FALSE(vorn::FileInfo(dataset.StatusPath()).Exists());
}

TEST_F(RecoveryOverTheWire, ANamedSystemTypeThatStillStandsIsNotRecovered) {
    Apply({{"PipeSystemType", {SystemType("pipe", "fittingIds"), SystemType("other", "fittingIds")}}},
          {{"DuctSystemType", {"duct"}}});
    tolm::RecoverDataInfo info;
    info.idMap[L"pipe"] = L"";
    EXPECT_TRUE(dataset.Pull(&info));
    EXPECT_FALSE(info.recovered);
    EXPECT_FALSE(vorn::FileInfo(dataset.StatusPath()).Exists());
}

TEST_F(RecoveryOverTheWire, TheLastStateBeforeTheRemovalThatTheClientKnewComesBack) {
    auto changed = SystemType("pipe", "fittingIds");
    changed["systemType"] = "changed";
    Apply({{"PipeSystemType", {changed}}}, json::object());
    RemoveAll();
    tolm::RecoverDataInfo info;
    info.idMap[L"pipe"] = L"";
    EXPECT_TRUE(dataset.Pull(&info));
    EXPECT_TRUE(info.recovered);
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT Name FROM SYS WHERE id = 'pipe'"), "name of pipe");
}

TEST_F(RecoveryOverTheWire, AFullLoadHasNothingToRecoverFromAProjectThatNeverHadIt) {
    RemoveAll();
    auto fresh = Dataset(L"fresh");
    tolm::RecoverDataInfo info;
    info.idMap[L"nobody"] = L"";
    fresh.Pull(&info);
    EXPECT_FALSE(info.recovered);
}

} // namespace
} // namespace tolmtest
