#pragma once

#include "TolmDataSet/MepEnums.h"

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tolmtest {

enum class SettingKind { Material, Sizes, Group, Serie, System };

/// One table of settings as a host edits it, and where the service keeps its rows.
struct Slice {
    std::string_view word;
    SettingKind kind;
    tolm::TolmProjectSettingMEPObjectType type;
    tolm::MEPDisciplineId discipline;
    tolm::TolmProjectSettingTableId tableId; ///< what a host collects to see it
    std::string_view table;                  ///< of the service
    std::string_view group;                  ///< "groupName" of its rows, of "ConfigTree" alone
    std::string_view classCode;
};

namespace slices {
using Type = tolm::TolmProjectSettingMEPObjectType;
using Discipline = tolm::MEPDisciplineId;
using Id = tolm::TolmProjectSettingTableId;
using Kind = SettingKind;
} // namespace slices

inline constexpr std::array kSlices = [] {
    using namespace slices;
    constexpr std::string_view tree = "ConfigTree";
    return std::array{
        Slice{"pipe materials", Kind::Material, Type::Pipe, Discipline::Plumbing, Id::PlumbingPipeMaterials, tree,
              "MaterialSeries", "MTS"},
        Slice{"hvac materials", Kind::Material, Type::Pipe, Discipline::HVAC, Id::HVACPipeMaterials, tree,
              "HVACMaterialSeries", "MTS"},
        Slice{"pipe sizes", Kind::Sizes, Type::Pipe, Discipline::Plumbing, Id::PlumbingPipeSizes, tree,
              "MaterialSeries", "PSI"},
        Slice{"hvac sizes", Kind::Sizes, Type::Pipe, Discipline::HVAC, Id::HVACPipeSizes, tree, "HVACMaterialSeries",
              "PSI"},
        Slice{"duct sizes", Kind::Sizes, Type::Duct, Discipline::HVAC, Id::DuctSizes, tree, "ductSeriesType", "PSI"},
        Slice{"tray sizes", Kind::Sizes, Type::CableTray, Discipline::Electrical, Id::CableTraySizes, tree, "cableTray",
              "PSI"},
        Slice{"conduit sizes", Kind::Sizes, Type::Conduit, Discipline::Electrical, Id::ConduitSizes, tree,
              "electricLinePipe", "PSI"},
        Slice{"wire sizes", Kind::Sizes, Type::Wire, Discipline::Electrical, Id::WireSizes, tree, "electricWireType",
              "PSI"},
        Slice{"pipe groups", Kind::Group, Type::Pipe, Discipline::Plumbing, Id::PlumbingPipeSeries, tree,
              "pipeFittingGroup", "MSG"},
        Slice{"hvac groups", Kind::Group, Type::Pipe, Discipline::HVAC, Id::HVACPipeSeries, tree, "havcFittingGroup",
              "MSG"},
        Slice{"duct groups", Kind::Group, Type::Duct, Discipline::HVAC, Id::DuctSeries, tree, "ductFittingGroup",
              "MSG"},
        Slice{"pipe series", Kind::Serie, Type::Pipe, Discipline::Plumbing, Id::PlumbingPipeSeries, "PipeType", "",
              "SMS"},
        Slice{"hvac series", Kind::Serie, Type::Pipe, Discipline::HVAC, Id::HVACPipeSeries, "HVACPipeType", "", "SMS"},
        Slice{"duct series", Kind::Serie, Type::Duct, Discipline::HVAC, Id::DuctSeries, "DuctType", "", "SMS"},
        Slice{"conduit series", Kind::Serie, Type::Conduit, Discipline::Electrical, Id::ConduitSeries,
              "ConduitFittingsType", "", "SMS"},
        Slice{"tray series", Kind::Serie, Type::CableTray, Discipline::Electrical, Id::CableTraySeries,
              "CableTrayFittingsType", "", "SMS"},
        Slice{"pipe systems", Kind::System, Type::Pipe, Discipline::Plumbing, Id::PlumbingPipeSystemTypes,
              "PipeSystemType", "", "SYS"},
        Slice{"hvac systems", Kind::System, Type::Pipe, Discipline::HVAC, Id::HVACPipeSystemTypes, "HVACPipeSystemType",
              "", "SYS"},
        Slice{"duct systems", Kind::System, Type::Duct, Discipline::HVAC, Id::DuctSystemTypes, "DuctSystemType", "",
              "SYS"},
        Slice{"electrical systems", Kind::System, Type::ElectricalSystem, Discipline::Electrical,
              Id::ElectricalSystemTypes, "ElectricalSystemType", "", "SYS"},
    };
}();

inline const Slice& SliceOf(std::string_view word) {
    for (const Slice& slice : kSlices) {
        if (slice.word == word)
            return slice;
    }
    throw std::runtime_error("no slice " + std::string(word));
}

} // namespace tolmtest
