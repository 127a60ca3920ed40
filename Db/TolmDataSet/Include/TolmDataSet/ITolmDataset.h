#pragma once

#include "Host/Categories.h"
#include "Host/Components.h"
#include "Host/HostTypes.h"
#include "TolmDataSet/ICircuitTemplateData.h"
#include "TolmDataSet/IConnectorData.h"
#include "TolmDataSet/IMEPMaterialSerieData.h"
#include "TolmDataSet/IMaterialData.h"
#include "TolmDataSet/ISizeModuleData.h"
#include "TolmDataSet/ISystemTypeData.h"
#include "TolmDataSet/SmallRecords.h"
#include "Vorn/Progress.h"

#include <map>
#include <vector>

namespace tolm {

/// Records by their identifier.
template <class T> using IdMap = std::map<wstring, vorn::OwnerPtr<T>>;

/// The settings of one project: six tables in memory, and operations on the local store, the component databases and
/// the cloud service. It works on four paths: the dataset file, the component database, the database of combined
/// products, and the folder of binary files.
///
/// It is made by `ITolmDataSetFactory::CreateDataset`, owned by the host, and used from one thread at a time; every
/// operation runs on the caller's thread and blocks it until it is done. No file is opened before an operation needs
/// one, and none stays open. The tables belong to the dataset and live as long as it does; records that an operation
/// hands out in owners are the caller's. Failures are return values; internal faults are debug warnings, and what the
/// user should hear of is posted as a notification.
class TOLM_DATASET_API ITolmDataset {
public:
    virtual ~ITolmDataset();

    /// Path of the dataset file.
    virtual wstring GetDatasetFilePath() const = 0;
    /// Puts other paths in place and empties all tables; nothing is read.
    virtual void ResetPathAndResetTables(wstring datasetFilePath, wstring componentFilePath,
                                         wstring combinedProductFilePath, wstring binaryFileFolder) = 0;

    // --- tables ------------------------------------------------------------------------------------------------

    /// Empties all tables; a table that is missing is a debug warning, and then none is emptied.
    virtual void ResetDataTables() = 0;
    /// Empties all tables and reads the listed slices in the order of the list; a slice listed twice is read twice. An
    /// empty list does nothing, an id without meaning reads nothing. The flag is not used.
    virtual void CollectData(bool flag, const std::vector<TolmProjectSettingTableId>& tableIds) = 0;
    /// Fills the map with the disciplines of the category service. False, and a debug warning, when none is up.
    virtual bool ReadDisciplineList(IdMap<ITolmDisciplineInfo>& disciplines) = 0;

    // A getter with a table id collects that slice, and so empties all six tables first; an id that is not the
    // table's gives null and changes nothing. A getter without one hands out the table as it stands and reads nothing.
    // A pointer to a table stays valid while the dataset lives; `EditTable` gives access to its edits.

    virtual const ISystemTypeData* GetSystemTypeData(TolmProjectSettingTableId tableId) = 0;
    virtual const ISystemTypeData* GetSystemTypeData() = 0;
    virtual const IConnectorData* GetConnectionSerieData(TolmProjectSettingTableId tableId) = 0;
    virtual const IConnectorData* GetConnectionSerieData() = 0;
    /// Takes 7 and 10 to 13; the HVAC pipe sizes, 33, are reached through `CollectData` alone.
    virtual const ISizeModuleData* GetSizeModuleData(TolmProjectSettingTableId tableId) = 0;
    virtual const ISizeModuleData* GetSizeModuleData() = 0;
    /// Takes 28 to 31; the HVAC pipe materials, 35, are reached through `CollectData` alone.
    virtual const IMaterialData* GetMaterialData(TolmProjectSettingTableId tableId) = 0;
    virtual const IMaterialData* GetMaterialData() = 0;
    virtual const IMEPMaterialSerieData* GetMEPMaterialSerieData(TolmProjectSettingTableId tableId) = 0;
    virtual const IMEPMaterialSerieData* GetMEPMaterialSerieData() = 0;
    virtual const ICircuitTemplateData* GetCircuitTemplateData() = 0;

    // --- what a model may use; read from the store, the tables are neither used nor changed ----------------------

    /// Appends five maps from identifier to name: the system types of plumbing pipes, ducts, HVAC pipes, electrical
    /// systems and cable trays.
    virtual void GetSystemTypeNameIDs(std::vector<std::map<wstring, wstring>>& result) = 0;
    /// For each system type the identifiers of its series records, followed by those of its cable tables.
    virtual bool GetMEPSerieRecordGuidListOfSystemType(std::vector<wstring> systemTypeIds,
                                                       std::map<wstring, std::vector<wstring>>& result) = 0;
    virtual IdMap<IProjectSettingMEPMaterialSerie>
    GetAvailableMEPMaterialSerieList(TolmProjectSettingMEPObjectType objectType, MEPDisciplineId discipline) = 0;
    virtual IdMap<IProjectSettingMaterial> GetAvailableMaterialList(TolmProjectSettingMEPObjectType objectType,
                                                                    MEPDisciplineId discipline) = 0;
    /// Sizes in millimetres of the module that `GetSizeModule` finds: nominal diameters of a pipe or conduit, sizes of
    /// a duct or tray, none of a wire. In the module's order.
    virtual std::vector<float> GetAvailableSizeList(TolmProjectSettingMEPObjectType objectType,
                                                    MEPDisciplineId discipline, wstring serieId,
                                                    SectionType sectionType) = 0;
    /// Adds to `connectorTypes` the connector types of the object type with their names, and to `series` the
    /// connection series of these. True when `series` holds any.
    virtual bool GetAvailableConnectionList(TolmProjectSettingMEPObjectType objectType,
                                            std::map<MEPConnectorType, wstring>& connectorTypes,
                                            IdMap<IProjectSettingConnectionSerie>& series) = 0;
    /// The module of the material `serieId` or, where that is empty, the first of the object type and discipline whose
    /// duct shape is `sectionType` (`None` takes the first of all). A fresh module when there is none; never an empty
    /// owner.
    virtual vorn::OwnerPtr<IProjectSettingSizeModule> GetSizeModule(TolmProjectSettingMEPObjectType objectType,
                                                                    MEPDisciplineId discipline, wstring serieId,
                                                                    SectionType sectionType) = 0;
    virtual IdMap<IProjectSettingSizeModule> GetAvailableSizeModuleList(TolmProjectSettingMEPObjectType objectType,
                                                                        MEPDisciplineId discipline) = 0;
    /// The system classifications of a discipline with their names.
    virtual const std::map<MEPSystemClassification, wstring>&
    GetAvailableSystemClassificationList(MEPDisciplineId discipline) = 0;

