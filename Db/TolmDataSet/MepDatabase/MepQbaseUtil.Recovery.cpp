#include "MepDatabase/MepQbaseUtil.h"
#include "Host/Session.h"
#include "MepDatabase/ChangeTracking.h"
#include "MepDatabase/IngestRecord.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/SystemRecovery.h"
#include "MepDatabase/WireText.h"
#include "Vorn/DebugMessage.h"

namespace tolm {
namespace {

struct SystemTypeTable {
    const char* key;
    short mepType;
    short disciplineId;
};

constexpr SystemTypeTable kSystemTypeTables[] = {
    {"PipeSystemType", 1, 2},
    {"DuctSystemType", 2, 1},
    {"HVACPipeSystemType", 1, 1},
    {"ElectricalSystemType", 5, 3},
};

constexpr int kNeeded = 1;
constexpr auto kCreated = static_cast<std::int32_t>(ChangeStatus::Created);

bool IsNeeded(const web::json::value& status, const web::json::value& id) {
    return status.is_number() && status.is_integer() && WholeNumber(status) == kNeeded && id.is_string();
}

web::json::array* FindArray(web::json::value& data, const char* key) {
    if (!data.has_field(key))
        return nullptr;
    web::json::value& member = data.at(key);
    return member.is_array() ? &member.as_array() : nullptr;
}

} // namespace

void SyncSystemChangeData(web::json::value changes) {
    CollaborationProjectSettingForPS* settings = CollaborationProjectSettingForPS::Instance();
    if (settings == nullptr) {
        VORN_DEBUG_WARN(L"pCollaborationProjectSettingForPS为空");
        return;
    }
    const web::json::array& list = changes.as_array();
    settings->ClearRecoverSystemTypeRecordIds();
    for (const auto& element : list) {
        const web::json::object& change = element.as_object();
        const web::json::value* status = jsonread::Find(change, "dataStatus");
        if (status == nullptr)
            continue;
        const web::json::value& id = change.at("dataId");
        if (IsNeeded(*status, id))
            settings->AddRecoverSystemTypeRecordId(WideText(id));
    }
}

void MepQbaseUtil::RecoverInstantiatedSystemTypes(web::json::value recoverData, CQbase* qb, wstring& templateFilePath,
                                                  RecoverDataInfo* recoverInfo) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return;
    }
    m_recoveredSystemTypeIds.clear();
    // Both files in one commit: no type comes back without its status record, and no status record without its type.
    StatusCompanion status(*qb, TolmFilePathSettings::GetCurrentDatasetFilePath(), templateFilePath);
    for (const SystemTypeTable& table : kSystemTypeTables) {
        web::json::array* rows = FindArray(recoverData, table.key);
        if (rows == nullptr)
            continue;
        std::map<wstring, bool> createdIds;
        SyncRecoveredSystemTypes(qb, table.mepType, table.disciplineId, jsonread::TakeElements(*rows), createdIds);
        for (const auto& [id, created] : createdIds) {
            status.Note({schema::kSystemType, id, kCreated, table.mepType, table.disciplineId});
            m_recoveredSystemTypeIds.push_back(id);
            if (recoverInfo != nullptr)
                recoverInfo->recovered = true;
        }
    }
}

} // namespace tolm
