#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/FileHeader.h"
#include "MepDatabase/Fittings.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"
#include "Vorn/DebugMessage.h"

#include <algorithm>

namespace tolm {
namespace {

/// The name of the current record; a missing one leaves `name`.
void ReadName(CQbase& qb, wstring& name) {
    CWsz text;
    if (qb.getWsz(schema::kName, text, 1))
        name = text.str();
}

/// Finds a system type of this type and discipline that lists the id in the attribute.
bool FindSystemType(CQbase& qb, MEPDisciplineId disciplineId, int mepType, short attributeId, const wstring& id,
                    wstring& referrerName) {
    qb.setFilter(schema::kDisciplineId, "=", ToShort(disciplineId));
    qb.setFilter(schema::kMEPType, "=", ToShort(mepType));
    for (bool more = qb.fetchFirstMember(schema::kSystemType); more; more = qb.fetchNextMember()) {
        const std::vector<wstring> ids = ReadIdList(qb, attributeId);
        if (std::find(ids.begin(), ids.end(), id) != ids.end()) {
            ReadName(qb, referrerName);
            return true;
        }
    }
    return false;
}

/// An electrical system type carries the cables' object type plus one.
bool FindSystemTypeOfCable(CQbase& qb, const IProjectSettingSizeModule& module, wstring& referrerName) {
    return FindSystemType(qb, module.GetDisciplineId(), static_cast<int>(module.GetMEPType()) + 1,
                          schema::kCableSpecTypeIds, module.GetId(), referrerName);
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

/// Systems refer to series of pipes and ducts only.
bool MayBeReferred(const IProjectSettingMEPMaterialSerie& serie) {
    return serie.GetMEPType() == TolmProjectSettingMEPObjectType::Pipe ||
           serie.GetMEPType() == TolmProjectSettingMEPObjectType::Duct;
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

bool MepQbaseUtil::IsTheMEPMaterialSeireReferred(wstring filePath, wstring ddqFilePath,
                                                 const IProjectSettingMEPMaterialSerie* pSerie, wstring& referrerName) {
    if (pSerie == nullptr) {
        VORN_DEBUG_WARN(L"pSerie为空");
        return false;
    }
    if (!MayBeReferred(*pSerie))
        return false;
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change))
        return false;
    store->resetFilters();
    const bool found = FindSystemType(*store, pSerie->GetDisciplineId(), static_cast<int>(pSerie->GetMEPType()),
                                      schema::kMaterialSerieIds, pSerie->GetId(), referrerName);
    store.Close();
    return found;
}

bool MepQbaseUtil::ReplaceFittingComponentId(wstring filePath, wstring ddqFilePath,
                                             std::map<wstring, wstring> componentIds) {
    if (componentIds.empty())
        return false;
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change))
        return false;
    for (bool more = store->fetchFirstMember(schema::kConnectionSerie); more; more = store->fetchNextMember())
        ReplaceComponentIds(*store, componentIds);
    StampTimePoint(*store);
    return store.Close();
}

} // namespace tolm
