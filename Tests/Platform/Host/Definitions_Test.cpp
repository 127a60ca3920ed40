#include "Host/Definitions.h"

#include "Support/TempFolder.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <filesystem>
#include <set>

namespace {

namespace fs = std::filesystem;
using tolm::DataSetFilePath;
using tolm::MEPConnectorType;
using tolm::MEPDisciplineId;
using tolm::MEPSystemClassification;
using tolm::MEPSystemClassificationDefinition;

// Taken while the statics of this program come to life.
const std::wstring g_definitionFileBeforeMain = DataSetFilePath::TOLMDDQFilePath;
const std::size_t g_connectorTypesBeforeMain = tolm::MEPConnectorTypeDefinition::ConnectorTypeNameList.size();

TEST(ConnectorTypes, EachOfTheNineHasANameOfItsOwn) {
    const auto& names = tolm::MEPConnectorTypeDefinition::ConnectorTypeNameList;
    std::set<int> types;
    std::set<std::wstring> texts;
    for (const auto& [type, name] : names) {
        types.insert(static_cast<int>(type));
        texts.insert(name);
    }
    EXPECT_EQ(types, (std::set<int>{1, 2, 3, 4, 5, 11, 21, 22, 31}));
    EXPECT_EQ(texts.size(), 9U);
    EXPECT_FALSE(texts.contains(L""));
    EXPECT_EQ(g_connectorTypesBeforeMain, 9U);
}

TEST(SystemClassifications, EachDisciplineHasClassesWithNames) {
    for (const auto discipline : {MEPDisciplineId::HVAC, MEPDisciplineId::Plumbing, MEPDisciplineId::Electrical}) {
        const auto& classes = MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(discipline);
        EXPECT_FALSE(classes.empty());
        for (const auto& [value, name] : classes)
            EXPECT_FALSE(name.empty()) << static_cast<int>(value);
    }
}

TEST(SystemClassifications, TheDefaultsOfNewRecordsAreAmongThem) {
    const auto& pipes =
        MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(MEPDisciplineId::Plumbing);
    EXPECT_TRUE(pipes.contains(MEPSystemClassification::DefaultPipeSystem));
    const auto& circuits =
        MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(MEPDisciplineId::Electrical);
    EXPECT_TRUE(circuits.contains(MEPSystemClassification::DefaultCircuit));
}

TEST(SystemClassifications, NoValueStandsInTwoDisciplines) {
    std::set<MEPSystemClassification> all;
    std::size_t count = 0;
    for (const auto discipline : {MEPDisciplineId::HVAC, MEPDisciplineId::Plumbing, MEPDisciplineId::Electrical}) {
        for (const auto& row : MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(discipline)) {
            all.insert(row.first);
            ++count;
        }
    }
    EXPECT_EQ(all.size(), count);
}

TEST(SystemClassifications, AnUnknownDisciplineHasNone) {
    for (const int discipline : {0, 4, -1}) {
        EXPECT_TRUE(MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(MEPDisciplineId{discipline})
                        .empty());
    }
}

TEST(SystemClassifications, AHostMayReplaceThem) {
    const auto before =
        MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(MEPDisciplineId::Electrical);
    const std::map<MEPSystemClassification, std::wstring> own{{MEPSystemClassification{77}, L"own"}};
    MEPSystemClassificationDefinition::SetSystemClassificationList(MEPDisciplineId::Electrical, own);
    EXPECT_EQ(MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(MEPDisciplineId::Electrical),
              own);
    MEPSystemClassificationDefinition::SetSystemClassificationList(MEPDisciplineId::Electrical, before);
}

TEST(DefinitionFile, IsFoundInTheSourceTreeByALibraryOfTheBuildTree) {
    const std::wstring expected =
        vorn::StringUtil::ToWString(TOLM_SOURCE_DIR "/Db/TolmDataSet/MepDatabase/ProjectSettings.ddq");
    EXPECT_EQ(DataSetFilePath::TOLMDDQFilePath, expected);
    EXPECT_TRUE(vorn::FileInfo(expected).IsRegularFile());
}

TEST(DefinitionFile, IsKnownBeforeMain) {
    EXPECT_EQ(g_definitionFileBeforeMain, DataSetFilePath::TOLMDDQFilePath);
}

/// A copy of the platform's library at `place` below the folder, with a definition file at `file` below it.
class InstalledLibrary {
public:
    InstalledLibrary(const std::string& place, const std::string& file) {
        const fs::path root = vorn::StringUtil::ToString(m_folder.Path());
        m_definition = root / file;
        fs::create_directories(root / place);
        fs::create_directories(m_definition.parent_path());
        fs::copy_file(LoadedLibrary(), root / place / "libInstalled.so");
        EXPECT_TRUE(
            vorn::FileUtility::SaveInBinaryMode(vorn::StringUtil::ToWString(m_definition.string()), "x", 1, false));
        m_handle = dlopen((root / place / "libInstalled.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    ~InstalledLibrary() {
        if (m_handle != nullptr)
            dlclose(m_handle);
    }
    InstalledLibrary(const InstalledLibrary&) = delete;
    InstalledLibrary& operator=(const InstalledLibrary&) = delete;

    fs::path Definition() const { return fs::canonical(m_definition); }
    /// What the copy found for itself.
    fs::path Found() const {
        const void* const symbol =
            m_handle != nullptr ? dlsym(m_handle, "_ZN4tolm15DataSetFilePath15TOLMDDQFilePathB5cxx11E") : nullptr;
        return symbol != nullptr ? vorn::StringUtil::ToString(*static_cast<const std::wstring*>(symbol)) : "";
    }

private:
    static fs::path LoadedLibrary() {
        Dl_info info{};
        dladdr(reinterpret_cast<const void*>(&vorn::StrICmp), &info);
        return fs::canonical(info.dli_fname);
    }

    tolmtest::TempFolder m_folder;
    fs::path m_definition;
    void* m_handle = nullptr;
};

TEST(DefinitionFile, IsFoundBesideTheInstalledLibrary) {
    const InstalledLibrary library("lib", "share/TolmDataSet/ProjectSettings.ddq");
    EXPECT_EQ(library.Found(), library.Definition());
}

TEST(DefinitionFile, IsFoundWhereTheLibraryLiesUnderTheNameOfAnArchitecture) {
    const InstalledLibrary library("lib/x86_64-linux-gnu", "share/TolmDataSet/ProjectSettings.ddq");
    EXPECT_EQ(library.Found(), library.Definition());
}

} // namespace
