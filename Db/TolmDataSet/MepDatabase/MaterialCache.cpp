#include "MepDatabase/MaterialCache.h"

#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/RecordFactory.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"

#include <optional>
#include <utility>

namespace tolm {
namespace {

/// The material of this id, filled from the store; the module is the current record again afterwards. Nothing where the
/// store does not have it; an empty owner where the record could not be made.
std::optional<vorn::OwnerPtr<IProjectSettingMaterial>> ReadMaterialOfModule(CQbase& qb, const wstring& id) {
    const wstring moduleId = CurrentId(qb);
    if (!qb.fetchEqualRec(schema::kMaterial, id))
        return std::nullopt;
    auto material = MakeMaterial();
    if (material != nullptr) {
        ReadId(qb, *material);
        ReadAttributes(qb, *material, MaterialAttributes());
    }
    qb.fetchEqualRec(schema::kSizeModule, moduleId);
    return material;
}

} // namespace

MaterialCache::Known MaterialCache::KnownOf(const IProjectSettingMaterial& material) {
    return {true,
            material.GetId(),
            material.GetName(),
            material.GetMEPType(),
            material.GetDisciplineId(),
            material.GetCreateTime()};
}

vorn::OwnerPtr<IProjectSettingMaterial> MaterialCache::MadeOf(Known& known) {
    auto material = MakeMaterial();
    if (material == nullptr)
        return {};
    material->SetId(known.id);
    material->SetName(known.name);
    material->SetMEPType(known.mepType);
    material->SetDisciplineId(known.disciplineId);
    material->SetCreateTime(known.createTime);
    return material;
}

bool MaterialCache::GiveTo(CQbase& qb, const wstring& materialId, IProjectSettingSizeModule& module) {
    const auto at = m_materials.find(materialId);
    if (at == m_materials.end())
        return GiveNew(qb, materialId, module);
    if (!at->second.exists)
        return true;
    auto material = MadeOf(at->second);
    const bool isMade = material != nullptr;
    if (isMade)
        module.SetMaterial(std::move(material));
    return isMade;
}

bool MaterialCache::GiveNew(CQbase& qb, const wstring& materialId, IProjectSettingSizeModule& module) {
    auto material = ReadMaterialOfModule(qb, materialId);
    if (material && *material == nullptr)
        return false;
    m_materials.emplace(materialId, material ? KnownOf(**material) : Known{});
    if (material)
        module.SetMaterial(std::move(*material));
    return true;
}

} // namespace tolm
