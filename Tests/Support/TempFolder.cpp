#include "Support/TempFolder.h"

#include "Support/Canary.h"
#include "Vorn/Text.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace tolmtest {

TempFolder::TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tolm-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder could be made");
    m_path = vorn::StringUtil::ToWString(pattern);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    const std::string path = vorn::StringUtil::ToString(m_path);
    SearchFolderForSecrets(path);
    std::filesystem::remove_all(path, ignored);
}

} // namespace tolmtest
