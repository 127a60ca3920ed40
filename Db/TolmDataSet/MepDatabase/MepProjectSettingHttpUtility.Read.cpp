#include "MepDatabase/MepProjectSettingHttpUtility.h"

#include "Host/Session.h"
#include "MepDatabase/CloudFrame.h"
#include "MepDatabase/WireText.h"

namespace tolm {
namespace {

/// The project settings template that a new project is filled with, by family of environments.
constexpr std::wstring_view ProductionTemplate = L"182943227345633280";
constexpr std::wstring_view OtherTemplate = L"159254153455992832";

std::wstring_view TemplateOf(const wstring& environment) {
    return environment == L"production" || environment == L"productionstg" ? ProductionTemplate : OtherTemplate;
}

/// A reader that hands out the payload of a success, and takes a null payload for none.
CloudReader PayloadInto(web::json::value& data) {
    return [&data](CloudAnswer& answer) {
        if (!answer.IsSuccess())
            return false;
        data = answer.TakeData();
        return !data.is_null();
    };
}

} // namespace

bool TolmProjectSettingHttpUtility::GetVersion(wstring projectId, int& version) {
    if (projectId.empty())
        return false;
    version = 0;
    constexpr const auto& endpoint = CloudEndpoints::GetVersion;
    const CloudCall call{endpoint, GetProjectSettingAPIHost(), endpoint.PathOf({projectId})};
    const auto outcome = RunCloudCall(*this, call, [&version](const CloudAnswer& answer) {
        if (!answer.IsSuccess())
            return false;
        version = WholeNumber(answer.Data());
        return version != -1;
    });
    return bool(outcome);
}

bool TolmProjectSettingHttpUtility::GetCloudData(wstring projectId, int version, web::json::value& data) {
    if (projectId.empty())
        return false;
    constexpr const auto& endpoint = CloudEndpoints::DownloadVersion;
    auto body = web::json::value::object();
    body["tolm_version"] = JsonText(TolmVersionUtils::GetProductVersion());
    const CloudCall call{endpoint, GetProjectSettingAPIHost(), endpoint.PathOf({projectId, std::to_wstring(version)}),
                         &body};
    return bool(RunCloudCall(*this, call, PayloadInto(data)));
}

bool TolmProjectSettingHttpUtility::GetCloudSystemChangeData(wstring workunitId, web::json::value& data) {
    if (workunitId.empty())
        return false;
    constexpr const auto& endpoint = CloudEndpoints::WorkunitDownloadData;
    const CloudCall call{endpoint, GetProjectSettingAPIHost(), endpoint.PathOf({workunitId})};
    return bool(RunCloudCall(*this, call, PayloadInto(data)));
}

bool TolmProjectSettingHttpUtility::ReadProjectTemplateRowKey(wstring projectId, wstring& rowKey) {
    rowKey.clear();
    if (projectId.empty())
        return false;
    constexpr const auto& endpoint = CloudEndpoints::ReadProjectToTemplate;
    const CloudCall call{endpoint, GetProjectSettingAPIHost(), endpoint.PathOf({projectId})};
    const auto outcome = RunCloudCall(*this, call, [&rowKey](const CloudAnswer& answer) {
        if (answer.Code() != "10000")
            return false;
        const auto& rows = answer.Data().at("rows").as_array();
        if (rows.size() == 0)
            return false;
        rowKey = WideText(rows.at(0).at("rowKey"));
        return !rowKey.empty();
    });
    return bool(outcome);
}

bool TolmProjectSettingHttpUtility::ApplyDefaultProjectSettingTemplate(wstring projectId) {
    if (projectId.empty())
        return false;
    constexpr const auto& endpoint = CloudEndpoints::UseTemplateForDesktop;
    const CloudCall call{endpoint, GetProjectSettingAPIHost(),
                         endpoint.PathOf({TemplateOf(TolmKfeConfigUtil::GetCurrentEnv()), projectId})};
    web::json::value data;
    return bool(RunCloudCall(*this, call, PayloadInto(data)));
}

} // namespace tolm
