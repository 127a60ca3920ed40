#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/IngestRecord.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/WireText.h"
#include "MepDatabase/WorkUnit.h"

#include <string>

namespace tolm {
namespace {

using ingest::Field;
using ingest::FieldKind;
using ingest::Presence;
using web::json::object;

constexpr short kElectrical = 3;
constexpr short kElectricalSystem = 6;

constexpr Field kSystemTypeFields[] = {
    {"systemType", schema::kName, FieldKind::Text},
    {"code", schema::kCode, FieldKind::Text},
    {"description", schema::kDescription, FieldKind::Text},
    {"systemCategory", schema::kSystemClassification, FieldKind::Short},
    {"CreateTime", schema::kCreateTime, FieldKind::Time, Presence::Optional},
};

/// Where a table keeps its links, and what an empty list of them does.
struct LinkRule {
    const char* key;
    short attribute;
    bool emptyListClears;
};

constexpr LinkRule kCableLinks = {"bindIDs", schema::kCableSpecTypeIds, false};
constexpr LinkRule kSerieLinks = {"fittingIds", schema::kMaterialSerieIds, true};

CWszArray Texts(const web::json::array& values) {
    CWszArray texts;
    for (const auto& value : values)
        if (value.is_string())
            texts.append(WideText(value));
    return texts;
}

void WriteLinks(CQbase& qb, const LinkRule& rule, const object& element) {
    const web::json::value* list = jsonread::Find(element, rule.key);
    if (list == nullptr || !list->is_array())
        return;
    const CWszArray links = Texts(list->as_array());
    if (links.length() > 0)
        qb.setWszArray(rule.attribute, links, -1);
    else if (rule.emptyListClears)
        qb.removeAttribute(rule.attribute);
}

/// Writes one system type; its id goes to `createdIds`, when that is given, if the record had to be created.
void WriteSystemType(CQbase& qb, short mepType, short disciplineId, const object& element,
                     std::map<wstring, bool>* createdIds) {
    const bool electrical = disciplineId == kElectrical;
    const wstring id = jsonread::Text(element, "ID");
    const bool created = ingest::FetchOrCreate(qb, schema::kSystemType, id);
    qb.setShort(schema::kMEPType, electrical ? kElectricalSystem : mepType);
    qb.setShort(schema::kDisciplineId, disciplineId);
    ingest::WriteFields(qb, kSystemTypeFields, element);
    WriteLinks(qb, electrical ? kCableLinks : kSerieLinks, element);
    ingest::Save(qb);
    if (created && createdIds != nullptr)
        (*createdIds)[id] = true;
}

bool WriteSystemTypes(CQbase* qb, short mepType, short disciplineId, const std::vector<web::json::value>& elements,
                      std::map<wstring, bool>* createdIds) {
    bool any = false;
    if (qb == nullptr)
        return any;
    for (const auto& element : elements)
        if (DoUnit([&] { WriteSystemType(*qb, mepType, disciplineId, element.as_object(), createdIds); }))
            any = true;
    return any;
}

} // namespace

bool MepQbaseUtil::SyncSystemTypes(CQbase* qb, short mepType, short disciplineId,
                                   std::vector<web::json::value> elements) {
    return WriteSystemTypes(qb, mepType, disciplineId, elements, nullptr);
}

bool MepQbaseUtil::SyncRecoveredSystemTypes(CQbase* qb, short mepType, short disciplineId,
                                            std::vector<web::json::value> elements,
                                            std::map<wstring, bool>& createdIds) {
    return WriteSystemTypes(qb, mepType, disciplineId, elements, &createdIds);
}

bool MepQbaseUtil::SyncDeletedSystemType(const web::json::object& del, CQbase* qb, wstring key) {
    if (qb == nullptr || del.empty())
        return false;
    const web::json::value* types = jsonread::Find(del, key);
    if (types == nullptr)
        return true;
    return DoUnit(TOLM_CALL_SITE, L"删除系统类型失败", [&] {
        for (const auto& element : types->as_array())
            qb->deleteRec(schema::kSystemType, jsonread::Text(element.as_object(), "ID"));
    });
}

} // namespace tolm
