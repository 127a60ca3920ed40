#pragma once

#include "TolmDataSet/MepEnums.h"

#include <algorithm>
#include <array>

namespace tolm {

enum class TableKind { SystemTypes, Connections, SizeModules, Materials, Series, CircuitTemplates };

/// What one table id selects.
struct TableSlice {
    TolmProjectSettingTableId id;
    TableKind table;
    TolmProjectSettingMEPObjectType objectType; ///< none for connections and circuit templates
    MEPDisciplineId discipline;                 ///< the same
    MEPConnectorType connectorType;             ///< of connections only
    bool byGetter;                              ///< the dataset's getter of the table takes the id
};

namespace slices {

using Id = TolmProjectSettingTableId;
using Type = TolmProjectSettingMEPObjectType;
using enum MEPDisciplineId;

constexpr TableSlice Row(Id id, TableKind table, Type type, MEPDisciplineId discipline, bool byGetter = true) {
    return {id, table, type, discipline, MEPConnectorType{}, byGetter};
}

constexpr TableSlice Row(Id id, MEPConnectorType connectorType) {
    return {id, TableKind::Connections, Type{}, MEPDisciplineId::None, connectorType, true};
}

} // namespace slices

/// Every table id with a meaning. The HVAC pipe sizes and materials are reached through a collection alone.
inline constexpr std::array<TableSlice, 30> kTableSlices{
    slices::Row(slices::Id::PlumbingPipeSystemTypes, TableKind::SystemTypes, slices::Type::Pipe, slices::Plumbing),
    slices::Row(slices::Id::DuctSystemTypes, TableKind::SystemTypes, slices::Type::Duct, slices::HVAC),
    slices::Row(slices::Id::HVACPipeSystemTypes, TableKind::SystemTypes, slices::Type::Pipe, slices::HVAC),
    slices::Row(slices::Id::ElectricalSystemTypes, TableKind::SystemTypes, slices::Type::ElectricalSystem,
                slices::Electrical),
    slices::Row(slices::Id::PlumbingPipeSizes, TableKind::SizeModules, slices::Type::Pipe, slices::Plumbing),
    slices::Row(slices::Id::DuctSizes, TableKind::SizeModules, slices::Type::Duct, slices::HVAC),
    slices::Row(slices::Id::CableTraySizes, TableKind::SizeModules, slices::Type::CableTray, slices::Electrical),
    slices::Row(slices::Id::ConduitSizes, TableKind::SizeModules, slices::Type::Conduit, slices::Electrical),
    slices::Row(slices::Id::WireSizes, TableKind::SizeModules, slices::Type::Wire, slices::Electrical),
    slices::Row(slices::Id::HVACPipeSizes, TableKind::SizeModules, slices::Type::Pipe, slices::HVAC, false),
    slices::Row(slices::Id::PipeThreadedConnections, MEPConnectorType::PipeThreaded),
    slices::Row(slices::Id::PipeWeldedConnections, MEPConnectorType::PipeWelded),
    slices::Row(slices::Id::PipeFlangedConnections, MEPConnectorType::PipeFlanged),
    slices::Row(slices::Id::PipeGroovedConnections, MEPConnectorType::PipeGrooved),
    slices::Row(slices::Id::PipeSocketConnections, MEPConnectorType::PipeSocket),
    slices::Row(slices::Id::DuctConnections, MEPConnectorType::Duct),
    slices::Row(slices::Id::CableTrayConnections, MEPConnectorType::CableTray),
    slices::Row(slices::Id::CableTrayAlternativeConnections, MEPConnectorType::CableTrayAlternative),
    slices::Row(slices::Id::ConduitConnections, MEPConnectorType::Conduit),
    slices::Row(slices::Id::PlumbingPipeSeries, TableKind::Series, slices::Type::Pipe, slices::Plumbing),
    slices::Row(slices::Id::DuctSeries, TableKind::Series, slices::Type::Duct, slices::HVAC),
    slices::Row(slices::Id::CableTraySeries, TableKind::Series, slices::Type::CableTray, slices::Electrical),
    slices::Row(slices::Id::ConduitSeries, TableKind::Series, slices::Type::Conduit, slices::Electrical),
    slices::Row(slices::Id::HVACPipeSeries, TableKind::Series, slices::Type::Pipe, slices::HVAC),
    slices::Row(slices::Id::PlumbingPipeMaterials, TableKind::Materials, slices::Type::Pipe, slices::Plumbing),
    slices::Row(slices::Id::DuctMaterials, TableKind::Materials, slices::Type::Duct, slices::HVAC),
    slices::Row(slices::Id::CableTrayMaterials, TableKind::Materials, slices::Type::CableTray, slices::Electrical),
    slices::Row(slices::Id::ConduitMaterials, TableKind::Materials, slices::Type::Conduit, slices::Electrical),
    slices::Row(slices::Id::HVACPipeMaterials, TableKind::Materials, slices::Type::Pipe, slices::HVAC, false),
    slices::Row(slices::Id::CircuitTemplates, TableKind::CircuitTemplates, slices::Type{}, slices::None, false),
};

/// What the id selects; null for an id without a meaning.
constexpr const TableSlice* FindSlice(TolmProjectSettingTableId id) {
    const auto* found = std::ranges::find(kTableSlices, id, &TableSlice::id);
    return found != kTableSlices.end() ? &*found : nullptr;
}

/// The same for the ids of one table alone.
constexpr const TableSlice* FindSlice(TolmProjectSettingTableId id, TableKind table) {
    const TableSlice* slice = FindSlice(id);
    return slice != nullptr && slice->table == table ? slice : nullptr;
}

} // namespace tolm
