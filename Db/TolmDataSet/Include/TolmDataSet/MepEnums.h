#pragma once

#include "Host/HostTypes.h"
#include "Vorn/Integers.h"

#include <cstdint>
#include <string>

/// The vocabulary of the dataset. The numbers are stored in files and sent to the service, so they never change;
/// values beyond those named here pass through unchanged.
namespace tolm {

using std::wstring;

/// The kind of object that a setting belongs to.
enum class TolmProjectSettingMEPObjectType : std::int32_t {
    Pipe = 1,
    Duct = 2,
    CableTray = 3,
    Conduit = 4,
    Wire = 5,
    ElectricalSystem = 6, ///< object type of electrical system types only
};

/// One slice of the settings: a table narrowed to an object type and a discipline. 4, 5, 6, 8, 9 and 14 have no
/// meaning and are passed over wherever they appear.
enum class TolmProjectSettingTableId : std::int32_t {
    PlumbingPipeSystemTypes = 0,
    DuctSystemTypes = 1,
    HVACPipeSystemTypes = 2,
    ElectricalSystemTypes = 3,
    PlumbingPipeSizes = 7,
    DuctSizes = 10,
    CableTraySizes = 11,
    ConduitSizes = 12,
    WireSizes = 13,
    PipeThreadedConnections = 15,
    PipeWeldedConnections = 16,
    PipeFlangedConnections = 17,
    PipeGroovedConnections = 18,
    PipeSocketConnections = 19,
    DuctConnections = 20,
    CableTrayConnections = 21,
    CableTrayAlternativeConnections = 22,
    ConduitConnections = 23,
    PlumbingPipeSeries = 24,
    DuctSeries = 25,
    CableTraySeries = 26,
    ConduitSeries = 27,
    PlumbingPipeMaterials = 28,
    DuctMaterials = 29,
    CableTrayMaterials = 30,
    ConduitMaterials = 31,
    CircuitTemplates = 32,
    HVACPipeSizes = 33,
    HVACPipeSeries = 34,
    HVACPipeMaterials = 35,
};

/// Where the local dataset stands against the cloud.
enum class CompareVersionResult : std::int32_t {
    NotComparable = -1, ///< no session, the local version is ahead, or the cloud's could not be had
    Same = 0,           ///< equal and nothing changed locally; also: no working project
    CloudAhead = 1,     ///< nothing changed locally; also: the local dataset was never synchronised
    LocalChanges = 2,   ///< versions equal, local changes present
    BothChanged = 3,    ///< cloud ahead, local changes present
    CloudNotInitialised = 4,
};

/// Section of a duct. As a filter `None` passes everything.
enum class SectionType : std::int32_t { None = -1, Rectangular = 0, Round = 1, Oval = 2 };
/// Form of a cable tray; `None` is the answer of a series without a size table.
enum class CableTrayShape : std::int32_t { None = -1, Trough = 0, Ladder = 1, Perforated = 2, Mesh = 3 };
enum class CableMaterial : std::int32_t { Copper = 0, Aluminium = 1 };
/// Ambient temperature that a rated current holds for.
enum class EnvironmentTemperature : std::int32_t { Celsius25 = 0, Celsius30 = 1, Celsius35 = 2, Celsius40 = 3 };
enum class PressureGrade : std::int32_t { Micro = 0, High = 1, Low = 2, Medium = 3 };
enum class Phase : std::int32_t { Single = 0, L1 = 1, L2 = 2, L3 = 3, Three = 4 };
enum class PreferredJunctionType : std::int32_t { Tee = 0, Tap = 1 };

/// What a fitting is. The numbers are those of the routing groups that the service's rows use.
enum class FittingPartType : std::int32_t {
    Undefined = 0,
    Elbow = 1,
    Tee = 2,
    Cross = 3,
    Transition = 4,
    Union = 5,
    Cap = 6
};
/// Which routing rule a fitting serves.
enum class RoutingPreferenceRuleGroupType : std::int32_t {
    Undefined = 0,
    Elbows = 1,
    Tees = 2,
    Crosses = 3,
    Transitions = 4,
    Unions = 5,
    Caps = 6,
    RoundTransitions = 11,
    VerticalInsideBends = 21,
    VerticalOutsideBends = 22,
    VerticalLateralTees = 23,
    VerticalLateralElbows = 24,
    VerticalLeftLateralElbows = 26,
    VerticalRightLateralElbows = 27,
    VerticalDownwardTees = 28,
    VerticalUpwardTees = 29,
};

enum class TolmSizingMethodType : std::int32_t { Duct = 0, Pipe = 1 };
enum class TolmInsulationSerieType : std::int32_t { Duct = 0, Pipe = 1 };

} // namespace tolm
