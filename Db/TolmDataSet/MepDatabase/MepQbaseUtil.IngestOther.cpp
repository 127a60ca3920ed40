#include "MepDatabase/MepQbaseUtil.h"
#include "Host/Components.h"
#include "MepDatabase/BinaryFiles.h"
#include "MepDatabase/CombinedProductIngest.h"
#include "MepDatabase/IngestRecord.h"
#include "MepDatabase/JsonRead.h"
#include "MepDatabase/WireText.h"
#include "MepDatabase/WorkUnit.h"
#include "TolmDataSet/Base64.h"
#include "Vorn/DebugMessage.h"

#include <utility>

namespace tolm {
namespace {

using ingest::Field;
using ingest::FieldKind;
using web::json::object;

constexpr Field kCircuitTemplateFields[] = {
    {"SystemClassification", schema::kSystemClassification, FieldKind::Short},
    {"SystemTypeId", schema::kSystemTypeId, FieldKind::Text},
    {"SwitchComponentId1", schema::kSwitchComponentId1, FieldKind::Text},
    {"SwitchComponentId2", schema::kSwitchComponentId2, FieldKind::Text},
    {"SwitchComponentId3", schema::kSwitchComponentId3, FieldKind::Text},
    {"SwitchComponentType1", schema::kSwitchComponentType1, FieldKind::Text},
    {"SwitchComponentType2", schema::kSwitchComponentType2, FieldKind::Text},
    {"SwitchComponentType3", schema::kSwitchComponentType3, FieldKind::Text},
    {"Phase", schema::kPhase, FieldKind::Short},
    {"ProtectionMaterial", schema::kProtectionMaterial, FieldKind::Text},
    {"WireType", schema::kWireTypeId, FieldKind::Text},
    {"WireSpec", schema::kWireSpec, FieldKind::Text},
    {"WireCountStr", schema::kWireCountStr, FieldKind::Text},
    {"ConduitType", schema::kConduitTypeId, FieldKind::Text},
    {"ConduitSizeDN", schema::kConduitSizeDN, FieldKind::Short},
    {"IsApply", schema::kIsApply, FieldKind::Short},
    {"LayingMode", schema::kLayingMode, FieldKind::Text},
};

struct CombinationTable {
    const char* key;
    const wchar_t* categoryCode;
};

constexpr CombinationTable kCombinations[] = {
    {"Combination_16353515", L"16353515"},
    {"Combination_16302510", L"16302510"},
    {"Combination_16352020", L"16352020"},
    {"Combination_16352030", L"16352030"},
};

/// The elements of a table; none when the key is missing.
const web::json::array* ElementsOf(const object& tables, const char* key) {
    const web::json::value* table = jsonread::Find(tables, key);
    return table != nullptr ? &table->as_array() : nullptr;
}

/// Does `work` with each element of a table, each a unit of its own.
template <class Work>
void ForEachElement(const object& tables, const char* key, const CallSite& site, const wchar_t* failure, Work work) {
    const web::json::array* elements = nullptr;
    if (!DoUnit(site, failure, [&] { elements = ElementsOf(tables, key); }) || elements == nullptr)
        return;
    for (const auto& element : *elements)
        DoUnit(site, failure, [&] { work(element.as_object()); });
}

void WriteCircuitTemplate(CQbase& qb, const object& element) {
    ingest::FetchOrCreate(qb, schema::kCircuitTemplate, jsonread::Text(element, "ID"));
    ingest::WriteFields(qb, kCircuitTemplateFields, element);
    ingest::Save(qb);
}

void AppendProducts(MepQbaseUtil& util, const CombinationTable& table, const web::json::array& elements,
                    std::vector<TolmCombinedProduct>& products) {
    for (const auto& element : elements) {
        TolmCombinedProduct product;
        if (util.GetCombinedProductFromJson(table.categoryCode, element, product))
            products.push_back(std::move(product));
    }
}

void InsertCombinedProducts(MepQbaseUtil& util, const object& add, const wstring& path) {
    std::vector<TolmCombinedProduct> products;
    for (const CombinationTable& table : kCombinations)
        if (const web::json::array* elements = ElementsOf(add, table.key))
            AppendProducts(util, table, *elements, products);
    std::vector<wstring> newIds;
    if (!products.empty())
        TolmComponentSqlUtil::InsertCombinedProduct(path, products, newIds);
}

std::map<wstring, std::vector<wstring>> CombinedProductIds(const object& del) {
    std::map<wstring, std::vector<wstring>> idsByCode;
    for (const CombinationTable& table : kCombinations)
        if (const web::json::array* elements = ElementsOf(del, table.key))
            for (const auto& element : *elements)
                idsByCode[table.categoryCode].push_back(jsonread::Text(element.as_object(), "ID"));
    return idsByCode;
}

/// A category that the service does not know is given by its code.
void RemoveCombinedProducts(ITolmCategoryInfoUtils& utils, const wstring& path, const wstring& code,
                            const std::vector<wstring>& ids) {
    const ITolmCategoryInfo* category = utils.FindCategoryInfo(code);
    TolmComponentSqlUtil::RemoveCombinedProduct(path, category != nullptr ? category->GetName() : code,
                                                category != nullptr ? category->GetEnglishName() : code, ids);
}

/// A missing member is told in the caller's name.
bool Has(const object& row, const char* key, const CallSite& site) {
    if (jsonread::Find(row, key) != nullptr)
        return true;
    site.Warn(L"ID为空");
    return false;
}

/// Reads what the list form adds. False when the row lacks it, which is told in the caller's name.
bool ReadListForm(const object& row, ITolmCategoryInfoUtils& utils, const CallSite& site,
                  TolmCombinedProduct& product) {
    if (!Has(row, "Spacing", site))
        return false;
    product.spacing = jsonread::Int(row, "Spacing");
    if (!Has(row, "List", site))
        return false;
    const web::json::array& parts = row.at("List").as_array();
    if (parts.size() == 0) {
        site.Warn(L"partList.size()为0");
        return false;
    }
    for (const auto& part : parts)
        product.components.push_back(ReadReference(part.as_object(), kListedComponent, utils));
    return true;
}

void WriteBinaryFile(BinaryFileFolder& folder, const object& element) {
    const std::string bytes = base64_decode(element.at("data").as_string());
    jsonread::Int(element, "length"); // the length of the data counts, not what is said of it
    folder.Write(jsonread::Text(element, "fileName"), bytes);
}

} // namespace

bool MepQbaseUtil::GetCombinedProductFromJson(wstring categoryCode, web::json::value element,
                                              TolmCombinedProduct& product) {
    if (!element.has_field("ID")) {
        VORN_DEBUG_WARN(L"ID为空");
        return false;
    }
    if (!element.has_field("Name")) {
        VORN_DEBUG_WARN(L"Name为空");
        return false;
    }
    const object& row = element.as_object();
    product.Id = jsonread::Text(row, "ID");
    product.Name = jsonread::Text(row, "Name");
    product.categoryCode = std::move(categoryCode);
    ITolmCategoryInfoUtils* utils = TolmCategoryInfoUtilsHandler::Get().GetUtils();
    if (utils == nullptr) {
        VORN_DEBUG_WARN(L"pTolmCategoryInfoUtils为空");
        return false;
    }
    const CombinedProductForm form = FormOf(product.categoryCode);
    if (form == CombinedProductForm::List)
        return ReadListForm(row, *utils, TOLM_CALL_SITE, product);
    if (form == CombinedProductForm::Equipment)
        ReadEquipmentForm(row, *utils, product);
    return true;
}

bool MepQbaseUtil::AddOtherContent(const web::json::object& add, CQbase* qb, wstring combinedProductFilePath,
                                   wstring binaryFileFolder, wstring datasetFilePath) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb为空");
        return false;
    }
    ForEachElement(add, "CircuitTemplate", TOLM_CALL_SITE, L"CircuitTemplate:下载回路模板失败",
                   [&](const object& element) { WriteCircuitTemplate(*qb, element); });
    DoUnit(TOLM_CALL_SITE, L"Combination_:下载组合设备失败",
           [&] { InsertCombinedProducts(*this, add, combinedProductFilePath); });
    BinaryFileFolder folder(binaryFileFolder, combinedProductFilePath, datasetFilePath);
    ForEachElement(add, "BinaryTable", TOLM_CALL_SITE, L"BinaryTable:下载文件失败",
                   [&](const object& element) { WriteBinaryFile(folder, element); });
    return true;
}

