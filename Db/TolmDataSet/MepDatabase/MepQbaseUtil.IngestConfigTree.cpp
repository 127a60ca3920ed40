#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/IngestRecord.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/WireText.h"
#include "MepDatabase/WorkUnit.h"
#include "Vorn/DebugMessage.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tolm {
namespace {

using ingest::Field;
using ingest::FieldKind;
using ingest::Presence;
using ingest::SizeList;
using web::json::object;

constexpr Field kNameAndTime[] = {
    {"text", schema::kName, FieldKind::Text},
    {"CreateTime", schema::kCreateTime, FieldKind::Time, Presence::Optional},
};
constexpr Field kNameAlone[] = {
    {"text", schema::kName, FieldKind::Text},
};
constexpr Field kWireNamesAndTime[] = {
    {"text", schema::kName, FieldKind::Text},
    {"text", schema::kCableSpecTypeName, FieldKind::Text},
    {"CreateTime", schema::kCreateTime, FieldKind::Time, Presence::Optional},
};

constexpr Field kDuctContent[] = {
    {"shape", schema::kDuctShape, FieldKind::Short},
    {"systemPress", schema::kPressureGrade, FieldKind::Short},
};
constexpr Field kWireContent[] = {
    {"series", schema::kCableMaterial, FieldKind::Short},
    {"currentUseTemperature", schema::kCableEnvironmentTemperature, FieldKind::Short},
};
constexpr Field kTrayContent[] = {
    {"type", schema::kCableTrayShape, FieldKind::Short},
};

/// The class, object type and discipline of a record.
struct Slot {
    const char* classCode;
    short mepType;
    short disciplineId;
};

void OpenRecord(CQbase& qb, const Slot& slot, const std::wstring& id, std::span<const Field> fields,
                const object& element) {
    ingest::FetchOrCreate(qb, slot.classCode, id);
    qb.setShort(schema::kMEPType, slot.mepType);
    qb.setShort(schema::kDisciplineId, slot.disciplineId);
    ingest::WriteFields(qb, fields, element);
}

// --- pipes: materials and their size tables ------------------------------------------------------------------------

/// A whole number is passed over: the service writes each value with a fraction.
void WriteRoughness(CQbase& qb, const web::json::value& content) {
    const web::json::value* roughness = content.is_null() ? nullptr : jsonread::Find(content.as_object(), "roughness");
    if (roughness != nullptr && roughness->is_double())
        qb.setDouble(schema::kRoughness, FiniteNumber(*roughness));
}

void WritePipeSizeTable(CQbase& qb, const Slot& slot, const std::wstring& id, const std::wstring& materialId,
                        const object& element) {
    OpenRecord(qb, slot, id, kNameAndTime, element);
    ingest::SetText(qb, schema::kMaterialId, materialId);
    const auto sizes =
        ingest::DoOrSave(qb, [&] { return ingest::PackedSizes(ingest::kPipeSizes, element.at("content")); });
    WriteRoughness(qb, element.at("content"));
    sizes.WriteTo(qb);
    ingest::Save(qb);
}

void WritePipeMaterial(CQbase& qb, const Slot& slot, const std::wstring& id, const object& element) {
    OpenRecord(qb, slot, id, kNameAndTime, element);
    ingest::Save(qb);
}

// --- the other groups ----------------------------------------------------------------------------------------------

/// How the elements of one group are read. A group without a list reads no "content" and goes by the "ID" of its
/// elements.
struct Group {
    std::wstring_view name;
    Slot slot;
    std::span<const Field> fields;
    std::span<const Field> content;
    const SizeList* list;
    void (*finish)(CQbase& qb, const object& content);
    const wchar_t* failure;
};

/// The material of a duct size table has no id of the cloud's: it is made here once and kept.
bool OpenDuctMaterial(CQbase& qb) {
    const std::wstring known = ingest::GetText(qb, schema::kMaterialId);
    if (!known.empty())
        return qb.fetchEqualRec(schema::kMaterial, known);
    const std::wstring made = ingest::NewId();
    ingest::SetText(qb, schema::kMaterialId, made);
    ingest::Save(qb);
    return qb.createRec(schema::kMaterial, made);
}

void WriteDuctMaterial(CQbase& qb, const object& content) {
    const std::wstring name = jsonread::Text(content, "series");
    if (!OpenDuctMaterial(qb))
        return;
    ingest::SetText(qb, schema::kName, name);
    qb.setShort(schema::kMEPType, 2);
    qb.setShort(schema::kDisciplineId, 1);
    ingest::Save(qb);
}

constexpr Slot kDucts = {schema::kSizeModule, 2, 1};
constexpr Slot kWires = {schema::kSizeModule, 5, 3};
constexpr Slot kConduits = {schema::kSizeModule, 4, 3};
constexpr Slot kTrays = {schema::kSizeModule, 3, 3};
constexpr Slot kPipeGroups = {schema::kMaterialSerieGroup, 1, 2};
constexpr Slot kHvacPipeGroups = {schema::kMaterialSerieGroup, 1, 1};
constexpr Slot kDuctGroups = {schema::kMaterialSerieGroup, 2, 1};
constexpr std::span<const Field> kNoContent;

constexpr Group kGroups[] = {
    {L"ductSeriesType", kDucts, kNameAndTime, kDuctContent, &ingest::kDuctSizes, WriteDuctMaterial,
     L"ductSeriesType:下载风管类型失败"},
    {L"electricWireType", kWires, kWireNamesAndTime, kWireContent, &ingest::kCableSpecifications, nullptr,
     L"electricWireType:下载导线类型失败"},
    {L"electricLinePipe", kConduits, kNameAndTime, kNoContent, &ingest::kConduitSizes, nullptr,
     L"electricLinePipe:下载线管类型失败"},
    {L"cableTray", kTrays, kNameAndTime, kTrayContent, &ingest::kTraySizes, nullptr, L"cableTray:下载桥架类型失败"},
    {L"pipeFittingGroup", kPipeGroups, kNameAndTime, kNoContent, nullptr, nullptr,
     L"pipeFittingGroup:下载管配件组合的分组失败"},
    {L"havcFittingGroup", kHvacPipeGroups, kNameAndTime, kNoContent, nullptr, nullptr,
     L"havcFittingGroup:下载管配件组合的分组失败"},
    {L"ductFittingGroup", kDuctGroups, kNameAlone, kNoContent, nullptr, nullptr,
     L"ductFittingGroup:下载管配件组合的分组失败"},
};

const Group* FindGroup(std::wstring_view name) {
    const auto* found =
        std::find_if(std::begin(kGroups), std::end(kGroups), [name](const Group& group) { return group.name == name; });
    return found == std::end(kGroups) ? nullptr : found;
}

void WriteSizeTable(CQbase& qb, const Group& group, const std::wstring& id, const object& element) {
    OpenRecord(qb, group.slot, id, group.fields, element);
    // A group that is finished on another record keeps what it has before each step.
    const bool saveEachStep = group.finish != nullptr;
    if (saveEachStep)
        ingest::Save(qb);
    const web::json::value& content = element.at("content");
    ingest::WriteFields(qb, group.content, content.as_object());
    if (saveEachStep)
        ingest::Save(qb);
    ingest::PackedSizes(*group.list, content).WriteTo(qb);
    ingest::Save(qb);
    if (group.finish != nullptr)
        group.finish(qb, content.as_object());
}

void WriteSerieGroup(CQbase& qb, const Group& group, const object& element) {
    OpenRecord(qb, group.slot, jsonread::Text(element, "ID"), group.fields, element);
    ingest::Save(qb);
}

void WriteGroupElement(CQbase& qb, const Group& group, const wchar_t* id, const object& element) {
    if (group.list == nullptr)
        WriteSerieGroup(qb, group, element);
    else
        WriteSizeTable(qb, group, id != nullptr ? id : L"", element);
}

} // namespace

void MepQbaseUtil::SyncPipeSizeTableItem(CQbase* qb, short disciplineId, const web::json::value& element) {
    if (qb == nullptr || element.is_null())
        return;
    DoUnit([&] {
        const object& fields = element.as_object();
        const std::wstring id = jsonread::Text(fields, "ID");
        const std::wstring materialId = jsonread::Text(fields, "parentID");
        if (materialId.empty())
            WritePipeMaterial(*qb, {schema::kMaterial, 1, disciplineId}, id, fields);
        else
            WritePipeSizeTable(*qb, {schema::kSizeModule, 1, disciplineId}, id, materialId, fields);
    });
}

bool MepQbaseUtil::SyncSizeTableExceptPipeAndGroupTableItem(CQbase* qb, wstring groupName, const wchar_t* id,
                                                            web::json::value element) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    const Group* group = FindGroup(groupName);
    if (group == nullptr)
        return false;
    return DoUnit(TOLM_CALL_SITE, group->failure, [&] { WriteGroupElement(*qb, *group, id, element.as_object()); });
}

} // namespace tolm
