#include "ConvergeHost/SettingsHost.h"

#include "ConvergeHost/DirectRecords.h"

#include "Host/Session.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace tolmtest {
namespace {

using nlohmann::json;
using tolm::CompareVersionResult;

/// A host goes on trying for so many rounds; with the pauses below, half a minute.
constexpr int kMostRounds = 80;
constexpr int kFirstPause = 2;
constexpr int kLongestPause = 400;

class NoReport final : public vorn::IProgressReporter {
public:
    void ReportProgress(double) override {}
};

std::string Narrow(const std::wstring& text) {
    return vorn::StringUtil::ToString(text);
}

} // namespace

SettingsHost::SettingsHost() : m_jitter(std::random_device{}()) {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([this](const vorn::DebugWarning& warning) {
        m_warnings.push_back(warning.function + ": " + Narrow(warning.message));
    });
    vorn::NotificationUtils::SetHandler([this](auto type, const std::wstring& text, const auto&) {
        m_notifications.push_back(std::to_string(static_cast<int>(type)) + " " + Narrow(text));
    });
}

SettingsHost::~SettingsHost() {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler(nullptr);
    vorn::NotificationUtils::SetHandler(nullptr);
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
    tolm::CollaborationProjectSettingForPS::Close();
}

json SettingsHost::Do(const json& command) {
    json answer = Answer(command);
    if (!m_warnings.empty())
        answer["warnings"] = std::exchange(m_warnings, json::array());
    if (!m_notifications.empty())
        answer["notifications"] = std::exchange(m_notifications, json::array());
    return answer;
}

json SettingsHost::Answer(const json& command) {
    const std::string what = command.at("do");
    if (what == "open")
        return Open(command);
    if (what == "put")
        return Put(command);
    if (what == "delete")
        return Delete(command);
    if (what == "template" || what == "product")
        return Direct(command);
    if (what == "list")
        return List(command);
    if (what == "compare")
        return Compare();
    if (what == "pull")
        return Pull();
    if (what == "push")
        return Push();
    if (what == "merge")
        return Merge();
    if (what == "sync")
        return Sync(command);
    return {{"done", false}, {"why", "no such command"}};
}

void SettingsHost::OpenSession(const json& command) {
    tolm::CollaborationProjectSettingForPS::Settings settings;
    settings.httpServer = WideAt(command, "service");
    settings.workingProjectId = m_project;
    settings.workingDatasetId = m_workUnit;
    tolm::CollaborationProjectSettingForPS::Open(settings);
}

json SettingsHost::Open(const json& command) {
    const auto path = WideAt(command, "dataset");
    if (m_componentPath != WideAt(command, "components")) {
        m_componentPath = WideAt(command, "components");
        tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(m_componentPath));
    }
    m_project = WideAt(command, "project");
    m_workUnit = L"of " + WideAt(command, "user");
    OpenSession(command);
    tolm::TolmUserSessionUtils::SetUser(WideAt(command, "user"), WideAt(command, "token"));
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(path);
    m_dataset = tolm::ITolmDataSetFactory::Get()->CreateDataset(path, m_componentPath, WideAt(command, "combined"),
                                                                WideAt(command, "files"));
    return {{"done", m_dataset != nullptr}};
}

// --- edits ---------------------------------------------------------------------------------------------------------

json SettingsHost::List(const json& command) {
    json records = json::array();
    for (const auto& record : SeeRecords(*m_dataset, SliceOf(command.at("slice").get<std::string>())))
        records.push_back({{"id", Narrow(record.id)}, {"name", Narrow(record.name)}, {"mark", record.mark}});
    return {{"done", true}, {"records", records}};
}

/// A record that is not there is put only when it is new, and never under a name that another one has. What is
/// acknowledged is what can be read back.
json SettingsHost::Put(const json& command) {
    const Slice& slice = SliceOf(command.at("slice").get<std::string>());
    const auto id = WideAt(command, "id");
    const auto name = WideAt(command, "name");
    bool isThere = false;
    for (const auto& record : SeeRecords(*m_dataset, slice)) {
        isThere = isThere || record.id == id;
        if (record.id != id && record.name == name)
            return {{"done", false}, {"why", "name"}};
    }
    if (!isThere && !command.value("new", false))
        return {{"done", false}, {"why", "gone"}};
    if (!PutRecord(*m_dataset, slice, command))
        return {{"done", false}, {"why", "part"}};
    const auto mark = command.at("mark").get<std::int64_t>();
    const auto after = SeeRecords(*m_dataset, slice);
    const bool stands = std::ranges::any_of(
        after, [&](const SeenRecord& record) { return record.id == id && record.mark == mark && record.name == name; });
    return {{"done", stands}, {"fault", !stands}};
}

