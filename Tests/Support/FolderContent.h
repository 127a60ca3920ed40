#pragma once

#include <map>
#include <string>

namespace tolmtest {

/// The files of a folder, to be put back. What lies in folders within it is no part of it, and goes.
class FolderContent {
public:
    explicit FolderContent(std::wstring folder);
    void PutBack() const;

private:
    std::wstring m_folder;
    std::map<std::string, std::string> m_files;
};

} // namespace tolmtest
