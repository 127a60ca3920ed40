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

} // namespace tolm
