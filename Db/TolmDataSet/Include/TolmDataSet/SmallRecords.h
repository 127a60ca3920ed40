#pragma once

#include "Host/HostTypes.h"
#include "TolmDataSet/MepEnums.h"

#include <cstdint>
#include <map>

/// Plain values without identity that the records hold. Lengths are in the unit that the caller stores,
/// millimetres by custom.
namespace tolm {

class ITolmProjectSettingComponent;

/// One row of a pipe or conduit size table.
struct ProjectSettingPipeSize {
    float innerDiameter = 0.0F;   ///< "ID"
    float outerDiameter = 0.0F;   ///< "OD"
    float nominalDiameter = 0.0F; ///< "DN"
    float thickness = 0.0F;       ///< "Thickness"

    friend bool operator==(const ProjectSettingPipeSize&, const ProjectSettingPipeSize&) = default;
};

/// One row of a duct or cable-tray size table; a tray keeps its `size` only.
struct ProjectSettingDuctSize {
    float size = 0.0F;      ///< "Size"
    float thickness = 0.0F; ///< "Thickness"

    friend bool operator==(const ProjectSettingDuctSize&, const ProjectSettingDuctSize&) = default;
};

/// One row of a cable table.
struct ProjectSettingCableSpec {
    wstring area;             ///< cross-section in square millimetres, as text
    std::int32_t current = 0; ///< rated current in amperes
    EnvironmentTemperature temperature = EnvironmentTemperature::Celsius25;

    friend bool operator==(const ProjectSettingCableSpec&, const ProjectSettingCableSpec&) = default;
};

/// Largest sizes that one insulation thickness serves. Circular entries use the first two, rectangular all three.
struct DataSetInsulationMaxSize {
    std::int16_t firstSize = 0;
    std::int16_t secondSize = 0;
    std::int16_t thirdSize = 0;

    friend bool operator==(const DataSetInsulationMaxSize&, const DataSetInsulationMaxSize&) = default;
};

/// One step of a sizing method.
struct DataSetDimensionMethodItem {
    std::int32_t methodKind = 0;
    float firstValue = 0.0F;
    float secondValue = 0.0F;

    friend bool operator==(const DataSetDimensionMethodItem&, const DataSetDimensionMethodItem&) = default;
};

/// A fitting of a connection series, as its getters lend it.
struct ITolmProjectSettingFittingComponentConst {
    FittingPartType fittingPartType = FittingPartType::Undefined;
    RoutingPreferenceRuleGroupType routingGroup = RoutingPreferenceRuleGroupType::Undefined;
    double firstSizeBound = 0.0;
    double secondSizeBound = 0.0;
    const ITolmProjectSettingComponent* m_pComponent = nullptr; ///< owned by the series
};

/// Which system types a host wants back although the cloud removed them.
struct RecoverDataInfo {
    bool recovered = false;           ///< set when at least one was taken back in
    std::map<wstring, wstring> idMap; ///< keys: the wanted record ids; the values are the host's own
};

} // namespace tolm
