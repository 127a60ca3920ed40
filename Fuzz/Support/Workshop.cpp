#include "Fuzz/Support/Workshop.h"

#include "Fuzz/Support/Files.h"
#include "Fuzz/Support/Require.h"
#include "Fuzz/Support/StoreReading.h"
#include "Host/Categories.h"
#include "Host/Components.h"
#include "Host/Definitions.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Qbase/Qbase.h"
#include "TolmDataSet/DataSetMethods.h"
#include "TolmDataSet/ITolmDataSetFactory.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <cpprest/json.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace tolmfuzz {
namespace {

using Slice = std::pair<tolm::TolmProjectSettingMEPObjectType, tolm::MEPDisciplineId>;
constexpr Slice kPipes{tolm::TolmProjectSettingMEPObjectType::Pipe, tolm::MEPDisciplineId::Plumbing};

/// So many of the sample project's components are enough for the rows of the corpus.
constexpr std::size_t kMostComponents = 80;

constexpr std::array<std::string_view, 4> kNames{"set.db", "set_Status.db", "products.db", "files"};
/// SQLite leaves this file behind where the commit of two files fails on a damaged one: it cannot know whether a
/// journal names it already.
constexpr std::string_view kLeftOver = "set.db-mj";

nlohmann::json Sample(const char* path) {
    std::ifstream file(std::string(TOLM_SOURCE_DIR) + path);
    return nlohmann::json::parse(file);
}

std::wstring Wide(const nlohmann::json& object, const char* key) {
    return vorn::StringUtil::ToWString(object.at(key).get<std::string>());
}

std::vector<tolm::TolmDisciplineData> Disciplines(const nlohmann::json& catalogue) {
    std::vector<tolm::TolmDisciplineData> list;
    for (const auto& each : catalogue.at("disciplines"))
        list.push_back({Wide(each, "id"), Wide(each, "name"), Wide(each, "englishName")});
    return list;
}

std::vector<tolm::TolmCategoryData> Categories(const nlohmann::json& catalogue) {
    std::vector<tolm::TolmCategoryData> list;
    for (const auto& each : catalogue.at("categories"))
        list.push_back({Wide(each, "code"), Wide(each, "parentCode"), Wide(each, "disciplineId"), Wide(each, "name"),
                        Wide(each, "englishName")});
    return list;
}

std::vector<tolm::TolmComponentData> Components(const nlohmann::json& catalogue) {
    std::vector<tolm::TolmComponentData> list;
    for (const auto& each : catalogue.at("components")) {
        if (list.size() == kMostComponents)
            break;
        tolm::TolmComponentData component;
        component.id = Wide(each, "id");
        component.componentTypeId = Wide(each, "componentTypeId");
        component.categoryCode = Wide(each, "categoryCode");
        component.name = Wide(each, "name");
        list.push_back(component);
    }
    return list;
}

/// Edits the first record of a list and removes the second.
template <class Record, class Edit, class Delete>
void ChangeFirstTwo(const std::vector<vorn::OwnerPtr<Record>>& list, Edit edit, Delete remove) {
    Require(list.size() > 1, "the rows of the corpus have two records of each kind");
    Record& first = *list[0];
    std::wstring name = first.GetName() + L" *";
    first.SetName(name);
    Require(edit(&first) && remove(std::vector<const Record*>{list[1].get()}), "local changes are noted");
}

} // namespace

Workshop& Workshop::Get() {
    static Workshop workshop;
    return workshop;
}

Workshop::Workshop() : m_folder(m_outer.File(L"work")) {
    vorn::FileSystem::CreateDirectories(m_folder);
    m_place.data = m_folder + L"/set.db";
    m_place.status = m_folder + L"/set_Status.db";
    m_place.products = m_folder + L"/products.db";
    m_place.binaryFolder = m_folder + L"/files";
    MakeComponents();
    MakeStores();
}

void Workshop::MakeComponents() const {
    const auto catalogue = Sample("/Data/OfficeTower/components.json");
    Require(tolm::TolmComponentSqlUtil::Import(m_place.products, Disciplines(catalogue), Categories(catalogue),
                                               Components(catalogue)),
            "the components are imported");
    const std::wstring names = m_outer.File(L"names.db"); // stays where no input reaches it
    WriteBytes(names, ReadBytes(m_place.products));
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(names));
}

