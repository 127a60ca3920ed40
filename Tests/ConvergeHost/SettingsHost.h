#pragma once

#include "ConvergeHost/HostRecords.h"
#include "Vorn/Progress.h"

#include <nlohmann/json.hpp>

#include <random>
#include <string>
#include <vector>

namespace tolmtest {

/// A host of one dataset, as a design application is one: it edits through the tables and keeps in step with the
/// cloud. It does what a line of JSON says and answers with another one. It stands on the public headers alone.
class SettingsHost {
public:
    SettingsHost();
    ~SettingsHost();
    SettingsHost(const SettingsHost&) = delete;
    SettingsHost& operator=(const SettingsHost&) = delete;

    /// {"do": "open" | "put" | "delete" | "template" | "product" | "pull" | "sync" | "compare" | "merge" | "push" |
    /// "list", ...}. The answer has "done", and "warnings" and "notifications" where there were any.
    nlohmann::json Do(const nlohmann::json& command);

private:
    using json = nlohmann::json;

    json Answer(const json& command);
    json Open(const json& command);
    void OpenSession(const json& command);
    json Put(const json& command);
    json Delete(const json& command);
    json Direct(const json& command);
    json List(const json& command);
    json Compare();
    json Pull();
    json Push();
    json Merge();
    json Sync(const json& command);
    json Approach(int rounds);

    tolm::CompareVersionResult CompareNow();
    bool Send();
    bool MergeAndSend();
    bool PullAndTakeBack();
    void GiveUpTakenNames();
    bool StepTowards(tolm::CompareVersionResult where, json& steps);
    void Pause(int attempt);

    vorn::OwnerPtr<tolm::ITolmDataset> m_dataset;
    std::wstring m_componentPath;
    std::wstring m_project;
    std::wstring m_workUnit;
    std::vector<std::wstring> m_wantedBack; ///< system types that a pull takes back when the cloud has removed them
    int m_takenBack = 0;                    ///< pulls of the synchronisation under way that took any back
    int m_cloudVersion = 0;
    int m_localVersion = 0;
    std::mt19937 m_jitter;
    json m_warnings = json::array();
    json m_notifications = json::array();
};

} // namespace tolmtest
