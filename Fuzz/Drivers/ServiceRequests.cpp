#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/Require.h"
#include "Service/Answer.h"
#include "Service/Database.h"
#include "Service/MemberStore.h"
#include "Service/ProjectFile.h"
#include "Service/ProjectStore.h"
#include "Service/Router.h"
#include "Service/SettingTables.h"
#include "Service/UploadStore.h"
#include "Service/UserStore.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <map>
#include <utility>

namespace tolmfuzz {
namespace {

namespace service = tolm::service;
using nlohmann::json;

constexpr std::size_t kMostRequests = 8;
constexpr const char* kProject = "p";

/// The rows that the project begins with: the first two of each table that a full load of the corpus adds, without
/// their lists.
service::ProjectFile FirstRows() {
    std::ifstream file(TOLM_SOURCE_DIR "/Fuzz/Corpus/Ingest/FullLoad.json");
    json tables = json::parse(file).at("add");
    for (auto& rows : tables) {
        rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(rows.size(), 2)), rows.end());
        for (auto& row : rows) {
            for (auto& value : row)
                value = value.is_array() ? json::array() : value;
        }
    }
    const json project{{"format", "tolm-project"}, {"formatVersion", 1}, {"tables", tables}};
    return service::ReadProjectFile(project.dump(), TOLM_SOURCE_DIR);
}

/// A row's table and key, and the row.
using State = std::map<std::pair<std::string, std::string>, json>;

std::string KeyOf(const json& row) {
    return row.contains("ID") ? row.at("ID").get<std::string>() : row.at("fileName").get<std::string>();
}

bool IsOfNoKnownGroup(const json& row) {
    return row.contains("groupName") && row.at("groupName") == service::kUnknownGroup;
}

void Put(const json& tables, State& state) {
    for (const auto& [table, rows] : tables.items()) {
        for (const auto& row : rows) {
            if (!IsOfNoKnownGroup(row))
                state[{table, KeyOf(row)}] = row;
        }
    }
}

void Take(const json& tables, State& state) {
    for (const auto& [table, rows] : tables.items()) {
        for (const auto& row : rows)
            state.erase({table, KeyOf(row)});
    }
}

/// The router over a database of its own in memory, with one user and one filled project.
class Town {
public:
    Town()
        : m_database(":memory:", 1), m_projects(m_database), m_users(m_database, {.rounds = 1, .now = {}}),
          m_members(m_database), m_uploads(m_database), m_router(m_projects, m_users, m_members, m_uploads) {
        static const service::ProjectFile first = FirstRows();
        m_projects.Create(kProject, "Project");
        m_projects.Create("empty", "Never filled");
        m_projects.Fill(kProject, first.rows, false);
        m_projects.SetTemplate("t", kProject);
        m_users.Put("anna", "secret");
        m_token = m_users.SignIn("anna", "secret").value();
    }

    void Try(const json& request) {
        const std::string before = m_projects.StandingRows(kProject);
        const auto version = m_projects.Version(kProject);
        const bool isServed = Asks(request);
        if (m_projects.Version(kProject) == version)
            Require(m_projects.StandingRows(kProject) == before, "nothing changes without a version");
        else
            Require(isServed, "a refused request changes nothing");
        if (m_projects.Version(kProject) != version)
            RequireIncrementLeads(StateOf(before), version);
    }

private:
    static std::string TextOf(const json& request, const char* key) {
        const auto found = request.find(key);
        return found != request.end() && found->is_string() ? found->get<std::string>() : std::string();
    }

    /// A body that is text goes out as it stands, any other as JSON.
    static std::string BodyOf(const json& request) {
        const auto body = request.find("body");
        if (body == request.end())
            return {};
        return body->is_string() ? body->get<std::string>() : body->dump();
    }

    /// True when the request was served.
    bool Asks(const json& request) {
        const std::string token = TextOf(request, "token");
        const service::RequestHead head{TextOf(request, "method"), TextOf(request, "path"), TextOf(request, "user"),
                                        token == "good" ? m_token : token};
        try {
            const auto call = m_router.Match(head);
            const std::string envelope = service::SuccessEnvelope(m_router.Answer(call, BodyOf(request)));
            RequireEnvelope(envelope, "10000");
            return true;
        } catch (const service::Refusal& refusal) {
            Require(refusal.What() != service::Answer::Internal && refusal.What() != service::Answer::Success,
                    "a refusal is no fault of the service");
            RequireEnvelope(service::RefusalEnvelope(refusal.What(), refusal.what()),
                            service::RowOf(refusal.What()).code);
            return false;
        } catch (const std::exception& exception) {
            Require(false, std::string("a request meets no fault of the service: ") + exception.what());
            return false;
        }
    }

    static void RequireEnvelope(const std::string& envelope, std::string_view code) {
        const json answer = json::parse(envelope, nullptr, false);
        Require(answer.is_object() && answer.contains("data") && answer.value("code", "") == code,
                "an answer is a JSON envelope with its code: " + envelope.substr(0, 200));
    }

    static State StateOf(const std::string& tables) {
        State state;
        Put(json::parse(tables), state);
        return state;
    }

    /// The increment since the version before leads from the rows before to those that stand now; the full load leads
    /// there from nothing.
    void RequireIncrementLeads(State state, std::int64_t version) {
        Require(m_projects.Version(kProject) > version, "versions never fall");
        const State now = StateOf(m_projects.StandingRows(kProject));
        const json increment = json::parse(m_projects.Increment(kProject, version));
        Take(increment.at("del"), state);
        Put(increment.at("add"), state);
        Require(state == now, "the increment leads to what stands");
        State loaded;
        Put(json::parse(m_projects.Increment(kProject, -1)).at("add"), loaded);
        Require(loaded == now, "the full load leads to what stands");
    }

    service::Database m_database;
    service::ProjectStore m_projects;
    service::UserStore m_users;
    service::MemberStore m_members;
    service::UploadStore m_uploads;
    service::Router m_router;
    std::string m_token;
};

} // namespace

int TryServiceRequests(const std::uint8_t* data, std::size_t size) {
    const json requests = json::parse(data, data + size, nullptr, false);
    if (!requests.is_array())
        return 0;
    Town town;
    std::size_t count = 0;
    for (const json& request : requests) {
        if (request.is_object() && ++count <= kMostRequests)
            town.Try(request);
    }
    return 0;
}

} // namespace tolmfuzz
