#include "Tolm/Comparison.h"

#include "Tolm/Errors.h"

#include <array>
#include <ostream>

namespace tolmcli {
namespace {

using tolm::CompareVersionResult;

constexpr std::array kResults{
    ResultWords{CompareVersionResult::NotComparable, "not comparable",
                "The versions cannot be compared: the service did not answer, or its version is below the local one."},
    ResultWords{CompareVersionResult::Same, "up to date", "Nothing to do."},
    ResultWords{CompareVersionResult::CloudAhead, "cloud ahead", "Run 'tolm pull'."},
    ResultWords{CompareVersionResult::LocalChanges, "local changes",
                "There are local changes that the cloud lacks: run 'tolm push'."},
    ResultWords{CompareVersionResult::BothChanged, "both changed",
                "The cloud moved on and there are local changes: run 'tolm merge'."},
    ResultWords{CompareVersionResult::CloudNotInitialised, "cloud not initialised",
                "The project has no settings in the cloud yet: 'tolm sync' fills it."},
};
static_assert(kResults.size() == IndexOf(CompareVersionResult::CloudNotInitialised) + 1);

} // namespace

Comparison Compare(Workplace& place) {
    Comparison comparison;
    comparison.result = place.Dataset().CompareCloudVersion(comparison.project, comparison.cloud, comparison.local,
                                                            comparison.timePoint);
    return comparison;
}

const ResultWords& WordsOf(CompareVersionResult result) {
    return kResults.at(IndexOf(result));
}

void PrintMessages(Workplace& place, std::ostream& out) {
    for (const auto& message : place.Heard().TakeMessages())
        out << message << '\n';
}

std::string WithMessages(Workplace& place, std::string what) {
    for (const auto& message : place.Heard().TakeMessages())
        what += "\n  " + message;
    for (const auto& fault : place.Heard().TakeFaults())
        what += "\n  " + fault;
    return what;
}

void FailWithMessages(Workplace& place, const std::string& what) {
    throw Failure(WithMessages(place, what));
}

} // namespace tolmcli
