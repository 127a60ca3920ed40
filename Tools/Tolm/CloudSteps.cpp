#include "Tolm/CloudSteps.h"

#include "Tolm/Doctor.h"
#include "Tolm/Errors.h"
#include "Tolm/NoteAll.h"
#include "Tolm/ProgressBar.h"
#include "Tolm/Snapshot.h"
#include "Tolm/TextTable.h"
#include "Tolm/VersionStamp.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <array>

namespace tolmcli {
namespace {

using vorn::StringUtil;

enum class Refusal { NameClash, Crossed, NoAnswer, Content };

/// What the library tells the user when the service did not take an upload.
struct RefusalWords {
    Refusal refusal;
    const char* message;
    const char* cause;
};

constexpr std::array kRefusals{
    RefusalWords{Refusal::NameClash, "提交失败，项目配置中有重名项，需保证命名唯一后再次提交！",
                 "two settings bear the same name"},
    RefusalWords{Refusal::Crossed, "提交失败，当前项目有数据正在提交中，请稍后再次提交！",
                 "somebody else was sending changes at the same time"},
    RefusalWords{Refusal::NoAnswer, "修改专业配置增量上传时，网络出现问题！", "the service could not answer"},
    RefusalWords{Refusal::NoAnswer, "修改专业配置增量上传时，出现异常！", "no answer of the service arrived"},
    RefusalWords{Refusal::Content, "修改专业配置增量上传失败，服务器解析出现问题！",
                 "the service does not take these changes"},
};

/// What it tells when the service took an upload, and when it did not tell its version.
constexpr const char* kSent = "修改专业配置成功！";
constexpr const char* kNoVersion = "获取云端配置版本失败！";

using Messages = std::vector<std::string>;

bool Holds(const Messages& messages, const char* message) {
    return std::find(messages.begin(), messages.end(), message) != messages.end();
}

const RefusalWords* RefusalIn(const Messages& messages) {
    for (const RefusalWords& words : kRefusals) {
        if (Holds(messages, words.message))
            return &words;
    }
    return nullptr;
}

/// How far a merge came that failed. The version is asked for, and an upload tried, after a merge alone.
struct MergeEnd {
    bool merged;
    const char* words;
};

MergeEnd EndOfMerge(const Messages& messages) {
    if (Holds(messages, kSent))
        return {true, "merged and sent, but the new version could not be noted"};
    if (RefusalIn(messages) != nullptr)
        return {true, "merged, but nothing was sent"};
    if (Holds(messages, kNoVersion))
        return {true, "merged, but the service did not tell its version"};
    return {false, "nothing was merged"};
}

std::string WithLines(std::string text, const std::vector<std::string>& lines) {
    for (const auto& line : lines)
        text += "\n  " + line;
    return text;
}

/// The settings that share a name, a line each, where the dataset shows them.
std::vector<std::string> NameClashes(const std::wstring& datasetPath) {
    std::vector<Finding> findings;
    CheckNames(ReadStore(datasetPath, L"dataset"), findings);
    std::vector<std::string> lines;
    lines.reserve(findings.size());
    for (const Finding& finding : findings)
        lines.push_back(
            WordOfClass(finding.classCode) +
            StringUtil::ToString(L" " + WithoutControls(finding.name) + L" (" + finding.id + L") " + finding.text));
    return lines;
}

[[noreturn]] void FailOnNameClash(Workplace& place) {
    throw Failure(WithLines("the service refused the changes, since two settings bear the same name: give one of them "
                            "another name with 'tolm edit'. Your changes are kept.",
                            NameClashes(place.Path())),
                  Refused);
}

/// What to do after a step that failed, from what the library said; the service is one cause among others.
StepResult AfterFailure(Workplace& place, const RefusalWords* refusal, const std::string& what) {
    if (refusal != nullptr && refusal->refusal == Refusal::NameClash)
        FailOnNameClash(place);
    const auto faults = place.Heard().TakeFaults();
    if (refusal != nullptr && refusal->refusal == Refusal::Content)
        throw Failure(WithLines(what + ": " + refusal->cause + ". Your changes are kept.", faults));
    return {false, "", refusal != nullptr ? what + ": " + refusal->cause : WithLines(what, faults)};
}

StepResult AfterFailure(Workplace& place, const std::string& what) {
    return AfterFailure(place, RefusalIn(place.Heard().TakeMessages()), what);
}

/// The service tells whoever sent changes first of the version that these made.
StepResult StampVersion(Workplace& place, const Comparison& comparison, const char* word) {
    const long version = place.Dataset().GetCloudVersion(comparison.project);
    long standing = version;
    if (version < 1 || !ReplaceVersion(place.Path(), comparison.local, standing))
        return AfterFailure(place, nullptr, "the changes were sent, but the new version could not be noted");
    if (standing != version)
        return {false, "", "another program synchronised the dataset meanwhile"};
    return {true, word, ""};
}

/// True when everything in the dataset was made here since it was made itself: a merge with the whole of the cloud then
/// leaves nothing behind that the cloud does not have.
bool HoldsOwnCreationsOnly(const Snapshot& snapshot) {
    return std::all_of(snapshot.settings.begin(), snapshot.settings.end(), [&](const auto& setting) {
        const auto change = snapshot.changes.find(setting.first);
        return change != snapshot.changes.end() && change->second.change == L"created";
    });
}

/// The dataset was never synchronised, and local changes would be lost in a first load.
StepResult MergeFirstLoad(Workplace& place, const Comparison& comparison, const Snapshot& snapshot) {
    if (!HoldsOwnCreationsOnly(snapshot))
        throw Failure("the dataset does not know which version it holds, and a load of the whole project would "
                      "replace its " +
                          std::to_string(snapshot.changes.size()) +
                          " local changes: see 'tolm changes'. 'tolm pull --discard' throws them away.",
                      Refused);
    return Merge(place, comparison);
}

} // namespace

StepResult Pull(Workplace& place, const Comparison& comparison) {
    const Snapshot snapshot = TakeSnapshot(place.Path());
    if (!snapshot.changes.empty() && comparison.local > 0)
        return {false, "", "there are local changes that the comparison did not see"};
    if (!snapshot.changes.empty())
        return MergeFirstLoad(place, comparison, snapshot);
    ProgressBar progress("Pulling");
    if (!place.Dataset().SyncDataFromCloud(true, &progress, nullptr))
        return {false, "", WithMessages(place, "nothing was pulled")};
    progress.ReportProgress(100.0);
    return {true, "pulled", ""};
}

/// Where nothing was left to send another program has sent it. The cloud's version may be that of somebody else then,
/// of which nothing is here: it is not stamped.
StepResult Push(Workplace& place, const Comparison& comparison) {
    ProgressBar progress("Pushing");
    place.Heard().TakeMessages(); // those of an earlier step say nothing of this one
    if (!place.Dataset().SendModifiedDataToCloud(true, &progress))
        return AfterFailure(place, "nothing was sent");
    progress.ReportProgress(100.0);
    if (!Holds(place.Heard().TakeMessages(), kSent))
        return {false, "", "another program sent the changes"};
    return StampVersion(place, comparison, "pushed");
}

StepResult Merge(Workplace& place, const Comparison& comparison) {
    ProgressBar progress("Merging");
    place.Heard().TakeMessages(); // those of an earlier step say nothing of this one
    int cloud = comparison.cloud;
    int local = comparison.local;
    if (place.Dataset().MergeDataAndSendModifiedData(comparison.project, &progress, cloud, local)) {
        place.Dataset().SetLastUpdateTimePoint();
        progress.ReportProgress(100.0);
        return {true, "merged", ""};
    }
    const Messages messages = place.Heard().TakeMessages();
    const MergeEnd end = EndOfMerge(messages);
    // The dataset holds the cloud's version then. Without a version it would load everything again and keep what
    // others remove meanwhile, or be refused for the changes that are left.
    long version = cloud;
    if (end.merged && comparison.local <= 0)
        ReplaceVersion(place.Path(), comparison.local, version);
    return AfterFailure(place, RefusalIn(messages), end.words);
}

void FillFromTemplate(Workplace& place, const Comparison& comparison) {
    if (place.Dataset().ApplyDefaultProjectSettingTemplate(comparison.project))
        return;
    // Somebody else may have filled it in between.
    if (place.Dataset().GetCloudVersion(comparison.project) < 1)
        FailWithMessages(place, "the service could not fill the project from its default template; with --from-local "
                                "this dataset's settings become the project's first ones");
}

void PrepareToFillFromDataset(Workplace& place) {
    if (NoteEverythingAsCreated(place.Path()) == 0)
        throw Failure("the dataset has no settings to fill the project with");
    // The numbers of another project mean nothing in this one.
    if (!place.Dataset().SetLocalVersion(0))
        FailWithMessages(place, "the dataset cannot be written");
}

} // namespace tolmcli
