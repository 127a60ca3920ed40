#include "MepDatabase/FittingIngest.h"

#include "Host/Categories.h"
#include "MepDatabase/IngestRecord.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/WireText.h"
#include "Vorn/DebugMessage.h"

namespace tolm {
namespace {

using web::json::object;

wstring IdText(const web::json::value& id) {
    if (id.is_string())
        return WideText(id);
    return id.is_number() ? std::to_wstring(jsonread::Int64Of(id)) : wstring();
}

float SizeBound(const object& product, const char* key) {
    const web::json::value* bound = jsonread::Find(product, key);
    return bound != nullptr && bound->is_number() ? FiniteFloat(*bound) : 0.0F;
}

void FindCategory(ITolmCategoryInfoUtils& utils, const wstring& code, wstring& categoryId) {
    if (const auto category = utils.GetCategoryInfo(code))
        categoryId = category->GetCode();
}

PackedFitting ReadFitting(const object& product, int ruleType, const wstring& categoryId) {
    PackedFitting fitting;
    fitting.categoryCode = categoryId;
    fitting.ruleGroup = static_cast<RoutingPreferenceRuleGroupType>(ruleType);
    fitting.productId = IdText(product.at("id"));
    fitting.partType = static_cast<FittingPartType>(jsonread::Int(product, "FittingPartType"));
    fitting.min = SizeBound(product, "min");
    fitting.max = SizeBound(product, "max");
    return fitting;
}

} // namespace

bool GetFittingProductsOfOneRuleType(int ruleType, std::vector<web::json::value> products, wstring& categoryId,
                                     char* rows, int& count) {
    if (rows == nullptr) {
        VORN_DEBUG_WARN(L"productlist1为空");
        return false;
    }
    count = 0;
    ingest::RequireRoom(products.size());
    for (const auto& value : products) {
        const object& product = value.as_object();
        const wstring code = jsonread::Text(product, "categoryCode");
        if (categoryId.empty()) {
            ITolmCategoryInfoUtils* utils = TolmCategoryInfoUtilsHandler::Get().GetUtils();
            if (utils == nullptr) {
                VORN_DEBUG_WARN(L"pTolmCategoryInfoUtils为空");
                break;
            }
            FindCategory(*utils, code, categoryId);
        }
        kFittingLayout.put(rows + static_cast<std::size_t>(count) * kFittingEntrySize,
                           ReadFitting(product, ruleType, categoryId));
        ++count;
    }
    return count > 0;
}

} // namespace tolm
