#pragma once

#include "TolmDataSet/MepEnums.h"

#include <initializer_list>
#include <string_view>

namespace tolm {

/// How a call to the settings service looks on the wire. One row for each endpoint; the frame walks it.
struct CloudEndpoint {
    enum class Headers { None, Session, SessionAndContentType };
    enum class TimeOut { Library, Configured };
    /// Base: the client stands on the base address and the path is the request's. BaseRequired: the same, and a call
    /// without a base address is refused in silence. Whole: the client stands on address and path together.
    enum class Address { Base, BaseRequired, Whole };

    const char* method;
    const wchar_t* path; ///< identifiers follow it, with "/" between them
    Headers headers;
    TimeOut timeOut;
    Address address;

    /// The path with the identifiers as they stand: nothing is percent-encoded.
    wstring PathOf(std::initializer_list<std::wstring_view> identifiers) const;
};

namespace CloudEndpoints {

using Headers = CloudEndpoint::Headers;
using TimeOut = CloudEndpoint::TimeOut;
using Address = CloudEndpoint::Address;

// clang-format off
inline constexpr CloudEndpoint GetVersion{
    "POST", L"/api/GetVersion/", Headers::Session, TimeOut::Library, Address::Base};
inline constexpr CloudEndpoint DownloadVersion{
    "POST", L"/api/DownloadVersion/", Headers::SessionAndContentType, TimeOut::Configured, Address::BaseRequired};
inline constexpr CloudEndpoint WorkunitDownloadData{
    "GET", L"/api/workunit/downloadData/", Headers::SessionAndContentType, TimeOut::Configured, Address::BaseRequired};
inline constexpr CloudEndpoint ReadProjectToTemplate{
    "POST", L"/api/ReadProjectToTemplate/", Headers::None, TimeOut::Library, Address::Whole};
inline constexpr CloudEndpoint UseTemplateForDesktop{
    "POST", L"/api/useTemplateForDesktop/", Headers::SessionAndContentType, TimeOut::Configured, Address::BaseRequired};
inline constexpr CloudEndpoint CreateList{
    "POST", L"/api/CreateList/", Headers::SessionAndContentType, TimeOut::Library, Address::Base};
inline constexpr CloudEndpoint EditList{
    "POST", L"/api/EditList/", Headers::SessionAndContentType, TimeOut::Library, Address::Base};
inline constexpr CloudEndpoint RemoveList{
    "POST", L"/api/RemoveList/", Headers::SessionAndContentType, TimeOut::Library, Address::Base};
inline constexpr CloudEndpoint UpLoad{
    "POST", L"/api/UpLoad/", Headers::SessionAndContentType, TimeOut::Library, Address::Base};
inline constexpr CloudEndpoint WorkunitUploadData{
    "POST", L"/api/workunit/uploadData", Headers::SessionAndContentType, TimeOut::Library, Address::Base};
inline constexpr CloudEndpoint CreateCombinations{
    "POST", L"/api/CreateCombinations/", Headers::SessionAndContentType, TimeOut::Library, Address::Base};
inline constexpr CloudEndpoint EditCombinations{
    "POST", L"/api/EditCombinations/", Headers::SessionAndContentType, TimeOut::Library, Address::Base};
inline constexpr CloudEndpoint RemoveCombinations{
    "POST", L"/api/RemoveCombinations/", Headers::SessionAndContentType, TimeOut::Library, Address::Base};
// clang-format on

} // namespace CloudEndpoints

} // namespace tolm
