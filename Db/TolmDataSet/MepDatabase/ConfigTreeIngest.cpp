#include "MepDatabase/ConfigTreeIngest.h"

#include "MepDatabase/IngestRecord.h"
#include "MepDatabase/JsonRead.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tolm {
namespace {

using web::json::object;

template <const auto& ClassCode> void DeleteById(const object& element, CQbase& qb) {
    qb.deleteRec(ClassCode, jsonread::Text(element, "ID"));
}

void DeleteDuct(const object& element, CQbase& qb) {
    DeleteDuctSizeTable(jsonread::Text(element, "ID"), qb);
}

struct Deletion {
    std::wstring_view groupName;
    void (*apply)(const object& element, CQbase& qb);
};

constexpr Deletion kDeletions[] = {
    {L"MaterialSeries", DeletePipeSizeTableItem},
    {L"HVACMaterialSeries", DeletePipeSizeTableItem},
    {L"ductSeriesType", DeleteDuct},
    {L"electricWireType", DeleteById<schema::kSizeModule>},
    {L"electricLinePipe", DeleteById<schema::kSizeModule>},
    {L"pipeFittingGroup", DeleteById<schema::kMaterialSerieGroup>},
    {L"havcFittingGroup", DeleteById<schema::kMaterialSerieGroup>},
    {L"ductFittingGroup", DeleteById<schema::kMaterialSerieGroup>},
};

} // namespace

void DeletePipeSizeTableItem(const object& element, CQbase& qb) {
    const bool isMaterial = jsonread::Text(element, "parentID").empty();
    qb.deleteRec(isMaterial ? schema::kMaterial : schema::kSizeModule, jsonread::Text(element, "ID"));
}

void DeleteDuctSizeTable(const std::wstring& id, CQbase& qb) {
    if (!qb.fetchEqualRec(schema::kSizeModule, id))
        return;
    const std::wstring materialId = ingest::GetText(qb, schema::kMaterialId);
    if (!materialId.empty())
        qb.deleteRec(schema::kMaterial, materialId);
    qb.deleteRec(schema::kSizeModule, id);
}

void DeleteConfigTreeItems(const object& del, CQbase* qb) {
    if (qb == nullptr)
        return;
    for (const auto& value : del.at("ConfigTree").as_array()) {
        const object& element = value.as_object();
        const std::wstring groupName = jsonread::Text(element, "groupName");
        const auto* rule = std::find_if(std::begin(kDeletions), std::end(kDeletions),
                                        [&](const Deletion& deletion) { return deletion.groupName == groupName; });
        if (rule != std::end(kDeletions))
            rule->apply(element, *qb);
    }
}

} // namespace tolm
