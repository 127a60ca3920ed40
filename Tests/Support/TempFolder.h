#pragma once

#include <string>

namespace tolmtest {

/// A fresh folder, removed with all in it at the end.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// Path of the folder.
    const std::wstring& Path() const { return m_path; }
    /// Path of a file of this name in it.
    std::wstring File(const std::wstring& name) const { return m_path + L"/" + name; }

private:
    std::wstring m_path;
};

} // namespace tolmtest
