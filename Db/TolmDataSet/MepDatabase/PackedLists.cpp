#include "MepDatabase/PackedLists.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>
#include <utility>

namespace tolm {
namespace {

/// Calls with the number of each byte of the type, without a loop: the compiler makes one move of it.
template <class Unsigned, class Use> void EachByte(Use use) {
    [&]<std::size_t... Is>(std::index_sequence<Is...>) {
        (use(Is), ...);
    }
    (std::make_index_sequence<sizeof(Unsigned)>());
}

/// Puts the fields of one entry, in order.
class EntryWriter {
public:
    explicit EntryWriter(char* at) : m_at(at) {}

    void Float(float value) { Bits(std::bit_cast<std::uint32_t>(value)); }
    template <class Value> void Int32(Value value) { Bits(static_cast<std::uint32_t>(value)); }
    /// The low 16 bits.
    template <class Value> void Int16(Value value) { Bits(static_cast<std::uint16_t>(value)); }

    /// Text up to its first zero, cut between characters at `longest` bytes, in a field of `width` bytes.
    void Text(const wstring& text, std::size_t width, std::size_t longest) {
        const std::string narrow = vorn::StringUtil::ToString(text.c_str());
        const std::string_view kept = vorn::StringUtil::CutUtf8(narrow, longest);
        std::fill_n(m_at, width, '\0');
        std::copy(kept.begin(), kept.end(), m_at);
        m_at += width;
    }

private:
    template <class Unsigned> void Bits(Unsigned value) {
        EachByte<Unsigned>([&](std::size_t i) { m_at[i] = static_cast<char>((value >> (8 * i)) & 0xFFU); });
        m_at += sizeof(Unsigned);
    }

    char* m_at;
};

/// Takes the fields of one entry, in order.
class EntryReader {
public:
    explicit EntryReader(const char* at) : m_at(at) {}

    void Float(float& value) { value = std::bit_cast<float>(Bits<std::uint32_t>()); }
    template <class Value> void Int32(Value& value) {
        value = static_cast<Value>(static_cast<std::int32_t>(Bits<std::uint32_t>()));
    }
    template <class Value> void Int16(Value& value) {
        value = static_cast<Value>(static_cast<std::int16_t>(Bits<std::uint16_t>()));
    }

    /// Text up to the first zero or the end of the field.
    void Text(wstring& text, std::size_t width, std::size_t) {
        const std::string_view field(m_at, width);
        text = vorn::StringUtil::ToWString(field.substr(0, field.find('\0')));
        m_at += width;
    }

private:
    template <class Unsigned> Unsigned Bits() {
        Unsigned value = 0;
        EachByte<Unsigned>([&](std::size_t i) {
            value = static_cast<Unsigned>(value | (Unsigned{static_cast<unsigned char>(m_at[i])} << (8 * i)));
        });
        m_at += sizeof(Unsigned);
        return value;
    }

    const char* m_at;
};

// The fields of each entry, told once for both directions.

struct PipeSizeFields {
    static void Walk(auto io, auto& size) {
        io.Float(size.nominalDiameter);
        io.Float(size.outerDiameter);
        io.Float(size.innerDiameter);
        io.Float(size.thickness);
    }
};

struct DuctSizeFields {
    static void Walk(auto io, auto& size) {
        io.Float(size.size);
        io.Float(size.thickness);
    }
};

struct CableSpecFields {
    static void Walk(auto io, auto& spec) {
        io.Text(spec.area, 50, 49);
        io.Int32(spec.current);
        io.Int16(spec.temperature);
    }
};

struct FittingFields {
    static void Walk(auto io, auto& fitting) {
        io.Text(fitting.categoryCode, 50, 50);
        io.Int32(fitting.partType);
        io.Int32(fitting.ruleGroup);
        io.Text(fitting.productId, 40, 40);
        io.Float(fitting.min);
        io.Float(fitting.max);
    }
};

struct CircularSizeFields {
    static void Walk(auto io, auto& size) {
        io.Int16(size.firstSize);
        io.Int16(size.thirdSize);
    }
};

struct RectSizeFields {
    static void Walk(auto io, auto& size) {
        io.Int16(size.firstSize);
        io.Int16(size.secondSize);
        io.Int16(size.thirdSize);
    }
};

struct DimensionMethodFields {
    static void Walk(auto io, auto& item) {
        io.Int16(item.methodKind);
        io.Float(item.firstValue);
        io.Float(item.secondValue);
    }
};

template <class Fields, class Entry> constexpr PackedLayout<Entry> Layout(std::size_t entrySize) {
    return {entrySize, [](char* at, const Entry& entry) { Fields::Walk(EntryWriter(at), entry); },
            [](const char* at) {
                Entry entry;
                Fields::Walk(EntryReader(at), entry);
                return entry;
            }};
}

} // namespace

std::wstring PackedListFault(const wchar_t* name, std::size_t length) {
    if (length <= kPackedListCapacity)
        return {};
    return name + (L" 超过300条: " + std::to_wstring(length));
}

constinit const PackedLayout<ProjectSettingPipeSize> kPipeSizeLayout =
    Layout<PipeSizeFields, ProjectSettingPipeSize>(schema::kPipeSizeEntrySize);
constinit const PackedLayout<ProjectSettingDuctSize> kDuctSizeLayout =
    Layout<DuctSizeFields, ProjectSettingDuctSize>(schema::kDuctSizeEntrySize);
constinit const PackedLayout<ProjectSettingCableSpec> kCableSpecLayout =
    Layout<CableSpecFields, ProjectSettingCableSpec>(schema::kCableSpecificationEntrySize);
constinit const PackedLayout<PackedFitting> kFittingLayout =
    Layout<FittingFields, PackedFitting>(schema::kFittingEntrySize);
constinit const PackedLayout<DataSetInsulationMaxSize> kCircularSizeLayout =
    Layout<CircularSizeFields, DataSetInsulationMaxSize>(schema::kCircularMaxSizeEntrySize);
constinit const PackedLayout<DataSetInsulationMaxSize> kRectSizeLayout =
    Layout<RectSizeFields, DataSetInsulationMaxSize>(schema::kRectMaxSizeEntrySize);
constinit const PackedLayout<DataSetDimensionMethodItem> kDimensionMethodLayout =
    Layout<DimensionMethodFields, DataSetDimensionMethodItem>(schema::kDimensionMethodEntrySize);

} // namespace tolm
