#pragma once

#include "Support/Interceptor.h"
#include "Tools/ToolTesting.h"

#include <algorithm>

namespace tolmtest {

/// Anna and Ben, each with a dataset of the same project, both brought up to its version 1. What Anna sends passes an
/// interceptor.
class TwoUsers : public testing::Test {
protected:
    static constexpr const char* kProject = R"({"ConfigTree": [
        {"ID": "m1", "text": "Steel", "groupName": "MaterialSeries", "parentID": "", "CreateTime": 1, "content": {}},
        {"ID": "m2", "text": "Brass", "groupName": "MaterialSeries", "parentID": "", "CreateTime": 2, "content": {}},
        {"ID": "s1", "text": "Steel pipe", "groupName": "MaterialSeries", "parentID": "m1", "CreateTime": 3,
         "content": {"roughness": 0.15, "sizeList": [{"DN": 15.0, "OD": 21.5, "ID": 16.5, "Thickness": 2.5}]}},
        {"ID": "s2", "text": "Brass pipe", "groupName": "MaterialSeries", "parentID": "m2", "CreateTime": 4,
         "content": {"roughness": 0.01, "sizeList": [{"DN": 15.0, "OD": 16.0, "ID": 14.0, "Thickness": 1.0}]}}]})";
    /// A change that others make in the cloud.
    static constexpr const char* kRenameBrass = R"({"format": "tolm-change", "formatVersion": 1,
        "edit": {"ConfigTree": [{"ID": "m2", "text": "Red brass", "groupName": "MaterialSeries", "parentID": "",
                                 "CreateTime": 2, "content": {}}]}})";
    static constexpr const char* kRenameSteel = R"({"format": "tolm-change", "formatVersion": 1,
        "edit": {"ConfigTree": [{"ID": "m1", "text": "Their steel", "groupName": "MaterialSeries", "parentID": "",
                                 "CreateTime": 1, "content": {}}]}})";

    void SetUp() override {
        setenv("TOLM_SECRET", "anna's secret", 1);
        m_service.AddUser("ben", "anna's secret");
        m_service.FillTables("tower", kProject);
        Make(m_anna, m_wire.Address(), "tower", "anna");
        Make(m_ben, m_service.Address(), "tower", "ben");
        ASSERT_EQ(Anna("sync").code, tolmcli::Done);
        ASSERT_EQ(Ben("sync").code, tolmcli::Done);
    }
    void TearDown() override { unsetenv("TOLM_SECRET"); }

    static void Make(const std::string& dataset, const std::wstring& server, const std::string& project,
                     const std::string& user) {
        const auto run = Tolm({"new", dataset, "--server", vorn::StringUtil::ToString(server), "--project", project,
                               "--user", user, "--work-unit", "w-" + user});
        ASSERT_EQ(run.code, tolmcli::Done) << run.err;
    }

    static ToolRun On(const std::string& dataset, const std::string& command, std::vector<std::string> rest) {
        rest.insert(rest.begin(), {command, dataset});
        if (command == "sync")
            rest.insert(rest.end(), {"--pause", "0"});
        return Tolm(rest);
    }
    ToolRun Anna(const std::string& command, const std::vector<std::string>& rest = {}) {
        return On(m_anna, command, rest);
    }
    ToolRun Ben(const std::string& command, const std::vector<std::string>& rest = {}) {
        return On(m_ben, command, rest);
    }
    /// Runs a command that has to succeed.
    static void Expect(const ToolRun& run) { EXPECT_EQ(run.code, tolmcli::Done) << run.out << run.err; }

    /// The summary of a sync that has to succeed.
    static nlohmann::json Synced(const ToolRun& run) {
        EXPECT_EQ(run.code, tolmcli::Done) << run.out << run.err;
        return run.code == tolmcli::Done ? run.Json() : nlohmann::json();
    }
    nlohmann::json AnnaSyncs() { return Synced(Anna("sync", {"--json"})); }
    nlohmann::json BenSyncs() { return Synced(Ben("sync", {"--json"})); }

    std::string NameOf(const std::string& dataset, const std::string& what, const std::string& id) {
        const auto run = Tolm({"show", dataset, what, id, "--json"});
        return run.code == tolmcli::Done ? run.Json().at("name") : nlohmann::json("-");
    }
    int VersionOf(const std::string& dataset) { return Tolm({"info", dataset, "--json"}).Json().at("localVersion"); }
    std::size_t ChangesOf(const std::string& dataset) { return Tolm({"changes", dataset, "--json"}).Json().size(); }

    /// All settings of a dataset as `tolm list` shows them, in the order of their ids.
    static nlohmann::json Settings(const std::string& dataset) {
        nlohmann::json all;
        for (const char* what : {"materials", "sizes", "series", "groups", "systems"}) {
            auto list = Tolm({"list", dataset, what, "--json"}).Json();
            std::sort(list.begin(), list.end(), [](const auto& a, const auto& b) { return a.at("id") < b.at("id"); });
            all[what] = list;
        }
        return all;
    }
    void ExpectTheSameSettings() { EXPECT_EQ(Settings(m_anna), Settings(m_ben)); }

    ServiceFixture m_service;
    Interceptor m_wire{m_service.Port()};
    TempFolder m_folder;
    std::string m_anna = vorn::StringUtil::ToString(m_folder.File(L"anna.db"));
    std::string m_ben = vorn::StringUtil::ToString(m_folder.File(L"ben.db"));
};

/// The one effect of a list whose record has this name.
inline nlohmann::json EffectOn(const nlohmann::json& effects, const std::string& name) {
    for (const auto& effect : effects) {
        if (effect.at("name") == name)
            return effect;
    }
    return nullptr;
}

} // namespace tolmtest
