#pragma once

#include "TolmDataSet/MepEnums.h"

#include <string>

class CQbaseWorkingCopies;

/// The copies that a merge works on. Nothing throws.
namespace tolm {

/// Copies data and status store to their temporary names, both at one moment, over what an earlier merge left there,
/// and tells the three paths. `copies` can put the copies back later. False when one of the stores is missing or
/// cannot be copied; the paths are told all the same.
bool DuplicateTemporaryKsetFilesBeforeMerge(wstring datasetFilePath, wstring& statusPath, wstring& tempDataPath,
                                            wstring& tempStatusPath, CQbaseWorkingCopies& copies);

/// Removes the copies that stand; with `copyBack` each is copied over its store first. False when one of them is left
/// or was not copied.
bool RemoveTemporaryKsetFilesBeforeMerge(bool copyBack, wstring dataPath, wstring statusPath, wstring tempDataPath,
                                         wstring tempStatusPath);

} // namespace tolm