    // --- products ------------------------------------------------------------------------------------------------

    /// Components of a category that meet the conditions. Empty, and a debug warning, without a category service;
    /// empty for an unknown category.
    virtual std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>
    GetProjectProductList(wstring categoryCode, std::map<wstring, wstring>& conditions, bool flag) = 0;
    /// Components of several categories by category. Unknown categories are passed over.
    virtual std::map<wstring, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>>
    GetProjectProductList(std::vector<wstring> categoryCodes) = 0;
    /// One product of a category in the listed versions. Empty, and a debug warning, for a null category.
    virtual std::map<int, vorn::OwnerPtr<ITolmProjectSettingComponent>>
    GetOneProjectProduct(const ITolmCategoryInfo* category, __int64 id, std::vector<int> numbers) = 0;

    // --- cloud and combined products -------------------------------------------------------------------------------

    /// Sends the local changes to the cloud.
    virtual bool SendModifiedDataToCloud(bool flag, vorn::IProgressReporter* reporter) = 0;
    /// Removes combined products here and in the cloud; the result is the cloud's. False for an empty list.
    virtual bool RemoveCombinedComponents(wstring localKey, wstring targetId, std::vector<wstring> ids) = 0;
    /// Brings the dataset file to the cloud's version. With `flag` the time of the update is noted; `recoverInfo` may
    /// be null, or names system types that are wanted back; `reporter` may be null. Collect again afterwards.
    virtual bool SyncDataFromCloud(bool flag, vorn::IProgressReporter* reporter, RecoverDataInfo* recoverInfo) = 0;
    /// Stores combined products and sends the new ones as created, the others as edited. True when the cloud took
    /// either. False, and nothing done, without a target or products.
    virtual bool AddCombinedComponents(wstring targetId, std::vector<TolmCombinedProduct> products) = 0;
    /// Tells where the dataset stands against the cloud. Sets the working project's id, both versions and, for a
    /// dataset that was synchronised, the time of the last update ("%Y/%m/%d %T", else empty). Without a session (a
    /// debug warning) or a working project both versions keep what they held.
    virtual CompareVersionResult CompareCloudVersion(wstring& projectId, int& cloudVersion, int& localVersion,
                                                     wstring& timePoint) = 0;
    /// Merges the cloud's changes with the local ones and sends what remains, until the cloud stands still during one
    /// merge. The versions are those of `CompareCloudVersion` and become the new one. False, and a debug warning, for
    /// a null reporter or a failure on the way.
    virtual bool MergeDataAndSendModifiedData(wstring projectId, vorn::IProgressReporter* reporter, int& cloudVersion,
                                              int& localVersion) = 0;
    /// The cloud's version of a project, 1 or more; -1 when the project was never filled, -2 when it could not be had.
    virtual int GetCloudVersion(wstring projectId) = 0;

    // --- header of the dataset file --------------------------------------------------------------------------------

    virtual bool SetLocalVersion(int version) = 0;
    /// "%Y/%m/%d %T" in local time; empty when there is none or the store cannot be opened.
    virtual wstring GetLastUpdateTimePointString() = 0;
    /// Notes the present time as that of the last update and returns it; empty on failure.
    virtual wstring SetLastUpdateTimePoint() = 0;

    // --- component identifiers, template and change notice -----------------------------------------------------------

    /// Makes the fittings of the store refer to other components, by a map from old to new identifier.
    virtual bool ReplaceFittingComponentId(std::map<wstring, wstring> idMap) = 0;
    /// Changes component and component type identifiers in the component database, by maps from old to new.
    virtual bool UpdateAllComponentId(std::map<wstring, wstring>& componentIds,
                                      std::map<wstring, wstring>& componentTypeIds) = 0;
    /// Has the service fill the project of this identifier with the default settings of its environment. False for an
    /// empty identifier or where the service did not do it.
    virtual bool ApplyDefaultProjectSettingTemplate(const wstring& projectId) = 0;
    /// Tells the service which settings of the work unit changed, and how. False, and a debug warning, without a
    /// session.
    virtual bool SendUpdateSettingDataInfo(const std::vector<wstring>& ids, int kind) = 0;
};

/// The table for edits: the dataset's getters hand its tables out as pointers to const, which are never const objects.
template <class Table> Table* EditTable(const Table* table) noexcept {
    return const_cast<Table*>(table);
}

} // namespace tolm
