#pragma once

#include "TolmDataSet/MepEnums.h"
#include "TolmDataSet/SmallRecords.h"
#include "Vorn/OwnerPtr.h"
#include "Vorn/Progress.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

class CQbase;

namespace web::json {
class value;
class object;
} // namespace web::json

namespace tolm {

struct CallSite;
class ComponentCache;
class DataSetBalancingMethod;
class DataSetInsulationSerie;
class DataSetSizingMethod;
class IProjectSettingConnectionSerie;
class IProjectSettingMEPMaterialSerie;
class IProjectSettingMEPMaterialSerieGroup;
class IProjectSettingMaterial;
class IProjectSettingSizeModule;
class IProjectSettingSystemType;
class ITolmProjectSettingCircuitTemplate;
class MaterialCache;
class NotedChanges;
class StoreFrame;
struct SharedReads;

/// How an upload came out.
enum class UploadOutcome {
    Failed,
    Nothing, ///< there was nothing to send: nothing is noted, or another process has sent it
    Sent
};

/// The one class through which the library touches the local store.
///
/// It holds no open store: every operation opens the file, takes a lock, works and closes. The dataset is known only
/// by the path that the caller passes; `ddqFilePath` is the definition file. Failures come back as values: false, an
/// empty list, -1 or an empty text; internal faults are debug warnings. Operations run on the caller's thread, those
/// with the cloud on one at a time; reads and edits on any, and in any process, which the stores' own locks keep apart.
class MepQbaseUtil {
public:
    static MepQbaseUtil* GetInstance();

    MepQbaseUtil(const MepQbaseUtil&) = delete;
    MepQbaseUtil& operator=(const MepQbaseUtil&) = delete;

    // --- header (MepQbaseUtil.Header.cpp) ------------------------------------------------------------------------
    bool SetLocalVersion(wstring filePath, wstring ddqFilePath, int version);
    /// Sets the version where the header still says `expected`; elsewhere another process has synchronised the dataset
    /// meanwhile, and `version` becomes what the header says. False, and reported, when it is not on disk.
    bool ReplaceLocalVersion(const wstring& filePath, const wstring& ddqFilePath, int expected, int& version);
    wstring SetLastUpdateTimePoint(wstring filePath, wstring ddqFilePath);
    int GetLocalVersion(wstring filePath, wstring ddqFilePath, bool& hasLocalChanges);
    wstring GetLastUpdateTimePoint(wstring filePath, wstring ddqFilePath);
    bool ResetQbase(CQbase* qb);
    bool ResetQbaseCategory(CQbase* qb, const char* classCode);

