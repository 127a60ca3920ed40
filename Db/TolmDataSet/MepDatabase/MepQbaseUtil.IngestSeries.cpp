#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/FittingIngest.h"
#include "MepDatabase/IngestRecord.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/WireText.h"
#include "MepDatabase/WorkUnit.h"
#include "Vorn/DebugMessage.h"

#include <array>
#include <cstring>
#include <string>

namespace tolm {
namespace {

using ingest::Field;
using ingest::FieldKind;
using ingest::Presence;
using web::json::object;

constexpr short kAnyType = 0;
constexpr short kPipe = 1;
constexpr short kDuct = 2;
constexpr short kCableTray = 3;
constexpr short kConduit = 4;

// A tray's or a conduit's row has no "minSize" and no "maxSize".
constexpr Field kSerieFields[] = {
    {"name", schema::kName, FieldKind::Text},
    {"CreateTime", schema::kCreateTime, FieldKind::Time, Presence::Optional},
    {"minSize", schema::kMinSize, FieldKind::Float, Presence::Optional},
    {"maxSize", schema::kMaxSize, FieldKind::Float, Presence::Optional},
    {"preferredConnect", schema::kJunctionType, FieldKind::Short, Presence::Optional},
    {"PipeSegmentId", schema::kSizeModuleId, FieldKind::Text, Presence::Optional},
};
constexpr Field kConduitParent[] = {
    {"parentID", schema::kSizeModuleId, FieldKind::Text, Presence::Optional},
};
constexpr Field kConnectionFields[] = {
    {"connective", schema::kConnectionType, FieldKind::Short, Presence::Optional},
};

/// A key of fittings, the rule that they serve and the only object type that has it.
struct FittingRule {
    const char* key;
    int ruleType;
    short mepType;
};

constexpr FittingRule kFittingRules[] = {
    {"Elbow", 1, kAnyType},
    {"Bend", 1, kAnyType},
    {"Tee", 2, kAnyType},
    {"Cross", 3, kAnyType},
    {"Transition", 4, kAnyType},
    {"Union", 5, kAnyType},
    {"Cap", 6, kAnyType},
    {"Round", 11, kDuct},
    {"HorizontalBend", 1, kCableTray},
    {"HorizontalTee", 2, kCableTray},
    {"VerticalInsideBend", 21, kCableTray},
    {"VerticalOutsideBend", 22, kCableTray},
    {"VerticalLateralTee", 23, kCableTray},
    {"VerticalLateralElbow", 24, kCableTray},
    {"VerticalLeftLateralElbow", 26, kCableTray},
    {"VerticalRightLateralElbow", 27, kCableTray},
    {"VerticalDownwardTee", 28, kCableTray},
    {"VerticalUpTee", 29, kCableTray},
};

using FittingBuffer = std::array<char, kPackedListCapacity * kFittingEntrySize>;

/// The fittings of a series, gathered rule by rule.
class FittingList {
public:
    void Append(const char* rows, int count) {
        const auto added = static_cast<std::size_t>(count);
        ingest::RequireRoom(m_count + added);
        std::memcpy(m_rows.data() + m_count * kFittingEntrySize, rows, added * kFittingEntrySize);
        m_count += added;
    }

