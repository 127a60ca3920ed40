#pragma once

#include <string>

namespace tolmcli {

/// What the command remembers of a dataset: where its settings come from and where its companions lie. It stands as
/// text beside the dataset, stem + ".tolm.json". It never holds a secret or a token.
struct Profile {
    std::wstring server; ///< scheme, host and port
    std::wstring project;
    std::wstring workUnit; ///< may be empty
    std::wstring user;
    std::wstring componentFile;
    std::wstring combinedProductFile;
    std::wstring binaryFolder;

    /// The profile of a new dataset: companions beside it, nothing to synchronise with.
    static Profile ForNew(const std::wstring& datasetPath);
    /// Throws Failure when there is none or it cannot be read.
    static Profile Load(const std::wstring& datasetPath);
    void Save(const std::wstring& datasetPath) const;
    static std::wstring PathFor(const std::wstring& datasetPath);
};

/// Refuses what cannot be a dataset path: empty, or without a point in its file name.
void CheckDatasetPath(const std::wstring& datasetPath);

} // namespace tolmcli
