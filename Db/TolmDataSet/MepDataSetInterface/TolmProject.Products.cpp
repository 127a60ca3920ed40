#include "MepDataSetInterface/TolmProject.h"
#include "Host/Definitions.h"
#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Vorn/DebugMessage.h"

#include <unordered_set>
#include <utility>

namespace tolm {
namespace {

struct SplitProducts {
    std::vector<TolmCombinedProduct> created;
    std::vector<TolmCombinedProduct> edited;
};

/// Those whose id is new apart from the others, both in their order.
SplitProducts SplitByNewIds(std::vector<TolmCombinedProduct> products, const std::vector<wstring>& newIds) {
    const std::unordered_set<wstring> fresh(newIds.begin(), newIds.end());
    SplitProducts split;
    for (auto& product : products)
        (fresh.contains(product.Id) ? split.created : split.edited).push_back(std::move(product));
    return split;
}

} // namespace

bool TolmDataset::ReadDisciplineList(IdMap<ITolmDisciplineInfo>& disciplines) {
    ITolmCategoryInfoUtils* const pInfoUtils = TolmCategoryInfoUtilsHandler::Get().GetUtils();
    if (pInfoUtils == nullptr) {
        VORN_DEBUG_WARN(L"pInfoUtils为空！");
        return false;
    }
    return pInfoUtils->ReadDisciplineList(disciplines);
}

std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>
TolmDataset::GetProjectProductList(wstring categoryCode, std::map<wstring, wstring>& conditions, bool flag) {
    std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>> products;
    ITolmCategoryInfoUtils* const pInfoUtils = TolmCategoryInfoUtilsHandler::Get().GetUtils();
    if (pInfoUtils == nullptr) {
        VORN_DEBUG_WARN(L"pInfoUtils为空！");
        return products;
    }
    const auto category = pInfoUtils->GetCategoryInfo(categoryCode);
    if (category)
        TolmComponentSqlUtil::ReadComponentListWithCondition(m_componentFilePath, category.get(), conditions, products,
                                                             flag);
    return products;
}

std::map<wstring, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>>
TolmDataset::GetProjectProductList(std::vector<wstring> categoryCodes) {
    std::vector<vorn::OwnerPtr<ITolmCategoryInfo>> owners;
    std::vector<const ITolmCategoryInfo*> categories;
    for (const auto& code : categoryCodes) {
        ITolmCategoryInfoUtils* const pInfoUtils = TolmCategoryInfoUtilsHandler::Get().GetUtils();
        if (pInfoUtils == nullptr) {
            VORN_DEBUG_WARN(L"pInfoUtils为空！");
            return {};
        }
        auto category = pInfoUtils->GetCategoryInfo(code);
        if (!category)
            continue;
        categories.push_back(category.get());
        owners.push_back(std::move(category));
    }
    std::map<wstring, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>> products;
    if (!categories.empty())
        TolmComponentSqlUtil::ReadComponentList(m_componentFilePath, categories, products, true);
    return products;
}

std::map<int, vorn::OwnerPtr<ITolmProjectSettingComponent>>
TolmDataset::GetOneProjectProduct(const ITolmCategoryInfo* category, __int64 id, std::vector<int> numbers) {
    if (category == nullptr) {
        VORN_DEBUG_WARN(L"pCategory为空");
        return {};
    }
    return TolmComponentSqlUtil::ReadOneComponent(m_componentFilePath, category, id, numbers);
}

bool TolmDataset::UpdateAllComponentId(std::map<wstring, wstring>& componentIds,
                                       std::map<wstring, wstring>& componentTypeIds) {
    return TolmComponentSqlUtil::UpdateAllComponentId(m_componentFilePath, componentIds, componentTypeIds);
}

bool TolmDataset::AddCombinedComponents(wstring targetId, std::vector<TolmCombinedProduct> products) {
    if (targetId.empty() || products.empty())
        return false;
    std::vector<wstring> newIds;
    TolmComponentSqlUtil::InsertCombinedProduct(m_combinedProductFilePath, products, newIds);
    auto [created, edited] = SplitByNewIds(std::move(products), newIds);
    auto* const client = TolmProjectSettingHttpUtility::GetInstance();
    const bool createdSent = !created.empty() && client->SendCreatedCombinationList(targetId, std::move(created));
    const bool editedSent = !edited.empty() && client->SendEditedCombinationList(targetId, std::move(edited));
    return createdSent || editedSent;
}

bool TolmDataset::RemoveCombinedComponents(wstring localKey, wstring targetId, std::vector<wstring> ids) {
    if (ids.empty())
        return false;
    TolmComponentSqlUtil::RemoveCombinedProduct(m_combinedProductFilePath, localKey, targetId, ids);
    return TolmProjectSettingHttpUtility::GetInstance()->SendRemovedCombinationList(std::move(targetId),
                                                                                    std::move(ids));
}

bool TolmDataset::ReplaceFittingComponentId(std::map<wstring, wstring> idMap) {
    return MepQbaseUtil::GetInstance()->ReplaceFittingComponentId(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath,
                                                                  std::move(idMap));
}

} // namespace tolm
