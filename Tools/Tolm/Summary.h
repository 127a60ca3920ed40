#pragma once

#include "Tolm/Snapshot.h"

#include <nlohmann/json_fwd.hpp>

#include <iosfwd>
#include <string>
#include <vector>

namespace tolmcli {

/// What a step with the cloud did to one setting.
struct Effect {
    SettingKey key;
    std::wstring name; ///< as it is now, or was before it went; empty when nobody knows it any more
    std::wstring kind;
    std::string change; ///< came: new, changed, gone; of ours: created, edited, removed
    std::wstring was;   ///< renamed: the name before
    std::string cloud;  ///< overridden: what the cloud did, changed or removed
};

/// What one or more steps with the cloud did to a dataset, as its user sees it. A setting stands in one list only, but
/// that a renamed one is also among those that went or wait.
struct Summary {
    std::vector<Effect> came;
    std::vector<Effect> went;
    std::vector<Effect> renamed;
    std::vector<Effect> overridden; ///< our changes that are dropped, since the cloud changed the same
    std::vector<Effect> waiting;    ///< our changes that the cloud has still to get

    bool IsEmpty() const;
};

/// Told from what the dataset held before and after.
Summary Summarise(const Snapshot& before, const Snapshot& after);

/// Adds "came", "went", "renamed", "overridden" and "waiting".
void AddTo(nlohmann::ordered_json& json, const Summary& summary);
/// In plain words; of a long list only the numbers.
void Print(std::ostream& out, const Summary& summary);

} // namespace tolmcli
