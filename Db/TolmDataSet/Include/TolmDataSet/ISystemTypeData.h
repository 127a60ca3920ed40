#pragma once

#include "TolmDataSet/IProjectSettingSystemType.h"

#include <vector>

namespace tolm {

/// The table of system types. Every edit goes to the store first and to the list second; a failed write does not keep
/// the record out of the list. Records are keyed by their identifier, exactly. The table owns its records: what the
/// getter lends is valid until the record is replaced or deleted, or the table is reset. Used from one thread at a
/// time.
class TOLM_DATASET_API ISystemTypeData {
public:
    virtual ~ISystemTypeData();
    /// Releases all records; the store and the paths stay as they are.
    virtual void reset() = 0;
    /// The records in order; the store is not read. An empty entry is left out with a debug warning.
    virtual std::vector<const IProjectSettingSystemType*> GetSystemTypeList() const = 0;
    /// Writes the system type and takes it into the list, in place of one with the same identifier or else at the
    /// end. An empty owner is a debug warning and no change.
    virtual void AddSystemType(vorn::OwnerPtr<IProjectSettingSystemType> pSystemType) = 0;
    /// Reads one system type from the store into the list, in place of the one it holds or else at the end. Nothing
    /// happens when the store has none of this identifier; the store is not written.
    virtual void GetAndAddSystemTypeById(wstring id) = 0;
    /// Writes a system type that the caller keeps; the list is not touched.
    virtual void AddSystemTypeToDB(const IProjectSettingSystemType* pSystemType) = 0;
    /// Deletes the system types in the store and then in the list. The pointers may be the table's own; a null
    /// pointer is a debug warning, an unknown identifier nothing.
    virtual void DeleteSystemTypeList(std::vector<const IProjectSettingSystemType*> systemTypeList) = 0;
    /// Keeps the two paths and appends what the store holds of the slice. A slice of another table reads nothing.
    virtual void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                   TolmProjectSettingTableId tableId) = 0;
};

} // namespace tolm