void Workshop::MakeStores() {
    m_products = ReadBytes(m_place.products);
    CQbase qb;
    Require(qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, m_place.data, true) && qb.closeDatabase(),
            "an empty store is made");
    m_empty = ReadBytes(m_place.data);
    const auto rows = ParseIncrements(Sample("/Fuzz/Corpus/Ingest/FullLoad.json").dump());
    Require(rows.size() == 1, "the full load is one increment");
    Refresh(m_place, rows[0]);
    Require(tolm::MepQbaseUtil::GetInstance()->SetLocalVersion(m_place.data, tolm::DataSetFilePath::TOLMDDQFilePath, 1),
            "the version is stamped");
    MakeLocalChanges();
    MakeMethods();
    m_filled = ReadBytes(m_place.data);
    m_noted = ReadBytes(m_place.status);
    Require(!m_noted.empty(), "local changes stand beside the store");
}

void Workshop::MakeLocalChanges() const {
    tolm::MepQbaseUtil& store = *tolm::MepQbaseUtil::GetInstance();
    const std::wstring& path = m_place.data;
    const std::wstring ddq = tolm::DataSetFilePath::TOLMDDQFilePath;
    const auto [type, discipline] = kPipes;
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingMaterial>> materials;
    store.ReadMaterialList(path, ddq, type, discipline, materials);
    ChangeFirstTwo(
        materials, [&](const auto* record) { return store.WriteMaterial(path, ddq, record); },
        [&](const auto& records) { return store.DeleteMaterialList(path, ddq, records); });
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingSizeModule>> sizes;
    store.ReadSizeModuleList(path, ddq, type, discipline, sizes);
    ChangeFirstTwo(
        sizes, [&](const auto* record) { return store.WriteSizeModule(path, ddq, record); },
        [&](const auto& records) { return store.DeleteSizeModuleList(path, ddq, records); });
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerie>> series;
    store.ReadMEPMaterialSerieList(path, ddq, m_place.products, type, discipline, series);
    ChangeFirstTwo(
        series, [&](const auto* record) { return store.WriteMEPMaterialSerie(path, ddq, record); },
        [&](const auto& records) { return store.DeleteMEPMaterialSerieList(path, ddq, records); });
    std::vector<vorn::OwnerPtr<tolm::IProjectSettingSystemType>> systems;
    store.ReadSystemTypeList(path, ddq, m_place.products, discipline, type, systems);
    ChangeFirstTwo(
        systems, [&](const auto* record) { return store.WriteSystemType(path, ddq, record); },
        [&](const auto& records) { return store.DeleteSystemTypeList(path, ddq, records); });
}

void Workshop::MakeMethods() const {
    tolm::MepQbaseUtil& store = *tolm::MepQbaseUtil::GetInstance();
    const std::wstring ddq = tolm::DataSetFilePath::TOLMDDQFilePath;
    tolm::DataSetBalancingMethod balancing;
    balancing.SetId(L"balancing");
    tolm::DataSetInsulationSerie insulation;
    insulation.SetId(L"insulation");
    insulation.SetInsulationType(tolm::TolmInsulationSerieType::Duct);
    insulation.SetDisciplineType(tolm::MEPDisciplineId::HVAC);
    insulation.AddCircularSize({100, 0, 20});
    insulation.AddRectSize({100, 100, 20});
    tolm::DataSetSizingMethod sizing;
    sizing.SetId(L"sizing");
    sizing.SetMethodType(tolm::TolmSizingMethodType::Duct);
    sizing.AddDimensionMethod({1, 2.5F, 3.5F});
    Require(store.addBalancingMethod(m_place.data, ddq, balancing) &&
                store.addInsulationSerie(m_place.data, ddq, insulation) &&
                store.addSizingMethod(m_place.data, ddq, sizing),
            "methods are stored");
}

const DatasetPlace& Workshop::Prepare(Begin begin) {
    RemoveAll(m_folder);
    vorn::FileSystem::CreateDirectories(m_folder);
    if (begin == Begin::Nothing)
        return m_place;
    WriteBytes(m_place.products, m_products);
    WriteBytes(m_place.data, begin == Begin::Filled ? m_filled : m_empty);
    if (begin == Begin::Filled)
        WriteBytes(m_place.status, m_noted);
    return m_place;
}

void Workshop::RequireNothingElse() const {
    Require(NamesIn(m_outer.Path()) == std::vector<std::string>{"names.db", "work"}, "nothing is written outside");
    for (const std::string& name : NamesIn(m_folder))
        Require(std::ranges::find(kNames, name) != kNames.end() || name.starts_with(kLeftOver),
                "nothing stands beside the dataset: " + name);
    if (!vorn::FileInfo(m_place.binaryFolder).Exists())
        return;
    const std::filesystem::path files = vorn::FileSystem::ToNative(m_place.binaryFolder);
    for (const auto& entry : std::filesystem::directory_iterator(files))
        Require(entry.is_regular_file() && !entry.is_symlink(), "binary files are plain files");
}

} // namespace tolmfuzz
