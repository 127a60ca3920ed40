#pragma once

#include "TolmDataSet/MepEnums.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace tolm {

/// What an answer may be at most, and how long its call may take in all, from the first byte out to the last one in.
struct CallLimits {
    std::uint64_t bytes;
    int timeOuts; ///< so many times the call's time-out
};

/// How a call to the settings service looks on the wire. One row for each endpoint; the frame walks it.
struct CloudEndpoint {
    enum class Headers { None, Session, SessionAndContentType };
    enum class TimeOut { Library, Configured };
    /// Base: the client stands on the base address and the path is the request's. BaseRequired: the same, and a call
    /// without a base address is refused in silence. Whole: the client stands on address and path together.
    enum class Address { Base, BaseRequired, Whole };
    /// What the service answers: how it went, perhaps with a version; a list of identifiers or row keys; the content of
    /// a project. Calls that are made while stores are locked are answered with a status.
    enum class Answer { Status, List, Content };

    const char* method;
    const wchar_t* path; ///< identifiers follow it, with "/" between them
    Headers headers;
    TimeOut timeOut;
    Address address;
    Answer answer;

    constexpr CallLimits Limits() const;
    /// The path with the identifiers as they stand: nothing is percent-encoded.
    wstring PathOf(std::initializer_list<std::wstring_view> identifiers) const;
};

/// By `CloudEndpoint::Answer`.
inline constexpr CallLimits kCallLimits[] = {
    {std::uint64_t{1} << 20, 4},
    {std::uint64_t{1} << 26, 10},
    {std::uint64_t{1} << 30, 60},
};

constexpr CallLimits CloudEndpoint::Limits() const {
    return kCallLimits[static_cast<std::size_t>(answer)];
}

namespace CloudEndpoints {

using Headers = CloudEndpoint::Headers;
using TimeOut = CloudEndpoint::TimeOut;
using Address = CloudEndpoint::Address;
using Answer = CloudEndpoint::Answer;

// clang-format off
inline constexpr CloudEndpoint GetVersion{
    "POST", L"/api/GetVersion/", Headers::Session, TimeOut::Library, Address::Base,
    Answer::Status};
inline constexpr CloudEndpoint DownloadVersion{
    "POST", L"/api/DownloadVersion/", Headers::SessionAndContentType, TimeOut::Configured, Address::BaseRequired,
    Answer::Content};
inline constexpr CloudEndpoint WorkunitDownloadData{
    "GET", L"/api/workunit/downloadData/", Headers::SessionAndContentType, TimeOut::Configured, Address::BaseRequired,
    Answer::List};
inline constexpr CloudEndpoint ReadProjectToTemplate{
    "POST", L"/api/ReadProjectToTemplate/", Headers::None, TimeOut::Library, Address::Whole,
    Answer::List};
inline constexpr CloudEndpoint UseTemplateForDesktop{
    "POST", L"/api/useTemplateForDesktop/", Headers::SessionAndContentType, TimeOut::Configured, Address::BaseRequired,
    Answer::List};
inline constexpr CloudEndpoint CreateList{
    "POST", L"/api/CreateList/", Headers::SessionAndContentType, TimeOut::Library, Address::Base,
    Answer::Status};
inline constexpr CloudEndpoint EditList{
    "POST", L"/api/EditList/", Headers::SessionAndContentType, TimeOut::Library, Address::Base,
    Answer::Status};
inline constexpr CloudEndpoint RemoveList{
    "POST", L"/api/RemoveList/", Headers::SessionAndContentType, TimeOut::Library, Address::Base,
    Answer::Status};
inline constexpr CloudEndpoint UpLoad{
    "POST", L"/api/UpLoad/", Headers::SessionAndContentType, TimeOut::Library, Address::Base,
    Answer::Status};
inline constexpr CloudEndpoint WorkunitUploadData{
    "POST", L"/api/workunit/uploadData", Headers::SessionAndContentType, TimeOut::Library, Address::Base,
    Answer::Status};
inline constexpr CloudEndpoint CreateCombinations{
    "POST", L"/api/CreateCombinations/", Headers::SessionAndContentType, TimeOut::Library, Address::Base,
    Answer::Status};
inline constexpr CloudEndpoint EditCombinations{
    "POST", L"/api/EditCombinations/", Headers::SessionAndContentType, TimeOut::Library, Address::Base,
    Answer::Status};
inline constexpr CloudEndpoint RemoveCombinations{
    "POST", L"/api/RemoveCombinations/", Headers::SessionAndContentType, TimeOut::Library, Address::Base,
    Answer::Status};
// clang-format on

} // namespace CloudEndpoints

} // namespace tolm
