#pragma once

#include "StoreSupport/StoreContent.h"

namespace tolmtest {

/// Of the facts of a store those that every host of a project must hold alike: what travels by the wire. Left out are
///  - attributes that no row has: the time of creation of a duct group, sizes and junction of a tray or conduit series,
///    the names of connection series, the name of a cable table beside its type name;
///  - links to what is not there, which no row has either;
///  - connection series and duct materials that nothing refers to any more: each client makes their ids for itself.
/// The fittings of a series stand in the order of their rules, and the cables of a system type in that of their ids.
/// Missing texts, lists and numbers count as empty.
Facts TravellingFacts(const Facts& facts);

} // namespace tolmtest
