#include "MepDatabase/MergeFiles.h"

#include "MepDatabase/DatasetPaths.h"
#include "Qbase/Qbase.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Files.h"

namespace tolm {
namespace {

bool Stands(const wstring& path) {
    return vorn::FileInfo(path).Exists();
}

/// A store goes with its journal; a folder of that name, which no merge makes, goes with all in it.
bool Remove(const wstring& path) {
    return vorn::FileInfo(path).IsFolder() ? vorn::FileUtility::RemoveAll(path) : CQbase::removeStore(path);
}

bool Finish(bool copyBack, const wstring& path, const wstring& copy) {
    if (!Stands(copy))
        return true;
    return (!copyBack || CQbase::copyStore(copy, path)) && Remove(copy);
}

} // namespace

bool DuplicateTemporaryKsetFilesBeforeMerge(wstring datasetFilePath, wstring& statusPath, wstring& tempDataPath,
                                            wstring& tempStatusPath, CQbaseWorkingCopies& copies) {
    const DatasetPaths paths = DatasetPaths::Of(datasetFilePath);
    statusPath = paths.status;
    tempDataPath = paths.temporary;
    tempStatusPath = paths.temporaryStatus;
    if (!Stands(statusPath) || !Stands(datasetFilePath))
        return false;
    const bool copied = Remove(tempDataPath) && Remove(tempStatusPath) &&
                        copies.make({datasetFilePath, tempDataPath}, {statusPath, tempStatusPath});
    if (!copied)
        VORN_DEBUG_WARN(L"复制文件失败 exception");
    return copied && Stands(tempDataPath) && Stands(tempStatusPath);
}

bool RemoveTemporaryKsetFilesBeforeMerge(bool copyBack, wstring dataPath, wstring statusPath, wstring tempDataPath,
                                         wstring tempStatusPath) {
    const bool done = Finish(copyBack, dataPath, tempDataPath) && Finish(copyBack, statusPath, tempStatusPath);
    if (!done)
        VORN_DEBUG_WARN(L"删除文件失败 exception");
    return done;
}

} // namespace tolm
