#include "MepDatabase/MaterialCache.h"

#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/RecordFactory.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"

namespace tolm {
namespace {

void CopyMaterial(const IProjectSettingMaterial& from, IProjectSettingMaterial& to) {
    wstring id = from.GetId();
    wstring name = from.GetName();
    to.SetId(id);
    to.SetName(name);
    to.SetMEPType(from.GetMEPType());
    to.SetDisciplineId(from.GetDisciplineId());
    to.SetCreateTime(from.GetCreateTime());
}

/// False when the record could not be made; an id that the store does not have leaves `material` empty.
bool ReadMaterialOfModule(CQbase& qb, const wstring& id, vorn::OwnerPtr<IProjectSettingMaterial>& material) {
    const wstring moduleId = CurrentId(qb);
    if (!qb.fetchEqualRec(schema::kMaterial, id))
        return true;
    material = MakeMaterial();
    if (material != nullptr) {
        ReadId(qb, *material);
        ReadAttributes(qb, *material, MaterialAttributes());
    }
    qb.fetchEqualRec(schema::kSizeModule, moduleId);
    return material != nullptr;
}

} // namespace

bool MaterialCache::GiveTo(CQbase& qb, const wstring& materialId, IProjectSettingSizeModule& module) {
    const auto [at, isNew] = m_materials.try_emplace(materialId);
    if (isNew && !ReadMaterialOfModule(qb, materialId, at->second)) {
        m_materials.erase(at);
        return false;
    }
    if (at->second == nullptr)
        return true;
    auto copy = MakeMaterial();
    if (copy == nullptr)
        return false;
    CopyMaterial(*at->second, *copy);
    module.SetMaterial(std::move(copy));
    return true;
}

} // namespace tolm
