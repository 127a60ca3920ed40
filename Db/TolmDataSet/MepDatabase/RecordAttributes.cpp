#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/StoreSchema.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace tolm {
namespace {

using Material = IProjectSettingMaterial;
using SizeModule = IProjectSettingSizeModule;
using ConnectionSerie = IProjectSettingConnectionSerie;
using MaterialSerie = IProjectSettingMEPMaterialSerie;
using SerieGroup = IProjectSettingMEPMaterialSerieGroup;
using SystemType = IProjectSettingSystemType;
using Template = ITolmProjectSettingCircuitTemplate;
using Balancing = DataSetBalancingMethod;
using Insulation = DataSetInsulationSerie;
using Sizing = DataSetSizingMethod;

constexpr Attribute<Material> kMaterial[] = {
    attribute::Text<&Material::GetName, &Material::SetName>(schema::kName),
    attribute::Short<&Material::GetMEPType, &Material::SetMEPType>(schema::kMEPType),
    attribute::Short<&Material::GetDisciplineId, &Material::SetDisciplineId>(schema::kDisciplineId),
    attribute::Double<&Material::GetCreateTime, &Material::SetCreateTime>(schema::kCreateTime),
};

constexpr auto kDiscipline =
    attribute::Short<&SizeModule::GetDisciplineId, &SizeModule::SetDisciplineId>(schema::kDisciplineId);

// The discipline comes before the type, which has the last word on it.
constexpr Attribute<SizeModule> kSizeModule[] = {
    attribute::Text<&SizeModule::GetName, &SizeModule::SetName>(schema::kName),
    attribute::ReadOnly(kDiscipline),
    attribute::Short<&SizeModule::GetMEPType, &SizeModule::SetMEPType>(schema::kMEPType),
    attribute::Double<&SizeModule::GetCreateTime, &SizeModule::SetCreateTime>(schema::kCreateTime),
};

constexpr auto kPipeSizes =
    attribute::List<kPipeSizeLayout, &SizeModule::GetPipeSizeList, &SizeModule::AddPipeSize>(schema::kPipeSizeList);

/// A tray keeps the sizes alone, as floats.
void WriteTraySizes(CQbase& qb, short id, const SizeModule& module) {
    std::vector<float> sizes;
    for (const auto& size : module.GetDuctSizeList())
        sizes.push_back(size.size);
    if (sizes.empty())
        qb.removeAttribute(id);
    else
        qb.setFloatArray(id, sizes.data(), static_cast<int>(sizes.size()));
}

bool ReadTraySizes(CQbase& qb, short id, SizeModule& module) {
    CFloatArray sizes;
    if (!qb.getFloatArray(id, sizes))
        return true;
    for (int i = 0; i < sizes.length(); ++i)
        module.AddDuctSize({sizes.valueAt(i), 0.0F});
    return sizes.length() > 0;
}

constexpr Attribute<SizeModule> kPipe[] = {
    attribute::WriteOnly(kDiscipline),
    attribute::Double<&SizeModule::GetRoughness, &SizeModule::SetRoughness>(schema::kRoughness),
    kPipeSizes,
};

constexpr Attribute<SizeModule> kDuct[] = {
    attribute::Constant<SizeModule, 1>(schema::kDisciplineId),
    attribute::Short<&SizeModule::GetPressureGrade, &SizeModule::SetPressureGrade>(schema::kPressureGrade),
    attribute::Short<&SizeModule::GetDuctShape, &SizeModule::SetDuctShape>(schema::kDuctShape),
    attribute::List<kDuctSizeLayout, &SizeModule::GetDuctSizeList, &SizeModule::AddDuctSize>(schema::kDuctSizeList),
};

constexpr Attribute<SizeModule> kCableTray[] = {
    attribute::Constant<SizeModule, 3>(schema::kDisciplineId),
    attribute::Short<&SizeModule::GetCableTrayShape, &SizeModule::SetCableTrayShape>(schema::kCableTrayShape),
    {schema::kCableTraySizeList, &WriteTraySizes, &ReadTraySizes},
};

constexpr Attribute<SizeModule> kConduit[] = {
    attribute::Constant<SizeModule, 3>(schema::kDisciplineId),
    kPipeSizes,
};

constexpr Attribute<SizeModule> kWire[] = {
    attribute::Constant<SizeModule, 3>(schema::kDisciplineId),
    attribute::Text<&SizeModule::GetCableSpecTypeName, &SizeModule::SetCableSpecTypeName>(schema::kCableSpecTypeName),
    attribute::Short<&SizeModule::GetCableEnvironmentTemperature, &SizeModule::SetCableEnvironmentTemperature>(
        schema::kCableEnvironmentTemperature),
    attribute::Short<&SizeModule::GetCableMaterial, &SizeModule::SetCableMaterial>(schema::kCableMaterial),
    attribute::List<kCableSpecLayout, &SizeModule::GetCableSpecificationList, &SizeModule::AddCableSpecification>(
        schema::kCableSpecificationList),
};

template <auto Getter> std::size_t LengthOf(const SizeModule& module) {
    return (module.*Getter)().size();
}

constexpr SizeModuleKind kKinds[] = {
    {TolmProjectSettingMEPObjectType::Pipe, kPipe, true, L"PipeSizeList", &LengthOf<&SizeModule::GetPipeSizeList>},
    {TolmProjectSettingMEPObjectType::Duct, kDuct, true, L"DuctSizeList", &LengthOf<&SizeModule::GetDuctSizeList>},
    {TolmProjectSettingMEPObjectType::CableTray, kCableTray, false, L"CableTraySizeList",
     &LengthOf<&SizeModule::GetDuctSizeList>},
    {TolmProjectSettingMEPObjectType::Conduit, kConduit, false, L"PipeSizeList",
     &LengthOf<&SizeModule::GetPipeSizeList>},
    {TolmProjectSettingMEPObjectType::Wire, kWire, false, L"CableSpecificationList",
     &LengthOf<&SizeModule::GetCableSpecificationList>},
};

constexpr Attribute<ConnectionSerie> kConnectionSerie[] = {
    attribute::Text<&ConnectionSerie::GetName, &ConnectionSerie::SetName>(schema::kName),
    attribute::Short<&ConnectionSerie::GetConnectionType, &ConnectionSerie::SetConnectionType>(schema::kConnectionType),
    attribute::Short<&ConnectionSerie::GetObjectType, &ConnectionSerie::SetObjectType>(schema::kMEPType),
};

constexpr Attribute<MaterialSerie> kMaterialSerie[] = {
    attribute::Text<&MaterialSerie::GetName, &MaterialSerie::SetName>(schema::kName),
    attribute::Float<&MaterialSerie::GetMinSize, &MaterialSerie::SetMinSize>(schema::kMinSize),
    attribute::Float<&MaterialSerie::GetMaxSize, &MaterialSerie::SetMaxSize>(schema::kMaxSize),
    attribute::Short<&MaterialSerie::GetMEPType, &MaterialSerie::SetMEPType>(schema::kMEPType),
    attribute::Short<&MaterialSerie::GetDisciplineId, &MaterialSerie::SetDisciplineId>(schema::kDisciplineId),
    attribute::Double<&MaterialSerie::GetCreateTime, &MaterialSerie::SetCreateTime>(schema::kCreateTime),
    attribute::Short<&MaterialSerie::GetJunctionType, &MaterialSerie::SetJunctionType>(schema::kJunctionType),
};

constexpr Attribute<SerieGroup> kMaterialSerieGroup[] = {
    attribute::Text<&SerieGroup::GetName, &SerieGroup::SetName>(schema::kName),
    attribute::Short<&SerieGroup::GetMEPType, &SerieGroup::SetMEPType>(schema::kMEPType),
    attribute::Short<&SerieGroup::GetDisciplineId, &SerieGroup::SetDisciplineId>(schema::kDisciplineId),
    attribute::Double<&SerieGroup::GetCreateTime, &SerieGroup::SetCreateTime>(schema::kCreateTime),
};

constexpr Attribute<SystemType> kSystemType[] = {
    attribute::Text<&SystemType::GetName, &SystemType::SetName>(schema::kName),
    attribute::Text<&SystemType::GetCode, &SystemType::SetCode>(schema::kCode),
    attribute::Double<&SystemType::GetCreateTime, &SystemType::SetCreateTime>(schema::kCreateTime),
    attribute::Text<&SystemType::GetDescription, &SystemType::SetDescription>(schema::kDescription),
    attribute::Short<&SystemType::GetClassification, &SystemType::SetClassification>(schema::kSystemClassification),
    attribute::Short<&SystemType::GetDisciplineId, &SystemType::SetDisciplineId>(schema::kDisciplineId),
    attribute::Short<&SystemType::GetMEPType, &SystemType::SetMEPType>(schema::kMEPType),
};

/// A text of one of the positions of the switches, from 0.
template <auto Getter, auto Setter, int Position> constexpr Attribute<Template> SwitchText(short id) {
    return {id,
            [](CQbase& qb, short at, const Template& record) { qb.setWsz(at, (record.*Getter)(Position).c_str(), -1); },
            [](CQbase& qb, short at, Template& record) {
                CWsz text;
                if (qb.getWsz(at, text, 1))
                    (record.*Setter)(Position, text.str());
                return true;
            }};
}

template <int Position> constexpr Attribute<Template> SwitchId(short id) {
    return SwitchText<&Template::GetSwitchComponentId, &Template::SetSwitchComponentId, Position>(id);
}

template <int Position> constexpr Attribute<Template> SwitchType(short id) {
    return SwitchText<&Template::GetSwitchComponentTypeName, &Template::SetSwitchComponentTypeName, Position>(id);
}

constexpr Attribute<Template> kCircuitTemplate[] = {
    attribute::Short<&Template::GetSystemClassification, &Template::SetSystemClassification>(
        schema::kSystemClassification),
    attribute::Text<&Template::GetSystemTypeId, &Template::SetSystemTypeId>(schema::kSystemTypeId),
    SwitchId<0>(schema::kSwitchComponentId1),
    SwitchId<1>(schema::kSwitchComponentId2),
    SwitchId<2>(schema::kSwitchComponentId3),
    SwitchType<0>(schema::kSwitchComponentType1),
    SwitchType<1>(schema::kSwitchComponentType2),
    SwitchType<2>(schema::kSwitchComponentType3),
    attribute::Short<&Template::GetPhase, &Template::SetPhase>(schema::kPhase),
    attribute::Text<&Template::GetFireProtectionMaterial, &Template::SetFireProtectionnMaterial>(
        schema::kProtectionMaterial),
    attribute::Text<&Template::GetWireTypeId, &Template::SetWireTypeId>(schema::kWireTypeId),
    attribute::Text<&Template::GetWireSpec, &Template::SetWireSpec>(schema::kWireSpec),
    attribute::Text<&Template::GetWireCount, &Template::SetWireCount>(schema::kWireCountStr),
    attribute::Text<&Template::GetConduitTypeId, &Template::SetConduitTypeId>(schema::kConduitTypeId),
    attribute::Short<&Template::GetConduitSizeDn, &Template::SetConduitSizeDn>(schema::kConduitSizeDN),
    attribute::Short<&Template::GetIsApply, &Template::SetIsApply>(schema::kIsApply),
    attribute::Text<&Template::GetLayingMode, &Template::SetLayingMode>(schema::kLayingMode),
};

constexpr Attribute<Balancing> kBalancingMethod[] = {
    attribute::Text<&Balancing::GetName, &Balancing::SetName>(schema::kName),
    attribute::Text<&Balancing::GetDesc, &Balancing::SetDesc>(schema::kDescription),
    attribute::Flag<&Balancing::GetIsWarningNearRoot, &Balancing::SetIsWarningNearRoot>(schema::kIsWarningNearRoot),
    attribute::Float<&Balancing::GetDev1DpMin, &Balancing::SetDev1Min>(schema::kDev1DpMin),
    attribute::Float<&Balancing::GetDev1DpMax, &Balancing::SetDev1Max>(schema::kDev1DpMax),
    attribute::Float<&Balancing::GetDev2DpMin, &Balancing::SetDev2Min>(schema::kDev2DpMin),
    attribute::Float<&Balancing::GetDev2DpMax, &Balancing::SetDev2Max>(schema::kDev2DpMax),
    attribute::Short<&Balancing::GetThrottlingLimit1Min, &Balancing::SetThrottlingLimit1Min>(
        schema::kThrottlingLimit1Min),
    attribute::Short<&Balancing::GetThrottlingLimit1Max, &Balancing::SetThrottlingLimit1Max>(
        schema::kThrottlingLimit1Max),
    attribute::Short<&Balancing::GetThrottlingLimit2Min, &Balancing::SetThrottlingLimit2Min>(
        schema::kThrottlingLimit2Min),
    attribute::Short<&Balancing::GetThrottlingLimit2Max, &Balancing::SetThrottlingLimit2Max>(
        schema::kThrottlingLimit2Max),
};

// Every stored series would read otherwise if its rectangular sizes came back as such: they stay among the circular.
constexpr Attribute<Insulation> kInsulationSerie[] = {
    attribute::Text<&Insulation::GetCode, &Insulation::SetCode>(schema::kCode),
    attribute::Text<&Insulation::GetDescription, &Insulation::SetDescription>(schema::kName),
    attribute::WriteOnly(
        attribute::Short<&Insulation::GetInsulationType, &Insulation::SetInsulationType>(schema::kInsulationType)),
    attribute::WriteOnly(
        attribute::Short<&Insulation::GetDisciplineId, &Insulation::SetDisciplineType>(schema::kDisciplineId)),
    attribute::ReadOnly(attribute::Float<&Insulation::GetThermalConductivity, &Insulation::SetThermalConductivity>(
        schema::kThermalConductivity)),
    attribute::List<kCircularSizeLayout, &Insulation::GetCircularMaxSizes, &Insulation::AddCircularSize>(
        schema::kCircularMaxSizes),
    attribute::List<kRectSizeLayout, &Insulation::GetRectMaxSizes, &Insulation::AddCircularSize>(schema::kRectMaxSizes),
};

constexpr Attribute<Sizing> kSizingMethod[] = {
    attribute::Text<&Sizing::GetCode, &Sizing::SetCode>(schema::kCode),
    attribute::Text<&Sizing::GetDesc, &Sizing::SetDesc>(schema::kName),
    attribute::Short<&Sizing::GetKeepConnectTerminalSize, &Sizing::SetKeepConnectTerminalSize>(
        schema::kKeepConnectTerminalSize),
    attribute::Short<&Sizing::GetMethodType, &Sizing::SetMethodType>(schema::kMethodType),
    attribute::Short<&Sizing::GetUseStaticRegain, &Sizing::SetUseStaticRegain>(schema::kUseStaticRegain),
    attribute::Float<&Sizing::GetMinWPerHRatio, &Sizing::SetMinWPerHRatio>(schema::kMinWPerHRatio),
    attribute::List<kDimensionMethodLayout, &Sizing::GetDimensionMethods, &Sizing::AddDimensionMethod>(
        schema::kDimensionMethods),
};

} // namespace

