#include "MepDatabase/ComponentCache.h"

#include <atomic>
#include <utility>

namespace tolm {
namespace {

std::atomic<ComponentCache::Reader> g_reader = nullptr;

} // namespace

void ComponentCache::SetReader(Reader reader) {
    g_reader = reader;
}

const ComponentCache::Category& ComponentCache::Of(ITolmCategoryInfoUtils& utils, const wstring& code) {
    const auto known = m_categories.find(code);
    return known != m_categories.end() ? known->second : m_categories.emplace(code, Read(utils, code)).first->second;
}

ComponentCache::Category ComponentCache::Read(ITolmCategoryInfoUtils& utils, const wstring& code) {
    Category category;
    const auto info = utils.GetCategoryInfo(code);
    if (info == nullptr) {
        category.fault = L"pFitting为空";
        return category;
    }
    std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>> components;
    if (const Reader reader = g_reader.load(); reader != nullptr)
        reader(m_componentFilePath, info.get(), {}, components, true);
    else
        m_database.Read(info.get(), components);
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
