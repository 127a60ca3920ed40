#include "Converge/ConvergeFixture.h"

#include "Converge/HostHistories.h"
#include "Converge/TravellingFacts.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/Relay.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>

namespace tolmtest {
namespace {

using nlohmann::json;

std::string Narrow(const std::wstring& text) {
    return vorn::StringUtil::ToString(text);
}

std::string SettingOf(const json& step) {
    return step.at("slice").get<std::string>() + "/" + step.at("id").get<std::string>();
}

/// Warnings that are no fault: of an upload that was refused or whose answer was lost, of a merge that found nothing
/// left to merge, and of a record that a host noted as its own creation and that is gone.
bool IsExpected(std::string_view warning) {
    for (const std::string_view known : {"mergeSucc 失败", "bSucc 失败", "getCloudDataSucc 为false",
                                         "ducplicateFilesSucc为false", "本地修改的此条目没找到: "}) {
        if (warning.find(known) != std::string_view::npos)
            return true;
    }
    return false;
}

} // namespace

void ConvergeFixture::OpenHosts(int count, const std::string& project) {
    Open(FirstTables(), project);
    m_project = project;
    m_edits.clear();
    m_direct.clear();
    m_hosts.clear();
    m_processes.reserve(32);
    while (m_processes.size() < static_cast<std::size_t>(count)) {
        const auto user = "user " + std::to_string(m_processes.size());
        service.AddUser(user, "secret");
        m_processes.push_back({std::make_unique<HostProcess>(), service.SignIn(user, "secret"), nullptr, 0, {}, {}});
    }
    for (int number = 0; number < count; ++number)
        OpenHost(number, project);
}

void ConvergeFixture::OpenHost(int number, const std::string& project) {
    Host& host = m_processes[static_cast<std::size_t>(number)];
    m_hosts.push_back(&host);
    const auto name = L"host " + std::to_wstring(number);
    std::filesystem::remove_all(vorn::FileSystem::ToNative(folder.File(name)));
    host.dataset = std::make_unique<HostedDataset>(folder.File(name), componentPath);
    host.open.clear();
    host.takenBack.clear();
    const auto file = [&](const wchar_t* leaf) { return Narrow(folder.File(name) + L"/" + leaf); };
    Ask(number, {{"do", "open"},
                 {"dataset", Narrow(host.dataset->Path())},
                 {"components", Narrow(componentPath)},
                 {"combined", file(L"combined.db")},
                 {"files", file(L"files")},
                 {"service", Narrow(service.Address())},
                 {"project", project},
                 {"user", "user " + std::to_string(number)},
                 {"token", host.token}});
    ExpectSynced(number);
}

json ConvergeFixture::SyncCommand() const {
    return {{"do", "sync"}, {"service", Narrow(service.Address())}};
}

void ConvergeFixture::ExpectSynced(int host) {
    const auto answer = Ask(host, SyncCommand());
    EXPECT_TRUE(answer.at("done")) << "host " << host << ": " << answer;
}

json ConvergeFixture::Ask(int host, json command) {
    const auto answer = m_hosts[static_cast<std::size_t>(host)]->process->Ask(command);
    TakeAnswer(host, answer);
    return answer;
}

/// A synchronisation that came to its end closes the time in which its host's edits have to show.
void ConvergeFixture::TakeAnswer(int number, const json& answer) {
    Host& host = *m_hosts[static_cast<std::size_t>(number)];
    EXPECT_FALSE(answer.value("fault", false)) << "host " << number << ": " << answer;
    for (const std::string warning : answer.value("warnings", json::array()))
        EXPECT_TRUE(IsExpected(warning)) << "host " << number << ": " << warning;
    for (const std::string step : answer.value("steps", json::array()))
        ++counts.steps[step];
    counts.refused += answer.value("failed", 0);
    counts.takenBack += answer.value("takenBack", 0);
    if (!answer.contains("version") || !answer.at("done"))
        return;
    host.version = answer.at("version");
    for (auto& [setting, edit] : host.open) {
        edit.to = host.version;
        m_edits.push_back(edit);
    }
    host.open.clear();
    host.takenBack.clear();
}

// --- steps ---------------------------------------------------------------------------------------------------------

void ConvergeFixture::Play(const json& history, const std::string& project) {
    OpenHosts(history.at("hosts"), project);
    PlayAll(history.at("steps"));
    Settle();
    ExpectConverged();
    if (HasFailure())
        ADD_FAILURE() << "The case, for kCases:\n    R\"case(" << history.dump() << ")case\",";
}

void ConvergeFixture::PlayAll(const json& steps) {
    for (const auto& step : steps) {
        if (!HasFailure())
            PlayStep(step);
    }
}

void ConvergeFixture::PlayStep(const json& step) {
    const std::string what = step.at("do");
    if (what == "together")
        PlayTogether(step);
    else if (what == "sync")
        PlaySync(step);
    else if (what == "template" || what == "product")
        PlayDirect(step);
    else
        PlayEdit(step);
}

/// A removal is taken back only before it was sent. One that is taken back and made again is forgotten: a creation and
/// a removal leave no trace.
json ConvergeFixture::CommandFor(const json& step, Host& host) {
    const auto setting = SettingOf(step);
    if (step.at("do") == "delete" && host.takenBack.contains(setting))
        return {};
    json command = step;
    const auto before = host.open.find(setting);
    if (step.value("undo", false) && before != host.open.end() && before->second.step.at("do") == "delete") {
        command["new"] = true;
        host.takenBack.insert(setting);
    }
    return command;
}

void ConvergeFixture::PlayEdit(const json& step) {
    const int number = step.at("host");
    Host& host = *m_hosts[static_cast<std::size_t>(number)];
    const auto command = CommandFor(step, host);
    if (command.is_null() || !Ask(number, command).at("done").get<bool>()) {
        ++counts.skipped;
        return;
    }
    host.open[SettingOf(step)] = {step, host.version, 0};
}

void ConvergeFixture::PlayDirect(const json& step) {
    json command = step;
    command["service"] = Narrow(service.Address());
    const auto answer = Ask(step.at("host"), command);
    EXPECT_TRUE(answer.at("done")) << step << ": " << answer;
    ++counts.direct;
    const auto setting = step.at("do").get<std::string>() + "/" + step.at("id").get<std::string>();
    if (step.value("remove", false))
        m_direct.erase(setting);
    else
        m_direct[setting] = step.at("mark");
}

void ConvergeFixture::PlaySync(const json& step) {
    json command = SyncCommand();
    for (const char* key : {"rounds", "recover"})
        if (step.contains(key))
            command[key] = step.at(key);
    if (!step.contains("lose")) {
        const auto answer = Ask(step.at("host"), command);
        EXPECT_TRUE(answer.at("done")) << answer;
        return;
    }
    Relay relay(service.Port());
    relay.LoseAnswerTo(step.at("lose"));
    command["service"] = Narrow(relay.Address());
    const auto answer = Ask(step.at("host"), command);
    EXPECT_TRUE(answer.at("done") || step.contains("rounds")) << answer;
    counts.lostAnswers += relay.HasLost() ? 1 : 0;
}

void ConvergeFixture::PlayTogether(const json& step) {
    for (const int host : step.at("hosts"))
        m_hosts[static_cast<std::size_t>(host)]->process->Tell(SyncCommand());
    for (const int host : step.at("hosts")) {
        const auto answer = m_hosts[static_cast<std::size_t>(host)]->process->Answer();
        TakeAnswer(host, answer);
        EXPECT_TRUE(answer.at("done")) << answer;
    }
}

// --- what must hold ------------------------------------------------------------------------------------------------

void ConvergeFixture::Settle() {
    for (int round = 0; round < 2; ++round) {
        for (int host = 0; host < HostCount(); ++host)
            ExpectSynced(host);
    }
}

void ConvergeFixture::ExpectConverged() {
    const auto expected = TravellingFacts(Expected(m_project));
    for (int number = 0; number < HostCount() && !HasFailure(); ++number) {
        const HostedDataset& dataset = *m_hosts[static_cast<std::size_t>(number)]->dataset;
        EXPECT_TRUE(Same(expected, TravellingFacts(dataset.Content()))) << "host " << number;
        const auto where = Ask(number, {{"do", "compare"}});
        EXPECT_EQ(where.at("result"), 0) << "host " << number << " has something to send or to fetch: " << where;
    }
    const auto tables = json::parse(service.Tables(m_project));
    ExpectNamesApart(tables);
    ExpectDirect(tables);
    ExpectFates();
}

void ConvergeFixture::ExpectNamesApart(const json& tables) const {
    std::set<std::string> names;
    for (const Slice& slice : kSlices) {
        for (const auto& row : tables.value(slice.table, json::array())) {
            const bool isOfGroup = slice.group.empty() || row.at("groupName") == slice.group;
            const bool isMaterial = row.value("parentID", "").empty();
            const bool isPipe = slice.type == slices::Type::Pipe && slice.kind != SettingKind::Group;
            if (!HasRepairedNames(slice) || !isOfGroup ||
                (!slice.group.empty() && isPipe && isMaterial != (slice.kind == SettingKind::Material)))
                continue;
            const auto name = std::string(slice.word) + "/" + LoggedState{0, 0, row}.Name();
            EXPECT_TRUE(names.insert(name).second) << name << " stands twice";
        }
    }
}

void ConvergeFixture::ExpectDirect(const json& tables) const {
    std::map<std::string, int> standing;
    for (const auto& row : tables.value("CircuitTemplate", json::array()))
        standing["template/" + row.at("ID").get<std::string>()] = std::stoi(row.at("WireSpec").get<std::string>());
    for (const char* table : {"Combination_16353515", "Combination_16302510"})
        for (const auto& row : tables.value(table, json::array()))
            standing["product/" + row.at("ID").get<std::string>()] = row.at("Spacing");
    EXPECT_EQ(standing, m_direct);
}

void ConvergeFixture::ExpectFates() {
    const VersionLog log(service.DatabasePath(), m_project);
    for (const auto& edit : m_edits) {
        const auto fate = FindFate(log, edit);
        ++counts.fates[fate.fate];
        EXPECT_NE(fate.fate, Fate::Lost) << "the edit " << edit.step << " between versions " << edit.from << " and "
                                         << edit.to;
    }
    EXPECT_EQ(log.Repeated(), std::vector<std::string>());
}

} // namespace tolmtest
