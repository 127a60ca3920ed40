#include "Service/Increment.h"

#include "Service/Schema.h"
#include "Service/SettingTables.h"

#include <soci/soci.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tolm::service {
namespace {

/// Ids of all tables at once; each begins with its id space.
using IdSet = std::unordered_set<std::string>;

std::string KeyOf(std::size_t table, const std::string& id) {
    return std::to_string(kSettingTables[table].idSpace) + "/" + id;
}

/// Collects rows table by table, as the text that goes out.
class RowLists {
public:
    void Add(std::size_t table, std::string_view row) {
        auto& list = m_lists[table];
        list.append(list.empty() ? "[" : ",").append(row);
        m_size += row.size() + 1;
    }
    /// Adds a row with one more key.
    void AddWithVersion(std::size_t table, std::string_view row, long long version) {
        row.remove_suffix(1);
        Add(table, std::string(row) + ",\"version\":" + std::to_string(version) + "}");
    }
    bool Has(std::size_t table) const { return !m_lists[table].empty(); }
    bool HasOtherContent() const {
        for (std::size_t i = 0; i < kSettingTables.size(); ++i) {
            if (!kSettingTables[i].tracked && Has(i))
                return true;
        }
        return false;
    }
    /// Appends all lists as one object; "ConfigTree" even when it is empty, where that is asked for.
    void AppendTo(std::string& text, bool alwaysConfigTree) const {
        char separator = '{';
        text.reserve(text.size() + m_size + 1024);
        for (std::size_t i = 0; i < kSettingTables.size(); ++i) {
            if (!Has(i) && !(i == kConfigTree && alwaysConfigTree))
                continue;
            text.append(1, separator).append("\"").append(kSettingTables[i].name).append("\":");
            text.append(Has(i) ? std::string_view(m_lists[i]) : "[").append("]");
            separator = ',';
        }
        text.append(separator == '{' ? "{}" : "}");
    }

private:
    std::array<std::string, kSettingTables.size()> m_lists;
    std::size_t m_size = 0;
};

/// One state of a row, as the queries below read it.
struct RowState {
    std::string table;
    std::string id;
    long long born = 0;
    long long gone = 0;
    std::string body;

    std::size_t Table() const { return FindSettingTable(table).value(); }
};

struct StandingRow {
    std::size_t table = 0;
    long long position = 0;
    std::string id;
    std::string stub;
    std::string body;
};

std::vector<StandingRow> ReadCameAfter(soci::session& session, const std::string& projectId, long long since) {
    std::vector<StandingRow> rows;
    std::string table;
    StandingRow row;
    soci::statement query =
        (session.prepare << "SELECT table_name, position, row_id, stub, body FROM setting_rows WHERE "
                            "project_id = :p AND born > :v AND gone = " TOLM_FOREVER,
         soci::use(projectId, "p"), soci::use(since, "v"), soci::into(table), soci::into(row.position),
         soci::into(row.id), soci::into(row.stub), soci::into(row.body));
    query.execute();
    while (query.fetch()) {
        row.table = FindSettingTable(table).value();
        rows.push_back(row);
    }
    std::ranges::sort(rows, {}, &StandingRow::position);
    return rows;
}

IdSet KeysOf(const std::vector<StandingRow>& rows) {
    IdSet keys;
    for (const auto& row : rows)
        keys.insert(KeyOf(row.table, row.id));
    return keys;
}

/// Walks the states that ended after a version and puts into "del" what each id comes to. The states of an id follow
/// one another, oldest first.
class DeletedRows {
public:
    DeletedRows(long long since, const IdSet& living, RowLists& lists)
        : m_since(since), m_living(living), m_lists(lists) {}

    void Take(const RowState& state) {
        if (m_has && (state.table != m_shown.table || state.id != m_shown.id))
            End();
        const bool first = !m_has;
        if (first)
            m_stood = state.born <= m_since;
        if (first || !m_stood)
            m_shown = state;
        m_lastGone = state.gone;
        m_has = true;
    }

    void End() {
        if (!m_has)
            return;
        const auto table = m_shown.Table();
        const auto key = KeyOf(table, m_shown.id);
        if (!m_living.contains(key))
            m_lists.AddWithVersion(table, m_shown.body, m_lastGone);
        else if (m_stood)
            m_lists.Add(table, m_shown.body);
        if (!m_living.contains(key) || m_stood)
            m_listed.insert(key);
        m_has = false;
    }

    bool Listed(const std::string& key) const { return m_listed.contains(key); }

private:
    long long m_since;
    const IdSet& m_living;
    RowLists& m_lists;
    IdSet m_listed;
    RowState m_shown;
    long long m_lastGone = 0;
    bool m_stood = false;
    bool m_has = false;
};

void ReadEndedAfter(soci::session& session, const std::string& projectId, long long since, DeletedRows& deleted) {
    RowState state;
    soci::statement query =
        (session.prepare
             << "SELECT table_name, row_id, born, gone, body FROM setting_rows WHERE project_id = :p AND gone "
                "> :v AND gone < " TOLM_FOREVER " ORDER BY id_space, row_id, born",
         soci::use(projectId, "p"), soci::use(since, "v"), soci::into(state.table), soci::into(state.id),
         soci::into(state.born), soci::into(state.gone), soci::into(state.body));
    query.execute();
    while (query.fetch())
        deleted.Take(state);
    deleted.End();
}

void AddStubs(const std::vector<StandingRow>& rows, const DeletedRows& deleted, RowLists& lists) {
    for (const auto& row : rows) {
        if (kSettingTables[row.table].tracked && !deleted.Listed(KeyOf(row.table, row.id)))
            lists.Add(row.table, row.stub);
    }
}

std::string UnknownGroupRow() {
    return R"({"CreateTime":0,"ID":"tolm-other-content","content":{},"groupName":")" + std::string(kUnknownGroup) +
           R"(","parentID":"","text":""})";
}

void KeepOtherContentFromBeingPassedOver(const RowLists& deleted, RowLists& added) {
    if (added.Has(kConfigTree) || deleted.Has(kConfigTree))
        return;
    if (added.HasOtherContent() || deleted.HasOtherContent())
        added.Add(kConfigTree, UnknownGroupRow());
}

std::string IncrementText(const RowLists& added, const RowLists& deleted) {
    std::string text = R"({"add":)";
    added.AppendTo(text, false);
    text.append(R"(,"del":)");
    deleted.AppendTo(text, true);
    return text.append("}");
}

} // namespace

std::string MakeIncrement(soci::session& session, const std::string& projectId, std::int64_t since) {
    const long long from = std::max<long long>(since, 0);
    const auto rows = ReadCameAfter(session, projectId, from);
    const auto living = KeysOf(rows);
    RowLists added;
    for (const auto& row : rows)
        added.Add(row.table, row.body);
    RowLists deleted;
    DeletedRows ended(from, living, deleted);
    ReadEndedAfter(session, projectId, from, ended);
    if (from > 0)
        AddStubs(rows, ended, deleted);
    KeepOtherContentFromBeingPassedOver(deleted, added);
    return IncrementText(added, deleted);
}

std::string MakeStandingRows(soci::session& session, const std::string& projectId) {
    RowLists lists;
    for (const auto& row : ReadCameAfter(session, projectId, 0))
        lists.Add(row.table, row.body);
    std::string text;
    lists.AppendTo(text, false);
    return text;
}

} // namespace tolm::service
