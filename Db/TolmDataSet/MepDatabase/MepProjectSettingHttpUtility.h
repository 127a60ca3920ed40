#pragma once

#include "TolmDataSet/MepEnums.h"

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
    bool SendUpdateSettingDataInfo(wstring projectId, wstring workunitId, std::vector<wstring> dataIds, int dataStatus);

    const wstring& UserId() const { return m_userId; }

    /// Names of the service's tables.
    static wstring CircuitTemplateTable();
    static wstring ConfigTreeTable();
    static wstring PipeTypeTable();
    static wstring HVACPipeTypeTable();
    static wstring DuctTypeTable();
    static wstring ConduitFittingsTypeTable();
    static wstring CableTrayFittingsTypeTable();
    static wstring PipeSystemTypeTable();
    static wstring HVACPipeSystemTypeTable();
    static wstring DuctSystemTypeTable();
    static wstring ElectricalSystemTypeTable();

private:
    TolmProjectSettingHttpUtility() = default;

    wstring m_userId;
    wstring m_userToken;
};

} // namespace tolm
