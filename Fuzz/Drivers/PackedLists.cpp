#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/InputBytes.h"
#include "Fuzz/Support/Require.h"
#include "MepDatabase/PackedLists.h"
#include "Vorn/Text.h"

#include <array>

namespace tolmfuzz {
namespace {

using tolm::Pack;
using tolm::PackedLayout;
using tolm::Unpack;
using Bytes = std::vector<char>;

template <class Entry> Bytes PackOrRefuse(const PackedLayout<Entry>& layout, const std::vector<Entry>& list) {
    try {
        const Bytes packed = Pack(layout, list);
        Require(list.size() <= tolm::kPackedListCapacity, "a list over the capacity is refused");
        return packed;
    } catch (const std::length_error&) {
        Require(list.size() > tolm::kPackedListCapacity, "only a list over the capacity is refused");
        return {};
    }
}

/// Bytes of a list, read and written again. Entries of numbers alone come back as they were; text is put in order
/// once and then stands.
template <class Entry> void TryBytes(const PackedLayout<Entry>& layout, const std::string& bytes, bool numbersAlone) {
    const auto list = Unpack(layout, bytes.data(), static_cast<int>(bytes.size()));
    Require(list.size() == bytes.size() / layout.entrySize, "every whole entry is read");
    const Bytes packed = PackOrRefuse(layout, list);
    if (list.size() > tolm::kPackedListCapacity)
        return;
    Require(packed.size() == list.size() * layout.entrySize, "the bytes are those of the entries");
    if (numbersAlone)
        Require(std::equal(packed.begin(), packed.end(), bytes.begin()), "numbers come back bit by bit");
    const auto again = Unpack(layout, packed.data(), static_cast<int>(packed.size()));
    Require(Pack(layout, again) == packed, "what was written is written again");
}

std::wstring AnyText(InputBytes& input) {
    std::wstring text(input.Below(64), L'\0');
    for (wchar_t& character : text)
        character = static_cast<wchar_t>(input.Number(input.Below(3) == 0 ? 4 : 1));
    return text;
}

/// The text as it stands in a field: without what follows its first zero, well formed.
std::string Narrow(const std::wstring& text) {
    return vorn::StringUtil::ToString(text.c_str());
}

void RequireField(const std::wstring& before, const std::wstring& after, std::size_t width) {
    const std::string whole = Narrow(before);
    const std::string kept = Narrow(after);
    Require(vorn::StringUtil::IsValidUtf8(whole), "narrow text is well formed");
    Require(kept.size() <= width && whole.starts_with(kept), "a field keeps the beginning of its text");
    Require(kept.size() == whole.size() || kept.size() + 4 > width, "a field is cut where no more goes in");
}

void TryTexts(InputBytes input) {
    tolm::PackedFitting fitting;
    fitting.categoryCode = AnyText(input);
    fitting.productId = AnyText(input);
    tolm::ProjectSettingCableSpec spec;
    spec.area = AnyText(input);
    const Bytes fittings = Pack(tolm::kFittingLayout, {fitting});
    const Bytes specs = Pack(tolm::kCableSpecLayout, {spec});
    const auto kept = Unpack(tolm::kFittingLayout, fittings.data(), static_cast<int>(fittings.size())).at(0);
    RequireField(fitting.categoryCode, kept.categoryCode, 50);
    RequireField(fitting.productId, kept.productId, 40);
    const auto area = Unpack(tolm::kCableSpecLayout, specs.data(), static_cast<int>(specs.size())).at(0).area;
    RequireField(spec.area, area, 49);
}

template <const auto& layout, bool numbersAlone> void TryLayout(const std::string& bytes) {
    TryBytes(layout, bytes, numbersAlone);
}

constexpr std::array kLayouts{
    TryLayout<tolm::kPipeSizeLayout, true>,        TryLayout<tolm::kDuctSizeLayout, true>,
    TryLayout<tolm::kCircularSizeLayout, true>,    TryLayout<tolm::kRectSizeLayout, true>,
    TryLayout<tolm::kDimensionMethodLayout, true>, TryLayout<tolm::kCableSpecLayout, false>,
    TryLayout<tolm::kFittingLayout, false>,
};

} // namespace

int TryPackedLists(const std::uint8_t* data, std::size_t size) {
    InputBytes input(data, size);
    const std::size_t which = input.Below(kLayouts.size() + 1);
    if (which == kLayouts.size())
        TryTexts(input);
    else
        kLayouts.at(which)(input.Rest());
    return 0;
}

} // namespace tolmfuzz
