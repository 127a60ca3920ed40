#pragma once

#include "MepDatabase/ComponentCache.h"
#include "MepDatabase/PackedLists.h"
#include "TolmDataSet/IProjectSettingConnectionSerie.h"

#include <map>
#include <vector>

class CQbase;

/// The fittings of a connection series between the record, which owns components, and the store, which keeps a packed
/// list of their category codes and product ids.
namespace tolm {

/// What can be packed of a series: its fittings up to the first one without a component.
struct PackableFittings {
    std::vector<PackedFitting> entries;
    bool isWhole; ///< false when an entry lacks its component
};

PackableFittings FittingsOf(const IProjectSettingConnectionSerie& serie);

/// What is wrong with a list that is too long to be stored; empty for all others.
wstring ListFault(const PackableFittings& fittings);

/// The packed fittings of the current record.
std::vector<PackedFitting> ReadFittings(CQbase& qb);
/// Sets the packed fittings of the current record; no fittings remove the attribute.
void WriteFittings(CQbase& qb, const std::vector<PackedFitting>& fittings);

/// Gives `serie` a copy of the component of each packed fitting. The first entry with a part type settles the
/// category: components of other categories are not found, and an entry whose component is not found is passed over,
/// as is one with a negative part type. The bounds of the entries are not used: each fitting serves all sizes. Without
/// a category service no fittings are given. Null when all went well, else what is to be reported.
const wchar_t* GiveFittings(const std::vector<PackedFitting>& fittings, ComponentCache& components,
                            IProjectSettingConnectionSerie& serie);

/// Replaces component ids in the packed fittings of the current record and sets them if one of them got a new id that
/// is not empty. An entry with a negative part type becomes an empty one, and for each of those an entry is lost at
/// the end.
void ReplaceComponentIds(CQbase& qb, const std::map<wstring, wstring>& componentIds);

} // namespace tolm
