#pragma once

#include "Host/Categories.h"
#include "Host/Components.h"
#include "TolmDataSet/MepEnums.h"
#include "Vorn/OwnerPtr.h"

#include <map>
#include <unordered_map>
#include <vector>

namespace tolm {

/// The catalogue components that one operation has read already, since many connection series draw on few
/// categories. It opens the component database once. It lives no longer than one operation and is used on its thread.
class ComponentCache {
public:
    /// The components of one category by product id; of several versions of a product the newest.
    struct Category {
        /// What makes the category useless, as it is reported; null when nothing does.
        const wchar_t* fault = nullptr;
        std::unordered_map<wstring, vorn::OwnerPtr<ITolmProjectSettingComponent>> components;
    };

    explicit ComponentCache(wstring componentFilePath)
        : m_componentFilePath(std::move(componentFilePath)), m_database(m_componentFilePath) {}

    /// The category of this code, asked for and read when it is met first. Valid as long as the cache.
    const Category& Of(ITolmCategoryInfoUtils& utils, const wstring& code);

    /// Reads the components of a category; null restores the component database. For tests of what a catalogue
    /// may hold and of how often it is read.
    using Reader = bool (*)(const wstring& path, const ITolmCategoryInfo* category,
                            const std::map<wstring, wstring>& conditions,
                            std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>& result, bool flag);
    static void SetReader(Reader reader);

private:
    Category Read(ITolmCategoryInfoUtils& utils, const wstring& code);

    wstring m_componentFilePath;
    TolmComponentReader m_database;
    std::unordered_map<wstring, Category> m_categories;
};

} // namespace tolm
