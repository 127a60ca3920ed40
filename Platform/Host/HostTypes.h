#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tolm {

/// Discipline of building services.
enum class MEPDisciplineId : std::int32_t { None = 0, HVAC = 1, Plumbing = 2, Electrical = 3 };

/// How two pieces are joined; each value belongs to one object type.
enum class MEPConnectorType : std::int32_t {
    PipeThreaded = 1,
    PipeWelded = 2,
    PipeFlanged = 3,
    PipeGrooved = 4,
    PipeSocket = 5,
    Duct = 11,
    CableTray = 21,
    CableTrayAlternative = 22,
    Conduit = 31,
};

/// Class of a system within its discipline; the host's definitions give the values and names.
enum class MEPSystemClassification : std::int32_t { DefaultPipeSystem = 21, DefaultCircuit = 41 };

/// One catalogue component that a combined product is made of.
struct TolmComponentReference {
    std::wstring categoryStandardCode;
    std::wstring componentId;
    std::wstring componentTypeId;
    std::wstring categoryName;        ///< first of the two names that the category's info gives
    std::wstring categoryEnglishName; ///< second of them

    friend bool operator==(const TolmComponentReference&, const TolmComponentReference&) = default;
};

/// A composite of catalogue components. The list form ("16353515", "16302510") uses `spacing` and `components`, the
/// equipment form ("16352020", "16352030") the equipment, the terminals and the fields behind them.
/// Lengths and distances are in millimetres.
struct TolmCombinedProduct {
    std::wstring categoryCode;
    std::wstring Id;
    std::wstring Name;

    std::int32_t spacing = 0;
    std::vector<TolmComponentReference> components;

    TolmComponentReference equipment;
    TolmComponentReference supplyAirTerminal;
    TolmComponentReference returnAirTerminal;
    std::wstring supplySystemTypeId;
    double supplyHoseLength = 0.0;
    std::int32_t supplyAirTerminalNumber = 0;
    double supplyAirTerminalDist1 = 0.0;
    double supplyAirTerminalDist2 = 0.0;
    std::wstring supplyDuctTypeId;
    std::wstring returnSystemTypeId;
    std::wstring returnDuctTypeId;
    double returnHoseLength = 0.0;

    friend bool operator==(const TolmCombinedProduct&, const TolmCombinedProduct&) = default;
};

} // namespace tolm
