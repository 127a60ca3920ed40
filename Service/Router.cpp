#include "Service/Router.h"

#include "Service/Answer.h"
#include "Service/ChangeBuilder.h"
#include "Service/JsonText.h"
#include "Service/MemberStore.h"
#include "Service/ProjectFile.h"
#include "Service/ProjectStore.h"
#include "Service/UploadStore.h"
#include "Service/UserStore.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>

namespace tolm::service {

/// What a call works on.
struct CallContext {
    ProjectStore& projects;
    UserStore& users;
    MemberStore& members;
    UploadStore& uploads;
    const MatchedCall& call;
    std::string_view body;
};

struct Route {
    std::string_view method;
    std::string_view path; ///< ids follow where it ends in a slash
    std::size_t ids;
    std::size_t project; ///< which of the ids is the project's
    bool asksForUser;
    bool isUpload; ///< refusals go out with HTTP 200
    std::string (*serve)(const CallContext&);
};

namespace {

using nlohmann::json;

/// In the path of a call whose project is named elsewhere, or that is open to everybody.
constexpr std::size_t kNoProject = 9;
constexpr std::size_t kLongestId = 128;
constexpr std::size_t kLongestSecret = 1024;

json ObjectBody(std::string_view body) {
    auto value = ParseJson(body);
    if (!value.is_object())
        throw Refusal(Answer::BadRequest, "the body is no JSON object");
    return value;
}

std::string TextOf(const json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string())
        throw Refusal(Answer::BadRequest, "\"" + std::string(key) + "\" is missing or no text");
    return found->get<std::string>();
}

std::string PlainIdOf(const json& object, const char* key) {
    auto id = TextOf(object, key);
    if (!IsPlainId(id))
        throw Refusal(Answer::BadRequest, "\"" + std::string(key) + "\" is no id");
    return id;
}

std::int64_t VersionIn(const std::string& text) {
    std::int64_t version = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), version);
    if (error != std::errc() || end != text.data() + text.size())
        throw Refusal(Answer::BadRequest, "the version in the path is no whole number");
    return version;
}

Caller CallerOf(const CallContext& context) {
    return {context.call.tokenHash, context.call.ids[0]};
}

std::string GetVersion(const CallContext& context) {
    return std::to_string(context.uploads.TellVersion(CallerOf(context)));
}

std::string DownloadVersion(const CallContext& context) {
    if (!context.body.empty())
        ObjectBody(context.body);
    return context.projects.Increment(context.call.ids[0], VersionIn(context.call.ids[1]));
}

void RefuseUnlessMember(MemberStore& members, const std::string& userId, const std::string& projectId) {
    if (!members.MayUse(userId, projectId))
        throw Refusal(Answer::NoMember);
}

std::string DownloadWorkunitData(const CallContext& context) {
    json data = json::array();
    for (const auto& entry : context.projects.WorkunitData(context.call.ids[0])) {
        if (context.members.MayUse(context.call.userId, entry.projectId))
            data.push_back({{"dataId", entry.dataId}, {"dataStatus", entry.dataStatus}});
    }
    return CompactJson(data);
}

std::string UploadWorkunitData(const CallContext& context) {
    const auto body = ObjectBody(context.body);
    const auto projectId = PlainIdOf(body, "projectId");
    RefuseUnlessMember(context.members, context.call.userId, projectId);
    const auto workunitId = PlainIdOf(body, "workunitId");
    const auto ids = body.find("dataIds");
    if (ids == body.end() || !ids->is_array())
        throw Refusal(Answer::BadRequest, "\"dataIds\" is missing or no array");
    const auto status = ReadDataStatus(body.value("dataStatus", json()));
    std::vector<WorkunitEntry> entries;
    for (const auto& id : *ids)
        entries.push_back({workunitId, ReadDataId(id), status});
    context.projects.PutWorkunitData(projectId, entries);
    return "{}";
}

std::string ReadProjectToTemplate(const CallContext& context) {
    json rows = json::array();
    const auto templateId = context.projects.TemplateOf(context.call.ids[0]);
    if (!templateId.empty())
        rows.push_back({{"rowKey", templateId}});
    return CompactJson({{"rows", rows}});
}

std::string UseTemplate(const CallContext& context) {
    const auto version = context.projects.FillFromTemplate(context.call.ids[1], context.call.ids[0]);
    return CompactJson({{"version", version}});
}

std::string UpLoad(const CallContext& context) {
    const auto version = context.uploads.Upload(CallerOf(context), ReadUploadPatch(context.body));
    return CompactJson({{"version", version}});
}

using ReadList = SettingChange(std::string_view body, std::size_t table);

template <ReadList Read> std::string ApplyToTable(const CallContext& context, const std::string& table) {
    const auto version = context.uploads.ApplyList(CallerOf(context), Read(context.body, TableNamed(table)));
    return CompactJson({{"version", version}});
}

/// The path names a table.
template <ReadList Read> std::string ApplyList(const CallContext& context) {
    return ApplyToTable<Read>(context, context.call.ids[1]);
}

