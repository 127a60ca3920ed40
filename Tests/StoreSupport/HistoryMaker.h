#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tolmtest {

/// One version of a project: {"put": {table: [row, ...]}, "remove": {table: [id, ...]}}.
using HistoryStep = nlohmann::json;

/// Makes random histories of a small project over all tables. Ids come from small pools, so that the same id is
/// changed, removed and added again time and again; it keeps its table and its group, as a service demands. A seed
/// always gives the same history. Tray tables all come with the first version, keep their type and have a time of
/// creation, and never go: there a refresh and a full load differ.
class HistoryMaker {
public:
    explicit HistoryMaker(std::uint64_t seed) : m_engine(seed) {}

    HistoryStep First();
    HistoryStep Next();

private:
    using json = nlohmann::json;

    std::uint64_t Below(std::uint64_t bound) { return m_engine() % bound; }
    bool Chance(unsigned percent) { return Below(100) < percent; }
    std::string OneOf(const std::vector<std::string>& list) { return list[Below(list.size())]; }
    std::string Id(std::string_view pool, unsigned size);
    /// A name that no other row has.
    std::string Name();
    json Time();

    json Cell(bool whole);
    json SizeList(const std::vector<std::string>& keys);
    json Cables();
    json Fitting();
    json Ids(std::string_view pool, unsigned size);

    json ConfigRow(const std::string& id, const std::string& group);
    json Content(const std::string& group);
    json TrayRow(unsigned type);
    json SerieRow(const std::string& id, const std::string& table);
    json SystemTypeRow(const std::string& id, const std::string& table);
    json CircuitRow(const std::string& id);
    json ListRow(const std::string& id);
    json EquipmentRow(const std::string& id);
    json BinaryRow(const std::string& id);

    void Touch(HistoryStep& step, bool otherContentOnly);
    void ChangeTray(HistoryStep& step);
    void ChangeConfig(HistoryStep& step);
    void ChangeSerie(HistoryStep& step);
    void ChangeSystemType(HistoryStep& step);
    void ChangeOther(HistoryStep& step);
    void PutOther(HistoryStep& step, const std::string& table, const std::string& id);
    /// Removes a row that stands, in some of the cases; true when it did.
    bool Remove(HistoryStep& step, const std::string& space, const std::string& id);
    void Put(HistoryStep& step, const std::string& space, const std::string& table, json row);
    bool IsUsed(const std::string& space, const std::string& id) const;

    std::mt19937_64 m_engine;
    int m_counter = 0;
    std::map<std::string, std::string> m_standing; ///< id space and id to the table that has it
    std::set<std::string> m_used;                  ///< ids of the step that is being made
};

} // namespace tolmtest
