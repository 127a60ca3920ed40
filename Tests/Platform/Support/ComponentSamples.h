#pragma once

#include "Host/Components.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tolmtest {

using Components = std::vector<vorn::OwnerPtr<tolm::ITolmProjectSettingComponent>>;

/// A category that only has its code, for calls that ask for no more.
class CodeOnly final : public tolm::ITolmCategoryInfo {
public:
    explicit CodeOnly(std::wstring code) : m_code(std::move(code)) {}
    std::wstring GetCode() const override { return m_code; }
    std::wstring GetParentCode() const override { return {}; }
    std::wstring GetDisciplineId() const override { return {}; }
    std::wstring GetName() const override { return {}; }
    std::wstring GetEnglishName() const override { return {}; }
    std::vector<const ITolmCategoryInfo*> GetChildren() const override { return {}; }

private:
    std::wstring m_code;
};

inline tolm::TolmComponentData MakeComponent(const std::wstring& id, const std::wstring& category, int version = 1) {
    tolm::TolmComponentData component;
    component.id = id;
    component.categoryCode = category;
    component.version = version;
    component.name = L"弯头 " + id;
    component.componentTypeId = L"type-" + id;
    return component;
}

inline bool ImportComponents(const std::wstring& path, const std::vector<tolm::TolmComponentData>& components) {
    return tolm::TolmComponentSqlUtil::Import(path, {}, {}, components);
}

/// All components of the category.
inline Components ReadCategory(const std::wstring& path, const std::wstring& code) {
    Components components;
    const CodeOnly category(code);
    tolm::TolmComponentSqlUtil::ReadComponentListWithCondition(path, &category, {}, components, true);
    return components;
}

template <class List> std::vector<std::wstring> IdsOf(const List& components) {
    std::vector<std::wstring> ids;
    for (const auto& component : components)
        ids.push_back(component->GetId());
    return ids;
}

inline tolm::TolmComponentReference MakeReference(const std::wstring& text) {
    return {text + L"-code", text + L"-id", text + L"-type", text + L"名称", text + L" name"};
}

/// A product of the list form with two components.
inline tolm::TolmCombinedProduct MakeListProduct(const std::wstring& id, const std::wstring& category = L"16353515") {
    tolm::TolmCombinedProduct product;
    product.categoryCode = category;
    product.Id = id;
    product.Name = L"组合 " + id;
    product.spacing = 300;
    product.components = {MakeReference(L"b"), MakeReference(L"a")};
    return product;
}

/// A product of the equipment form with every field filled.
inline tolm::TolmCombinedProduct MakeEquipmentProduct(const std::wstring& id) {
    tolm::TolmCombinedProduct product;
    product.categoryCode = L"16352020";
    product.Id = id;
    product.Name = L"风机盘管";
    product.equipment = MakeReference(L"equipment");
    product.supplyAirTerminal = MakeReference(L"supply");
    product.returnAirTerminal = MakeReference(L"return");
    product.supplySystemTypeId = L"supply-system";
    product.supplyHoseLength = 1200.5;
    product.supplyAirTerminalNumber = 3;
    product.supplyAirTerminalDist1 = 800.25;
    product.supplyAirTerminalDist2 = 0.1;
    product.supplyDuctTypeId = L"supply-duct";
    product.returnSystemTypeId = L"return-system";
    product.returnDuctTypeId = L"return-duct";
    product.returnHoseLength = -7.75;
    return product;
}

inline std::vector<tolm::TolmCombinedProduct> ReadProducts(const std::wstring& path, const std::wstring& code = L"") {
    std::vector<tolm::TolmCombinedProduct> products;
    EXPECT_TRUE(tolm::TolmComponentSqlUtil::ReadCombinedProductList(path, code, products));
    return products;
}

inline std::vector<std::wstring> ProductIds(const std::wstring& path, const std::wstring& code = L"") {
    std::vector<std::wstring> ids;
    for (const auto& product : ReadProducts(path, code))
        ids.push_back(product.Id);
    return ids;
}

} // namespace tolmtest