/// The path names a category, whose combinations have a table of their own.
template <ReadList Read> std::string ApplyCombinations(const CallContext& context) {
    return ApplyToTable<Read>(context, "Combination_" + context.call.ids[1]);
}

std::string SignIn(const CallContext& context) {
    const auto body = ObjectBody(context.body);
    const auto userId = TextOf(body, "userId");
    const auto secret = TextOf(body, "secret");
    if (!IsPlainId(userId) || secret.size() > kLongestSecret)
        throw Refusal(Answer::WrongSecret);
    const auto token = context.users.SignIn(userId, secret);
    if (!token)
        throw Refusal(Answer::WrongSecret);
    return CompactJson({{"token", *token}});
}

constexpr std::array kRoutes{
    Route{"POST", "/api/SignIn", 0, kNoProject, false, false, SignIn},
    Route{"POST", "/api/GetVersion/", 1, 0, true, false, GetVersion},
    Route{"POST", "/api/DownloadVersion/", 2, 0, true, false, DownloadVersion},
    Route{"GET", "/api/workunit/downloadData/", 1, kNoProject, true, false, DownloadWorkunitData},
    Route{"POST", "/api/workunit/uploadData", 0, kNoProject, true, true, UploadWorkunitData},
    Route{"POST", "/api/ReadProjectToTemplate/", 1, kNoProject, false, false, ReadProjectToTemplate},
    Route{"POST", "/api/useTemplateForDesktop/", 2, 1, true, false, UseTemplate},
    Route{"POST", "/api/UpLoad/", 1, 0, true, true, UpLoad},
    Route{"POST", "/api/CreateList/", 2, 0, true, true, ApplyList<ReadCreatedRows>},
    Route{"POST", "/api/EditList/", 2, 0, true, true, ApplyList<ReadEditedRows>},
    Route{"POST", "/api/RemoveList/", 2, 0, true, true, ApplyList<ReadRemovedIds>},
    Route{"POST", "/api/CreateCombinations/", 2, 0, true, true, ApplyCombinations<ReadCreatedRows>},
    Route{"POST", "/api/EditCombinations/", 2, 0, true, true, ApplyCombinations<ReadEditedRows>},
    Route{"POST", "/api/RemoveCombinations/", 2, 0, true, true, ApplyCombinations<ReadRemovedIds>},
};

bool BelongsTo(std::string_view path, const Route& route) {
    return route.ids == 0 ? path == route.path : path.starts_with(route.path);
}

const Route* FindRoute(std::string_view path) {
    const auto found = std::ranges::find_if(kRoutes, [&](const Route& route) { return BelongsTo(path, route); });
    return found == kRoutes.end() ? nullptr : &*found;
}

std::vector<std::string> SplitIds(std::string_view rest) {
    std::vector<std::string> ids;
    for (auto slash = rest.find('/'); slash != std::string_view::npos; slash = rest.find('/')) {
        ids.emplace_back(rest.substr(0, slash));
        rest.remove_prefix(slash + 1);
    }
    ids.emplace_back(rest);
    return ids;
}

std::vector<std::string> IdsIn(std::string_view path, const Route& route) {
    if (route.ids == 0)
        return {};
    auto ids = SplitIds(path.substr(route.path.size()));
    if (ids.size() != route.ids)
        throw Refusal(Answer::UnknownPath);
    if (!std::ranges::all_of(ids, IsPlainId))
        throw Refusal(Answer::BadRequest, "an id in the path is empty, too long or holds characters that no id has");
    return ids;
}

bool IsIdCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("._-{}").find(c) != std::string_view::npos;
}

} // namespace

bool IsPlainId(std::string_view text) {
    return !text.empty() && text.size() <= kLongestId && std::ranges::all_of(text, IsIdCharacter) &&
           text.find_first_not_of('.') != std::string_view::npos;
}

MatchedCall Router::Match(const RequestHead& head) const {
    MatchedCall call;
    call.route = FindRoute(head.path);
    if (call.route == nullptr)
        throw Refusal(Answer::UnknownPath);
    if (head.method != call.route->method)
        throw Refusal(Answer::WrongMethod);
    if (call.route->asksForUser) {
        const auto tokenHash = m_users.Check(head.userId, head.token);
        if (!tokenHash)
            throw Refusal(Answer::NotSignedIn);
        call.tokenHash = *tokenHash;
        call.userId = head.userId;
    }
    call.ids = IdsIn(head.path, *call.route);
    if (call.route->project < call.ids.size())
        RefuseUnlessMember(m_members, call.userId, call.ids[call.route->project]);
    return call;
}

std::string Router::Answer(const MatchedCall& call, std::string_view body) const {
    return call.route->serve({m_projects, m_users, m_members, m_uploads, call, body});
}

bool Router::RefusesWithOk(std::string_view path) {
    const auto* route = FindRoute(path);
    return route != nullptr && route->isUpload;
}

} // namespace tolm::service
