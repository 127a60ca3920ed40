#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tolm::service {

/// The form of a table's rows.
enum class RowForm { ConfigNode, Series, SystemType, CircuitTemplate, Combination, Binary };

/// One table of a project. Tables that share an id space share their ids too: an id stands in one of them only.
struct SettingTable {
    std::string_view name;
    int idSpace;
    RowForm form;
    bool tracked; ///< clients note their own changes to it; what is not tracked is other content

    constexpr std::string_view IdKey() const { return form == RowForm::Binary ? "fileName" : "ID"; }
};

inline constexpr std::array kSettingTables{
    SettingTable{"ConfigTree", 1, RowForm::ConfigNode, true},
    SettingTable{"PipeType", 2, RowForm::Series, true},
    SettingTable{"HVACPipeType", 2, RowForm::Series, true},
    SettingTable{"DuctType", 2, RowForm::Series, true},
    SettingTable{"ConduitFittingsType", 2, RowForm::Series, true},
    SettingTable{"CableTrayFittingsType", 2, RowForm::Series, true},
    SettingTable{"PipeSystemType", 3, RowForm::SystemType, true},
    SettingTable{"HVACPipeSystemType", 3, RowForm::SystemType, true},
    SettingTable{"DuctSystemType", 3, RowForm::SystemType, true},
    SettingTable{"ElectricalSystemType", 3, RowForm::SystemType, true},
    SettingTable{"CircuitTemplate", 4, RowForm::CircuitTemplate, false},
    SettingTable{"Combination_16353515", 5, RowForm::Combination, false},
    SettingTable{"Combination_16302510", 6, RowForm::Combination, false},
    SettingTable{"Combination_16352020", 7, RowForm::Combination, false},
    SettingTable{"Combination_16352030", 8, RowForm::Combination, false},
    SettingTable{"BinaryTable", 9, RowForm::Binary, false},
};

/// Index of "ConfigTree" in the list.
inline constexpr std::size_t kConfigTree = 0;

/// One kind of row in "ConfigTree", as its "groupName" tells.
struct ConfigGroup {
    std::string_view name;
    bool hasMaterials; ///< rows with an empty "parentID" are materials, the others size tables
    bool namesAreUnique;
    std::string_view cells; ///< keys of a "sizeList" entry, with blanks between; empty for a group without sizes
};

inline constexpr std::array kConfigGroups{
    ConfigGroup{"MaterialSeries", true, true, "DN OD ID Thickness"},
    ConfigGroup{"HVACMaterialSeries", true, true, "DN OD ID Thickness"},
    ConfigGroup{"ductSeriesType", false, true, "Size Thickness"},
    ConfigGroup{"electricWireType", false, false, "area current temperature"},
    ConfigGroup{"electricLinePipe", false, true, "DN OD ID"},
    ConfigGroup{"cableTray", false, true, "Size"},
    ConfigGroup{"pipeFittingGroup", false, true, ""},
    ConfigGroup{"havcFittingGroup", false, true, ""},
    ConfigGroup{"ductFittingGroup", false, true, ""},
};

/// The "groupName" of the row that keeps an increment without any other "ConfigTree" row from being passed over. No
/// client knows it, and no row of a project may bear it.
inline constexpr std::string_view kUnknownGroup = "tolmOtherContent";

/// Longest list that a client can take in.
inline constexpr std::size_t kLongestList = 300;

/// Index of the table of this name.
std::optional<std::size_t> FindSettingTable(std::string_view name);
/// The group of this name, or null.
const ConfigGroup* FindConfigGroup(std::string_view name);

} // namespace tolm::service
