#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/Fittings.h"
#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/RecordFactory.h"
#include "MepDatabase/SharedReads.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "Vorn/DebugMessage.h"

#include <utility>

namespace tolm {
namespace {

using SeriePtr = vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>;
using ConnectionPtr = vorn::OwnerPtr<IProjectSettingConnectionSerie>;
using GroupPtr = vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup>;
using SizeModulePtr = vorn::OwnerPtr<IProjectSettingSizeModule>;

void FilterByTypeAndDiscipline(CQbase& qb, TolmProjectSettingMEPObjectType mepType, MEPDisciplineId disciplineId) {
    qb.setFilter(schema::kMEPType, "=", ToShort(mepType));
    qb.setFilter(schema::kDisciplineId, "=", ToShort(disciplineId));
}

wstring ReadReference(CQbase& qb, short attributeId) {
    CWsz id;
    return qb.getWsz(attributeId, id, 1) ? id.take() : wstring();
}

/// Lets the current series refer to a part and makes that the current record, created where it does not exist.
bool OpenPart(CQbase& qb, short reference, const char* classCode, wstring id) {
    id = IdOrNew(std::move(id));
    qb.setWsz(reference, id.c_str(), -1);
    qb.saveRec();
    return qb.existRec(classCode, id) ? qb.fetchEqualRec(classCode, id) : qb.createRec(classCode, id);
}

void WriteConnection(MepQbaseUtil& util, CQbase& qb, const IProjectSettingConnectionSerie& connection) {
    if (OpenPart(qb, schema::kConnectionSerieId, schema::kConnectionSerie, connection.GetId()) &&
        util.write_connection_serie_att(&qb, &connection))
        qb.saveRec();
}

void WriteGroup(CQbase& qb, const IProjectSettingMEPMaterialSerieGroup& group) {
    if (!OpenPart(qb, schema::kSerieGroupId, schema::kMaterialSerieGroup, group.GetId()))
        return;
    WriteAttributes(qb, group, NestedMaterialSerieGroupAttributes());
    qb.saveRec();
}

/// Writes the current series with its parts; it is the current record again afterwards.
void WriteSerie(MepQbaseUtil& util, CQbase& qb, const IProjectSettingMEPMaterialSerie& serie) {
    const wstring serieId = CurrentId(qb);
    WriteAttributes(qb, serie, MaterialSerieAttributes());
    if (const IProjectSettingSizeModule* sizeModule = serie.GetSizeModule())
        qb.setWsz(schema::kSizeModuleId, sizeModule->GetId().c_str(), -1);
    qb.saveRec();
    if (const IProjectSettingConnectionSerie* connection = serie.GetConnectionSerie()) {
        WriteConnection(util, qb, *connection);
        qb.fetchEqualRec(schema::kMaterialSerie, serieId);
    }
    if (const IProjectSettingMEPMaterialSerieGroup* group = serie.GetSerieGroup()) {
        WriteGroup(qb, *group);
        qb.fetchEqualRec(schema::kMaterialSerie, serieId);
    }
}

} // namespace

// --- connection series ---------------------------------------------------------------------------------------------

bool MepQbaseUtil::ReadConectionSerieList(wstring filePath, wstring ddqFilePath, wstring componentFilePath,
                                          TolmProjectSettingMEPObjectType mepType,
                                          std::map<MEPConnectorType, wstring> connectorTypes,
                                          std::map<wstring, ConnectionPtr>& series) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    ComponentCache components(std::move(componentFilePath));
    for (const auto& [connectionType, name] : connectorTypes) {
        store->resetFilters();
        store->setFilter(schema::kMEPType, "=", ToShort(mepType));
        store->setFilter(schema::kConnectionType, "=", ToShort(connectionType));
        std::vector<ConnectionPtr> list;
        const auto read = [&, type = connectionType](ConnectionPtr& serie) {
            serie->SetConnectionType(type);
            return read_connection_serie_att(store.get(), serie, components);
        };
        store.ReadAll(schema::kConnectionSerie, L"ptempConnSerie为空", &MakeConnectionSerie, read, list);
        for (ConnectionPtr& serie : list) {
            wstring id = serie->GetId();
            series.emplace(std::move(id), std::move(serie));
        }
    }
    return store.Close() && !series.empty();
}

