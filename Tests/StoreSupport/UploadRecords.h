#pragma once

#include "StoreSupport/SeriesFixture.h"

#include <cpprest/json.h>

#include <memory>
#include <string>

namespace tolmtest {

/// The record as the encoders take it.
template <class Record> std::shared_ptr<const Record> Shared(vorn::OwnerPtr<Record> owner) {
    auto holder = std::make_shared<vorn::OwnerPtr<Record>>(std::move(owner));
    return std::shared_ptr<const Record>(holder, holder->get());
}

template <class Record> using SharedList = std::vector<std::shared_ptr<const Record>>;
using SharedMaterial = std::shared_ptr<const tolm::IProjectSettingMaterial>;
using SharedSize = std::shared_ptr<const tolm::IProjectSettingSizeModule>;
using SharedGroup = std::shared_ptr<const tolm::IProjectSettingMEPMaterialSerieGroup>;
using SharedSerie = std::shared_ptr<const tolm::IProjectSettingMEPMaterialSerie>;
using SharedSystemType = std::shared_ptr<const tolm::IProjectSettingSystemType>;

/// A component with all that is sent of one.
struct CatalogueEntry {
    wstring id = L"e1";
    wstring category = L"elbow";
    int version = 1;
    std::int64_t publicId = 0;
};
ComponentPtr CatalogueComponent(const CatalogueEntry& entry);
/// Appends a fitting with that component; nothing for its component where `entry` is null.
void AddComponent(tolm::IProjectSettingConnectionSerie& serie, int partType, const CatalogueEntry* entry,
                  double min = 0.0, double max = 0.0);

/// Records that fill every field that is sent, with fixed ids.
SizeModulePtr FullSize(Type type, Discipline discipline);
SeriePtr FullSerie(Type type, Discipline discipline);
SystemTypePtr FullSystemType(Type type, Discipline discipline);

/// The only row of an encoded list.
web::json::value OnlyRow(const web::json::value& encoded);
/// The ids of the rows of a list, in order.
std::vector<std::string> RowIds(const web::json::value& rows);

} // namespace tolmtest
