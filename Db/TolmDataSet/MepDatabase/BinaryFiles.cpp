#include "MepDatabase/BinaryFiles.h"

#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/DatasetPaths.h"
#include "Qbase/Qbase.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace tolm {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 255; // bytes
constexpr std::wstring_view kForbidden = L"/\\:*?\"<>|";
/// Characters that are not seen but change how a name is shown: controls, marks of direction, ends of lines. A name
/// that shows as another one deceives whoever opens the file.
struct CharacterRange {
    wchar_t first;
    wchar_t last;
};
constexpr CharacterRange kUnseen[] = {{L'\0', L'\x1F'},       {L'\x7F', L'\x9F'},     {L'\x061C', L'\x061C'},
                                      {L'\x200E', L'\x200F'}, {L'\x2028', L'\x202E'}, {L'\x2066', L'\x2069'},
                                      {L'\xFEFF', L'\xFEFF'}};
constexpr const wchar_t* kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
constexpr const wchar_t* kNumberedDevices[] = {L"COM", L"LPT"};
constexpr std::wstring_view kDeviceNumbers = L"0123456789\u00B9\u00B2\u00B3";
constexpr std::size_t kLongestToldName = 80; // characters
/// What a database file has beside it while it is in use, and the file itself.
constexpr const wchar_t* kDatabaseSuffixes[] = {L"-journal", L"-wal", L"-shm", L""};
/// What stands behind a database's name, before what makes it unique, in that of the file that binds several databases
/// to one commit.
constexpr std::wstring_view kSuperJournal = L"-mj";
/// What stands before the extension in the names of a dataset's companions.
constexpr const wchar_t* kCompanionTags[] = {L"_Status", L"_temp", L"_Status_temp"};

bool IsForbidden(wchar_t character) {
    const auto isIn = [=](const CharacterRange& range) { return range.first <= character && character <= range.last; };
    return kForbidden.find(character) != std::wstring_view::npos ||
           std::any_of(std::begin(kUnseen), std::end(kUnseen), isIn);
}

bool SameName(const wstring& a, const wstring& b) {
    return vorn::StrICmp(a.c_str(), b.c_str()) == 0;
}

/// A device keeps its meaning with any extension.
bool IsDevice(const wstring& name) {
    wstring stem = name.substr(0, name.find(L'.'));
    stem.erase(stem.find_last_not_of(L' ') + 1);
    const auto isStem = [&](const wchar_t* device) { return SameName(stem, device); };
    if (std::any_of(std::begin(kDevices), std::end(kDevices), isStem))
        return true;
    if (stem.empty() || kDeviceNumbers.find(stem.back()) == std::wstring_view::npos)
        return false;
    stem.pop_back();
    return std::any_of(std::begin(kNumberedDevices), std::end(kNumberedDevices), isStem);
}

fs::path Native(const wstring& path) {
    return fs::path(vorn::FileSystem::ToNative(path));
}

bool IsSamePlace(const fs::path& a, const fs::path& b) {
    std::error_code error;
    return fs::equivalent(a, b, error) || a.lexically_normal() == b.lexically_normal();
}

fs::path FolderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

bool IsFile(const fs::path& path, const wstring& name, const wstring& hostFile) {
    const fs::path other = Native(hostFile);
    return IsSamePlace(path, other) || (SameName(name, vorn::StringUtil::ToWString(other.filename().string())) &&
                                        IsSamePlace(FolderOf(path), FolderOf(other)));
}

/// True also where nobody can tell. Asked through the object database: to open a store past it and close it again
/// drops the process's locks.
bool MayBeStore(const wstring& path) {
    CQbase file;
    if (file.openDatabase(DataSetFilePath::TOLMDDQFilePath, path, false))
        return true;
    const auto error = static_cast<QbaseError>(file.getLastError());
    return error != QbaseError::NotAStore && error != QbaseError::NotFound;
}

/// The name without this ending; empty when it ends otherwise or is nothing else.
wstring WithoutEnding(const wstring& name, const wstring& ending) {
    const std::size_t length = name.size() > ending.size() ? name.size() - ending.size() : 0;
    return length > 0 && SameName(name.substr(length), ending) ? name.substr(0, length) : wstring();
}

/// The name of the database that this is a file of while it is in use; the name itself for any other.
wstring DatabaseOf(const wstring& name) {
    for (const wchar_t* suffix : kDatabaseSuffixes)
        if (wstring database = WithoutEnding(name, suffix); !database.empty())
            return database;
    return name;
}

