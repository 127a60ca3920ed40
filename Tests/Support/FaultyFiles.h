#pragma once

#include "Support/FileFaults.h"

#include <string>

namespace tolmtest {

/// Stands between SQLite and the file system for all files under one folder, and lets their calls fail, or the power
/// be cut, where a test wants it. Files elsewhere are left alone. Only one may live at a time, and it must outlive
/// every store that was opened under it; calls for files of the folder come from one thread at a time.
class FaultyFiles : public FileFaults {
public:
    explicit FaultyFiles(const std::wstring& folder);
    ~FaultyFiles();
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;

    /// The one that lives; null when none does.
    static FaultyFiles* Living();
};

} // namespace tolmtest
