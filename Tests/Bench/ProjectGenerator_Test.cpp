#include "Bench/ProjectGenerator.h"

#include "Service/ProjectFile.h"
#include "Service/SettingTables.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>

namespace tolmtest {
namespace {

using nlohmann::json;
namespace bench = tolm::bench;
namespace service = tolm::service;

TEST(ProjectGenerator, MakesExactlySoManyRowsThatTheServiceTakes) {
    for (const std::size_t rows : {1U, 2U, 99U, 100U, 1234U}) {
        const auto file = service::ReadProjectFile(bench::GenerateProject({rows, 3, 0}), "");
        EXPECT_EQ(file.rows.size(), rows);
    }
}

TEST(ProjectGenerator, FillsEveryTable) {
    std::set<std::size_t> tables;
    for (const auto& row : service::ReadProjectFile(bench::GenerateProject({100, 1, 0}), "").rows)
        tables.insert(row.table);
    EXPECT_EQ(tables.size(), service::kSettingTables.size());
}

TEST(ProjectGenerator, MakesTheSameForTheSameSeedOnly) {
    EXPECT_EQ(bench::GenerateProject({200, 7, 0}), bench::GenerateProject({200, 7, 0}));
    EXPECT_NE(bench::GenerateProject({200, 7, 0}), bench::GenerateProject({200, 8, 0}));
    EXPECT_EQ(bench::GenerateChange({200, 7, 10}), bench::GenerateChange({200, 7, 10}));
}

TEST(ProjectGenerator, MakesUsualSizes) {
    const auto tables = json::parse(bench::GenerateProject({300, 1, 0}))["tables"];
    for (const auto& row : tables["ConfigTree"]) {
        const auto sizes = row["content"].value("sizeList", json::array()).size();
        EXPECT_TRUE(sizes == 0 || (sizes >= 10 && sizes <= 25)) << row["text"];
    }
    for (const auto& row : tables["PipeType"]) {
        std::size_t fittings = 0;
        for (const auto& value : row)
            fittings += value.is_array() ? value.size() : 0;
        EXPECT_EQ(fittings, 20U);
    }
}

std::set<std::string> IdsIn(const std::vector<service::SettingRow>& rows) {
    std::set<std::string> ids;
    for (const auto& row : rows)
        ids.insert(row.id);
    return ids;
}

TEST(ProjectGenerator, AChangeTouchesSoManyRowsOfTheProject) {
    const auto ids = IdsIn(service::ReadProjectFile(bench::GenerateProject({1000, 5, 0}), "").rows);
    const auto text = bench::GenerateChange({1000, 5, 10});
    const auto change = service::ReadChangeFile(text, "").change;
    EXPECT_EQ(change.put.size() + change.removed.size(), 100U);
    EXPECT_EQ(change.removed.size(), 20U);
    for (const auto& [table, id] : change.removed)
        EXPECT_TRUE(ids.contains(id)) << id;
    std::size_t edited = 0;
    for (const auto& row : change.put)
        edited += ids.contains(row.id) ? 1U : 0U;
    EXPECT_EQ(edited, 60U);
}

TEST(ProjectGenerator, LinksLeadToRowsThatAreThere) {
    const auto tables = json::parse(bench::GenerateProject({500, 2, 0}))["tables"];
    std::set<std::string> ids;
    for (const auto& rows : tables) {
        for (const auto& row : rows)
            ids.insert(row.value("ID", ""));
    }
    for (const auto* table : {"PipeSystemType", "HVACPipeSystemType", "DuctSystemType"}) {
        for (const auto& row : tables[table]) {
            for (const std::string id : row["fittingIds"])
                EXPECT_TRUE(ids.contains(id)) << id;
        }
    }
    for (const auto& row : tables["PipeType"])
        EXPECT_TRUE(ids.contains(row["PipeSegmentId"])) << row;
}

} // namespace
} // namespace tolmtest
