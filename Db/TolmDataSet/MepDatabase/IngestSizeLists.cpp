#include "MepDatabase/IngestRecord.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/WireText.h"

#include <algorithm>
#include <cstring>

namespace tolm::ingest {
namespace {

using jsonread::CellText;

/// One cell of a row and the field of the entry that takes it; a missing cell is 0.
template <class Entry> struct FloatField {
    const char* key;
    float Entry::*member;
    CellText text;
};

constexpr FloatField<ProjectSettingPipeSize> kPipeCells[] = {
    {"DN", &ProjectSettingPipeSize::nominalDiameter, CellText::AsInteger},
    {"OD", &ProjectSettingPipeSize::outerDiameter, CellText::AsFloat},
    {"ID", &ProjectSettingPipeSize::innerDiameter, CellText::AsFloat},
    {"Thickness", &ProjectSettingPipeSize::thickness, CellText::AsFloat},
};

constexpr FloatField<ProjectSettingPipeSize> kConduitCells[] = {
    {"DN", &ProjectSettingPipeSize::nominalDiameter, CellText::AsInteger},
    {"OD", &ProjectSettingPipeSize::outerDiameter, CellText::AsFloat},
    {"ID", &ProjectSettingPipeSize::innerDiameter, CellText::AsFloat},
};

constexpr FloatField<ProjectSettingDuctSize> kDuctCells[] = {
    {"Size", &ProjectSettingDuctSize::size, CellText::AsFloat},
    {"Thickness", &ProjectSettingDuctSize::thickness, CellText::AsFloat},
};

template <const auto& Layout, const auto& Cells> void PackFloats(char* at, const web::json::object& row) {
    decltype(Layout.get(at)) entry;
    for (const auto& cell : Cells)
        entry.*cell.member = jsonread::FloatCell(row, cell.key, cell.text);
    Layout.put(at, entry);
}

void PackTraySize(char* at, const web::json::object& row) {
    const float size = jsonread::FloatCell(row, "Size", CellText::AsFloat);
    std::memcpy(at, &size, sizeof size);
}

void PackCableSpecification(char* at, const web::json::object& row) {
    ProjectSettingCableSpec entry;
    if (const web::json::value* area = jsonread::Find(row, "area"))
        entry.area = WideText(*area);
    entry.current = jsonread::IntCell(row, "current");
    const web::json::value* temperature = jsonread::Find(row, "temperature");
    entry.temperature =
        static_cast<EnvironmentTemperature>(temperature != nullptr ? jsonread::ShortOf(*temperature) : 0);
    kCableSpecLayout.put(at, entry);
}

const web::json::array* RowsOf(const web::json::value& content) {
    if (content.is_null())
        return nullptr;
    const web::json::value* list = jsonread::Find(content.as_object(), "sizeList");
    return list != nullptr && list->is_array() && list->size() > 0 ? &list->as_array() : nullptr;
}

} // namespace

constinit const SizeList kPipeSizes = {schema::kPipeSizeList, 16, PackFloats<kPipeSizeLayout, kPipeCells>};
constinit const SizeList kConduitSizes = {schema::kPipeSizeList, 16, PackFloats<kPipeSizeLayout, kConduitCells>};
constinit const SizeList kDuctSizes = {schema::kDuctSizeList, 8, PackFloats<kDuctSizeLayout, kDuctCells>};
constinit const SizeList kTraySizes = {schema::kCableTraySizeList, sizeof(float), PackTraySize, true};
constinit const SizeList kCableSpecifications = {schema::kCableSpecificationList, 56, PackCableSpecification};

PackedSizes::PackedSizes(const SizeList& list, const web::json::value& content) : m_list(&list) {
    const web::json::array* rows = RowsOf(content);
    if (rows == nullptr)
        return;
    RequireRoom(rows->size());
    std::fill_n(m_entries.begin(), rows->size() * list.entrySize, '\0');
    char* at = m_entries.data();
    for (const auto& row : *rows) {
        list.pack(at, row.as_object());
        at += list.entrySize;
    }
    m_count = static_cast<int>(rows->size());
}

void PackedSizes::WriteTo(CQbase& qb) const {
    if (m_count == 0) {
        qb.removeAttribute(m_list->attribute);
    } else if (m_list->isFloatArray) {
        std::array<float, kPackedListCapacity> values{};
        std::memcpy(values.data(), m_entries.data(), static_cast<std::size_t>(m_count) * sizeof(float));
        qb.setFloatArray(m_list->attribute, values.data(), m_count);
    } else {
        qb.setBinaryArray(m_list->attribute, m_entries.data(), m_count, 0);
    }
}

} // namespace tolm::ingest
