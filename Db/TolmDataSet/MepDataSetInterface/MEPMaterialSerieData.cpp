#include "Host/Definitions.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableLists.h"
#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"
#include "MepDatabase/MepQbaseUtil.h"

namespace tolm {

namespace {

/// Erases the first group with the identifier of the one at the position. A position without a group is reported for
/// each group that is compared with it.
void EraseLikeThatAt(RecordList<IProjectSettingMEPMaterialSerieGroup>& groups, std::size_t position,
                     const CallSite& site) {
    const auto* at = position < groups.size() ? groups[position].get() : nullptr;
    for (auto group = groups.begin(); group != groups.end(); ++group) {
        if (!*group) {
            site.Warn(L"(*iter)为空");
        } else if (at == nullptr) {
            site.Warn(L"m_serieGroupList[i]为空");
        } else if ((*group)->GetId() == at->GetId()) {
            groups.erase(group);
            return;
        }
    }
}

/// Cable tray and conduit series are filed under no groups.
bool HasGroups(const TableSlice& slice) {
    return slice.objectType == TolmProjectSettingMEPObjectType::Pipe ||
           slice.objectType == TolmProjectSettingMEPObjectType::Duct;
}

} // namespace

IMEPMaterialSerieData::~IMEPMaterialSerieData() = default;

vorn::OwnerPtr<IMEPMaterialSerieData> MEPMaterialSerieData::Create() {
    return ObjectMaker::Create<IMEPMaterialSerieData, MEPMaterialSerieData>();
}

MEPMaterialSerieData::~MEPMaterialSerieData() = default;

void MEPMaterialSerieData::reset() {
    m_serieList.clear();
    m_serieGroupList.clear();
}

std::vector<const IProjectSettingMEPMaterialSerie*> MEPMaterialSerieData::GetSerieList() const {
    return Lend(m_serieList, TOLM_CALL_SITE, L"m_serieList[i]为空");
}

std::vector<const IProjectSettingMEPMaterialSerieGroup*> MEPMaterialSerieData::GetSerieGroupList() const {
    return Lend(m_serieGroupList, TOLM_CALL_SITE, L"m_serieGroupList[i]为空");
}

void MEPMaterialSerieData::GetAndAddSerieById(wstring id) {
    vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> serie;
    MepQbaseUtil::GetInstance()->ReadMEPMaterialSerie(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                      m_componentFilePath, std::move(id), serie);
    if (serie)
        ReplaceOrAppend(m_serieList, std::move(serie), TOLM_CALL_SITE, L"(*iter)为空");
}

void MEPMaterialSerieData::AddSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> pSerie) {
    if (!pSerie) {
        VORN_DEBUG_WARN(L"pSerie为空");
        return;
    }
    AddSerieToDB(pSerie.get());
    ReplaceOrAppend(m_serieList, std::move(pSerie), TOLM_CALL_SITE, L"(*iter)为空");
}

void MEPMaterialSerieData::AddSerieToDB(const IProjectSettingMEPMaterialSerie* pSerie) {
    MepQbaseUtil::GetInstance()->WriteMEPMaterialSerie(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, pSerie);
}

void MEPMaterialSerieData::DeleteSerieList(std::vector<const IProjectSettingMEPMaterialSerie*> serieList) {
    MepQbaseUtil::GetInstance()->DeleteMEPMaterialSerieList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                            serieList);
    EraseById(m_serieList, serieList, TOLM_CALL_SITE, {L"serieList[i]为空", L"(*iter)为空"});
}

void MEPMaterialSerieData::AddSerieGroup(vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> pGroup) {
    if (!pGroup) {
        VORN_DEBUG_WARN(L"pGroup为空");
        return;
    }
    MepQbaseUtil::GetInstance()->WriteMEPMaterialSerieGroup(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                            pGroup.get());
    ReplaceOrAppend(m_serieGroupList, std::move(pGroup), TOLM_CALL_SITE, L"(*iter)为空");
}

void MEPMaterialSerieData::DeleteSerieGroupList(std::vector<const IProjectSettingMEPMaterialSerieGroup*> groupList) {
    MepQbaseUtil::GetInstance()->DeleteMEPMaterialSerieGroupList(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                                 groupList);
    for (std::size_t i = 0; i < groupList.size(); ++i) {
        if (groupList[i] == nullptr)
            VORN_DEBUG_WARN(L"groupList[i]为空");
        else
            EraseLikeThatAt(m_serieGroupList, i, TOLM_CALL_SITE);
    }
}

bool MEPMaterialSerieData::IsTheMEPMaterialSeireReferred(const IProjectSettingMEPMaterialSerie* pSerie,
                                                         wstring& referencingName) const {
    return MepQbaseUtil::GetInstance()->IsTheMEPMaterialSeireReferred(
        m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, pSerie, referencingName);
}

bool MEPMaterialSerieData::ReadSerieList(wstring datasetFilePath, wstring componentFilePath,
                                         TolmProjectSettingMEPObjectType objectType, MEPDisciplineId discipline,
                                         RecordList<IProjectSettingMEPMaterialSerie>& list) {
    return MepQbaseUtil::GetInstance()->ReadMEPMaterialSerieList(
        std::move(datasetFilePath), DataSetFilePath::TOLMDDQFilePath, std::move(componentFilePath), objectType,
        discipline, list);
}

bool MEPMaterialSerieData::ReadSerieGroupList(wstring datasetFilePath, TolmProjectSettingMEPObjectType objectType,
                                              MEPDisciplineId discipline,
                                              RecordList<IProjectSettingMEPMaterialSerieGroup>& list) {
    return MepQbaseUtil::GetInstance()->ReadMEPMaterialSerieGroupList(
        std::move(datasetFilePath), DataSetFilePath::TOLMDDQFilePath, objectType, discipline, list);
}

void MEPMaterialSerieData::CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                             TolmProjectSettingTableId tableId) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
    const TableSlice* slice = FindSlice(tableId, TableKind::Series);
    if (slice == nullptr)
        return;
    ReadSerieList(m_datasetFilePath, m_componentFilePath, slice->objectType, slice->discipline, m_serieList);
    if (HasGroups(*slice))
        ReadSerieGroupList(m_datasetFilePath, slice->objectType, slice->discipline, m_serieGroupList);
}

} // namespace tolm
