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
    {L"electricWireType", DeleteById<schema::PSI>},
    {L"electricLinePipe", DeleteById<schema::PSI>},
    {L"pipeFittingGroup", DeleteById<schema::MSG>},
    {L"havcFittingGroup", DeleteById<schema::MSG>},
    {L"ductFittingGroup", DeleteById<schema::MSG>},
};

} // namespace

void DeletePipeSizeTableItem(const object& element, CQbase& qb) {
    const bool isMaterial = jsonread::Text(element, "parentID").empty();
    qb.deleteRec(isMaterial ? schema::MTS : schema::PSI, jsonread::Text(element, "ID"));
}

void DeleteDuctSizeTable(const std::wstring& id, CQbase& qb) {
    if (!qb.fetchEqualRec(schema::PSI, id))
        return;
    const std::wstring materialId = ingest::GetText(qb, schema::MaterialId);
    if (!materialId.empty())
        qb.deleteRec(schema::MTS, materialId);
    qb.deleteRec(schema::PSI, id);
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
