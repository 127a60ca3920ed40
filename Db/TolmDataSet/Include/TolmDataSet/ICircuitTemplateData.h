#pragma once

#include "TolmDataSet/ITolmProjectSettingCircuitTemplate.h"

#include <vector>

namespace tolm {

/// The table of circuit templates. Every edit goes to the store first, then to the cloud at once, and to the list last.
/// What the cloud does not take stays in store and list; it is sent again by writing it again. A success of the cloud
/// is told to the user. Without an open session (a debug warning) or a working project nothing is sent. Records are
/// keyed by their identifier, exactly; one that is written without an identifier gets one. The table owns its records:
/// what the getter lends is valid until the record is replaced or deleted, or the table is reset. Used from one thread
/// at a time.
class TOLM_DATASET_API ICircuitTemplateData {
public:
    virtual ~ICircuitTemplateData();
    /// Releases all records; the store and the path stay as they are.
    virtual void reset() = 0;
    /// The records in order; the store is not read. An empty entry is left out with a debug warning.
    virtual std::vector<const ITolmProjectSettingCircuitTemplate*> GetCircuitTemplateList() const = 0;
    /// Writes the template and takes it into the list, in place of one with the same identifier or else at the end.
    /// An empty owner is a debug warning and no change.
    virtual void AddCircuitTemplate(vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> pCircuitTemplate) = 0;
    /// Writes templates that the caller keeps; the list is not touched.
    virtual void
    AddCircuitTemplateListToDB(std::vector<const ITolmProjectSettingCircuitTemplate*> pCircuitTemplateList) = 0;
    /// Deletes the templates in the store and then in the list. The pointers may be the table's own; an unknown
    /// identifier is nothing here, and is sent all the same. A null pointer is a debug warning: the store keeps what
    /// stands behind it, and nothing is sent.
    virtual void
    DeleteCircuitTemplateList(std::vector<const ITolmProjectSettingCircuitTemplate*> pCircuitTemplateList) = 0;
    /// Keeps the path and appends all templates of the store. A slice of another table reads nothing.
    virtual void CollectDesignData(wstring datasetFilePath, TolmProjectSettingTableId tableId) = 0;
};

} // namespace tolm
