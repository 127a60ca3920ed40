#include "Service/RowVersions.h"

#include "Service/Answer.h"
#include "Service/RowCheck.h"
#include "Service/Schema.h"
#include "Service/SettingTables.h"

#include <soci/soci.h>

#include <algorithm>
#include <map>
#include <set>
#include <span>
#include <unordered_map>

namespace tolm::service {
namespace {

/// Ids that one query asks for.
constexpr std::size_t kIdsPerQuery = 400;

using IdKey = std::pair<int, std::string>; ///< id space and id

IdKey KeyOf(std::size_t table, const std::string& id) {
    return {kSettingTables[table].idSpace, id};
}

/// The latest state of an id.
struct LastState {
    std::string table;
    std::string group;
    long long born = 0;
    long long gone = 0;
    long long position = 0;
    std::string body; ///< only of a row that stands
    bool Stands() const { return gone == kForever; }
};

using LastStates = std::map<IdKey, LastState>;

std::string PlaceholderList(std::size_t count) {
    std::string list;
    for (std::size_t i = 0; i < count; ++i)
        list.append(i == 0 ? ":i" : ", :i").append(std::to_string(i));
    return list;
}

/// The order of births is found here: asked for it, SQLite would go through all rows of the project by their births.
void ReadLastStates(soci::session& session, const std::string& projectId, int idSpace, std::span<const std::string> ids,
                    LastStates& states) {
    std::string id;
    LastState state;
    soci::statement query(session);
    query.alloc();
    query.prepare("SELECT row_id, table_name, row_group, born, gone, position, CASE WHEN gone = " TOLM_FOREVER
                  " THEN body ELSE '' END FROM setting_rows WHERE project_id = :p AND id_space = :s AND row_id IN (" +
                  PlaceholderList(ids.size()) + ")");
    query.exchange(soci::use(projectId, "p"));
    query.exchange(soci::use(idSpace, "s"));
    for (std::size_t i = 0; i < ids.size(); ++i)
        query.exchange(soci::use(ids[i], "i" + std::to_string(i)));
    query.exchange(soci::into(id));
    query.exchange(soci::into(state.table));
    query.exchange(soci::into(state.group));
    query.exchange(soci::into(state.born));
    query.exchange(soci::into(state.gone));
    query.exchange(soci::into(state.position));
    query.exchange(soci::into(state.body));
    query.define_and_bind();
    query.execute();
    while (query.fetch()) {
        LastState& last = states[{idSpace, id}];
        if (state.born >= last.born)
            last = state;
    }
}

std::map<int, std::vector<std::string>> IdsBySpace(const SettingChange& change) {
    std::map<int, std::vector<std::string>> ids;
    for (const auto& row : change.put)
        ids[kSettingTables[row.table].idSpace].push_back(row.id);
    for (const auto& [table, id] : change.removed)
        ids[kSettingTables[table].idSpace].push_back(id);
    return ids;
}

LastStates ReadLastStates(soci::session& session, const std::string& projectId, const SettingChange& change) {
    LastStates states;
    for (const auto& [space, ids] : IdsBySpace(change)) {
        for (std::size_t from = 0; from < ids.size(); from += kIdsPerQuery) {
            const auto count = std::min(kIdsPerQuery, ids.size() - from);
            ReadLastStates(session, projectId, space, std::span(ids).subspan(from, count), states);
        }
    }
    return states;
}

/// An id keeps its table and its group: a client that takes a change in table by table would lose it otherwise.
void CheckPlace(const SettingRow& row, const LastState& last) {
    if (last.table != kSettingTables[row.table].name)
        RefuseRow(row.table, row.id, "the id belongs to " + last.table);
    if (last.group != row.group)
        RefuseRow(row.table, row.id, "the id belongs to the group \"" + last.group + "\"");
}

/// What a change comes to, against what stands.
struct Plan {
    std::vector<int> goneSpaces;
    std::vector<std::string> goneIds;
    std::vector<long long> goneBorn;
    std::vector<const SettingRow*> born;
    std::vector<long long> positions;
    std::int64_t nextPosition = 1;

