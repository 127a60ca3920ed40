#pragma once

#include "MepDatabase/StoreSchema.h"
#include "TolmDataSet/SmallRecords.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// The lists that a record keeps in one binary attribute: entries of a fixed size, one after the other, without
/// padding, numbers little-endian, text in UTF-8 padded with zeros.
namespace tolm {

/// No list holds more entries than this.
using schema::kPackedListCapacity;

/// A fitting of a connection series as the store keeps it. The texts fill their fields without a terminator.
struct PackedFitting {
    wstring categoryCode; ///< cut at 50 bytes
    FittingPartType partType = FittingPartType::Undefined;
    RoutingPreferenceRuleGroupType ruleGroup = RoutingPreferenceRuleGroupType::Undefined;
    wstring productId; ///< cut at 40 bytes
    float min = 0.0F;
    float max = 0.0F;

    friend bool operator==(const PackedFitting&, const PackedFitting&) = default;
};

/// How one entry of a packed list stands in its bytes. `put` fills exactly `entrySize` bytes, `get` reads as many.
template <class Entry> struct PackedLayout {
    std::size_t entrySize;
    void (*put)(char* at, const Entry& entry);
    Entry (*get)(const char* at);
};

extern const PackedLayout<ProjectSettingPipeSize> kPipeSizeLayout;            ///< 16: DN, OD, ID, Thickness
extern const PackedLayout<ProjectSettingDuctSize> kDuctSizeLayout;            ///< 8: Size, Thickness
extern const PackedLayout<ProjectSettingCableSpec> kCableSpecLayout;          ///< 56: area, current, temperature
extern const PackedLayout<PackedFitting> kFittingLayout;                      ///< 106
extern const PackedLayout<DataSetInsulationMaxSize> kCircularSizeLayout;      ///< 4: first and third
extern const PackedLayout<DataSetInsulationMaxSize> kRectSizeLayout;          ///< 6: all three
extern const PackedLayout<DataSetDimensionMethodItem> kDimensionMethodLayout; ///< 10: kind, two values

/// What is wrong with a list of this name that is too long to be stored; empty for all others.
std::wstring PackedListFault(const wchar_t* name, std::size_t length);

/// The list's bytes. Throws std::length_error for a list over the capacity.
template <class Entry> std::vector<char> Pack(const PackedLayout<Entry>& layout, const std::vector<Entry>& list) {
    if (list.size() > kPackedListCapacity)
        throw std::length_error("a packed list holds at most 300 entries, not " + std::to_string(list.size()));
    std::vector<char> bytes(list.size() * layout.entrySize);
    char* at = bytes.data();
    for (const Entry& entry : list) {
        layout.put(at, entry);
        at += layout.entrySize;
    }
    return bytes;
}

/// Does `take(entry)` with each entry in `byteCount` bytes; a remainder that is no whole entry is passed over. Null or
/// a count below 1 gives no entry.
template <class Entry, class Take>
void ForEachEntry(const PackedLayout<Entry>& layout, const char* bytes, int byteCount, Take take) {
    if (bytes == nullptr || byteCount < 1)
        return;
    const std::size_t count = static_cast<std::size_t>(byteCount) / layout.entrySize;
    for (std::size_t i = 0; i < count; ++i)
        take(layout.get(bytes + i * layout.entrySize));
}

/// The same entries as a list.
template <class Entry> std::vector<Entry> Unpack(const PackedLayout<Entry>& layout, const char* bytes, int byteCount) {
    std::vector<Entry> list;
    if (bytes != nullptr && byteCount > 0)
        list.reserve(static_cast<std::size_t>(byteCount) / layout.entrySize);
    ForEachEntry(layout, bytes, byteCount, [&](Entry&& entry) { list.push_back(std::move(entry)); });
    return list;
}

} // namespace tolm
