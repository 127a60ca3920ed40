#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/MaterialCache.h"
#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/RecordFactory.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "TolmDataSet/IProjectSettingSizeModule.h"
#include "Vorn/DebugMessage.h"

#include <utility>

namespace tolm {
namespace {

/// What is wrong with a module whose list is too long to be stored; empty for all others.
wstring ListFault(const IProjectSettingSizeModule& module) {
    const SizeModuleKind* kind = SizeModuleKindOf(module.GetMEPType());
    return kind != nullptr ? PackedListFault(kind->listName, kind->listLength(module)) : wstring();
}

/// Stores the material of the current module, which is the current record again afterwards.
bool WriteMaterialOfModule(MepQbaseUtil& util, CQbase& qb, const IProjectSettingMaterial& material) {
    const wstring moduleId = CurrentId(qb);
    qb.setWsz(schema::kMaterialId, material.GetId().c_str(), -1);
    qb.saveRec();
    const bool written = util.write_materialserie_att(&qb, &material);
    return qb.fetchEqualRec(schema::kSizeModule, moduleId) && written;
}

} // namespace

bool MepQbaseUtil::ReadSizeModuleList(wstring filePath, wstring ddqFilePath, TolmProjectSettingMEPObjectType mepType,
                                      MEPDisciplineId disciplineId,
                                      std::vector<vorn::OwnerPtr<IProjectSettingSizeModule>>& list) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    store->setFilter(schema::kMEPType, "=", ToShort(mepType));
    store->setFilter(schema::kDisciplineId, "=", ToShort(disciplineId));
    MaterialCache materials;
    const auto read = [&](vorn::OwnerPtr<IProjectSettingSizeModule>& module) {
        module->SetMEPType(mepType);
        module->SetDisciplineId(disciplineId);
        return read_sizemodule_att(store.get(), module, materials);
    };
    store.ReadAll(schema::kSizeModule, L"ptempSize为空", &MakeSizeModule, read, list);
    return store.Close() && !list.empty();
}

bool MepQbaseUtil::ReadSizeModuleList(wstring filePath, wstring ddqFilePath, TolmProjectSettingMEPObjectType mepType,
                                      wstring materialId, vorn::OwnerPtr<IProjectSettingSizeModule>& module) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    store->setFilter(schema::kMEPType, "=", ToShort(mepType));
    store->setFilter(schema::kMaterialId, "=", materialId.c_str());
    vorn::OwnerPtr<IProjectSettingSizeModule> found;
    if (store->fetchFirstMember(schema::kSizeModule)) {
        found = MakeSizeModule();
        if (found == nullptr)
            VORN_DEBUG_WARN(L"ptempSize为空");
        else
            found->SetMEPType(mepType);
    }
    if (found == nullptr || !read_sizemodule_att(store.get(), found)) {
        VORN_DEBUG_WARN(L"retSizeModuleList为空");
        return false;
    }
    module = std::move(found);
    return store.Close() && !(module->GetPipeSizeList().empty() && module->GetDuctSizeList().empty());
}

bool MepQbaseUtil::WriteSizeModule(wstring filePath, wstring ddqFilePath, const IProjectSettingSizeModule* newSize) {
    if (newSize == nullptr) {
        VORN_DEBUG_WARN(L"newSize为空");
        return false;
    }
    if (const wstring fault = ListFault(*newSize); !fault.empty()) {
        VORN_DEBUG_WARN(fault);
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Write))
        return false;
    return store.WriteTracked(schema::kSizeModule, *newSize, [&](CQbase& qb) { write_sizemodule_att(&qb, newSize); });
}

bool MepQbaseUtil::DeleteSizeModuleList(wstring filePath, wstring ddqFilePath,
                                        std::vector<const IProjectSettingSizeModule*> sizeModuleList) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change))
        return false;
    return store.DeleteTracked(schema::kSizeModule, sizeModuleList, L"size为空");
}

bool MepQbaseUtil::read_sizemodule_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingSizeModule>& retSizeModule) {
    MaterialCache materials;
    return read_sizemodule_att(qb, retSizeModule, materials);
}

bool MepQbaseUtil::read_sizemodule_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingSizeModule>& retSizeModule,
                                       MaterialCache& materials) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (retSizeModule == nullptr) {
        VORN_DEBUG_WARN(L"retSizeModule为空");
        return false;
    }
    ReadId(*qb, *retSizeModule);
    ReadAttributes(*qb, *retSizeModule, SizeModuleAttributes());
    const SizeModuleKind* kind = SizeModuleKindOf(retSizeModule->GetMEPType());
    if (kind != nullptr && !ReadAttributes(*qb, *retSizeModule, kind->attributes))
        VORN_DEBUG_WARN(L"pSize为空");
    CWsz materialId;
    if (qb->getWsz(schema::kMaterialId, materialId, 1) && !materials.GiveTo(*qb, materialId.str(), *retSizeModule))
        VORN_DEBUG_WARN(L"pMaterial为空");
    return true;
}

bool MepQbaseUtil::write_sizemodule_att(CQbase* qb, const IProjectSettingSizeModule* sizeModule) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (sizeModule == nullptr) {
        VORN_DEBUG_WARN(L"sizeModule为空");
        return false;
    }
    if (const wstring fault = ListFault(*sizeModule); !fault.empty()) {
        VORN_DEBUG_WARN(fault);
        return false;
    }
    WriteAttributes(*qb, *sizeModule, SizeModuleAttributes());
    const SizeModuleKind* kind = SizeModuleKindOf(sizeModule->GetMEPType());
    if (kind == nullptr)
        return true;
    WriteAttributes(*qb, *sizeModule, kind->attributes);
    const IProjectSettingMaterial* material = kind->storesMaterial ? sizeModule->GetMaterial() : nullptr;
    return material == nullptr || WriteMaterialOfModule(*this, *qb, *material);
}

} // namespace tolm