bool MepQbaseUtil::DeleteOtherContent(const web::json::object& del, CQbase* qb, wstring combinedProductFilePath,
                                      wstring binaryFileFolder, wstring datasetFilePath) {
    if (qb == nullptr) {
        VORN_DEBUG_WARN(L"qb is null");
        return false;
    }
    ForEachElement(del, "CircuitTemplate", TOLM_CALL_SITE, L"删除回路模板失败", [&](const object& element) {
        qb->deleteRec(schema::kCircuitTemplate, jsonread::Text(element, "ID"));
    });
    const CallSite site = TOLM_CALL_SITE;
    DoUnit(site, L"删除组合设备失败", [&] {
        const auto idsByCode = CombinedProductIds(del);
        if (idsByCode.empty())
            return;
        ITolmCategoryInfoUtils* utils = TolmCategoryInfoUtilsHandler::Get().GetUtils();
        if (utils == nullptr)
            return site.Warn(L"pUtil为空");
        for (const auto& [code, ids] : idsByCode)
            RemoveCombinedProducts(*utils, combinedProductFilePath, code, ids);
    });
    BinaryFileFolder folder(binaryFileFolder, combinedProductFilePath, datasetFilePath);
    ForEachElement(del, "BinaryTable", TOLM_CALL_SITE, L"删除单文件失败",
                   [&](const object& element) { folder.Remove(jsonread::Text(element, "fileName")); });
    return true;
}

} // namespace tolm
