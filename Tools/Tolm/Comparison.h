#pragma once

#include "Tolm/Workplace.h"

#include <cstddef>
#include <iosfwd>
#include <string>

namespace tolmcli {

/// Where a dataset stands against the cloud.
struct Comparison {
    tolm::CompareVersionResult result = tolm::CompareVersionResult::NotComparable;
    std::wstring project;
    int cloud = 0;
    int local = 0;
    std::wstring timePoint; ///< of the last update; empty when there was none
};

/// Asks the service. The place has to be connected.
Comparison Compare(Workplace& place);

/// Place of a result among all of them, from 0.
constexpr std::size_t IndexOf(tolm::CompareVersionResult result) {
    return static_cast<std::size_t>(result) - static_cast<std::size_t>(tolm::CompareVersionResult::NotComparable);
}

/// What a user calls a result, and what there is to do about it.
struct ResultWords {
    tolm::CompareVersionResult result;
    const char* word;
    const char* advice;
};
const ResultWords& WordsOf(tolm::CompareVersionResult result);

/// Prints what the library had to say to the user.
void PrintMessages(Workplace& place, std::ostream& out);

/// What the library said, messages and faults, a line each behind `what`.
std::string WithMessages(Workplace& place, std::string what);
/// Throws Failure with that.
[[noreturn]] void FailWithMessages(Workplace& place, const std::string& what);

} // namespace tolmcli
