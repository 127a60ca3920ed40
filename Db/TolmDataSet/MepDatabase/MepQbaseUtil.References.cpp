#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "TolmDataSet/IProjectSettingSizeModule.h"
#include "Vorn/DebugMessage.h"

namespace tolm {
namespace {

/// The name of the current record; a missing one leaves `name`.
void ReadName(CQbase& qb, wstring& name) {
    CWsz text;
    if (qb.getWsz(schema::kName, text, 1))
        name = text.str();
}

/// An electrical system type carries the cables' object type plus one.
bool FindSystemTypeOfCable(CQbase& qb, const IProjectSettingSizeModule& module, wstring& referrerName) {
    qb.setFilter(schema::kDisciplineId, "=", ToShort(module.GetDisciplineId()));
    qb.setFilter(schema::kMEPType, "=", ToShort(static_cast<int>(module.GetMEPType()) + 1));
    const wstring id = module.GetId();
    for (bool more = qb.fetchFirstMember(schema::kSystemType); more; more = qb.fetchNextMember()) {
        CWszArray ids;
        if (qb.getWszArray(schema::kCableSpecTypeIds, ids, 100, -1) && ids.find(id.c_str()) >= 0) {
            ReadName(qb, referrerName);
            return true;
        }
    }
    return false;
}

bool FindSeriesOfSizeModule(CQbase& qb, const IProjectSettingSizeModule& module, wstring& referrerName) {
    qb.setFilter(schema::kMEPType, "=", ToShort(module.GetMEPType()));
    qb.setFilter(schema::kDisciplineId, "=", ToShort(module.GetDisciplineId()));
    qb.setFilter(schema::kSizeModuleId, "=", module.GetId().c_str());
    if (!qb.fetchFirstMember(schema::kMaterialSerie))
        return false;
    ReadName(qb, referrerName);
    return true;
}

} // namespace

bool MepQbaseUtil::IsTheSizeModuleReferred(wstring filePath, wstring ddqFilePath,
                                           const IProjectSettingSizeModule* pSizeModule, wstring& referrerName) {
    if (pSizeModule == nullptr) {
        VORN_DEBUG_WARN(L"pSizeModule为空");
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change))
        return false;
    store->resetFilters();
    const bool isCable = pSizeModule->GetMEPType() == TolmProjectSettingMEPObjectType::Wire;
    const bool found = isCable ? FindSystemTypeOfCable(*store, *pSizeModule, referrerName)
                               : FindSeriesOfSizeModule(*store, *pSizeModule, referrerName);
    store.Close();
    return found;
}

} // namespace tolm
