#pragma once

#include "ConvergeHost/Slices.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace tolmtest {

/// The settings that every project of these histories begins with, as tables of rows.
nlohmann::json FirstTables();

/// Makes random histories of several hosts of one project:
///
///   {"hosts": 3, "steps": [
///     {"host": 0, "do": "put", "slice": "pipe groups", "id": "0-1", "name": "A", "mark": 7, "n": 3, "new": true},
///     {"host": 1, "do": "delete", "slice": "pipe groups", "id": "first group"},
///     {"host": 1, "do": "sync", "lose": "/api/UpLoad/"},
///     {"host": 2, "do": "sync", "recover": ["first system"]},
///     {"host": 0, "do": "template", "id": "t1", "mark": 8},
///     {"host": 2, "do": "product", "id": "k1", "category": "16302510", "mark": 9},
///     {"host": 1, "do": "template", "id": "t1", "remove": true},
///     {"do": "together", "hosts": [0, 2]}]}
///
/// A host makes new ids of its own and edits and deletes any; an edit of what it cannot see is no edit when the
/// history is played. What it deleted since its last synchronisation it may put back ("undo"). Names come from a small
/// pool. A mark is the time of creation that an edit gives its record, and no two edits have the same. A seed always
/// gives the same history.
class HostHistoryMaker {
public:
    explicit HostHistoryMaker(std::uint64_t seed) : m_engine(seed) {}

    nlohmann::json History();

private:
    using json = nlohmann::json;

    struct Known {
        const Slice* slice;
        std::string id;
        int host; ///< that made it; -1 for those of the beginning
    };

    std::uint64_t Below(std::uint64_t bound) { return m_engine() % bound; }
    bool Chance(unsigned percent) { return Below(100) < percent; }

    void KnowFirst();
    json Step();
    json Edit(int host);
    json New(int host);
    json Change(int host, const Known& known);
    json Sync(int host);
    json Together();
    json Direct(int host);
    void AddRecovery(json& steps);
    json WantedBack();
    json Put(int host, const Slice& slice, const std::string& id);
    std::string Name(const Slice& slice);
    json Links(const Slice& slice);
    void AddLinks(json& links, SettingKind kind, const Slice& of, std::uint64_t most);
    const Known* Any(int host);

    std::mt19937_64 m_engine;
    int m_hosts = 0;
    int m_mark = 1'000;
    int m_counter = 0;
    std::vector<Known> m_known;
    std::vector<std::pair<int, std::string>> m_deleted; ///< host and id
    std::vector<std::string> m_deletedSystems;          ///< that a host may take back
};

/// Whether the names of a slice stay apart, since the merge repairs them and the service refuses a clash.
bool HasRepairedNames(const Slice& slice);

} // namespace tolmtest
