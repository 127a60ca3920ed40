#pragma once

#include "TolmDataSet/IProjectSettingSizeModule.h"

#include <vector>

namespace tolm {

/// The table of size modules. Every edit goes to the store first and to the list second; a failed write does not keep
/// the record out of the list. Records are keyed by their identifier, exactly. The table owns its records: what the
/// getter lends is valid until the record is replaced or deleted, or the table is reset. Used from one thread at a
/// time.
class TOLM_DATASET_API ISizeModuleData {
public:
    virtual ~ISizeModuleData();
    /// Releases all records; the store and the paths stay as they are.
    virtual void reset() = 0;
    /// The records in order; the store is not read. An empty entry is left out with a debug warning.
    virtual std::vector<const IProjectSettingSizeModule*> GetSizeList() const = 0;
    /// Writes the module and takes it into the list, in place of one with the same identifier or else at the end.
    /// An empty owner is a debug warning and no change.
    virtual void AddSizeModule(vorn::OwnerPtr<IProjectSettingSizeModule> pNewSize) = 0;
    /// Writes a module that the caller keeps; the list is not touched.
    virtual void AddSizeModuleToDB(const IProjectSettingSizeModule* pSize) = 0;
    /// Deletes the modules in the store and then in the list. The pointers may be the table's own; a null pointer is
    /// a debug warning, an unknown identifier nothing. Whether a module is still in use is not asked here.
    virtual void DeleteSizeModuleList(std::vector<const IProjectSettingSizeModule*> sizeModuleList) = 0;
    /// True when a record of the store refers to the module; its name goes to `referencingName`.
    virtual bool IsTheSizeModuleReferred(const IProjectSettingSizeModule* pSizeModule,
                                         wstring& referencingName) const = 0;
    /// Keeps the two paths and appends what the store holds of the slice. A slice of another table reads nothing.
    virtual void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                   TolmProjectSettingTableId tableId) = 0;
};

} // namespace tolm
