#include "Tolm/Components.h"

#include "Tolm/JsonFields.h"

#include "Host/Categories.h"
#include "Host/Components.h"

#include <algorithm>
#include <map>
#include <set>

namespace tolmcli {
namespace {

using Json = nlohmann::ordered_json;
using vorn::StringUtil;
using Component = tolm::ITolmProjectSettingComponent;
using Components = std::vector<vorn::OwnerPtr<Component>>;

template <auto Getter> constexpr JsonField<Component> Told(const char* key) {
    return {key, [](const Component& component) { return Json(StringUtil::ToString((component.*Getter)())); }, nullptr};
}

Json AttributesOf(const Component& component) {
    Json attributes = Json::object();
    for (const auto& [name, value] : component.GetAttributes())
        attributes[StringUtil::ToString(name)] = StringUtil::ToString(value);
    return attributes;
}

constexpr JsonField<Component> kComponent[] = {
    Told<&Component::GetId>("id"),
    Told<&Component::GetName>("name"),
    Told<&Component::GetCategoryCode>("category"),
    Told<&Component::GetComponentTypeId>("componentType"),
    {"version", [](const Component& component) { return Json(component.GetVersion()); }, nullptr},
    {"publicId", [](const Component& component) { return Json(component.GetPublicComponentId()); }, nullptr},
    {"attributes", &AttributesOf, nullptr},
};

/// Codes of all categories, each before those below it.
std::vector<std::wstring> AllCategories() {
    auto* const utils = tolm::TolmCategoryInfoUtilsHandler::Get().GetUtils();
    if (utils == nullptr)
        throw Failure("there are no categories");
    std::vector<std::wstring> codes = utils->GetRootCategoryCodes();
    std::set<std::wstring> known(codes.begin(), codes.end());
    for (std::size_t i = 0; i < codes.size(); ++i)
        for (const auto& code : utils->GetChildCategoryCodes(std::wstring(codes[i])))
            if (known.insert(code).second)
                codes.push_back(code);
    return codes;
}

bool IsBefore(const vorn::OwnerPtr<Component>& a, const vorn::OwnerPtr<Component>& b) {
    return a->GetId() != b->GetId() ? a->GetId() < b->GetId() : a->GetVersion() > b->GetVersion();
}

} // namespace

Json ReadComponents(Workplace& place) {
    std::map<std::wstring, Components> none;
    if (!tolm::TolmComponentSqlUtil::ReadComponentList(place.Settings().componentFile, {}, none, true))
        throw Failure("the component database could not be read");
    auto byCategory = place.Dataset().GetProjectProductList(AllCategories());
    Json list = Json::array();
    for (auto& [category, components] : byCategory) {
        std::sort(components.begin(), components.end(), IsBefore);
        for (const auto& component : components)
            list.push_back(ToJson(*component, kComponent));
    }
    return list;
}

} // namespace tolmcli
