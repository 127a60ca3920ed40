#pragma once

#include "Host/Categories.h"
#include "Host/HostTypes.h"

namespace web::json {
class object;
} // namespace web::json

/// The rows of combined products, by form. A row that lacks a member which its form has raises an exception.
namespace tolm {

enum class CombinedProductForm {
    None,      ///< id and name are all
    List,      ///< spacing and a list of components
    Equipment, ///< an equipment with its air terminals
};

CombinedProductForm FormOf(const std::wstring& categoryCode);

/// A component that a row refers to, by the names of its three members.
struct ReferenceKeys {
    const char* categoryStandardCode;
    const char* componentId;
    const char* componentTypeId;
};

/// The component that the members of a row name, with the names of its category where that is known.
TolmComponentReference ReadReference(const web::json::object& row, const ReferenceKeys& keys,
                                     ITolmCategoryInfoUtils& utils);

/// The keys of a component in the "List" of a row.
inline constexpr ReferenceKeys kListedComponent = {"CategoryStandardCode", "ComponentId", "ComponentTypeId"};

/// Reads what the equipment form adds. A row without "EquipmentComponentId" is one as it is sent at creation, with
/// the product's id and name alone, and leaves the product as it is.
void ReadEquipmentForm(const web::json::object& row, ITolmCategoryInfoUtils& utils, TolmCombinedProduct& product);

} // namespace tolm
