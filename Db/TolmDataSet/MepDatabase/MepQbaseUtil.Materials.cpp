#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/RecordFactory.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "TolmDataSet/IProjectSettingMaterial.h"
#include "Vorn/DebugMessage.h"

#include <utility>

namespace tolm {

bool MepQbaseUtil::ReadMaterialList(wstring filePath, wstring ddqFilePath, TolmProjectSettingMEPObjectType mepType,
                                    MEPDisciplineId disciplineId,
                                    std::vector<vorn::OwnerPtr<IProjectSettingMaterial>>& list) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    store->setFilter(schema::kMEPType, "=", ToShort(mepType));
    store->setFilter(schema::kDisciplineId, "=", ToShort(disciplineId));
    const auto read = [&](vorn::OwnerPtr<IProjectSettingMaterial>& material) {
        material->SetMEPType(mepType);
        material->SetDisciplineId(disciplineId);
        return read_materialserie_att(store.get(), material);
    };
    store.ReadAll(schema::kMaterial, L"ptempMaterial为空", &MakeMaterial, read, list);
    return store.Close() && !list.empty();
}

bool MepQbaseUtil::ReadMaterial(wstring filePath, wstring ddqFilePath, wstring id,
                                vorn::OwnerPtr<IProjectSettingMaterial>& material) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    if (store->fetchEqualRec(schema::kMaterial, id)) {
        auto read = MakeMaterial();
        if (read == nullptr)
            VORN_DEBUG_WARN(L"ptempMaterial为空");
        else if (read_materialserie_att(store.get(), read))
            material = std::move(read);
    }
    return store.Close();
}

bool MepQbaseUtil::WriteMaterial(wstring filePath, wstring ddqFilePath, const IProjectSettingMaterial* newMaterial) {
    if (newMaterial == nullptr) {
        VORN_DEBUG_WARN(L"newMaterial为空");
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Write))
        return false;
    return store.WriteTracked(schema::kMaterial, *newMaterial,
                              [newMaterial](CQbase& qb) { WriteAttributes(qb, *newMaterial, MaterialAttributes()); });
}

bool MepQbaseUtil::DeleteMaterialList(wstring filePath, wstring ddqFilePath,
                                      std::vector<const IProjectSettingMaterial*> materialList) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change))
        return false;
    return store.DeleteTracked(schema::kMaterial, materialList, L"material为空");
}

bool MepQbaseUtil::read_materialserie_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingMaterial>& retMaterial) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (retMaterial == nullptr) {
        VORN_DEBUG_WARN(L"retMaterial为空");
        return false;
    }
    ReadId(*qb, *retMaterial);
    ReadAttributes(*qb, *retMaterial, MaterialAttributes());
    return true;
}

bool MepQbaseUtil::write_materialserie_att(CQbase* qb, const IProjectSettingMaterial* pMaterial) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (pMaterial == nullptr) {
        VORN_DEBUG_WARN(L"pMaterial为空");
        return false;
    }
    const wstring id = pMaterial->GetId();
    const bool exists = qb->existRec(schema::kMaterial, id);
    if (!(exists ? qb->fetchEqualRec(schema::kMaterial, id) : qb->createRec(schema::kMaterial, id)))
        return false;
    WriteAttributes(*qb, *pMaterial, NestedMaterialAttributes());
    return qb->saveRec();
}

} // namespace tolm
