#pragma once

#include "MepDataSetInterface/TableLists.h"
#include "TolmDataSet/ITolmDataset.h"

#include <utility>

/// How a list that was read becomes what a host is offered.
namespace tolm {

/// The records by identifier; the first of an identifier counts, an empty entry is left out and reported.
template <class T> IdMap<T> ById(RecordList<T> list, const CallSite& site, const wchar_t* emptyEntry) {
    IdMap<T> records;
    for (auto& record : list) {
        if (!record) {
            site.Warn(emptyEntry);
            continue;
        }
        records.try_emplace(record->GetId(), std::move(record));
    }
    return records;
}

/// The first module with this duct shape, empty entries before it being reported, or the first of all where the shape
/// is `None`; empty when there is none.
inline vorn::OwnerPtr<IProjectSettingSizeModule> TakeFirst(RecordList<IProjectSettingSizeModule>& list,
                                                           SectionType shape, const CallSite& site) {
    if (shape == SectionType::None)
        return list.empty() ? vorn::OwnerPtr<IProjectSettingSizeModule>() : std::move(list.front());
    for (auto& module : list) {
        if (!module)
            site.Warn(L"retSizeList[i]为空");
        else if (module->GetDuctShape() == shape)
            return std::move(module);
    }
    return {};
}

} // namespace tolm
