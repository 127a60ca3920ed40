#pragma once

#include "TolmDataSet/MepEnums.h"

#include <string>
#include <vector>

/// The folder of binary files that the cloud fills. A file's name comes over the wire, so that it is taken for
/// nothing but a plain name of a file in that folder.
namespace tolm {

/// True for a name that means one file in its folder on every platform: not empty, "." or "..", no separator, no
/// character or device name that a file system treats in its own way, and no longer than a name may be.
bool IsPlainFileName(const wstring& name);

/// The folder and the files in it that belong to the host and not to the cloud.
class BinaryFileFolder {
public:
    /// `combinedProductFilePath` is a database that the cloud must never touch; the dataset that is synchronised and
    /// the host's open one with their companions, and the definition file, are others, and so is every file of which
    /// nobody can tell that it is no store.
    BinaryFileFolder(const wstring& folder, const wstring& combinedProductFilePath, const wstring& datasetFilePath);
    /// What was written is on disk afterwards, and what was removed gone from it.
    ~BinaryFileFolder();
    BinaryFileFolder(const BinaryFileFolder&) = delete;
    BinaryFileFolder& operator=(const BinaryFileFolder&) = delete;

    /// Writes the file, in place of one that is there. Throws std::runtime_error when the name is refused or the
    /// content cannot be written.
    void Write(const wstring& name, const std::string& bytes);
    /// Removes the file if it is there. Throws std::runtime_error when the name is refused or the file stays.
    void Remove(const wstring& name);

private:
    /// Notes a database that is the host's, with what it has beside it while it is in use.
    void Keep(const wstring& database);
    /// Path of the file of this name; throws when it is not the cloud's to change.
    wstring PathOf(const wstring& name) const;
    /// True for a file that was noted, under whatever name.
    bool IsTheHosts(const wstring& name) const;
    /// True for a store of this folder and for what stands beside one: its journal and its companions.
    bool BelongsToAStore(const wstring& name) const;

    wstring m_folder;
    std::vector<wstring> m_hostFiles;
    bool m_isChanged = false; ///< a file was written or removed
};

} // namespace tolm