json SettingsHost::Delete(const json& command) {
    const Slice& slice = SliceOf(command.at("slice").get<std::string>());
    const auto id = WideAt(command, "id");
    const auto seen = SeeRecords(*m_dataset, slice);
    if (std::ranges::find(seen, id, &SeenRecord::id) == seen.end())
        return {{"done", false}, {"why", "gone"}};
    DeleteRecord(*m_dataset, slice, id);
    const auto after = SeeRecords(*m_dataset, slice);
    const bool isGone = std::ranges::find(after, id, &SeenRecord::id) == after.end();
    return {{"done", isGone}, {"fault", !isGone}};
}

/// Goes to "service" at once, which has to take it.
json SettingsHost::Direct(const json& command) {
    OpenSession(command);
    if (command.at("do") == "product")
        return {{"done", DoProduct(*m_dataset, command)}};
    DoTemplate(*m_dataset, command);
    return {{"done", !m_notifications.empty()}};
}

// --- cloud ---------------------------------------------------------------------------------------------------------

CompareVersionResult SettingsHost::CompareNow() {
    std::wstring project;
    std::wstring timePoint;
    return m_dataset->CompareCloudVersion(project, m_cloudVersion, m_localVersion, timePoint);
}

/// An upload leaves the local version alone: the host stamps what the service tells after it.
bool SettingsHost::Send() {
    if (!m_dataset->SendModifiedDataToCloud(false, nullptr))
        return false;
    const int version = m_dataset->GetCloudVersion(m_project);
    return version >= 1 && m_dataset->SetLocalVersion(version);
}

bool SettingsHost::MergeAndSend() {
    NoReport report;
    return m_dataset->MergeDataAndSendModifiedData(m_project, &report, m_cloudVersion, m_localVersion);
}

/// System types that were removed and that this work unit still uses come back, noted as its own creations. One whose
/// name somebody took meanwhile is given up again: the service would refuse it.
bool SettingsHost::PullAndTakeBack() {
    tolm::RecoverDataInfo info;
    for (const auto& id : m_wantedBack)
        info.idMap[id] = L"";
    if (!m_dataset->SyncDataFromCloud(false, nullptr, &info))
        return false;
    if (info.recovered) {
        ++m_takenBack;
        GiveUpTakenNames();
    }
    return true;
}

void SettingsHost::GiveUpTakenNames() {
    for (const Slice& slice : kSlices) {
        if (slice.kind != SettingKind::System)
            continue;
        const auto seen = SeeRecords(*m_dataset, slice);
        for (const auto& record : seen) {
            const bool isTaken = std::ranges::count(seen, record.name, &SeenRecord::name) > 1;
            if (isTaken && std::ranges::find(m_wantedBack, record.id) != m_wantedBack.end())
                DeleteRecord(*m_dataset, slice, record.id);
        }
    }
}

bool SettingsHost::StepTowards(CompareVersionResult where, json& steps) {
    switch (where) {
    case CompareVersionResult::CloudAhead:
        steps.push_back("pull");
        return PullAndTakeBack();
    case CompareVersionResult::LocalChanges:
        steps.push_back("push");
        return Send();
    case CompareVersionResult::BothChanged:
        steps.push_back("merge");
        return MergeAndSend();
    default:
        steps.push_back("no comparison");
        return false;
    }
}

/// Grows with each attempt and is spread by chance, so that hosts that met once do not meet again.
void SettingsHost::Pause(int attempt) {
    const int most = std::min(kLongestPause, kFirstPause << std::min(attempt, 10));
    std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution<>(most / 2, most)(m_jitter)));
}

/// By way of "service", which may be another one than before. Compares and does what the comparison asks for, again and
/// again after a refusal, until both sides are the same.
json SettingsHost::Sync(const json& command) {
    OpenSession(command);
    const int rounds = command.value("rounds", kMostRounds);
    m_wantedBack.clear();
    for (const std::string id : command.value("recover", json::array()))
        m_wantedBack.push_back(vorn::StringUtil::ToWString(id));
    json answer = Approach(rounds);
    answer["takenBack"] = std::exchange(m_takenBack, 0);
    return answer;
}

json SettingsHost::Approach(int rounds) {
    json steps = json::array();
    int failed = 0;
    for (int round = 0; round < rounds; ++round) {
        const auto where = CompareNow();
        if (where == CompareVersionResult::Same)
            return {{"done", true}, {"version", m_localVersion}, {"failed", failed}, {"steps", steps}};
        if (!StepTowards(where, steps))
            Pause(failed++);
    }
    return {{"done", false}, {"version", m_localVersion}, {"failed", failed}, {"steps", steps}};
}

json SettingsHost::Compare() {
    const int result = static_cast<int>(CompareNow());
    return {{"done", true}, {"result", result}, {"cloud", m_cloudVersion}, {"local", m_localVersion}};
}

json SettingsHost::Pull() {
    return {{"done", m_dataset->SyncDataFromCloud(false, nullptr, nullptr)}};
}

json SettingsHost::Push() {
    return {{"done", Send()}};
}

json SettingsHost::Merge() {
    CompareNow();
    return {{"done", MergeAndSend()}, {"cloud", m_cloudVersion}, {"local", m_localVersion}};
}

} // namespace tolmtest
