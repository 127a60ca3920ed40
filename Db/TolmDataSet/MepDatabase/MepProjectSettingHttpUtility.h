#pragma once

#include "TolmDataSet/MepEnums.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace web {
namespace json {
class value;
}
namespace http {
class http_request;
}
} // namespace web

namespace tolm {

class IProjectSettingMEPMaterialSerie;
class IProjectSettingMEPMaterialSerieGroup;
class IProjectSettingMaterial;
class IProjectSettingSizeModule;
class IProjectSettingSystemType;
class ITolmProjectSettingCircuitTemplate;
struct TolmCombinedProduct;

/// Names of the service's tables.
namespace CloudTables {

inline constexpr const wchar_t* CircuitTemplate = L"CircuitTemplate";
inline constexpr const wchar_t* ConfigTree = L"ConfigTree";
inline constexpr const wchar_t* PipeType = L"PipeType";
inline constexpr const wchar_t* HVACPipeType = L"HVACPipeType";
inline constexpr const wchar_t* DuctType = L"DuctType";
inline constexpr const wchar_t* ConduitFittingsType = L"ConduitFittingsType";
inline constexpr const wchar_t* CableTrayFittingsType = L"CableTrayFittingsType";
inline constexpr const wchar_t* PipeSystemType = L"PipeSystemType";
inline constexpr const wchar_t* HVACPipeSystemType = L"HVACPipeSystemType";
inline constexpr const wchar_t* DuctSystemType = L"DuctSystemType";
inline constexpr const wchar_t* ElectricalSystemType = L"ElectricalSystemType";

} // namespace CloudTables

/// The cloud client: the only place that talks to the settings service. Each operation is one blocking call on the
/// caller's thread; it returns true only when the service answered 200 with the code "10000". One thread at a time.
class TolmProjectSettingHttpUtility {
public:
    /// The one object, its user and token taken anew from the session.
    static TolmProjectSettingHttpUtility* GetInstance();

    void AddRequestHeader(web::http::http_request& request, bool withContentType);
    wstring GetProjectSettingAPIHost();
    int GetRequestTimeOut();

    bool GetVersion(wstring projectId, int& version);
    bool GetCloudData(wstring projectId, int version, web::json::value& data);
    bool GetCloudSystemChangeData(wstring workunitId, web::json::value& data);
    bool ReadProjectTemplateRowKey(wstring projectId, wstring& rowKey);
    bool ApplyDefaultProjectSettingTemplate(wstring projectId);

    // --- uploads (MepProjectSettingHttpUtility.Upload.cpp): one request each; an empty argument is refused without one
    bool SendCreatedEvent(wstring host, wstring projectId, wstring tableName, web::json::value rows);
    bool SendEditedEvent(wstring host, wstring projectId, wstring tableName, web::json::value rows);
    bool SendRemovedDataList(wstring projectId, std::vector<wstring> ids, wstring tableName);
    /// Sends all changes at once. `newVersion` is the project's version then; it stays as it was on failure, of which
    /// the user hears why.
    bool SendPatchDataEvent(wstring projectId, web::json::value patch, int& newVersion);
    bool SendUpdateSettingDataInfo(wstring projectId, wstring workunitId, std::vector<wstring> dataIds, int dataStatus);

    // --- lists of records (MepProjectSettingHttpUtility.Lists.cpp): sorted by table and encoded, then sent table by
    // table, or gathered into `target` for a patch. A row is wrapped as {"id", "data"} when `wrapEdited` is true and
    // `isCreated` is not. `index` is the next free place in "ConfigTree" and runs on from call to call.
    template <class Record> using RecordList = std::vector<std::shared_ptr<const Record>>;

