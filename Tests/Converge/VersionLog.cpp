#include "Converge/VersionLog.h"

#include "StoreSupport/StoreFixture.h"

#include <string>

namespace tolmtest {
namespace {

using nlohmann::json;

/// Key of the setting in the log; the sizes, materials and groups share their ids, and so do others.
std::string KeyOf(SettingKind kind, const std::string& id) {
    const int space = kind == SettingKind::Serie ? 2 : kind == SettingKind::System ? 3 : 1;
    return std::to_string(space) + "/" + id;
}

/// Without the number in brackets at its end; empty when there is none.
std::string WithoutNumber(const std::string& name) {
    const auto open = name.rfind('(');
    if (open == std::string::npos || !name.ends_with(")"))
        return {};
    const auto number = name.substr(open + 1, name.size() - open - 2);
    const bool isNumber = !number.empty() && number.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? name.substr(0, open) : std::string();
}

/// The name itself, or with a number in brackets behind it; each merge that repairs it adds one.
bool IsNamedAfter(std::string name, const std::string& wanted) {
    while (!name.empty() && name != wanted)
        name = WithoutNumber(name);
    return name == wanted;
}

/// A state that came in between overrides unless it is the edit's own, and so does a removal.
FateOfEdit FindFateOfPut(const std::vector<LoggedState>& states, const NotedEdit& edit) {
    const auto isIn = [&](long long version) { return version > edit.from && version <= edit.to; };
    const auto mark = edit.step.at("mark").get<std::int64_t>();
    FateOfEdit fate;
    for (std::size_t i = 0; i < states.size(); ++i) {
        const auto& state = states[i];
        const bool isReplaced = i + 1 < states.size() && states[i + 1].born == state.gone;
        if (isIn(state.born) && state.Mark() == mark && IsNamedAfter(state.Name(), edit.step.at("name")))
            return {Fate::Landed, state.born};
        if (isIn(state.born) && state.Mark() != mark)
            fate = {Fate::Overridden, state.born};
        if (isIn(state.gone) && !isReplaced)
            fate = {Fate::Overridden, state.gone};
    }
    return fate;
}

FateOfEdit FindFateOfDeletion(const std::vector<LoggedState>& states, const NotedEdit& edit) {
    const auto isIn = [&](long long version) { return version > edit.from && version <= edit.to; };
    FateOfEdit fate{Fate::Nothing, 0};
    for (std::size_t i = 0; i < states.size(); ++i) {
        const auto& state = states[i];
        const bool isReplaced = i + 1 < states.size() && states[i + 1].born == state.gone;
        if (isIn(state.gone) && !isReplaced)
            return {Fate::Landed, state.gone};
        if (isIn(state.born))
            fate = {Fate::Overridden, state.born};
        else if (state.born <= edit.from && state.gone > edit.from && fate.fate == Fate::Nothing)
            fate = {Fate::Lost, 0};
    }
    return fate;
}

} // namespace

std::string LoggedState::Name() const {
    for (const char* key : {"text", "name", "systemType"}) {
        if (row.contains(key))
            return row.at(key);
    }
    return {};
}

VersionLog::VersionLog(const std::wstring& databasePath, const std::string& project) {
    const auto rows =
        Sql(databasePath, "SELECT id_space, row_id, born, gone, body FROM setting_rows WHERE project_id = '" + project +
                              "' ORDER BY born");
    for (const auto& row : rows)
        m_states[row[0] + "/" + row[1]].push_back({std::stoll(row[2]), std::stoll(row[3]), json::parse(row[4])});
}

const std::vector<LoggedState>& VersionLog::Of(const Slice& slice, const std::string& id) const {
    static const std::vector<LoggedState> none;
    const auto found = m_states.find(KeyOf(slice.kind, id));
    return found != m_states.end() ? found->second : none;
}

std::vector<std::string> VersionLog::Repeated() const {
    std::vector<std::string> repeated;
    for (const auto& [key, states] : m_states) {
        for (std::size_t i = 1; i < states.size(); ++i) {
            if (states[i - 1].gone == states[i].born && states[i - 1].row == states[i].row)
                repeated.push_back(key);
        }
    }
    return repeated;
}

FateOfEdit FindFate(const VersionLog& log, const NotedEdit& edit) {
    const auto& states = log.Of(SliceOf(edit.step.at("slice").get<std::string>()), edit.step.at("id"));
    return edit.step.at("do") == "put" ? FindFateOfPut(states, edit) : FindFateOfDeletion(states, edit);
}

} // namespace tolmtest
