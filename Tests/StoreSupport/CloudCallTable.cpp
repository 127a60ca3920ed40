#include "StoreSupport/CloudCallTable.h"

#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "Platform/Support/ComponentSamples.h"
#include "Vorn/Text.h"

#include <cpprest/json.h>

#include <ostream>
#include <vector>

namespace tolmtest {
namespace {

using Reads = CloudCallRow::Reads;

tolm::TolmProjectSettingHttpUtility& Client() {
    return *tolm::TolmProjectSettingHttpUtility::GetInstance();
}

web::json::value NoRows() {
    auto encoded = web::json::value::object();
    encoded["rows"] = web::json::value::array();
    return encoded;
}

CallOutcome GetVersion() {
    int version = 5;
    const bool done = Client().GetVersion(L"P1", version);
    return {done, std::to_string(version)};
}

CallOutcome GetCloudData() {
    auto data = web::json::value::string("untouched");
    const bool done = Client().GetCloudData(L"P1", 1, data);
    return {done, data.serialize()};
}

CallOutcome GetCloudSystemChangeData() {
    auto data = web::json::value::string("untouched");
    const bool done = Client().GetCloudSystemChangeData(L"W1", data);
    return {done, data.serialize()};
}

CallOutcome ReadProjectTemplateRowKey() {
    std::wstring key = L"untouched";
    const bool done = Client().ReadProjectTemplateRowKey(L"P1", key);
    return {done, vorn::StringUtil::ToString(key)};
}

CallOutcome ApplyDefaultProjectSettingTemplate() {
    return {.done = Client().ApplyDefaultProjectSettingTemplate(L"P1")};
}

CallOutcome SendUpdateSettingDataInfo() {
    return {.done = Client().SendUpdateSettingDataInfo(L"P1", L"W1", {L"S1"}, 1)};
}

CallOutcome SendCreatedEvent() {
    return {.done = Client().SendCreatedEvent(Client().GetProjectSettingAPIHost(), L"P1", L"PipeType", NoRows())};
}

CallOutcome SendEditedEvent() {
    return {.done = Client().SendEditedEvent(Client().GetProjectSettingAPIHost(), L"P1", L"PipeType", NoRows())};
}

CallOutcome SendRemovedDataList() {
    return {.done = Client().SendRemovedDataList(L"P1", {L"S1"}, L"PipeType")};
}

std::vector<tolm::TolmCombinedProduct> Products() {
    return {MakeListProduct(L"p1")};
}

CallOutcome SendCreatedCombinationList() {
    return {.done = Client().SendCreatedCombinationList(L"16353515", Products())};
}

CallOutcome SendEditedCombinationList() {
    return {.done = Client().SendEditedCombinationList(L"16353515", Products())};
}

CallOutcome SendRemovedCombinationList() {
    return {.done = Client().SendRemovedCombinationList(L"16353515", {L"p1"})};
}

CallOutcome SendPatchDataEvent() {
    int version = 5;
    const bool done = Client().SendPatchDataEvent(L"P1", web::json::value::object(), version);
    return {done, std::to_string(version)};
}

// clang-format off
constexpr CloudCallRow kCalls[] = {
    {"GetVersion", "/api/GetVersion/P1", &GetVersion,
     Reads::Number, nullptr, true, false, false, false, "0"},
    {"GetCloudData", "/api/DownloadVersion/P1/1", &GetCloudData,
     Reads::AnythingButNull, nullptr, true, true, false, false, "\"untouched\""},
    {"GetCloudSystemChangeData", "/api/workunit/downloadData/W1", &GetCloudSystemChangeData,
     Reads::AnythingButNull, nullptr, true, true, false, false, "\"untouched\""},
    {"ReadProjectTemplateRowKey", "/api/ReadProjectToTemplate/P1", &ReadProjectTemplateRowKey,
     Reads::RowKey, nullptr, false, false, false, false, ""},
    {"ApplyDefaultProjectSettingTemplate", "/api/useTemplateForDesktop/182943227345633280/P1",
     &ApplyDefaultProjectSettingTemplate, Reads::AnythingButNull, nullptr, true, true, false, false, "-"},
    {"SendCreatedEvent", "/api/CreateList/P1/PipeType", &SendCreatedEvent,
     Reads::Nothing, L"/api/CreateList/P1/PipeType 失败", true, false, true, false, "-"},
    {"SendEditedEvent", "/api/EditList/P1/PipeType", &SendEditedEvent,
     Reads::Nothing, L"/api/EditList/P1/PipeType 失败", true, false, true, false, "-"},
    {"SendRemovedDataList", "/api/RemoveList/P1/PipeType", &SendRemovedDataList,
     Reads::Nothing, L"/api/RemoveList/P1/PipeType 失败", true, false, true, false, "-"},
    {"SendPatchDataEvent", "/api/UpLoad/P1", &SendPatchDataEvent,
     Reads::Version, nullptr, true, false, false, true, "5"},
    {"SendUpdateSettingDataInfo", "/api/workunit/uploadData", &SendUpdateSettingDataInfo,
     Reads::Nothing, L"/api/workunit/uploadData 失败", true, false, false, false, "-"},
    {"SendCreatedCombinationList", "/api/CreateCombinations/P1/16353515", &SendCreatedCombinationList,
     Reads::Nothing, L"/api/CreateCombinations/P1/16353515 失败", true, false, true, false, "-", L"pSettings为空", false},
    {"SendEditedCombinationList", "/api/EditCombinations/P1/16353515", &SendEditedCombinationList,
     Reads::Nothing, L"/api/EditCombinations/P1/16353515 失败", true, false, true, false, "-", L"pSettings为空", false},
    {"SendRemovedCombinationList", "/api/RemoveCombinations/P1/16353515", &SendRemovedCombinationList,
     Reads::Nothing, L"/api/RemoveCombinations/P1/16353515 失败", true, false, true, false, "-", L"pSettings为空", false},
};
// clang-format on

} // namespace

std::span<const CloudCallRow> CloudCallTable() {
    return kCalls;
}

void PrintTo(const CloudCallRow& call, std::ostream* out) {
    *out << call.name;
}

} // namespace tolmtest
