#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/RecordFactory.h"
#include "MepDatabase/SharedReads.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "Vorn/DebugMessage.h"

#include <algorithm>
#include <utility>

namespace tolm {
namespace {

using SystemTypePtr = vorn::OwnerPtr<IProjectSettingSystemType>;
using SeriePtr = vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>;
using SizeModulePtr = vorn::OwnerPtr<IProjectSettingSizeModule>;

/// Filters by numbers as the callers of all system-type reads give them.
template <class Discipline, class Type> void FilterBy(CQbase& qb, Discipline disciplineId, Type mepType) {
    qb.resetFilters();
    qb.setFilter(schema::kDisciplineId, "=", ToShort(disciplineId));
    qb.setFilter(schema::kMEPType, "=", ToShort(mepType));
}

/// Id and name of each system type that passes the filters; those without a name are left out.
std::map<wstring, wstring> ReadNames(CQbase& qb) {
    std::map<wstring, wstring> names;
    for (bool more = qb.fetchFirstMember(schema::kSystemType); more; more = qb.fetchNextMember()) {
        CWsz name;
        if (qb.getWsz(schema::kName, name, 1))
            names.emplace(CurrentId(qb), name.str());
    }
    return names;
}

constexpr wchar_t ToUpper(wchar_t c) {
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
}

constexpr wchar_t ToLower(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

wstring WithEach(wstring text, wchar_t (*change)(wchar_t)) {
    std::transform(text.begin(), text.end(), text.begin(), change);
    return text;
}

/// Ids are compared exactly, but the service gives them in either case.
bool FetchInEitherCase(CQbase& qb, const wstring& id) {
    return qb.fetchEqualRec(schema::kSystemType, WithEach(id, &ToUpper)) ||
           qb.fetchEqualRec(schema::kSystemType, WithEach(id, &ToLower));
}

/// The ids of the records that the current system type refers to, without empty ones.
std::vector<wstring> ReadReferences(CQbase& qb) {
    std::vector<wstring> ids = ReadIdList(qb, schema::kMaterialSerieIds);
    const std::vector<wstring> cables = ReadIdList(qb, schema::kCableSpecTypeIds);
    ids.insert(ids.end(), cables.begin(), cables.end());
    std::erase(ids, wstring());
    return ids;
}

CWszArray SerieIds(const IProjectSettingSystemType& systemType) {
    CWszArray ids;
    for (const IProjectSettingMEPMaterialSerie* serie : systemType.GetSystemMaterialSerieList())
        if (serie != nullptr)
            ids.append(serie->GetId());
    return ids;
}

/// False when one of the cable tables is missing.
bool CollectCableIds(const IProjectSettingSystemType& systemType, CWszArray& ids) {
    for (const auto& [name, cable] : systemType.GetCableSpecTypeList()) {
        if (cable == nullptr)
            return false;
        ids.append(cable->GetId());
    }
    return true;
}

void WriteReferences(CQbase& qb, const CWszArray& serieIds, const CWszArray& cableIds) {
    if (serieIds.length() == 0)
        qb.removeAttribute(schema::kMaterialSerieIds);
    else
        qb.setWszArray(schema::kMaterialSerieIds, serieIds, -1);
    qb.setWszArray(schema::kCableSpecTypeIds, cableIds, -1);
}

/// Type and discipline of the deletion are those that the store has, whatever the object says.
void DeleteStored(StoreFrame& store, const wstring& id) {
    if (!store->existRec(schema::kSystemType, id) || !store->fetchEqualRec(schema::kSystemType, id))
        return;
    short mepType = 0;
    short disciplineId = 0;
    store->getShort(schema::kMEPType, mepType);
    store->getShort(schema::kDisciplineId, disciplineId);
    if (store->deleteRec(schema::kSystemType, id))
        store.Track({schema::kSystemType, id, static_cast<std::int32_t>(ChangeStatus::Removed), mepType, disciplineId});
}

} // namespace

bool MepQbaseUtil::ReadSystemType(wstring filePath, wstring ddqFilePath, wstring componentFilePath, wstring id,
                                  SystemTypePtr& systemType) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    SharedReads reads(std::move(componentFilePath));
    SystemTypePtr found =
        ReadOne(*store, schema::kSystemType, id, TOLM_CALL_SITE, L"pTempSystemType为空", &MakeSystemType,
                [&](SystemTypePtr& made) { return read_system_type_att(store.get(), made, reads); });
    if (!store.Close() || found == nullptr)
        return false;
    systemType = std::move(found);
    return true;
}

bool MepQbaseUtil::ReadSystemTypeList(wstring filePath, wstring ddqFilePath, wstring componentFilePath,
                                      MEPDisciplineId disciplineId, TolmProjectSettingMEPObjectType mepType,
                                      std::vector<SystemTypePtr>& list) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    FilterBy(*store, disciplineId, mepType);
    SharedReads reads(std::move(componentFilePath));
    const auto read = [&](SystemTypePtr& systemType) { return read_system_type_att(store.get(), systemType, reads); };
    store.ReadAll(schema::kSystemType, L"ptempSystem为空", &MakeSystemType, read, list);
    return store.Close() && !list.empty();
}

