#include "Host/Definitions.h"

#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <array>
#include <dlfcn.h>
#include <filesystem>
#include <utility>

namespace tolm {
namespace {

namespace fs = std::filesystem;

using Classes = std::map<MEPSystemClassification, std::wstring>;

struct ClassRow {
    MEPDisciplineId discipline;
    std::int32_t value;
    const wchar_t* name;
};
constexpr std::array<ClassRow, 33> kClasses{{
    {MEPDisciplineId::HVAC, 1, L"送风"},
    {MEPDisciplineId::HVAC, 2, L"回风"},
    {MEPDisciplineId::HVAC, 3, L"新风"},
    {MEPDisciplineId::HVAC, 4, L"排风"},
    {MEPDisciplineId::HVAC, 5, L"排烟"},
    {MEPDisciplineId::HVAC, 6, L"补风"},
    {MEPDisciplineId::HVAC, 7, L"加压送风"},
    {MEPDisciplineId::HVAC, 11, L"冷冻水供水"},
    {MEPDisciplineId::HVAC, 12, L"冷冻水回水"},
    {MEPDisciplineId::HVAC, 13, L"冷却水供水"},
    {MEPDisciplineId::HVAC, 14, L"冷却水回水"},
    {MEPDisciplineId::HVAC, 15, L"热水供水"},
    {MEPDisciplineId::HVAC, 16, L"热水回水"},
    {MEPDisciplineId::HVAC, 17, L"冷凝水"},
    {MEPDisciplineId::HVAC, 18, L"制冷剂"},
    {MEPDisciplineId::Plumbing, 21, L"生活给水"},
    {MEPDisciplineId::Plumbing, 22, L"生活热水给水"},
    {MEPDisciplineId::Plumbing, 23, L"生活热水回水"},
    {MEPDisciplineId::Plumbing, 24, L"中水"},
    {MEPDisciplineId::Plumbing, 25, L"污水"},
    {MEPDisciplineId::Plumbing, 26, L"废水"},
    {MEPDisciplineId::Plumbing, 27, L"通气"},
    {MEPDisciplineId::Plumbing, 28, L"雨水"},
    {MEPDisciplineId::Plumbing, 31, L"消火栓"},
    {MEPDisciplineId::Plumbing, 32, L"自动喷水灭火"},
    {MEPDisciplineId::Electrical, 41, L"照明"},
    {MEPDisciplineId::Electrical, 42, L"插座"},
    {MEPDisciplineId::Electrical, 43, L"动力"},
    {MEPDisciplineId::Electrical, 44, L"空调"},
    {MEPDisciplineId::Electrical, 45, L"应急照明"},
    {MEPDisciplineId::Electrical, 51, L"火灾报警"},
    {MEPDisciplineId::Electrical, 52, L"综合布线"},
    {MEPDisciplineId::Electrical, 53, L"安全防范"},
}};

std::map<MEPDisciplineId, Classes> MakeClasses() {
    std::map<MEPDisciplineId, Classes> classes;
    for (const ClassRow& row : kClasses)
        classes[row.discipline].emplace(MEPSystemClassification{row.value}, row.name);
    return classes;
}

std::map<MEPDisciplineId, Classes>& AllClasses() {
    static std::map<MEPDisciplineId, Classes> classes = MakeClasses();
    return classes;
}

/// Folder of the file that this code was loaded from.
fs::path LibraryFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&LibraryFolder), &info) == 0 || info.dli_fname == nullptr)
        return {};
    std::error_code error;
    const fs::path file = fs::canonical(info.dli_fname, error);
    return error ? fs::path() : file.parent_path();
}

/// The installed file: the libraries' folder may lie one level deeper, under a name of the architecture.
std::array<fs::path, 2> InstalledCandidates() {
    const fs::path folder = LibraryFolder();
    const fs::path file = fs::path("share") / "TolmDataSet" / TOLM_DEFINITION_FILE_NAME;
    return {folder.parent_path() / file, folder.parent_path().parent_path() / file};
}

std::wstring FindDefinitionFile() {
    const auto installed = InstalledCandidates();
    for (const fs::path& candidate : {installed[0], installed[1], fs::path(TOLM_DEFINITION_FILE_BUILD)}) {
        std::wstring path = vorn::StringUtil::ToWString(candidate.native());
        if (vorn::FileInfo(path).IsRegularFile())
            return path;
    }
    return vorn::StringUtil::ToWString(installed[0].native());
}

} // namespace

std::map<MEPConnectorType, std::wstring> MEPConnectorTypeDefinition::ConnectorTypeNameList{
    {MEPConnectorType::PipeThreaded, L"螺纹连接"}, {MEPConnectorType::PipeWelded, L"焊接连接"},
    {MEPConnectorType::PipeFlanged, L"法兰连接"},  {MEPConnectorType::PipeGrooved, L"沟槽连接"},
    {MEPConnectorType::PipeSocket, L"承插连接"},   {MEPConnectorType::Duct, L"风管连接"},
    {MEPConnectorType::CableTray, L"桥架连接"},    {MEPConnectorType::CableTrayAlternative, L"桥架连接（其他）"},
    {MEPConnectorType::Conduit, L"线管连接"},
};

const std::map<MEPSystemClassification, std::wstring>&
MEPSystemClassificationDefinition::GetAvailableSystemClassificationList(MEPDisciplineId discipline) {
    static const Classes none;
    const auto found = AllClasses().find(discipline);
    return found != AllClasses().end() ? found->second : none;
}

void MEPSystemClassificationDefinition::SetSystemClassificationList(
    MEPDisciplineId discipline, std::map<MEPSystemClassification, std::wstring> classes) {
    AllClasses()[discipline] = std::move(classes);
}

// Code behind this library finds the path set from its first line on: the library's own statics come first, and
// the search relies on none of another source.
std::wstring DataSetFilePath::TOLMDDQFilePath = FindDefinitionFile();

} // namespace tolm