    // --- materials and size modules (MepQbaseUtil.Materials.cpp, .SizeModules.cpp) ----------------------------------
    bool ReadMaterialList(wstring filePath, wstring ddqFilePath, TolmProjectSettingMEPObjectType mepType,
                          MEPDisciplineId disciplineId, std::vector<vorn::OwnerPtr<IProjectSettingMaterial>>& list);
    bool ReadMaterial(wstring filePath, wstring ddqFilePath, wstring id,
                      vorn::OwnerPtr<IProjectSettingMaterial>& material);
    bool WriteMaterial(wstring filePath, wstring ddqFilePath, const IProjectSettingMaterial* newMaterial);
    bool DeleteMaterialList(wstring filePath, wstring ddqFilePath,
                            std::vector<const IProjectSettingMaterial*> materialList);
    bool ReadSizeModuleList(wstring filePath, wstring ddqFilePath, TolmProjectSettingMEPObjectType mepType,
                            MEPDisciplineId disciplineId, std::vector<vorn::OwnerPtr<IProjectSettingSizeModule>>& list);
    bool ReadSizeModuleList(wstring filePath, wstring ddqFilePath, TolmProjectSettingMEPObjectType mepType,
                            wstring materialId, vorn::OwnerPtr<IProjectSettingSizeModule>& module);
    bool WriteSizeModule(wstring filePath, wstring ddqFilePath, const IProjectSettingSizeModule* newSize);
    bool DeleteSizeModuleList(wstring filePath, wstring ddqFilePath,
                              std::vector<const IProjectSettingSizeModule*> sizeModuleList);
    bool read_materialserie_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingMaterial>& retMaterial);
    bool write_materialserie_att(CQbase* qb, const IProjectSettingMaterial* pMaterial);
    bool read_sizemodule_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingSizeModule>& retSizeModule);
    bool write_sizemodule_att(CQbase* qb, const IProjectSettingSizeModule* sizeModule);

    // --- connection series, material series and their groups (MepQbaseUtil.Series.cpp) ------------------------------
    // `componentFilePath` is the component database that the fittings come from. Readers read whole trees; a
    // reference to a record that is gone leaves its part out.
    bool ReadConectionSerieList(wstring filePath, wstring ddqFilePath, wstring componentFilePath,
                                TolmProjectSettingMEPObjectType mepType,
                                std::map<MEPConnectorType, wstring> connectorTypes,
                                std::map<wstring, vorn::OwnerPtr<IProjectSettingConnectionSerie>>& series);
    bool ReadConectionSerieList(wstring filePath, wstring ddqFilePath, wstring componentFilePath,
                                MEPConnectorType connectionType,
                                std::vector<vorn::OwnerPtr<IProjectSettingConnectionSerie>>& list);
    bool ReadMEPMaterialSerie(wstring filePath, wstring ddqFilePath, wstring componentFilePath, wstring id,
                              vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>& serie);
    bool ReadMEPMaterialSerieList(wstring filePath, wstring ddqFilePath, wstring componentFilePath,
                                  TolmProjectSettingMEPObjectType mepType, MEPDisciplineId disciplineId,
                                  std::vector<vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>>& list);
    bool ReadMEPMaterialSerieGroupList(wstring filePath, wstring ddqFilePath, TolmProjectSettingMEPObjectType mepType,
                                       MEPDisciplineId disciplineId,
                                       std::vector<vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup>>& list);
    /// Stores the connection series and the group with the series; of the size module the id alone.
    bool WriteMEPMaterialSerie(wstring filePath, wstring ddqFilePath, const IProjectSettingMEPMaterialSerie* newSerie);
    bool WriteMEPMaterialSerieGroup(wstring filePath, wstring ddqFilePath,
                                    const IProjectSettingMEPMaterialSerieGroup* newGroup);
    bool DeleteMEPMaterialSerieList(wstring filePath, wstring ddqFilePath,
                                    std::vector<const IProjectSettingMEPMaterialSerie*> serieList);
    bool DeleteMEPMaterialSerieGroupList(wstring filePath, wstring ddqFilePath,
                                         std::vector<const IProjectSettingMEPMaterialSerieGroup*> groupList);
    bool read_connection_serie_att(CQbase* qb, wstring componentFilePath,
                                   vorn::OwnerPtr<IProjectSettingConnectionSerie>& retConnSerie);
    bool write_connection_serie_att(CQbase* qb, const IProjectSettingConnectionSerie* pConnSerie);
    bool read_mep_materialserie_att(CQbase* qb, wstring componentFilePath,
                                    vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>& retMatSerie);
    bool read_serie_group_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup>& retMatSerie);

    // --- system types (MepQbaseUtil.SystemTypes.cpp) -----------------------------------------------------------------
    bool ReadSystemType(wstring filePath, wstring ddqFilePath, wstring componentFilePath, wstring id,
                        vorn::OwnerPtr<IProjectSettingSystemType>& systemType);
    bool ReadSystemTypeList(wstring filePath, wstring ddqFilePath, wstring componentFilePath,
                            MEPDisciplineId disciplineId, TolmProjectSettingMEPObjectType mepType,
                            std::vector<vorn::OwnerPtr<IProjectSettingSystemType>>& list);
    /// Appends a map from id to name for each pair of a discipline and an object type.
    bool ReadSystemTypeNameIds(wstring filePath, wstring ddqFilePath, std::vector<int> discipTypes,
                               std::vector<int> objTypes, std::vector<std::map<wstring, wstring>>& result);
    /// The ids of the series, then of the cable tables, that each system type refers to. An id is looked for in upper
    /// case, then in lower case.
    bool ReadMEPSerieRecordGuidListOfSystemType(wstring filePath, wstring ddqFilePath,
                                                std::vector<wstring> systemTypeIds,
                                                std::map<wstring, std::vector<wstring>>& result);
    /// Stores the ids of the series and cable tables, not these themselves.
    bool WriteSystemType(wstring filePath, wstring ddqFilePath, const IProjectSettingSystemType* newSystem);
    bool DeleteSystemTypeList(wstring filePath, wstring ddqFilePath,
                              std::vector<const IProjectSettingSystemType*> systemTypeList);
    bool DoesSystemTypeRecordExist(wstring filePath, wstring ddqFilePath, wstring id);
    /// Sets the store's filters to the discipline and object type of what it has read, for a walk that filters by
    /// both.
    bool read_system_type_att(CQbase* qb, wstring componentFilePath,
                              vorn::OwnerPtr<IProjectSettingSystemType>& retSystemType);

    // --- circuit templates (MepQbaseUtil.CircuitTemplates.cpp): not tracked, but sent to the cloud at once
    // ------------
    bool ReadCircuitTemplateList(wstring filePath, wstring ddqFilePath,
                                 std::vector<vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate>>& list);
    /// Reads the names of the system type, the wires and the conduits that the template refers to as well.
    bool read_circuit_template_att(CQbase* qb, vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate>& retTemplate);
    /// Gives a template without an id its new one. True when the store has the templates, whatever the cloud says; a
    /// success of the cloud is told to the user.
    bool WriteCircuitTemplateList(wstring filePath, wstring ddqFilePath,
                                  std::vector<const ITolmProjectSettingCircuitTemplate*> circuitTemplateList);
    /// The same for a deletion. At a null entry it stops: what stands before it is deleted, and nothing is sent.
    bool DeleteCircuitTemplateList(wstring filePath, wstring ddqFilePath,
                                   std::vector<const ITolmProjectSettingCircuitTemplate*> circuitTemplateList);

    // --- design methods (MepQbaseUtil.Methods.cpp): local alone; a read replaces the list
    // -----------------------------
    bool readBalancingMethodList(wstring filePath, wstring ddqFilePath, MEPDisciplineId disciplineId,
                                 std::vector<DataSetBalancingMethod>& list);
    bool addBalancingMethod(wstring filePath, wstring ddqFilePath, const DataSetBalancingMethod& method);
    bool deleteBalancingMethodList(wstring filePath, wstring ddqFilePath, std::vector<DataSetBalancingMethod> list);
    bool readInsulationSerieList(wstring filePath, wstring ddqFilePath, MEPDisciplineId disciplineId,
                                 TolmInsulationSerieType insulationType, std::vector<DataSetInsulationSerie>& list);
    bool addInsulationSerie(wstring filePath, wstring ddqFilePath, const DataSetInsulationSerie& serie);
    bool deleteInsulationSerieList(wstring filePath, wstring ddqFilePath, std::vector<DataSetInsulationSerie> list);
    bool readSizingMethodList(wstring filePath, wstring ddqFilePath, TolmSizingMethodType methodType,
                              std::vector<DataSetSizingMethod>& list);
    bool addSizingMethod(wstring filePath, wstring ddqFilePath, const DataSetSizingMethod& method);
    bool deleteSizingMethodList(wstring filePath, wstring ddqFilePath, std::vector<DataSetSizingMethod> list);

    // --- change tracking (MepQbaseUtil.Tracking.cpp) ----------------------------------------------------------------
    bool GetLocalChangedIdList(CQbase* qbStatus, int mepType, int disciplineId, const char* classCode,
                               std::vector<wstring>& createdIds, std::vector<wstring>& editedIds,
                               std::vector<wstring>& removedIds);

    // --- references and maintenance (MepQbaseUtil.References.cpp) ----------------------------------------------------
    bool IsTheSizeModuleReferred(wstring filePath, wstring ddqFilePath, const IProjectSettingSizeModule* pSizeModule,
                                 wstring& referrerName);
    bool IsTheMEPMaterialSeireReferred(wstring filePath, wstring ddqFilePath,
                                       const IProjectSettingMEPMaterialSerie* pSerie, wstring& referrerName);
    /// Gives the fittings of all connection series new component ids. Notes no change: the ids come from the cloud.
    bool ReplaceFittingComponentId(wstring filePath, wstring ddqFilePath, std::map<wstring, wstring> componentIds);

    // --- refresh from the cloud (MepQbaseUtil.Pipeline.cpp) ----------------------------------------------------------
    bool SyncDataFromCloud(bool writeTimePoint, vorn::IProgressReporter* progress, wstring datasetFilePath,
                           wstring templateFilePath, wstring combinedProductFilePath, wstring binaryFileFolder,
                           RecoverDataInfo* recoverInfo);
    int GetCloudVersion(wstring projectId);

    // --- merge and upload (MepQbaseUtil.Merge.cpp, .TableMerge.cpp, .Upload.cpp)
    // --------------------------------------
    /// Takes the cloud's changes since `localVersion` into a store that holds local changes. It works on copies; both
    /// real files are replaced at the end, together or not at all. True when the merge ran to its end, also where
    /// single tables failed. `*pendingUpload` becomes false where nothing is left to send.
    bool MergeCloudAndLocalDataset(wstring projectId, vorn::IProgressReporter* progress, int cloudVersion,
                                   int localVersion, wstring datasetFilePath, wstring templateFilePath,
                                   wstring combinedProductFilePath, wstring binaryFileFolder, bool* pendingUpload);
    /// Brings the cloud's changes of one table into an open data store and forgets the local changes that lose, in an
    /// open status store. `add` and `del` are the two halves of the increment. False where a unit of work was spoilt:
    /// what it applied until then stays.
    bool MergeOneTableData(const web::json::value& add, const web::json::value& del, CQbase* qb, CQbase* statusQb,
                           const char* classCode, wstring key, short mepType, short disciplineId);
    /// The same for one group of "ConfigTree"; the maps are those of `GetCloudChangedConfigTreeIdLists`.
    bool MergeSizeTable(const web::json::value& add, const web::json::value& del, CQbase* qb, CQbase* statusQb,
                        wstring key, short mepType, short disciplineId, const char* classCode,
                        const std::map<wstring, std::vector<wstring>>& added,
                        const std::map<wstring, std::vector<wstring>>& deleted,
                        const std::map<wstring, std::vector<wstring>>& modified);
    /// The same for a group that holds materials and their size tables.
    bool MergePipeSizeTable(const web::json::value& add, const web::json::value& del, CQbase* qb, CQbase* statusQb,
                            wstring key, short disciplineId, const std::map<wstring, std::vector<wstring>>& added,
                            const std::map<wstring, std::vector<wstring>>& deleted,
                            const std::map<wstring, std::vector<wstring>>& modified);
    /// Takes the cloud's circuit templates, combined products and binary files as they are. The status store is not
    /// looked at.
    bool MergeOtherContent(const web::json::value& add, const web::json::value& del, CQbase* qb, CQbase* statusQb,
                           wstring combinedProductFilePath, wstring binaryFileFolder, wstring datasetFilePath = {});
    /// Sends every noted local change, as one patch or, with `tableByTable`, class by class, and removes the status
    /// store after the service has taken them. True also when there is nothing to send.
    bool SendModifiedDataToCloud(bool writeTimePoint, vorn::IProgressReporter* progress, wstring datasetFilePath,
                                 wstring templateFilePath, wstring componentFilePath, bool tableByTable);
    bool SendModifiedDataToCloud(bool writeTimePoint, vorn::IProgressReporter* progress, wstring datasetFilePath,
                                 wstring templateFilePath, wstring componentFilePath);
    /// The same without time point and reporter, and told more exactly.
    UploadOutcome SendModifiedDataToCloud(const wstring& datasetFilePath, const wstring& templateFilePath,
                                          const wstring& componentFilePath);

    // --- ingest (MepQbaseUtil.Ingest*.cpp)
    // ----------------------------------------------------------------------------
    void SyncPipeSizeTableItem(CQbase* qb, short disciplineId, const web::json::value& element);
    bool SyncSizeTableExceptPipeAndGroupTableItem(CQbase* qb, wstring groupName, const wchar_t* id,
                                                  web::json::value element);
    bool SyncMaterialSerie(web::json::value element, CQbase* qb, short mepType, short disciplineId);
    bool SyncDeletedMaterialSerie(const web::json::object& del, CQbase* qb, wstring key);
    bool SyncSystemTypes(CQbase* qb, short mepType, short disciplineId, std::vector<web::json::value> elements);
    bool SyncRecoveredSystemTypes(CQbase* qb, short mepType, short disciplineId, std::vector<web::json::value> elements,
                                  std::map<wstring, bool>& createdIds);
    bool SyncDeletedSystemType(const web::json::object& del, CQbase* qb, wstring key);
    bool AddOtherContent(const web::json::object& add, CQbase* qb, wstring combinedProductFilePath,
                         wstring binaryFileFolder, wstring datasetFilePath = {});
    bool DeleteOtherContent(const web::json::object& del, CQbase* qb, wstring combinedProductFilePath,
                            wstring binaryFileFolder, wstring datasetFilePath = {});
    bool GetCombinedProductFromJson(wstring categoryCode, web::json::value element, TolmCombinedProduct& product);

    // --- name repair and recovery (MepQbaseUtil.NameRepair.cpp, MepQbaseUtil.Recovery.cpp)
    // ----------------------------
    bool FindAndRenameDuplicatedItems(std::vector<wstring> cloudAdded, std::vector<wstring> cloudModified,
                                      std::vector<wstring> localCreated, std::vector<wstring> localEdited, CQbase* qb,
                                      const char* classCode, short mepType, short disciplineId, bool reportMissing);
    void RecoverInstantiatedSystemTypes(web::json::value recoverData, CQbase* qb, wstring& templateFilePath,
                                        RecoverDataInfo* recoverInfo);
    /// Ids of the system types that the last recovery took back in; an upload confirms and clears them.
    const std::vector<wstring>& RecoveredSystemTypeIds() const { return m_recoveredSystemTypeIds; }