AttributeTable<IProjectSettingMaterial> MaterialAttributes() {
    return kMaterial;
}

AttributeTable<IProjectSettingMaterial> NestedMaterialAttributes() {
    return MaterialAttributes().first(3);
}

AttributeTable<IProjectSettingSizeModule> SizeModuleAttributes() {
    return kSizeModule;
}

const SizeModuleKind* SizeModuleKindOf(TolmProjectSettingMEPObjectType type) {
    const auto* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [type](const SizeModuleKind& each) { return each.type == type; });
    return kind != std::end(kKinds) ? kind : nullptr;
}

AttributeTable<IProjectSettingConnectionSerie> ConnectionSerieAttributes() {
    return kConnectionSerie;
}

AttributeTable<IProjectSettingMEPMaterialSerie> MaterialSerieAttributes() {
    return kMaterialSerie;
}

AttributeTable<IProjectSettingMEPMaterialSerieGroup> MaterialSerieGroupAttributes() {
    return kMaterialSerieGroup;
}

AttributeTable<IProjectSettingMEPMaterialSerieGroup> NestedMaterialSerieGroupAttributes() {
    return MaterialSerieGroupAttributes().first(3);
}

AttributeTable<IProjectSettingSystemType> SystemTypeAttributes() {
    return kSystemType;
}

AttributeTable<ITolmProjectSettingCircuitTemplate> CircuitTemplateAttributes() {
    return kCircuitTemplate;
}

AttributeTable<DataSetBalancingMethod> BalancingMethodAttributes() {
    return kBalancingMethod;
}

AttributeTable<DataSetInsulationSerie> InsulationSerieAttributes() {
    return kInsulationSerie;
}

AttributeTable<DataSetSizingMethod> SizingMethodAttributes() {
    return kSizingMethod;
}

} // namespace tolm
