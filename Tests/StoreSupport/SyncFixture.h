#pragma once

#include "StoreSupport/ExpectedContent.h"
#include "Support/DebugWarnings.h"
#include "Support/ServiceFixture.h"
#include "Support/TempFolder.h"
#include "TolmDataSet/ITolmDataset.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace tolmtest {

/// A dataset with its companions in a folder of its own, as a host has it open.
class HostedDataset {
public:
    HostedDataset(const std::wstring& folder, const std::wstring& componentPath, const std::wstring& name = L"set.db");

    /// Makes it the host's current one and refreshes it from the cloud.
    bool Pull(tolm::RecoverDataInfo* recoverInfo = nullptr, vorn::IProgressReporter* progress = nullptr);
    /// Puts a copy of another dataset's store, combined products and binary files in place of its own.
    void CopyFrom(const HostedDataset& other);

    tolm::ITolmDataset& Api() { return *m_dataset; }
    const std::wstring& Path() const { return m_path; }
    std::wstring StatusPath() const;
    const std::wstring& BinaryFolder() const { return m_binaryFolder; }
    int Version() const;
    /// Store, combined products and binary files.
    Facts Content() const;

private:
    std::wstring m_folder;
    std::wstring m_path;
    std::wstring m_combinedPath;
    std::wstring m_binaryFolder;
    vorn::OwnerPtr<tolm::ITolmDataset> m_dataset;
};

/// The settings service in this process, the sample's component database with its categories, and folders for
/// datasets. Session, user, categories and current path are gone again at the end.
class SyncFixture : public testing::Test {
protected:
    SyncFixture();
    ~SyncFixture() override;

    HostedDataset Dataset(const std::wstring& folderName) { return {folder.File(folderName), componentPath}; }
    /// Fills a project with {"ConfigTree":[...], ...} and opens a session on it.
    void Open(const nlohmann::json& tables, const std::string& projectId = "P");
    /// Applies a change of `put` (tables of rows) and `removed` (tables of ids). Returns the version then.
    int Apply(const nlohmann::json& put, const nlohmann::json& removed, const std::string& projectId = "P");
    /// What a dataset must hold that is at the project's version.
    Facts Expected(const std::string& projectId = "P");

    ServiceFixture service;
    TempFolder folder;
    const std::wstring componentPath = folder.File(L"components.db");
    KnownCategories categories;
};

/// The sample project of the source tree.
std::string SamplePath(const std::string& name);
nlohmann::json SampleFile(const std::string& name);

using Notifications = std::vector<Notification>;
inline const Notifications kPulled{{0, L"载入成功！"}};
inline const Notifications kUpToDate{{0, L"配置载入成功！"}};

} // namespace tolmtest