private:
    MepQbaseUtil() = default;
    ~MepQbaseUtil() = default;

    /// The same, materials that `materials` holds are not read again.
    bool read_sizemodule_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingSizeModule>& retSizeModule,
                             MaterialCache& materials);
    // The readers of trees, what `reads` holds is not read again.
    bool read_connection_serie_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingConnectionSerie>& retConnSerie,
                                   ComponentCache& components);
    bool read_mep_materialserie_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>& retMatSerie,
                                    SharedReads& reads);
    bool read_system_type_att(CQbase* qb, vorn::OwnerPtr<IProjectSettingSystemType>& retSystemType, SharedReads& reads);

    /// Opens and locks a store. False when a path is empty, the store will not open or the lock is not to be had.
    bool OpenQbase(wstring filePath, wstring ddqFilePath, CQbase* qb, bool forUpdate, bool create);

    /// Notes a change of one record in the status store beside `filePath`, in a commit of its own. False when the
    /// status store does not open or its change is not on disk. An operation that has the data store open notes the
    /// change through a `StoreFrame` or a `StatusCompanion` in the same commit.
    bool RecordLocalChange(wstring filePath, wstring ddqFilePath, const char* classCode, wstring id, int status,
                           short mepType, short disciplineId);

    struct RefreshPlace {
        const wstring& dataset;
        const wstring& definition;
        const wstring& combinedProducts;
        const wstring& binaryFolder;
    };
    /// Faults are reported in the name of `site`.
    std::optional<bool> RefreshOnce(const CallSite& site, const RefreshPlace& place, const NotedChanges& changes,
                                    bool writeTimePoint, vorn::IProgressReporter* progress,
                                    RecoverDataInfo* recoverInfo);
    UploadOutcome SendPatch(const CallSite& site, bool writeTimePoint, vorn::IProgressReporter* progress,
                            const wstring& datasetFilePath, const wstring& templateFilePath,
                            const wstring& componentFilePath);

    std::vector<wstring> m_recoveredSystemTypeIds;

    friend class StoreFrame;
    friend struct UploadReads;
    friend struct MepQbaseUtilTestAccess;
};

} // namespace tolm
