#pragma once

#include "TolmDataSet/IProjectSettingConnectionSerie.h"

#include <vector>

namespace tolm {

/// The table of connection series. It is read-only: a connection series is edited through the material series that
/// holds it. The table owns its records: what the getter lends is valid until the table is reset. Used from one
/// thread at a time.
class TOLM_DATASET_API IConnectorData {
public:
    virtual ~IConnectorData();
    /// Releases all records; the store and the paths stay as they are.
    virtual void reset() = 0;
    /// The records in order; the store is not read. An empty entry is left out with a debug warning.
    virtual std::vector<const IProjectSettingConnectionSerie*> GetConnectionSerieList() const = 0;
    /// Keeps the two paths and appends what the store holds of the slice. A slice of another table reads nothing.
    virtual void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                   TolmProjectSettingTableId tableId) = 0;
};

} // namespace tolm
