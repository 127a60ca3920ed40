#pragma once

#include "Host/Definitions.h"
#include "Qbase/Qbase.h"
#include "Support/Canary.h"
#include "Support/ServiceFixture.h"
#include "Support/TempFolder.h"
#include "Tolm/Commands.h"
#include "Tolm/Errors.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tolmtest {

/// What one run of the command gave.
struct ToolRun {
    int code = 0;
    std::string out;
    std::string err;

    /// What it printed; throws with what it said in place of it.
    nlohmann::json Json() const { return out.empty() ? throw std::runtime_error(err) : nlohmann::json::parse(out); }
};

/// Runs the command line in this process.
inline ToolRun Tolm(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv{"tolm"};
    for (const auto& argument : arguments)
        argv.push_back(argument.c_str());
    std::ostringstream out;
    std::ostringstream err;
    ToolRun run;
    run.code = tolmcli::RunCommandLine(static_cast<int>(argv.size()), argv.data(), out, err);
    run.out = out.str();
    run.err = err.str();
    SearchForSecrets("the output of the command", std::string_view(run.out));
    SearchForSecrets("what the command says of errors", std::string_view(run.err));
    return run;
}

inline bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// A folder with a dataset that the command made, not connected to any service.
class LocalTool : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(Tolm({"new", m_dataset}).code, tolmcli::Done); }

    /// Runs a command on the dataset: the command's word, then the dataset, then the rest.
    ToolRun On(const std::string& command, const std::vector<std::string>& rest = {}) {
        std::vector<std::string> arguments{command, m_dataset};
        arguments.insert(arguments.end(), rest.begin(), rest.end());
        return Tolm(arguments);
    }

    /// Adds a material and a pipe table of it, and returns the table's id.
    std::string AddCopper() {
        EXPECT_EQ(On("add", {"material", "--kind", "plumbing-pipe", "--name", "Copper"}).code, tolmcli::Done);
        const auto run = On("add", {"size", "--kind", "plumbing-pipe", "--name", "Copper tube", "--material", "Copper",
                                    "--roughness", "0.0015", "--row", "15,15,13,1", "--row", "20,22,20,1", "--json"});
        EXPECT_EQ(run.code, tolmcli::Done) << run.err;
        return run.Json().at("id");
    }

    /// Opens the dataset's file as another program would.
    bool OpenStore(CQbase& store) const {
        return store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, m_folder.File(L"office.db"), false);
    }

    TempFolder m_folder;
    std::string m_dataset = vorn::StringUtil::ToString(m_folder.File(L"office.db"));
};

/// A dataset connected to a service that holds one material and one size table.
class ConnectedTool : public testing::Test {
protected:
    static constexpr const char* kTables = R"({"ConfigTree": [
        {"ID": "m1", "text": "Steel", "groupName": "MaterialSeries", "parentID": "", "CreateTime": 1, "content": {}},
        {"ID": "s1", "text": "Steel pipe", "groupName": "MaterialSeries", "parentID": "m1", "CreateTime": 1,
         "content": {"roughness": 0.15, "sizeList": [{"DN": 15.0, "OD": 21.3, "ID": 16.1, "Thickness": 2.6}]}}]})";
    static constexpr const char* kRename = R"({"format": "tolm-change", "formatVersion": 1, "edit": {"ConfigTree": [
        {"ID": "m1", "text": "Galvanised steel", "groupName": "MaterialSeries", "parentID": "", "CreateTime": 1,
         "content": {}}]}})";

    /// What the service holds at first.
    virtual const char* Tables() const { return kTables; }

    void SetUp() override {
        setenv("TOLM_SECRET", "anna's secret", 1);
        m_service.FillTables("tower", Tables());
        const auto run = Tolm({"new", m_dataset, "--server", vorn::StringUtil::ToString(m_service.Address()),
                               "--project", "tower", "--user", "anna", "--work-unit", "w1"});
        ASSERT_EQ(run.code, tolmcli::Done) << run.err;
    }
    void TearDown() override { unsetenv("TOLM_SECRET"); }

    ToolRun On(const std::string& command, const std::vector<std::string>& rest = {}) {
        std::vector<std::string> arguments{command, m_dataset};
        arguments.insert(arguments.end(), rest.begin(), rest.end());
        return Tolm(arguments);
    }

    std::string MaterialName() { return On("show", {"material", "m1", "--json"}).Json().at("name"); }

    ServiceFixture m_service;
    TempFolder m_folder;
    std::string m_dataset = vorn::StringUtil::ToString(m_folder.File(L"office.db"));
};

} // namespace tolmtest
