#pragma once

#include "TolmDataSet/TolmDataSet.h"

#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <typeinfo>
#include <vector>

/// Where each operation of the public interfaces stands in its virtual table.
namespace tolmtest {

using namespace tolm;

/// One operation: its place counted from 0 for the destructor, its name, and the mangled type of a pointer to it.
struct OperationSlot {
    std::size_t slot;
    const char* name;
    const char* type;
};

struct InterfaceSlots {
    const char* name;
    std::vector<OperationSlot> operations;
};

/// A pointer to a virtual operation holds the offset of its entry plus 1, and the destructor has two entries.
template <class Operation> OperationSlot SlotOf(const char* name, Operation operation) {
    std::ptrdiff_t offsetPlusOne = 0;
    static_assert(sizeof operation == 2 * sizeof offsetPlusOne);
    std::memcpy(&offsetPlusOne, &operation, sizeof offsetPlusOne);
    const auto entry = static_cast<std::size_t>(offsetPlusOne - 1) / sizeof(void*);
    return {entry - 1, name, typeid(Operation).name()};
}

using ProductList = std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>;
using ProductsByCategory = std::map<wstring, ProductList>;

#define TOLM_SLOT(Interface, Operation) SlotOf(#Operation, &Interface::Operation)
#define TOLM_OVERLOAD(Interface, Operation, Result, Arguments)                                                         \
    SlotOf(#Operation, static_cast<Result(Interface::*) Arguments>(&Interface::Operation))

#include "Abi/InterfaceSlots.inc"

#undef TOLM_SLOT
#undef TOLM_OVERLOAD

} // namespace tolmtest
