#include "MepDatabase/MepQbaseUtil.h"
#include "Host/Session.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/RecordFactory.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Notification.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <unordered_map>
#include <utility>

namespace tolm {
namespace {

using Template = ITolmProjectSettingCircuitTemplate;
using TemplatePtr = vorn::OwnerPtr<Template>;
using Templates = std::vector<const Template*>;

/// A record that a template refers to, and what takes its name.
struct Reference {
    short idAttribute;
    const char* classCode;
    void (Template::*setName)(wstring& name);
};

constexpr Reference kReferences[] = {
    {schema::kSystemTypeId, schema::kSystemType, &Template::SetSystemTypeName},
    {schema::kWireTypeId, schema::kSizeModule, &Template::SetWireTypeName},
    {schema::kConduitTypeId, schema::kMaterialSerie, &Template::SetConduitTypeName},
};

std::optional<wstring> TextOf(CQbase& qb, short attributeId) {
    CWsz text;
    return qb.getWsz(attributeId, text, 1) ? std::optional(text.str()) : std::nullopt;
}

/// The names of the records that the templates of one walk refer to: many templates share few of them. It lives no
/// longer than one open of the store.
class ReferredNames {
public:
    /// Gives the current template the names that the store has. It is the current record again afterwards.
    void GiveTo(CQbase& qb, const wstring& ownId, Template& circuitTemplate) {
        for (std::size_t i = 0; i < std::size(kReferences); ++i) {
            const auto id = TextOf(qb, kReferences[i].idAttribute);
            if (!id || id->empty())
                continue;
            auto name = NameOf(qb, i, *id, ownId);
            if (name)
                (circuitTemplate.*kReferences[i].setName)(*name);
        }
    }

private:
    std::optional<wstring> NameOf(CQbase& qb, std::size_t reference, const wstring& id, const wstring& ownId) {
        const auto [at, isNew] = m_names[reference].try_emplace(id);
        if (isNew && qb.fetchEqualRec(kReferences[reference].classCode, id)) {
            at->second = TextOf(qb, schema::kName);
            qb.fetchEqualRec(schema::kCircuitTemplate, ownId);
        }
        return at->second;
    }

    /// An id without a name stands for a record that the store does not have, or that has none.
    std::array<std::unordered_map<wstring, std::optional<wstring>>, std::size(kReferences)> m_names;
};

void ReadTemplate(CQbase& qb, Template& circuitTemplate, ReferredNames& names) {
    const wstring ownId = CurrentId(qb);
    ReadId(qb, circuitTemplate);
    ReadAttributes(qb, circuitTemplate, CircuitTemplateAttributes());
    names.GiveTo(qb, ownId, circuitTemplate);
}

/// The id of a template, which gets a new one where it has none.
wstring IdOf(const Template& circuitTemplate) {
    wstring id = circuitTemplate.GetId();
    if (!id.empty())
        return id;
    id = IdOrNew(id);
    const_cast<Template&>(circuitTemplate).SetId(id);
    return id;
}

/// What became of the templates of one write.
struct Written {
    Templates created;
    Templates edited;

    bool Write(StoreFrame& store, const Template& circuitTemplate) {
        const auto target = store.FetchOrCreate(schema::kCircuitTemplate, IdOf(circuitTemplate));
        if (!target)
            return false;
        WriteAttributes(*store, circuitTemplate, CircuitTemplateAttributes());
        store->saveRec();
        (target->status == ChangeStatus::Created ? created : edited).push_back(&circuitTemplate);
        return true;
    }
};

/// True when the cloud has taken the created templates or the edited ones.
bool Send(const wstring& projectId, const Written& written) {
    auto* const client = TolmProjectSettingHttpUtility::GetInstance();
    const bool created = !written.created.empty() && client->SendCreatedCircuitTemplateList(projectId, written.created);
    const bool edited = !written.edited.empty() && client->SendEditedCircuitTemplateList(projectId, written.edited);
    return created || edited;
}

void TellSuccess(const wchar_t* words) {
    vorn::NotificationUtils::PostNotification(vorn::NotificationTypes::Success, words);
}

} // namespace

bool MepQbaseUtil::ReadCircuitTemplateList(wstring filePath, wstring ddqFilePath, std::vector<TemplatePtr>& list) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    ReferredNames names;
    const auto read = [&](TemplatePtr& circuitTemplate) {
        ReadTemplate(*store, *circuitTemplate, names);
        return true;
    };
    store.ReadAll(schema::kCircuitTemplate, L"pTempTemplate为空", &MakeCircuitTemplate, read, list);
    return store.Close() && !list.empty();
}

bool MepQbaseUtil::read_circuit_template_att(CQbase* qb, TemplatePtr& retTemplate) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (retTemplate == nullptr) {
        VORN_DEBUG_WARN(L"retTemplate为空");
        return false;
    }
    ReferredNames names;
    ReadTemplate(*qb, *retTemplate, names);
    return true;
}

bool MepQbaseUtil::WriteCircuitTemplateList(wstring filePath, wstring ddqFilePath, Templates circuitTemplateList) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Write))
        return false;
    Written written;
    bool whole = true;
    for (const Template* circuitTemplate : circuitTemplateList) {
        if (circuitTemplate == nullptr) {
            VORN_DEBUG_WARN(L"circuitTemplate为空");
        } else if (!written.Write(store, *circuitTemplate)) {
            VORN_DEBUG_WARN(L"createRec 失败");
            whole = false;
        }
    }
    if (!store.Close())
        return false;
    const auto* const pProjectSetting = CollaborationProjectSettingForPS::Instance();
    if (pProjectSetting == nullptr) {
        VORN_DEBUG_WARN(L"pProjectSetting为空");
        return false;
    }
    const wstring projectId = pProjectSetting->GetWorkingProjectId();
    if (!projectId.empty() && Send(projectId, written))
        TellSuccess(L"修改回路模板成功！");
    return whole;
}

bool MepQbaseUtil::DeleteCircuitTemplateList(wstring filePath, wstring ddqFilePath, Templates circuitTemplateList) {
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Write))
        return false;
    std::vector<wstring> ids;
    for (const Template* circuitTemplate : circuitTemplateList) {
        if (circuitTemplate == nullptr) {
            VORN_DEBUG_WARN(L"circuitTemplateList[i]为空");
            store.Close();
            return false;
        }
        ids.push_back(circuitTemplate->GetId());
        if (store->existRec(schema::kCircuitTemplate, ids.back()))
            store->deleteRec(schema::kCircuitTemplate, ids.back());
    }
    if (!store.Close())
        return false;
    const auto* const pProjectSetting = CollaborationProjectSettingForPS::Instance();
    if (pProjectSetting == nullptr) {
        VORN_DEBUG_WARN(L"pProjectSetting为空");
        return false;
    }
    const wstring projectId = pProjectSetting->GetWorkingProjectId();
    auto* const client = TolmProjectSettingHttpUtility::GetInstance();
    if (client->SendRemovedDataList(projectId, ids, TolmProjectSettingHttpUtility::CircuitTemplateTable()))
        TellSuccess(L"删除回路模板成功！");
    return true;
}

} // namespace tolm
