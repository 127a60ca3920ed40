#pragma once

#include <string>

namespace tolm {

/// The companion files of a dataset: the suffix stands before the extension, which begins at the last point of the
/// whole path. A path without a point has no companions: all three are empty.
struct DatasetPaths {
    std::wstring status;          ///< stem + "_Status" + extension
    std::wstring temporary;       ///< stem + "_temp" + extension
    std::wstring temporaryStatus; ///< stem + "_Status_temp" + extension

    static DatasetPaths Of(const std::wstring& datasetPath);
};

} // namespace tolm
