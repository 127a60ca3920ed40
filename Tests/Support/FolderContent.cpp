#include "Support/FolderContent.h"

#include "Vorn/Files.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace tolmtest {

FolderContent::FolderContent(std::wstring folder) : m_folder(std::move(folder)) {
    const std::filesystem::path native = vorn::FileSystem::ToNative(m_folder);
    for (const auto& file : std::filesystem::recursive_directory_iterator(native)) {
        if (!file.is_regular_file())
            continue;
        std::ifstream stream(file.path(), std::ios::binary);
        m_files[file.path().lexically_relative(native).string()] = {std::istreambuf_iterator<char>(stream), {}};
    }
}

void FolderContent::PutBack() const {
    const std::filesystem::path folder = vorn::FileSystem::ToNative(m_folder);
    for (const auto& file : std::filesystem::directory_iterator(folder))
        std::filesystem::remove_all(file.path());
    for (const auto& [name, bytes] : m_files) {
        std::filesystem::create_directories((folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary) << bytes;
    }
}

} // namespace tolmtest
