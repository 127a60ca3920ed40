#include "StoreSupport/SyncFixture.h"

#include "Host/Components.h"
#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Qbase/Qbase.h"
#include "TolmDataSet/ITolmDataSetFactory.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace tolmtest {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

fs::path Native(const std::wstring& path) {
    return vorn::FileSystem::ToNative(path);
}

std::wstring Wide(const json& object, const char* key) {
    return vorn::StringUtil::ToWString(object.at(key).get<std::string>());
}

tolm::TolmComponentData Component(const json& row) {
    tolm::TolmComponentData component{
        Wide(row, "id"),   Wide(row, "componentTypeId"), Wide(row, "categoryCode"), Wide(row, "name"),
        row.at("version"), row.at("publicId"),           row.at("productId"),       {}};
    for (const auto& [name, value] : row.at("attributes").items())
        component.attributes[vorn::StringUtil::ToWString(name)] = vorn::StringUtil::ToWString(value.get<std::string>());
    return component;
}

void Import(const json& file, const std::wstring& path) {
    std::vector<tolm::TolmDisciplineData> disciplines;
    for (const auto& row : file.at("disciplines"))
        disciplines.push_back({Wide(row, "id"), Wide(row, "name"), Wide(row, "englishName")});
    std::vector<tolm::TolmCategoryData> categories;
    for (const auto& row : file.at("categories"))
        categories.push_back({Wide(row, "code"), Wide(row, "parentCode"), Wide(row, "disciplineId"), Wide(row, "name"),
                              Wide(row, "englishName")});
    std::vector<tolm::TolmComponentData> components;
    for (const auto& row : file.at("components"))
        components.push_back(Component(row));
    if (!tolm::TolmComponentSqlUtil::Import(path, disciplines, categories, components))
        throw std::runtime_error("the components cannot be imported");
}

/// Puts a copy of a file or folder in place of what stands at `target`; nothing is copied as nothing.
void Replace(const std::wstring& source, const std::wstring& target) {
    fs::remove_all(Native(target));
    if (fs::exists(Native(source)))
        fs::copy(Native(source), Native(target), fs::copy_options::recursive);
}

} // namespace

HostedDataset::HostedDataset(const std::wstring& folder, const std::wstring& componentPath, const std::wstring& name)
    : m_folder(folder), m_path(folder + L"/" + name), m_combinedPath(folder + L"/combined.db"),
      m_binaryFolder(folder + L"/files"), m_dataset(tolm::ITolmDataSetFactory::Get()->CreateDataset(
                                              m_path, componentPath, m_combinedPath, m_binaryFolder)) {}

bool HostedDataset::Pull(tolm::RecoverDataInfo* recoverInfo, vorn::IProgressReporter* progress) {
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(m_path);
    return m_dataset->SyncDataFromCloud(false, progress, recoverInfo);
}

void HostedDataset::CopyFrom(const HostedDataset& other) {
    fs::create_directories(Native(m_folder));
    CQbase::removeStore(m_path);
    if (!CQbase::copyStore(other.m_path, m_path))
        throw std::runtime_error("the store cannot be copied");
    Replace(other.m_combinedPath, m_combinedPath);
    Replace(other.m_binaryFolder, m_binaryFolder);
}

std::wstring HostedDataset::StatusPath() const {
    return m_path.substr(0, m_path.rfind(L'.')) + L"_Status.db";
}

int HostedDataset::Version() const {
    bool changed = false;
    return tolm::MepQbaseUtil::GetInstance()->GetLocalVersion(m_path, tolm::DataSetFilePath::TOLMDDQFilePath, changed);
}

Facts HostedDataset::Content() const {
    Facts facts = StoreFacts(m_path);
    facts.merge(CombinedProductFacts(m_combinedPath));
    facts.merge(FileFacts(m_binaryFolder));
    return facts;
}

SyncFixture::SyncFixture() {
    const json components = SampleFile("components.json");
    Import(components, componentPath);
    for (const auto& row : components.at("categories"))
        categories.emplace(row.at("code"), std::pair(row.at("name"), row.at("englishName")));
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(componentPath));
}

SyncFixture::~SyncFixture() {
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
    tolm::CollaborationProjectSettingForPS::Close();
    tolm::TolmUserSessionUtils::SetUser(L"", L"");
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
}

void SyncFixture::Open(const json& tables, const std::string& projectId) {
    service.FillTables(projectId, tables.dump());
    service.OpenSession(projectId);
}

int SyncFixture::Apply(const json& put, const json& removed, const std::string& projectId) {
    const json change{{"format", "tolm-change"}, {"formatVersion", 1}, {"add", put}, {"remove", removed}};
    return service.Apply(projectId, change.dump());
}

Facts SyncFixture::Expected(const std::string& projectId) {
    return ExpectedFacts(json::parse(service.Tables(projectId)), categories, service.Version(projectId));
}

std::string SamplePath(const std::string& name) {
    return std::string(TOLM_SOURCE_DIR) + "/Data/OfficeTower/" + name;
}

json SampleFile(const std::string& name) {
    std::ifstream file(SamplePath(name));
    return json::parse(file);
}

} // namespace tolmtest