    bool SendCreatedOrEditedSystemTypeList(wstring projectId, RecordList<IProjectSettingSystemType> list,
                                           bool wrapEdited, bool isCreated);
    void SendCreatedOrEditedSystemTypeList(web::json::value& target, wstring projectId,
                                           RecordList<IProjectSettingSystemType> list, bool wrapEdited, bool isCreated);
    bool SendCreatedOrEditedMEPMaterialSerieList(wstring projectId, RecordList<IProjectSettingMEPMaterialSerie> list,
                                                 bool wrapEdited, bool isCreated);
    void SendCreatedOrEditedMEPMaterialSerieList(web::json::value& target, wstring projectId,
                                                 RecordList<IProjectSettingMEPMaterialSerie> list, bool wrapEdited,
                                                 bool isCreated);
    bool SendCreatedOrEditedSizeModelList(wstring projectId, RecordList<IProjectSettingSizeModule> list,
                                          bool wrapEdited, bool isCreated);
    void SendCreatedOrEditedSizeModelList(web::json::value& target, int& index, wstring projectId,
                                          RecordList<IProjectSettingSizeModule> list, bool wrapEdited, bool isCreated);
    bool SendCreatedOrEditedMateriaList(wstring projectId, RecordList<IProjectSettingMaterial> list, bool wrapEdited,
                                        bool isCreated);
    void SendCreatedOrEditedMateriaList(web::json::value& target, int& index, wstring projectId,
                                        RecordList<IProjectSettingMaterial> list, bool wrapEdited, bool isCreated);
    bool SendCreatedOrEditedMaterieSerieGroupList(wstring projectId,
                                                  RecordList<IProjectSettingMEPMaterialSerieGroup> list,
                                                  bool wrapEdited, bool isCreated);
    void SendCreatedOrEditedMaterieSerieGroupList(web::json::value& target, int& index, wstring projectId,
                                                  RecordList<IProjectSettingMEPMaterialSerieGroup> list,
                                                  bool wrapEdited, bool isCreated);
    void AddRemovedDataIds(web::json::value& target, wstring projectId, std::vector<wstring> ids, wstring tableName);
    void AddRemovedConfigTreeIds(web::json::value& target, int& index, wstring projectId, std::vector<wstring> ids,
                                 wstring tableName);

    // --- circuit templates and combined products (MepProjectSettingHttpUtility.Combinations.cpp): one request each.
    // The working project takes combined products; a session without one refuses them in silence.
    using CircuitTemplateList = std::vector<const ITolmProjectSettingCircuitTemplate*>;

    bool SendCreatedCircuitTemplateList(wstring projectId, CircuitTemplateList list);
    bool SendEditedCircuitTemplateList(wstring projectId, CircuitTemplateList list);
    bool SendCreatedCombinationList(wstring categoryCode, std::vector<TolmCombinedProduct> list);
    bool SendEditedCombinationList(wstring categoryCode, std::vector<TolmCombinedProduct> list);
    bool SendRemovedCombinationList(wstring categoryCode, std::vector<wstring> ids);

    wstring UserId() const;

    /// Names of the service's tables.
    static wstring CircuitTemplateTable() { return CloudTables::CircuitTemplate; }
    static wstring ConfigTreeTable() { return CloudTables::ConfigTree; }
    static wstring PipeTypeTable() { return CloudTables::PipeType; }
    static wstring HVACPipeTypeTable() { return CloudTables::HVACPipeType; }
    static wstring DuctTypeTable() { return CloudTables::DuctType; }
    static wstring ConduitFittingsTypeTable() { return CloudTables::ConduitFittingsType; }
    static wstring CableTrayFittingsTypeTable() { return CloudTables::CableTrayFittingsType; }
    static wstring PipeSystemTypeTable() { return CloudTables::PipeSystemType; }
    static wstring HVACPipeSystemTypeTable() { return CloudTables::HVACPipeSystemType; }
    static wstring DuctSystemTypeTable() { return CloudTables::DuctSystemType; }
    static wstring ElectricalSystemTypeTable() { return CloudTables::ElectricalSystemType; }

private:
    TolmProjectSettingHttpUtility() = default;

    mutable std::mutex m_userMutex; ///< user and token are of one login
    wstring m_userId;
    wstring m_userToken;
};

} // namespace tolm