bool MepQbaseUtil::ReadConectionSerieList(wstring filePath, wstring ddqFilePath, wstring componentFilePath,
                                          MEPConnectorType connectionType, std::vector<ConnectionPtr>& list) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    store->setFilter(schema::kConnectionType, "=", ToShort(connectionType));
    ComponentCache components(std::move(componentFilePath));
    const auto read = [&](ConnectionPtr& serie) {
        serie->SetConnectionType(connectionType);
        return read_connection_serie_att(store.get(), serie, components);
    };
    store.ReadAll(schema::kConnectionSerie, L"ptempConnSerie为空", &MakeConnectionSerie, read, list);
    return store.Close() && !list.empty();
}

bool MepQbaseUtil::read_connection_serie_att(CQbase* qb, wstring componentFilePath, ConnectionPtr& retConnSerie) {
    ComponentCache components(std::move(componentFilePath));
    return read_connection_serie_att(qb, retConnSerie, components);
}

bool MepQbaseUtil::read_connection_serie_att(CQbase* qb, ConnectionPtr& retConnSerie, ComponentCache& components) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (retConnSerie == nullptr) {
        VORN_DEBUG_WARN(L"retConnSerie为空");
        return false;
    }
    ReadId(*qb, *retConnSerie);
    ReadAttributes(*qb, *retConnSerie, ConnectionSerieAttributes());
    const wchar_t* fault = GiveFittings(ReadFittings(*qb), components, *retConnSerie);
    if (fault != nullptr)
        VORN_DEBUG_WARN(fault);
    return fault == nullptr;
}

bool MepQbaseUtil::write_connection_serie_att(CQbase* qb, const IProjectSettingConnectionSerie* pConnSerie) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (pConnSerie == nullptr) {
        VORN_DEBUG_WARN(L"pConnSerie为空");
        return false;
    }
    const PackableFittings fittings = FittingsOf(*pConnSerie);
    if (const wstring fault = ListFault(fittings); !fault.empty()) {
        VORN_DEBUG_WARN(fault);
        return false;
    }
    WriteAttributes(*qb, *pConnSerie, ConnectionSerieAttributes());
    if (!fittings.isWhole)
        VORN_DEBUG_WARN(L"fittingList[i].m_pComponent为空");
    WriteFittings(*qb, fittings.entries);
    return true;
}

// --- material series -----------------------------------------------------------------------------------------------

bool MepQbaseUtil::ReadMEPMaterialSerie(wstring filePath, wstring ddqFilePath, wstring componentFilePath, wstring id,
                                        SeriePtr& serie) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    SharedReads reads(std::move(componentFilePath));
    SeriePtr found = ReadOne(*store, schema::kMaterialSerie, id, TOLM_CALL_SITE, L"pTemSerie为空", &MakeMaterialSerie,
                             [&](SeriePtr& made) { return read_mep_materialserie_att(store.get(), made, reads); });
    if (!store.Close() || found == nullptr)
        return false;
    serie = std::move(found);
    return true;
}

bool MepQbaseUtil::ReadMEPMaterialSerieList(wstring filePath, wstring ddqFilePath, wstring componentFilePath,
                                            TolmProjectSettingMEPObjectType mepType, MEPDisciplineId disciplineId,
                                            std::vector<SeriePtr>& list) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    FilterByTypeAndDiscipline(*store, mepType, disciplineId);
    SharedReads reads(std::move(componentFilePath));
    const auto read = [&](SeriePtr& serie) {
        serie->SetMEPType(mepType);
        serie->SetDisciplineId(disciplineId);
        return read_mep_materialserie_att(store.get(), serie, reads);
    };
    store.ReadAll(schema::kMaterialSerie, L"pTemSerie为空", &MakeMaterialSerie, read, list);
    return store.Close();
}

bool MepQbaseUtil::WriteMEPMaterialSerie(wstring filePath, wstring ddqFilePath,
                                         const IProjectSettingMEPMaterialSerie* newSerie) {
    if (newSerie == nullptr) {
        VORN_DEBUG_WARN(L"newSerie为空");
        return false;
    }
    const IProjectSettingConnectionSerie* connection = newSerie->GetConnectionSerie();
    if (const wstring fault = connection != nullptr ? ListFault(FittingsOf(*connection)) : wstring(); !fault.empty()) {
        VORN_DEBUG_WARN(fault);
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Write))
        return false;
    return store.WriteTracked(schema::kMaterialSerie, *newSerie, [&](CQbase& qb) { WriteSerie(*this, qb, *newSerie); });
}

