#include "Service/SettingTables.h"

#include <algorithm>

namespace tolm::service {

std::optional<std::size_t> FindSettingTable(std::string_view name) {
    const auto found = std::ranges::find(kSettingTables, name, &SettingTable::name);
    if (found == kSettingTables.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - kSettingTables.begin());
}

const ConfigGroup* FindConfigGroup(std::string_view name) {
    const auto found = std::ranges::find(kConfigGroups, name, &ConfigGroup::name);
    return found == kConfigGroups.end() ? nullptr : &*found;
}

} // namespace tolm::service