    void TakeAway(const IdKey& key, const LastState& last) {
        goneSpaces.push_back(key.first);
        goneIds.push_back(key.second);
        goneBorn.push_back(last.born);
    }
    void Bring(const SettingRow& row, long long position) {
        born.push_back(&row);
        positions.push_back(position);
    }
    bool IsEmpty() const { return goneIds.empty() && born.empty(); }
};

void PlanPut(const SettingRow& row, const LastStates& states, Plan& plan) {
    const auto key = KeyOf(row.table, row.id);
    const auto last = states.find(key);
    if (last != states.end())
        CheckPlace(row, last->second);
    if (last == states.end() || !last->second.Stands()) {
        plan.Bring(row, plan.nextPosition++);
    } else if (last->second.body != row.body) {
        plan.TakeAway(key, last->second);
        plan.Bring(row, last->second.position);
    }
}

void PlanRemoval(std::size_t table, const std::string& id, const LastStates& states, Plan& plan) {
    const auto key = KeyOf(table, id);
    const auto last = states.find(key);
    if (last != states.end() && last->second.Stands() && last->second.table == kSettingTables[table].name)
        plan.TakeAway(key, last->second);
}

Plan MakePlan(const SettingChange& change, const LastStates& states, std::int64_t nextPosition) {
    Plan plan;
    plan.nextPosition = nextPosition;
    for (const auto& row : change.put)
        PlanPut(row, states, plan);
    for (const auto& [table, id] : change.removed)
        PlanRemoval(table, id, states, plan);
    return plan;
}

void WriteGone(soci::session& session, const std::string& projectId, long long version, const Plan& plan) {
    if (plan.goneIds.empty())
        return;
    const std::vector<std::string> projects(plan.goneIds.size(), projectId);
    const std::vector<long long> versions(plan.goneIds.size(), version);
    session
        << "UPDATE setting_rows SET gone = :v WHERE project_id = :p AND id_space = :s AND row_id = :i AND born = :b",
        soci::use(versions, "v"), soci::use(projects, "p"), soci::use(plan.goneSpaces, "s"),
        soci::use(plan.goneIds, "i"), soci::use(plan.goneBorn, "b");
}

void WriteBorn(soci::session& session, const std::string& projectId, long long version, const Plan& plan) {
    SettingRow row;
    int space = 0;
    long long position = 0;
    std::string table;
    soci::statement insert =
        (session.prepare
             << "INSERT INTO setting_rows (project_id, id_space, row_id, born, gone, table_name, row_group, "
                "position, name_scope, name, stub, body) VALUES (:p, :s, :i, :v, " TOLM_FOREVER
                ", :t, :g, :o, :c, :n, :u, :b)",
         soci::use(projectId, "p"), soci::use(space, "s"), soci::use(row.id, "i"), soci::use(version, "v"),
         soci::use(table, "t"), soci::use(row.group, "g"), soci::use(position, "o"), soci::use(row.nameScope, "c"),
         soci::use(row.name, "n"), soci::use(row.stub, "u"), soci::use(row.body, "b"));
    for (std::size_t i = 0; i < plan.born.size(); ++i) {
        row = *plan.born[i];
        space = kSettingTables[row.table].idSpace;
        table = kSettingTables[row.table].name;
        position = plan.positions[i];
        insert.execute(true);
    }
}

/// No name stood twice before: only the names that this version brought may.
void CheckNames(soci::session& session, const std::string& projectId, long long version) {
    std::string scope;
    std::string name;
    std::string first;
    std::string last;
    session << "SELECT name_scope, name, MIN(row_id), MAX(row_id) FROM setting_rows WHERE project_id = :p AND gone "
               "= " TOLM_FOREVER " AND name_scope <> '' AND (name_scope, name) IN (SELECT name_scope, name FROM "
               "setting_rows WHERE project_id = :q AND born = :v AND name_scope <> '') GROUP BY name_scope, name "
               "HAVING COUNT(*) > 1 ORDER BY name_scope, name LIMIT 1",
        soci::use(projectId, "p"), soci::use(projectId, "q"), soci::use(version, "v"), soci::into(scope),
        soci::into(name), soci::into(first), soci::into(last);
    if (session.got_data())
        throw Refusal(Answer::NameClash,
                      scope + ": the rows \"" + first + "\" and \"" + last + "\" both bear the name " + name);
}

void WriteVersion(soci::session& session, const std::string& projectId, long long version, long long nextPosition) {
    session << "UPDATE projects SET version = :v, next_position = :n WHERE project_id = :p", soci::use(version, "v"),
        soci::use(nextPosition, "n"), soci::use(projectId, "p");
}

} // namespace

ProjectState ReadProject(soci::session& session, const std::string& projectId) {
    long long version = 0;
    long long nextPosition = 0;
    session << "SELECT version, next_position FROM projects WHERE project_id = :p", soci::use(projectId),
        soci::into(version), soci::into(nextPosition);
    if (!session.got_data())
        throw Refusal(Answer::UnknownProject);
    return {version, nextPosition};
}

ProjectState LockProject(soci::session& session, const std::string& projectId) {
    session << "UPDATE projects SET version = version WHERE project_id = :p", soci::use(projectId);
    return ReadProject(session, projectId);
}

void RefuseNeverFilled(const ProjectState& state) {
    if (state.version < 1)
        throw Refusal(Answer::NeverFilled);
}

std::int64_t MakeVersion(soci::session& session, const std::string& projectId, const ProjectState& state,
                         const SettingChange& change) {
    const auto plan = MakePlan(change, ReadLastStates(session, projectId, change), state.nextPosition);
    const bool firstFill = state.version < 1;
    if (plan.IsEmpty() && !firstFill)
        return state.version;
    const std::int64_t version = firstFill ? 1 : state.version + 1;
    WriteGone(session, projectId, version, plan);
    WriteBorn(session, projectId, version, plan);
    CheckNames(session, projectId, version);
    WriteVersion(session, projectId, version, plan.nextPosition);
    return version;
}

std::vector<std::pair<std::size_t, std::string>> RowsBeside(soci::session& session, const std::string& projectId,
                                                            const std::vector<SettingRow>& rows) {
    std::set<IdKey> kept;
    for (const auto& row : rows)
        kept.insert(KeyOf(row.table, row.id));
    std::vector<std::pair<std::size_t, std::string>> beside;
    std::string table;
    std::string id;
    soci::statement query = (session.prepare << "SELECT table_name, row_id FROM setting_rows WHERE project_id = :p AND "
                                                "gone = " TOLM_FOREVER " ORDER BY position",
                             soci::use(projectId), soci::into(table), soci::into(id));
    query.execute();
    while (query.fetch()) {
        const auto index = FindSettingTable(table).value();
        if (!kept.contains(KeyOf(index, id)))
            beside.emplace_back(index, id);
    }
    return beside;
}

std::vector<SettingRow> ReadStandingRows(soci::session& session, const std::string& projectId) {
    std::vector<SettingRow> rows;
    std::string table;
    SettingRow row;
    soci::statement query =
        (session.prepare
             << "SELECT table_name, row_id, row_group, name_scope, name, stub, body FROM setting_rows WHERE "
                "project_id = :p AND gone = " TOLM_FOREVER " ORDER BY position",
         soci::use(projectId), soci::into(table), soci::into(row.id), soci::into(row.group), soci::into(row.nameScope),
         soci::into(row.name), soci::into(row.stub), soci::into(row.body));
    query.execute();
    while (query.fetch()) {
        row.table = FindSettingTable(table).value();
        rows.push_back(row);
    }
    return rows;
}

} // namespace tolm::service
