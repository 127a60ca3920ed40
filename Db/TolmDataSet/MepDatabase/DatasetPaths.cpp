#include "MepDatabase/DatasetPaths.h"

namespace tolm {

DatasetPaths DatasetPaths::Of(const std::wstring& datasetPath) {
    const auto point = datasetPath.rfind(L'.');
    if (point == std::wstring::npos)
        return {};
    const std::wstring stem = datasetPath.substr(0, point);
    const std::wstring extension = datasetPath.substr(point);
    return {stem + L"_Status" + extension, stem + L"_temp" + extension, stem + L"_Status_temp" + extension};
}

} // namespace tolm
