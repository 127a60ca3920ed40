#include "MepDatabase/Fittings.h"

#include "MepDatabase/AttributeTable.h"
#include "MepDatabase/StoreSchema.h"
#include "Qbase/Qbase.h"

#include <algorithm>
#include <string>

namespace tolm {
namespace {

// Every fitting that is read serves these sizes.
constexpr double kSmallestSize = 1.0;
constexpr double kLargestSize = 1'000'000.0;

bool IsNegative(const PackedFitting& fitting) {
    return static_cast<std::int32_t>(fitting.partType) < 0;
}

PackedFitting PackableOf(const ITolmProjectSettingFittingComponentConst& fitting) {
    return {fitting.m_pComponent->GetCategoryCode(),
            fitting.fittingPartType,
            fitting.routingGroup,
            fitting.m_pComponent->GetId(),
            ClampTo<float>(fitting.firstSizeBound),
            ClampTo<float>(fitting.secondSizeBound)};
}

CByteBuffer FittingBytes(CQbase& qb) {
    CByteBuffer bytes;
    int byteCount = 0;
    if (!qb.getBinaryArray(schema::kFittingList, bytes, byteCount))
        bytes.reset();
    return bytes;
}

void SetFittingBytes(CQbase& qb, const std::vector<char>& bytes, std::size_t count) {
    qb.setBinaryArray(schema::kFittingList, bytes.data(), static_cast<int>(count), 0);
}

// Where the texts of a packed fitting stand.
constexpr std::size_t kCategoryWidth = 50;
constexpr std::size_t kProductAt = 58;
constexpr std::size_t kProductWidth = 40;

/// Copies a field's text byte by byte, up to its first zero; what is left of the field becomes zeros.
void CopyText(const char* from, std::size_t width, char* to) {
    const char* const end = std::find(from, from + width, '\0');
    std::fill(std::copy(from, end, to), to + width, '\0');
}

/// Puts the fitting with the new id of its component, or with the old one where that stays. The category keeps its
/// bytes, also those that are no text. True for a new id that is not empty.
bool PutReplaced(const char* from, PackedFitting fitting, const std::map<wstring, wstring>& componentIds, char* to) {
    const auto found = componentIds.find(fitting.productId);
    const bool isReplaced = found != componentIds.end();
    if (isReplaced) {
        fitting.productId = found->second;
        kFittingLayout.put(to, fitting);
    } else {
        std::copy_n(from, kFittingLayout.entrySize, to);
        CopyText(from + kProductAt, kProductWidth, to + kProductAt);
    }
    CopyText(from, kCategoryWidth, to);
    return isReplaced && !found->second.empty();
}

} // namespace

PackableFittings FittingsOf(const IProjectSettingConnectionSerie& serie) {
    PackableFittings fittings{{}, true};
    for (const auto& product : serie.GetProducts()) {
        fittings.isWhole = product.m_pComponent != nullptr;
        if (!fittings.isWhole)
            break;
        fittings.entries.push_back(PackableOf(product));
    }
    return fittings;
}

wstring ListFault(const PackableFittings& fittings) {
    return PackedListFault(L"FittingList", fittings.entries.size());
}

std::vector<PackedFitting> ReadFittings(CQbase& qb) {
    const CByteBuffer bytes = FittingBytes(qb);
    return Unpack(kFittingLayout, bytes.data(), bytes.dataLen());
}

void WriteFittings(CQbase& qb, const std::vector<PackedFitting>& fittings) {
    if (fittings.empty())
        qb.removeAttribute(schema::kFittingList);
    else
        SetFittingBytes(qb, Pack(kFittingLayout, fittings), fittings.size());
}

const wchar_t* GiveFittings(const std::vector<PackedFitting>& fittings, ComponentCache& components,
                            IProjectSettingConnectionSerie& serie) {
    ITolmCategoryInfoUtils* utils = fittings.empty() ? nullptr : TolmCategoryInfoUtilsHandler::Get().GetUtils();
    if (utils == nullptr)
        return nullptr;
    const ComponentCache::Category* category = nullptr;
    for (const PackedFitting& fitting : fittings) {
        if (IsNegative(fitting))
            continue;
        if (category == nullptr)
            category = &components.Of(*utils, fitting.categoryCode);
        if (category->fault != nullptr)
            return category->fault;
        const auto found = category->components.find(fitting.productId);
        if (found == category->components.end())
            continue;
        auto component = found->second->Clone();
        if (component == nullptr)
            return L"fittingComponentMap[strProdId]为空";
        serie.AddFitting(fitting.partType, fitting.ruleGroup, component, kSmallestSize, kLargestSize);
    }
    return nullptr;
}

void ReplaceComponentIds(CQbase& qb, const std::map<wstring, wstring>& componentIds) {
    const CByteBuffer bytes = FittingBytes(qb);
    const auto fittings = Unpack(kFittingLayout, bytes.data(), bytes.dataLen());
    std::vector<char> area(fittings.size() * kFittingLayout.entrySize);
    std::size_t count = 0;
    bool isChanged = false;
    for (std::size_t i = 0; i < fittings.size(); ++i) {
        if (IsNegative(fittings[i]))
            continue;
        const std::size_t at = i * kFittingLayout.entrySize;
        isChanged = PutReplaced(bytes.data() + at, fittings[i], componentIds, area.data() + at) || isChanged;
        ++count;
    }
    if (!isChanged)
        return;
    SetFittingBytes(qb, area, count);
    qb.saveRec();
}

} // namespace tolm
