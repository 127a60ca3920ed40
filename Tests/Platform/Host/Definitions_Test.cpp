#include "Host/Definitions.h"

#include "Support/TempFolder.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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

constexpr const char* kAsked = "TOLMTEST_WRITE_DEFINITION_PATH";

// Where this program runs itself to ask which file it finds, it answers and ends before any test.
[[maybe_unused]] const bool g_answered = [] {
    const char* const answer = std::getenv(kAsked);
    if (answer == nullptr)
        return false;
    std::ofstream(answer) << vorn::StringUtil::ToString(DataSetFilePath::TOLMDDQFilePath);
    std::_Exit(0);
}();

/// A copy of the platform's library at `place`, with a definition file at `definition`, below a folder.
class Installation {
public:
    Installation(const std::string& place, const std::string& definition)
        : m_root(fs::canonical(vorn::StringUtil::ToString(m_folder.Path()))), m_library(m_root / place / "libCopy.so"),
          m_definition(m_root / definition) {
        fs::create_directories(m_library.parent_path());
        fs::create_directories(m_definition.parent_path());
        fs::copy_file(fs::canonical(TOLM_BINARY_DIR "/lib/libTolmPlatform.so"), m_library);
        std::ofstream(m_definition) << "definition";
    }

    const std::string& Definition() const { return m_definition.native(); }

    /// What a program finds that runs with the copy: loaded first, it stands in for the library of the same name.
    std::string Found() const {
        const fs::path answer = m_root / "answer";
        const std::string command = "ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD='" + m_library.native() + "' " +
                                    kAsked + "='" + answer.native() + "' '" +
                                    fs::read_symlink("/proc/self/exe").native() + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        std::ifstream in(answer);
        return {std::istreambuf_iterator<char>(in), {}};
    }

private:
    tolmtest::TempFolder m_folder;
    fs::path m_root;
    fs::path m_library;
    fs::path m_definition;
};

TEST(DefinitionFile, IsFoundBesideTheInstalledLibrary) {
    const Installation installation("lib", "share/TolmDataSet/ProjectSettings.ddq");
    EXPECT_EQ(installation.Found(), installation.Definition());
}

TEST(DefinitionFile, IsFoundWhereTheLibraryLiesUnderTheNameOfAnArchitecture) {
    const Installation installation("lib/x86_64-linux-gnu", "share/TolmDataSet/ProjectSettings.ddq");
    EXPECT_EQ(installation.Found(), installation.Definition());
}

} // namespace
