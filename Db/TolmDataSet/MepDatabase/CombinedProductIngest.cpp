#include "MepDatabase/CombinedProductIngest.h"

#include "MepDatabase/JsonRead.h"
#include "MepDatabase/WireText.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tolm {
namespace {

struct CodeForm {
    std::wstring_view code;
    CombinedProductForm form;
};

constexpr CodeForm kForms[] = {
    {L"16353515", CombinedProductForm::List},
    {L"16302510", CombinedProductForm::List},
    {L"16352020", CombinedProductForm::Equipment},
    {L"16352030", CombinedProductForm::Equipment},
};

template <class Value> struct Member {
    const char* key;
    Value TolmCombinedProduct::*field;
};

struct ReferenceMember {
    ReferenceKeys keys;
    TolmComponentReference TolmCombinedProduct::*field;
};

constexpr ReferenceMember kReferences[] = {
    {{"EquipmentCategoryStandardCode", "EquipmentComponentId", "EquipmentComponentTypeId"},
     &TolmCombinedProduct::equipment},
    {{"AirTerminalCategoryStandardCode", "SupplyAirTerminalComponentId", "SupplyAirTerminalComponentTypeId"},
     &TolmCombinedProduct::supplyAirTerminal},
    {{"AirTerminalCategoryStandardCode", "ReturnAirTerminalComponentId", "ReturnAirTerminalComponentTypeId"},
     &TolmCombinedProduct::returnAirTerminal},
};

constexpr Member<std::wstring> kTexts[] = {
    {"SupplySystemTypeId", &TolmCombinedProduct::supplySystemTypeId},
    {"SupplyDuctTypeId", &TolmCombinedProduct::supplyDuctTypeId},
    {"ReturnSystemTypeId", &TolmCombinedProduct::returnSystemTypeId},
    {"ReturnDuctTypeId", &TolmCombinedProduct::returnDuctTypeId},
};

constexpr Member<double> kLengths[] = {
    {"SupplyHoseLength", &TolmCombinedProduct::supplyHoseLength},
    {"SupplyAirTerminalDist1", &TolmCombinedProduct::supplyAirTerminalDist1},
    {"SupplyAirTerminalDist2", &TolmCombinedProduct::supplyAirTerminalDist2},
    {"ReturnHoseLength", &TolmCombinedProduct::returnHoseLength},
};

} // namespace

CombinedProductForm FormOf(const std::wstring& categoryCode) {
    const auto* found = std::find_if(std::begin(kForms), std::end(kForms),
                                     [&](const CodeForm& row) { return row.code == categoryCode; });
    return found == std::end(kForms) ? CombinedProductForm::None : found->form;
}

TolmComponentReference ReadReference(const web::json::object& row, const ReferenceKeys& keys,
                                     ITolmCategoryInfoUtils& utils) {
    TolmComponentReference reference;
    reference.categoryStandardCode = jsonread::Text(row, keys.categoryStandardCode);
    reference.componentId = jsonread::Text(row, keys.componentId);
    reference.componentTypeId = jsonread::Text(row, keys.componentTypeId);
    if (const ITolmCategoryInfo* category = utils.FindCategoryInfo(reference.categoryStandardCode)) {
        reference.categoryName = category->GetName();
        reference.categoryEnglishName = category->GetEnglishName();
    }
    return reference;
}

void ReadEquipmentForm(const web::json::object& row, ITolmCategoryInfoUtils& utils, TolmCombinedProduct& product) {
    if (jsonread::Find(row, "EquipmentComponentId") == nullptr)
        return;
    for (const auto& reference : kReferences)
        product.*reference.field = ReadReference(row, reference.keys, utils);
    for (const auto& text : kTexts)
        product.*text.field = jsonread::Text(row, text.key);
    for (const auto& length : kLengths)
        product.*length.field = FiniteNumber(row.at(length.key));
    product.supplyAirTerminalNumber = jsonread::Int(row, "SupplyAirTerminalNumber");
}

} // namespace tolm