    void Store(CQbase& qb) const {
        if (m_count > 0)
            qb.setBinaryArray(schema::kFittingList, m_rows.data(), static_cast<int>(m_count), 0);
        else
            qb.removeAttribute(schema::kFittingList);
    }

private:
    FittingBuffer m_rows;
    std::size_t m_count = 0;
};

void ReadRule(const FittingRule& rule, object& element, wstring& categoryId, FittingList& list) {
    if (jsonread::Find(element, rule.key) == nullptr)
        return;
    web::json::array& products = element.at(rule.key).as_array();
    if (products.size() == 0)
        return;
    FittingBuffer rows; // not filled before the rows that are read stand in it
    int count = 0;
    if (GetFittingProductsOfOneRuleType(rule.ruleType, jsonread::TakeElements(products), categoryId, rows.data(),
                                        count))
        list.Append(rows.data(), count);
}

void WriteFittings(CQbase& qb, short mepType, object& element) {
    FittingList list;
    wstring categoryId;
    for (const FittingRule& rule : kFittingRules)
        if (rule.mepType == kAnyType || rule.mepType == mepType)
            ReadRule(rule, element, categoryId, list);
    list.Store(qb);
}

/// Text of an optional member; empty without it.
wstring OptionalText(const object& element, const char* key) {
    const web::json::value* text = jsonread::Find(element, key);
    return text != nullptr ? WideText(*text) : wstring();
}

/// The parent of a pipe or duct series is its group.
void WriteGroupLink(CQbase& qb, const object& element) {
    const wstring group = ingest::DoOrSave(qb, [&] { return OptionalText(element, "parentID"); });
    if (group.empty())
        qb.removeAttribute(schema::kSerieGroupId);
    else
        ingest::SetText(qb, schema::kSerieGroupId, group);
}

/// Id of the size table of the trays of this shape; empty when there is none.
wstring FindTraySizeTable(CQbase& qb, short shape, short disciplineId) {
    qb.resetFilters();
    qb.setFilter(schema::kCableTrayShape, "=", shape);
    qb.setFilter(schema::kDisciplineId, "=", disciplineId);
    qb.setFilter(schema::kMEPType, "=", kCableTray);
    CWsz id;
    if (qb.fetchFirstMember(schema::kSizeModule))
        qb.getObjId(id);
    qb.resetFilters();
    return id.str();
}

/// A tray series names a shape; the size table of that shape is its parent. Without one the link stays. The walk leaves
/// the series, which is stored before.
void WriteTrayLink(CQbase& qb, const wstring& id, short disciplineId, const object& element) {
    ingest::Save(qb);
    const wstring sizeTable = FindTraySizeTable(qb, jsonread::Short(element, "type"), disciplineId);
    if (sizeTable.empty())
        return;
    ingest::FetchOrCreate(qb, schema::kMaterialSerie, id);
    ingest::SetText(qb, schema::kSizeModuleId, sizeTable);
}

void WriteParentLink(CQbase& qb, const wstring& id, short mepType, short disciplineId, const object& element) {
    if (mepType == kPipe || mepType == kDuct)
        WriteGroupLink(qb, element);
    else if (mepType == kConduit)
        ingest::DoOrSave(qb, [&] { ingest::WriteFields(qb, kConduitParent, element); });
    else if (mepType == kCableTray)
        WriteTrayLink(qb, id, disciplineId, element);
}

/// Sets all that is the series' own; it is stored together with the link to its connection series.
void SetSerie(CQbase& qb, const wstring& id, short mepType, short disciplineId, const object& element) {
    ingest::FetchOrCreate(qb, schema::kMaterialSerie, id);
    qb.setShort(schema::kMEPType, mepType);
    qb.setShort(schema::kDisciplineId, disciplineId);
    ingest::WriteFields(qb, kSerieFields, element);
    WriteParentLink(qb, id, mepType, disciplineId, element);
}

/// A connection series has no id of the cloud's: it is made here once and used again at each download. The series is
/// stored.
void OpenConnectionSerie(CQbase& qb) {
    const wstring known = ingest::GetText(qb, schema::kConnectionSerieId);
    if (!known.empty()) {
        ingest::Save(qb);
        if (qb.fetchEqualRec(schema::kConnectionSerie, known))
            return;
    }
    const wstring made = ingest::NewId();
    ingest::SetText(qb, schema::kConnectionSerieId, made);
    ingest::Save(qb);
    ingest::FetchOrCreate(qb, schema::kConnectionSerie, made);
}

void WriteConnectionSerie(CQbase& qb, short mepType, object& element) {
    OpenConnectionSerie(qb);
    ingest::WriteFields(qb, kConnectionFields, element);
    WriteFittings(qb, mepType, element);
    ingest::Save(qb);
}

void DeleteSerie(CQbase& qb, const object& element) {
    const wstring id = jsonread::Text(element, "ID");
    if (!qb.fetchEqualRec(schema::kMaterialSerie, id))
        return;
    const wstring connection = ingest::GetText(qb, schema::kConnectionSerieId);
    if (!connection.empty())
        qb.deleteRec(schema::kConnectionSerie, connection);
    qb.deleteRec(schema::kMaterialSerie, id);
}

} // namespace

bool MepQbaseUtil::SyncMaterialSerie(web::json::value element, CQbase* qb, short mepType, short disciplineId) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    if (element.is_null())
        return false;
    return DoUnit([&] {
        object& fields = element.as_object();
        SetSerie(*qb, jsonread::Text(fields, "ID"), mepType, disciplineId, fields);
        WriteConnectionSerie(*qb, mepType, fields);
    });
}

bool MepQbaseUtil::SyncDeletedMaterialSerie(const web::json::object& del, CQbase* qb, wstring key) {
    if (qb == nullptr || del.empty())
        return false;
    const web::json::value* series = jsonread::Find(del, key);
    if (series == nullptr)
        return true;
    for (const auto& element : series->as_array())
        DoUnit(TOLM_CALL_SITE, L"删除管配件组合失败", [&] { DeleteSerie(*qb, element.as_object()); });
    return true;
}

} // namespace tolm
