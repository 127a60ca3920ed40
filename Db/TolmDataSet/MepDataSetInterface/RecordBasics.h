#pragma once

#include "Vorn/Guid.h"
#include "Vorn/OwnerPtr.h"

#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace tolm {

/// A fresh identifier: 36 lower-case characters, in braces if `braces`.
inline std::wstring NewRecordId(bool braces = false) {
    return vorn::GuidUtils::ToString(vorn::UniIdentity(vorn::GuidUtils::Generate()), braces, false);
}

/// Makes the objects whose constructors are private.
struct ObjectMaker {
    /// A new `T` as the interface; an empty owner when there is no memory for it.
    template <class Interface, class T, class... Args> static vorn::OwnerPtr<Interface> Create(Args&&... args) {
        try {
            return vorn::OwnerPtr<T>(new T(std::forward<Args>(args)...));
        } catch (const std::bad_alloc&) {
            return {};
        }
    }
};

/// Adds a row to a list whose length nobody tells beforehand: a list of a few rows grows once.
template <class T> void AddRow(std::vector<T>& list, const T& row) {
    constexpr std::size_t usualLength = 16;
    if (list.empty())
        list.reserve(usualLength);
    list.push_back(row);
}

/// The words for a row that cannot be removed.
struct RowFaults {
    const wchar_t* empty;
    const wchar_t* outside;
};

/// Removes one row and keeps the order of the others. Null when it was removed, else the words for the fault.
template <class T> const wchar_t* EraseRow(std::vector<T>& list, int row, const RowFaults& faults) {
    if (list.empty())
        return faults.empty;
    if (row < 0 || static_cast<std::size_t>(row) >= list.size())
        return faults.outside;
    list.erase(list.begin() + row);
    return nullptr;
}

} // namespace tolm
