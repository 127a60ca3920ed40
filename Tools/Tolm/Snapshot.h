#pragma once

#include "Tolm/StoreWalk.h"
#include "Tolm/Workplace.h"

#include <map>
#include <string>
#include <utility>

namespace tolmcli {

/// Class code and id of a record.
using SettingKey = std::pair<std::string, std::wstring>;

/// One setting as its user sees it: a series with its fittings, a duct table with the name of its material.
struct Setting {
    std::wstring name;
    std::wstring kind; ///< empty for a circuit template
    std::map<short, StoredValue> values;
};

/// What a dataset held at one moment.
struct Snapshot {
    int version = -1; ///< of the cloud's settings that it holds; -1 when it was never synchronised
    std::map<SettingKey, Setting> settings;
    std::map<SettingKey, NotedChange> changes;
};

/// Reads the dataset and the changes noted beside it. Throws Failure when they cannot be read whole.
Snapshot TakeSnapshot(const std::wstring& datasetPath);

/// How near two numbers have to be.
enum class Nearness {
    Exact,
    AsSent, ///< as near as a number comes back that went to the cloud: it travels with three or four decimals
};

/// True when both say the same. `exceptName` leaves the names aside.
bool AreAlike(const Setting& one, const Setting& other, Nearness nearness, bool exceptName = false);

} // namespace tolmcli
