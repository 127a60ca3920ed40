#pragma once

#include <map>
#include <string>

namespace tolmtest {

/// The files of a folder and of the folders within it, to be put back.
class FolderContent {
public:
    explicit FolderContent(std::wstring folder);
    void PutBack() const;

private:
    std::wstring m_folder;
    std::map<std::string, std::string> m_files;
};

} // namespace tolmtest
