#include "MepDatabase/Encoders.h"

#include "MepDatabase/JsonRows.h"

namespace tolm {
namespace {

using web::json::value;
using Size = IProjectSettingSizeModule;

// --- lengths

/// Multiplied in single precision, what is behind the third digit cut off.
std::int32_t Thousandths(float length) {
    return ClampToInt32(length * 1000.0F);
}

value LengthInDouble(float length) {
    return value::number(Thousandths(length) / 1000.0);
}

/// The same, divided in single precision: 0.1 comes out as 0.10000000149011612. Ducts have always been sent so.
value LengthInSingle(float length) {
    return value::number(double{static_cast<float>(Thousandths(length)) / 1000.0F});
}

value Roughness(double roughness) {
    return value::number(static_cast<double>(ClampToInt64(roughness * 10000.0)) / 10000.0);
}

// --- entries of the size lists

using PipeEntry = ProjectSettingPipeSize;
using DuctEntry = ProjectSettingDuctSize;
using CableEntry = ProjectSettingCableSpec;

constexpr auto kPipeEntry = ByKey<PipeEntry>({
    {"DN", [](const PipeEntry& entry) { return LengthInDouble(entry.nominalDiameter); }},
    {"OD", [](const PipeEntry& entry) { return LengthInDouble(entry.outerDiameter); }},
    {"ID", [](const PipeEntry& entry) { return LengthInDouble(entry.innerDiameter); }},
    {"Thickness", [](const PipeEntry& entry) { return LengthInDouble(entry.thickness); }},
});
constexpr JsonCell<DuctEntry> kDuctEntry[] = {
    {"Size", [](const DuctEntry& entry) { return LengthInSingle(entry.size); }},
    {"Thickness", [](const DuctEntry& entry) { return LengthInSingle(entry.thickness); }},
};
constexpr JsonCell<DuctEntry> kTrayEntry[] = {
    {"Size", [](const DuctEntry& entry) { return LengthInDouble(entry.size); }},
};
constexpr auto kConduitEntry = ByKey<PipeEntry>({
    {"DN", [](const PipeEntry& entry) { return JsonInteger(ClampToInt32(entry.nominalDiameter)); }},
    {"OD", [](const PipeEntry& entry) { return LengthInDouble(entry.outerDiameter); }},
    {"ID", [](const PipeEntry& entry) { return LengthInDouble(entry.innerDiameter); }},
});
constexpr JsonCell<CableEntry> kWireEntry[] = {
    {"area", [](const CableEntry& entry) { return JsonText(entry.area); }},
    {"current", [](const CableEntry& entry) { return JsonInteger(entry.current); }},
    {"temperature", [](const CableEntry& entry) { return JsonInteger(entry.temperature); }},
};

// --- "content" by kind

wstring MaterialName(const Size& size) {
    const auto* material = size.GetMaterial();
    return material != nullptr ? material->GetName() : wstring();
}

constexpr JsonCell<Size> kPipe[] = {
    {"roughness", [](const Size& size) { return Roughness(size.GetRoughness()); }},
    {"sizeList", [](const Size& size) { return JsonObjects(kPipeEntry, size.GetPipeSizeList()); }},
};
constexpr JsonCell<Size> kDuct[] = {
    {"shape", [](const Size& size) { return JsonInteger(size.GetDuctShape()); }},
    {"series", [](const Size& size) { return JsonText(MaterialName(size)); }},
    {"systemPress", [](const Size& size) { return JsonInteger(size.GetPressureGrade()); }},
    {"sizeList", [](const Size& size) { return JsonObjects(kDuctEntry, size.GetDuctSizeList()); }},
};
constexpr JsonCell<Size> kTray[] = {
    {"type", [](const Size& size) { return JsonInteger(size.GetCableTrayShape()); }},
    {"sizeList", [](const Size& size) { return JsonObjects(kTrayEntry, size.GetDuctSizeList()); }},
};
constexpr JsonCell<Size> kConduit[] = {
    {"sizeList", [](const Size& size) { return JsonObjects(kConduitEntry, size.GetPipeSizeList()); }},
};
constexpr JsonCell<Size> kWire[] = {
    {"series", [](const Size& size) { return JsonInteger(size.GetCableMaterial()); }},
    {"currentUseTemperature", [](const Size& size) { return JsonInteger(size.GetCableEnvironmentTemperature()); }},
    {"sizeList", [](const Size& size) { return JsonObjects(kWireEntry, size.GetCableSpecificationList()); }},
};

struct KindRow {
    TolmProjectSettingMEPObjectType kind;
    JsonCells<Size> content;
};

constexpr KindRow kKinds[] = {
    {TolmProjectSettingMEPObjectType::Pipe, kPipe},      {TolmProjectSettingMEPObjectType::Duct, kDuct},
    {TolmProjectSettingMEPObjectType::CableTray, kTray}, {TolmProjectSettingMEPObjectType::Conduit, kConduit},
    {TolmProjectSettingMEPObjectType::Wire, kWire},
};

/// Null for a kind that is not known.
value Content(const Size& size, int kind) {
    for (const auto& row : kKinds)
        if (row.kind == TolmProjectSettingMEPObjectType{kind})
            return JsonObject(row.content, size);
    return {};
}

// --- rows of "ConfigTree"

struct TreeNode {
    wstring id;
    wstring text;
    wstring groupName;
    std::int64_t createTime;
    wstring parentId;
};

constexpr auto kTreeNode = ByKey<TreeNode>({
    {"ID", [](const TreeNode& node) { return JsonText(node.id); }},
    {"text", [](const TreeNode& node) { return JsonText(node.text); }},
    {"groupName", [](const TreeNode& node) { return JsonText(node.groupName); }},
    {"CreateTime", [](const TreeNode& node) { return value::number(static_cast<std::uint64_t>(node.createTime)); }},
    {"nodeID", [](const TreeNode&) { return JsonText(L""); }},
    {"tableName", [](const TreeNode&) { return JsonText(L""); }},
    {"order", [](const TreeNode&) { return JsonInteger(0); }},
    {"display", [](const TreeNode&) { return JsonInteger(1); }},
    {"Nodes", [](const TreeNode&) { return JsonText(L"[]"); }},
    {"Children", [](const TreeNode&) { return JsonText(L"[]"); }},
    {"parentID", [](const TreeNode& node) { return JsonText(node.parentId); }},
});

template <class Record> TreeNode NodeOf(const Record& record, const wstring& groupName) {
    return {record.GetId(), record.GetName(), groupName, record.GetCreateTime(), {}};
}

value TreeRow(const TreeNode& node, value content) {
    JsonFields fields;
    fields.reserve(kTreeNode.size() + 1);
    AddFields<TreeNode>(fields, kTreeNode, node);
    fields.emplace_back("content", std::move(content));
    return value::object(std::move(fields));
}

/// A material's or a group's row says nothing beyond its node.
template <class Record> value PlainRow(const Record& record, const wstring& groupName) {
    return TreeRow(NodeOf(record, groupName), value::object());
}

/// Cable tables go by their type name: the name of the record does not travel.
value SizeRow(const Size& size, const wstring& groupName, int kind) {
    auto node = NodeOf(size, groupName);
    if (TolmProjectSettingMEPObjectType{kind} == TolmProjectSettingMEPObjectType::Wire)
        node.text = size.GetCableSpecTypeName();
    if (const auto* material = size.GetMaterial())
        node.parentId = material->GetId();
    return TreeRow(node, Content(size, kind));
}

} // namespace

value GetCreatedOrEditedSizeModelListJasonValue(bool wrapEdited, bool isCreated, wstring groupName, int kind,
                                                std::vector<std::shared_ptr<const IProjectSettingSizeModule>> list) {
    const auto encode = [&](const Size& size) { return SizeRow(size, groupName, kind); };
    return EncodeRows(list, wrapEdited && !isCreated, encode, TOLM_CALL_SITE, L"pSize为空！");
}

value GetCreatedOrEditedMateriaListJasonValue(bool wrapEdited, bool isCreated, wstring groupName,
                                              std::vector<std::shared_ptr<const IProjectSettingMaterial>> list) {
    const auto encode = [&](const auto& material) { return PlainRow(material, groupName); };
    return EncodeRows(list, wrapEdited && !isCreated, encode, TOLM_CALL_SITE, L"pMaterial为空");
}

value GetCreatedOrEditedMaterieSerieGroupJasonValue(
    bool wrapEdited, bool isCreated, wstring groupName,
    std::vector<std::shared_ptr<const IProjectSettingMEPMaterialSerieGroup>> list) {
    const auto encode = [&](const auto& group) { return PlainRow(group, groupName); };
    return EncodeRows(list, wrapEdited && !isCreated, encode, TOLM_CALL_SITE, L"pGroup为空");
}

} // namespace tolm