bool MepQbaseUtil::ReadSystemTypeNameIds(wstring filePath, wstring ddqFilePath, std::vector<int> discipTypes,
                                         std::vector<int> objTypes, std::vector<std::map<wstring, wstring>>& result) {
    if (discipTypes.size() != objTypes.size()) {
        VORN_DEBUG_WARN(L"discipTypes.size()和objTypes.size()不相等");
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    for (std::size_t i = 0; i < discipTypes.size(); ++i) {
        FilterBy(*store, discipTypes[i], objTypes[i]);
        result.push_back(ReadNames(*store));
    }
    return store.Close();
}

bool MepQbaseUtil::ReadMEPSerieRecordGuidListOfSystemType(wstring filePath, wstring ddqFilePath,
                                                          std::vector<wstring> systemTypeIds,
                                                          std::map<wstring, std::vector<wstring>>& result) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    for (const wstring& id : systemTypeIds) {
        if (id.empty() || !FetchInEitherCase(*store, id))
            continue;
        std::vector<wstring> references = ReadReferences(*store);
        if (!references.empty())
            result[id] = std::move(references);
    }
    return store.Close() && !result.empty();
}

bool MepQbaseUtil::WriteSystemType(wstring filePath, wstring ddqFilePath, const IProjectSettingSystemType* newSystem) {
    if (newSystem == nullptr) {
        VORN_DEBUG_WARN(L"newSystem为空");
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Write))
        return false;
    CWszArray cableIds;
    if (!CollectCableIds(*newSystem, cableIds)) {
        VORN_DEBUG_WARN(L"it->second为空");
        return false;
    }
    return store.WriteTracked(schema::kSystemType, *newSystem, [&](CQbase& qb) {
        WriteAttributes(qb, *newSystem, SystemTypeAttributes());
        WriteReferences(qb, SerieIds(*newSystem), cableIds);
    });
}

bool MepQbaseUtil::DeleteSystemTypeList(wstring filePath, wstring ddqFilePath,
                                        std::vector<const IProjectSettingSystemType*> systemTypeList) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change))
        return false;
    for (const IProjectSettingSystemType* systemType : systemTypeList) {
        if (systemType == nullptr)
            VORN_DEBUG_WARN(L"systemType为空");
        else
            DeleteStored(store, systemType->GetId());
    }
    return store.Close();
}

bool MepQbaseUtil::DoesSystemTypeRecordExist(wstring filePath, wstring ddqFilePath, wstring id) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    const bool exists = store->existRec(schema::kSystemType, id);
    return store.Close() && exists;
}

bool MepQbaseUtil::read_system_type_att(CQbase* qb, wstring componentFilePath, SystemTypePtr& retSystemType) {
    SharedReads reads(std::move(componentFilePath));
    return read_system_type_att(qb, retSystemType, reads);
}

bool MepQbaseUtil::read_system_type_att(CQbase* qb, SystemTypePtr& retSystemType, SharedReads& reads) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (retSystemType == nullptr) {
        VORN_DEBUG_WARN(L"retSystemType为空");
        return false;
    }
    const CallSite site = TOLM_CALL_SITE;
    const wstring ownId = CurrentId(*qb);
    ReadId(*qb, *retSystemType);
    ReadAttributes(*qb, *retSystemType, SystemTypeAttributes());
    const std::vector<wstring> serieIds = ReadIdList(*qb, schema::kMaterialSerieIds);
    const std::vector<wstring> cableIds = ReadIdList(*qb, schema::kCableSpecTypeIds);
    for (const wstring& id : serieIds) {
        auto serie = ReadOne(*qb, schema::kMaterialSerie, id, site, L"pTemSerie为空", &MakeMaterialSerie,
                             [&](SeriePtr& made) { return read_mep_materialserie_att(qb, made, reads); });
        if (serie)
            retSystemType->AddSystemMaterialSerie(serie);
    }
    for (const wstring& id : cableIds) {
        auto cable =
            ReadOne(*qb, schema::kSizeModule, id, site, L"ptempSize为空", &MakeSizeModule, [&](SizeModulePtr& made) {
                made->SetMEPType(TolmProjectSettingMEPObjectType::Wire);
                return read_sizemodule_att(qb, made, reads.materials);
            });
        if (cable)
            retSystemType->AddCableSpecType(std::move(cable));
    }
    FilterBy(*qb, retSystemType->GetDisciplineId(), retSystemType->GetMEPType());
    qb->fetchEqualRec(schema::kSystemType, ownId);
    return true;
}

} // namespace tolm
