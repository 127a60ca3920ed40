#pragma once

#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"

#include <vector>

namespace tolm {

/// The table of material series and their groups. Every edit goes to the store first and to the list second; a failed
/// write does not keep the record out of the list. Records are keyed by their identifier, exactly. The table owns its
/// records: what a getter lends is valid until the record is replaced or deleted, or the table is reset. Used from one
/// thread at a time.
class TOLM_DATASET_API IMEPMaterialSerieData {
public:
    virtual ~IMEPMaterialSerieData();
    /// Releases all series and groups; the store and the paths stay as they are.
    virtual void reset() = 0;
    /// The series in order; the store is not read. An empty entry is left out with a debug warning.
    virtual std::vector<const IProjectSettingMEPMaterialSerie*> GetSerieList() const = 0;
    /// Reads one series from the store into the list, in place of the one it holds or else at the end. Nothing
    /// happens when the store has none of this identifier; the store is not written.
    virtual void GetAndAddSerieById(wstring id) = 0;
    /// Writes the series and takes it into the list, in place of one with the same identifier or else at the end.
    /// An empty owner is a debug warning and no change.
    virtual void AddSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> pSerie) = 0;
    /// Writes a series that the caller keeps; the list is not touched.
    virtual void AddSerieToDB(const IProjectSettingMEPMaterialSerie* pSerie) = 0;
    /// Deletes the series in the store and then in the list. The pointers may be the table's own; a null pointer is
    /// a debug warning, an unknown identifier nothing.
    virtual void DeleteSerieList(std::vector<const IProjectSettingMEPMaterialSerie*> serieList) = 0;
    /// The groups in order; the store is not read. An empty entry is left out with a debug warning.
    virtual std::vector<const IProjectSettingMEPMaterialSerieGroup*> GetSerieGroupList() const = 0;
    /// Writes the group and takes it into the list, in place of one with the same identifier or else at the end.
    /// An empty owner is a debug warning and no change.
    virtual void AddSerieGroup(vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> pGroup) = 0;
    /// Deletes the groups in the store. From the list goes, for each input position, the table's own entry at that
    /// position, whichever group the input names: list and store agree again after the next collection. A null
    /// pointer, and a position where the list has no entry, is a debug warning.
    virtual void DeleteSerieGroupList(std::vector<const IProjectSettingMEPMaterialSerieGroup*> groupList) = 0;
    /// True when a record of the store refers to the series; its name goes to `referencingName`. The spelling is kept
    /// for the hosts that call it.
    virtual bool IsTheMEPMaterialSeireReferred(const IProjectSettingMEPMaterialSerie* pSerie,
                                               wstring& referencingName) const = 0;
    /// Keeps the two paths and appends what the store holds of the slice, the series first and then the groups; trays
    /// and conduits have no groups. A slice of another table reads nothing.
    virtual void CollectDesignData(wstring datasetFilePath, wstring componentFilePath,
                                   TolmProjectSettingTableId tableId) = 0;
};

} // namespace tolm