/// Names of the databases whose super-journal a file of this name would be.
std::vector<wstring> DatabasesBound(const wstring& name) {
    std::vector<wstring> databases;
    for (std::size_t at = 1; at + kSuperJournal.size() <= name.size(); ++at)
        if (SameName(name.substr(at, kSuperJournal.size()), wstring(kSuperJournal)))
            databases.push_back(name.substr(0, at));
    return databases;
}

/// Names of the stores that a file of this name would stand beside, as their companion or as a part of them.
std::vector<wstring> PossibleOwners(const wstring& name) {
    const wstring database = DatabaseOf(name);
    const std::size_t point = database.rfind(L'.');
    const wstring extension = point != wstring::npos ? database.substr(point) : wstring();
    std::vector<wstring> owners{database};
    for (const wchar_t* tag : kCompanionTags)
        if (const wstring stem = WithoutEnding(database.substr(0, point), tag); !stem.empty())
            owners.push_back(stem + extension);
    return owners;
}

/// The name without what may deceive its reader.
std::string Told(const wstring& name) {
    wstring told = name.substr(0, kLongestToldName);
    std::replace_if(told.begin(), told.end(), &IsForbidden, L'?');
    return vorn::StringUtil::ToString(told);
}

[[noreturn]] void Refuse(const wstring& name) {
    throw std::runtime_error("The name is not that of a file that the cloud may change: " + Told(name));
}

} // namespace

bool IsPlainFileName(const wstring& name) {
    if (name.empty() || name.back() == L'.' || name.back() == L' ' || name.front() == L' ')
        return false;
    if (vorn::StringUtil::ToString(name).size() > kLongestName || IsDevice(name))
        return false;
    return std::none_of(name.begin(), name.end(), IsForbidden);
}

BinaryFileFolder::BinaryFileFolder(const wstring& folder, const wstring& combinedProductFilePath,
                                   const wstring& datasetFilePath)
    : m_folder(folder) {
    Keep(combinedProductFilePath);
    Keep(DataSetFilePath::TOLMDDQFilePath);
    for (const wstring& dataset : {datasetFilePath, TolmFilePathSettings::GetCurrentDatasetFilePath()}) {
        const DatasetPaths companions = DatasetPaths::Of(dataset);
        for (const wstring& file : {dataset, companions.status, companions.temporary, companions.temporaryStatus})
            Keep(file);
    }
}

void BinaryFileFolder::Keep(const wstring& database) {
    if (!database.empty())
        for (const wchar_t* suffix : kDatabaseSuffixes)
            m_hostFiles.push_back(database + suffix);
}

bool BinaryFileFolder::BelongsToAStore(const wstring& name) const {
    const auto owners = PossibleOwners(name);
    return std::any_of(owners.begin(), owners.end(), [&](const wstring& owner) {
        const wstring path = m_folder + L"\\" + owner;
        return vorn::FileInfo(path).Exists() && MayBeStore(path);
    });
}

bool BinaryFileFolder::IsTheHosts(const wstring& name) const {
    const fs::path native = Native(m_folder + L"\\" + name);
    return std::any_of(m_hostFiles.begin(), m_hostFiles.end(),
                       [&](const wstring& file) { return IsFile(native, name, file); });
}

wstring BinaryFileFolder::PathOf(const wstring& name) const {
    if (m_folder.empty() || !IsPlainFileName(name))
        Refuse(name);
    wstring path = m_folder + L"\\" + name;
    std::error_code error;
    const fs::file_status status = fs::symlink_status(Native(path), error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        Refuse(name);
    std::vector<wstring> names = DatabasesBound(name);
    names.push_back(name);
    if (std::any_of(names.begin(), names.end(),
                    [&](const wstring& each) { return IsTheHosts(each) || BelongsToAStore(each); }))
        Refuse(name);
    return path;
}

/// Once for all files: each of them is on disk, and now which files there are.
BinaryFileFolder::~BinaryFileFolder() {
    if (m_isChanged)
        vorn::FileUtility::FlushFolder(m_folder);
}

void BinaryFileFolder::Write(const wstring& name, const std::string& bytes) {
    const wstring path = PathOf(name);
    if (!vorn::FileSystem::CreateDirectories(m_folder) ||
        !vorn::FileUtility::SaveOneOfMany(path, bytes.data(), bytes.size()))
        throw std::runtime_error("The file cannot be written: " + Told(name));
    m_isChanged = true;
}

void BinaryFileFolder::Remove(const wstring& name) {
    if (!vorn::FileSystem::RemoveFile(PathOf(name)))
        throw std::runtime_error("The file cannot be removed: " + Told(name));
    m_isChanged = true;
}

} // namespace tolm
