#include "MepDatabase/ComponentCache.h"

#include <atomic>
#include <utility>

namespace tolm {
namespace {

constexpr ComponentCache::Reader kComponentDatabase = &TolmComponentSqlUtil::ReadComponentListWithCondition;

std::atomic<ComponentCache::Reader> g_reader = kComponentDatabase;

} // namespace

void ComponentCache::SetReader(Reader reader) {
    g_reader = reader != nullptr ? reader : kComponentDatabase;
}

const ComponentCache::Category& ComponentCache::Of(ITolmCategoryInfoUtils& utils, const wstring& code) {
    const auto known = m_categories.find(code);
    return known != m_categories.end() ? known->second : m_categories.emplace(code, Read(utils, code)).first->second;
}

ComponentCache::Category ComponentCache::Read(ITolmCategoryInfoUtils& utils, const wstring& code) const {
    Category category;
    const auto info = utils.GetCategoryInfo(code);
    if (info == nullptr) {
        category.fault = L"pFitting为空";
        return category;
    }
    std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>> components;
    g_reader.load()(m_componentFilePath, info.get(), {}, components, true);
    for (auto& component : components) {
        if (component == nullptr) {
            category.fault = L"retComponents[j]为空";
            return category;
        }
        wstring id = component->GetId();
        category.components[std::move(id)] = std::move(component);
    }
    return category;
}

} // namespace tolm
