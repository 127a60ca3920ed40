#pragma once

#include "MepDataSetInterface/RecordTestSupport.h"
#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"

#include <optional>
#include <vector>

/// Records as plain values: to be made at random, built as records, read back and compared.
namespace tolmtest {

using std::wstring;

/// The five fields of a material or a group.
struct NamedTree {
    wstring id;
    wstring name;
    tolm::TolmProjectSettingMEPObjectType type{};
    tolm::MEPDisciplineId discipline{};
    __int64 createTime = 0;
    bool operator==(const NamedTree&) const = default;
};

struct SizeTree {
    NamedTree named;
    double roughness = 0.0;
    tolm::SectionType ductShape{};
    tolm::CableTrayShape trayShape{};
    tolm::PressureGrade pressureGrade{};
    wstring cableSpecTypeName;
    tolm::CableMaterial cableMaterial{};
    tolm::EnvironmentTemperature temperature{};
    std::optional<NamedTree> material;
    std::vector<tolm::ProjectSettingPipeSize> pipes;
    std::vector<tolm::ProjectSettingDuctSize> ducts;
    std::vector<tolm::ProjectSettingCableSpec> cables;
    bool operator==(const SizeTree&) const = default;
};

struct FittingTree {
    tolm::FittingPartType partType{};
    tolm::RoutingPreferenceRuleGroupType routingGroup{};
    double firstSizeBound = 0.0;
    double secondSizeBound = 0.0;
    std::optional<wstring> componentId;
    bool operator==(const FittingTree&) const = default;
};

struct ConnectionTree {
    wstring id;
    wstring name;
    tolm::MEPConnectorType connectionType{};
    tolm::TolmProjectSettingMEPObjectType objectType{};
    std::vector<FittingTree> fittings;
    bool operator==(const ConnectionTree&) const = default;
};

struct SerieTree {
    NamedTree named;
    tolm::PreferredJunctionType junctionType{};
    double minSize = 0.0;
    double maxSize = 0.0;
    std::optional<NamedTree> group;
    std::optional<SizeTree> sizes;
    std::optional<ConnectionTree> connection;
    bool operator==(const SerieTree&) const = default;
};

/// The type first: in a size module it sets the discipline.
template <class Record> void SetNamed(Record& record, NamedTree tree) {
    record.SetId(tree.id);
    record.SetName(tree.name);
    record.SetMEPType(tree.type);
    record.SetDisciplineId(tree.discipline);
    record.SetCreateTime(tree.createTime);
}

template <class Record> NamedTree ReadNamed(const Record& record) {
    return {record.GetId(), record.GetName(), record.GetMEPType(), record.GetDisciplineId(), record.GetCreateTime()};
}

template <class Record> vorn::OwnerPtr<Record> BuildNamed(const NamedTree& tree) {
    auto record = Record::Create();
    SetNamed(*record, tree);
    return record;
}

inline vorn::OwnerPtr<tolm::IProjectSettingSizeModule> Build(SizeTree tree) {
    auto module = BuildNamed<tolm::IProjectSettingSizeModule>(tree.named);
    module->SetRoughness(tree.roughness);
    module->SetDuctShape(tree.ductShape);
    module->SetCableTrayShape(tree.trayShape);
    module->SetPressureGrade(tree.pressureGrade);
    module->SetCableSpecTypeName(tree.cableSpecTypeName);
    module->SetCableMaterial(tree.cableMaterial);
    module->SetCableEnvironmentTemperature(tree.temperature);
    if (tree.material)
        module->SetMaterial(BuildNamed<tolm::IProjectSettingMaterial>(*tree.material));
    for (const auto& size : tree.pipes)
        module->AddPipeSize(size);
    for (const auto& size : tree.ducts)
        module->AddDuctSize(size);
    for (const auto& spec : tree.cables)
        module->AddCableSpecification(spec);
    return module;
}

inline SizeTree Read(const tolm::IProjectSettingSizeModule& module) {
    SizeTree tree{ReadNamed(module),
                  module.GetRoughness(),
                  module.GetDuctShape(),
                  module.GetCableTrayShape(),
                  module.GetPressureGrade(),
                  module.GetCableSpecTypeName(),
                  module.GetCableMaterial(),
                  module.GetCableEnvironmentTemperature(),
                  std::nullopt,
                  module.GetPipeSizeList(),
                  module.GetDuctSizeList(),
                  module.GetCableSpecificationList()};
    if (const auto* material = module.GetMaterial())
        tree.material = ReadNamed(*material);
    return tree;
}

inline vorn::OwnerPtr<tolm::IProjectSettingConnectionSerie> Build(ConnectionTree tree) {
    auto serie = tolm::IProjectSettingConnectionSerie::Create();
    serie->SetId(tree.id);
    serie->SetName(tree.name);
    serie->SetConnectionType(tree.connectionType);
    serie->SetObjectType(tree.objectType);
    for (const auto& fitting : tree.fittings) {
        vorn::OwnerPtr<tolm::ITolmProjectSettingComponent> component;
        if (fitting.componentId)
            component = CountedComponent::Make(*fitting.componentId);
        serie->AddFitting(fitting.partType, fitting.routingGroup, component, fitting.firstSizeBound,
                          fitting.secondSizeBound);
    }
    return serie;
}

inline ConnectionTree Read(const tolm::IProjectSettingConnectionSerie& serie) {
    ConnectionTree tree{serie.GetId(), serie.GetName(), serie.GetConnectionType(), serie.GetObjectType(), {}};
    for (const auto& product : serie.GetProducts()) {
        tree.fittings.push_back({product.fittingPartType, product.routingGroup, product.firstSizeBound,
                                 product.secondSizeBound, std::nullopt});
        if (product.m_pComponent != nullptr)
            tree.fittings.back().componentId = product.m_pComponent->GetId();
    }
    return tree;
}

inline vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerie> Build(const SerieTree& tree) {
    auto serie = BuildNamed<tolm::IProjectSettingMEPMaterialSerie>(tree.named);
    serie->SetJunctionType(tree.junctionType);
    serie->SetMinSize(tree.minSize);
    serie->SetMaxSize(tree.maxSize);
    if (tree.group)
        serie->SetSerieGroup(BuildNamed<tolm::IProjectSettingMEPMaterialSerieGroup>(*tree.group));
    if (tree.sizes) {
        auto module = Build(*tree.sizes);
        serie->SetSizeModule(module);
    }
    if (tree.connection) {
        auto connection = Build(*tree.connection);
        serie->SetConnectionSerie(connection);
    }
    return serie;
}

inline SerieTree Read(const tolm::IProjectSettingMEPMaterialSerie& serie) {
    SerieTree tree{ReadNamed(serie), serie.GetJunctionType(), serie.GetMinSize(), serie.GetMaxSize(), {}, {}, {}};
    if (const auto* group = serie.GetSerieGroup())
        tree.group = ReadNamed(*group);
    if (const auto* module = serie.GetSizeModule())
        tree.sizes = Read(*module);
    if (const auto* connection = serie.GetConnectionSerie())
        tree.connection = Read(*connection);
    return tree;
}

} // namespace tolmtest