bool MepQbaseUtil::DeleteMEPMaterialSerieList(wstring filePath, wstring ddqFilePath,
                                              std::vector<const IProjectSettingMEPMaterialSerie*> serieList) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change))
        return false;
    return store.DeleteTracked(schema::kMaterialSerie, serieList, L"serie为空");
}

bool MepQbaseUtil::read_mep_materialserie_att(CQbase* qb, wstring componentFilePath, SeriePtr& retMatSerie) {
    SharedReads reads(std::move(componentFilePath));
    return read_mep_materialserie_att(qb, retMatSerie, reads);
}

bool MepQbaseUtil::read_mep_materialserie_att(CQbase* qb, SeriePtr& retMatSerie, SharedReads& reads) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (retMatSerie == nullptr) {
        VORN_DEBUG_WARN(L"retMatSerie为空");
        return false;
    }
    const CallSite site = TOLM_CALL_SITE;
    const wstring ownId = CurrentId(*qb);
    ReadId(*qb, *retMatSerie);
    ReadAttributes(*qb, *retMatSerie, MaterialSerieAttributes());
    const wstring sizeModuleId = ReadReference(*qb, schema::kSizeModuleId);
    const wstring connectionId = ReadReference(*qb, schema::kConnectionSerieId);
    const wstring groupId = ReadReference(*qb, schema::kSerieGroupId);

    auto sizeModule = ReadOne(*qb, schema::kSizeModule, sizeModuleId, site, L"ptempSize为空", &MakeSizeModule,
                              [&](SizeModulePtr& made) {
                                  made->SetMEPType(retMatSerie->GetMEPType());
                                  return read_sizemodule_att(qb, made, reads.materials);
                              });
    if (sizeModule)
        retMatSerie->SetSizeModule(sizeModule);
    auto connection =
        ReadOne(*qb, schema::kConnectionSerie, connectionId, site, L"ptempConnSerie为空", &MakeConnectionSerie,
                [&](ConnectionPtr& made) { return read_connection_serie_att(qb, made, reads.components); });
    if (connection)
        retMatSerie->SetConnectionSerie(connection);
    auto group = ReadOne(*qb, schema::kMaterialSerieGroup, groupId, site, L"pGroup为空", &MakeMaterialSerieGroup,
                         [&](GroupPtr& made) {
                             ReadId(*qb, *made);
                             ReadAttributes(*qb, *made, NestedMaterialSerieGroupAttributes());
                             return true;
                         });
    if (group)
        retMatSerie->SetSerieGroup(std::move(group));

    qb->fetchEqualRec(schema::kMaterialSerie, ownId);
    return true;
}

// --- groups --------------------------------------------------------------------------------------------------------

bool MepQbaseUtil::ReadMEPMaterialSerieGroupList(wstring filePath, wstring ddqFilePath,
                                                 TolmProjectSettingMEPObjectType mepType, MEPDisciplineId disciplineId,
                                                 std::vector<GroupPtr>& list) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    FilterByTypeAndDiscipline(*store, mepType, disciplineId);
    const auto read = [&](GroupPtr& group) { return read_serie_group_att(store.get(), group); };
    store.ReadAll(schema::kMaterialSerieGroup, L"pGroup为空", &MakeMaterialSerieGroup, read, list);
    return store.Close();
}

bool MepQbaseUtil::WriteMEPMaterialSerieGroup(wstring filePath, wstring ddqFilePath,
                                              const IProjectSettingMEPMaterialSerieGroup* newGroup) {
    if (newGroup == nullptr) {
        VORN_DEBUG_WARN(L"newGroup为空");
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Write))
        return false;
    return store.WriteTracked(schema::kMaterialSerieGroup, *newGroup, [newGroup](CQbase& qb) {
        WriteAttributes(qb, *newGroup, MaterialSerieGroupAttributes());
    });
}

bool MepQbaseUtil::DeleteMEPMaterialSerieGroupList(wstring filePath, wstring ddqFilePath,
                                                   std::vector<const IProjectSettingMEPMaterialSerieGroup*> groupList) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Change))
        return false;
    return store.DeleteTracked(schema::kMaterialSerieGroup, groupList, L"groupList[i]为空");
}

bool MepQbaseUtil::read_serie_group_att(CQbase* qb, GroupPtr& retMatSerie) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (retMatSerie == nullptr) {
        VORN_DEBUG_WARN(L"retMatSerie为空");
        return false;
    }
    ReadId(*qb, *retMatSerie);
    ReadAttributes(*qb, *retMatSerie, MaterialSerieGroupAttributes());
    return true;
}

} // namespace tolm
