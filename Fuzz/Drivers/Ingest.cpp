#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/Increments.h"
#include "Fuzz/Support/Require.h"
#include "Fuzz/Support/StoreReading.h"
#include "Fuzz/Support/Workshop.h"

#include <cpprest/json.h>

namespace tolmfuzz {
namespace {

using Begin = Workshop::Begin;

/// What both ways of taking an increment in must leave behind.
void RequireGoodOrder(const DatasetPlace& place, std::size_t turn) {
    RequireSound(place.data);
    const std::string missed = ReadLists(place.data, place.products, turn);
    Require(missed.empty(), "every record is listed: " + missed);
    Workshop::Get().RequireNothingElse();
}

} // namespace

int TryIngest(const std::uint8_t* data, std::size_t size) {
    const auto increments = ParseIncrements({reinterpret_cast<const char*>(data), size});
    if (increments.empty())
        return 0;
    const bool isOn = LocalVersionOf(increments.front()) > 0;
    const DatasetPlace& place = Workshop::Get().Prepare(isOn ? Begin::Filled : Begin::Empty);
    for (const auto& increment : increments)
        Refresh(place, increment);
    RequireGoodOrder(place, size);
    const std::string counts = CountRecords(place.data);
    Refresh(place, increments.back());
    const std::string again = CountRecords(place.data);
    Require(again == counts, "an increment that comes twice adds nothing: " + counts + "then " + again);
    return 0;
}

int TryMerge(const std::uint8_t* data, std::size_t size) {
    const auto increments = ParseIncrements({reinterpret_cast<const char*>(data), size});
    if (increments.empty())
        return 0;
    const DatasetPlace& place = Workshop::Get().Prepare(Begin::Filled);
    for (const auto& increment : increments)
        Merge(place, increment);
    RequireSound(place.status);
    RequireGoodOrder(place, size);
    return 0;
}

} // namespace tolmfuzz
