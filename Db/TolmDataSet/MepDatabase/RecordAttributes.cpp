#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/StoreSchema.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace tolm {
namespace {

using Material = IProjectSettingMaterial;
using SizeModule = IProjectSettingSizeModule;

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

} // namespace tolm
