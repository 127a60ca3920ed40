#include "Host/Categories.h"

#include "Host/ComponentFileInternal.h"

#include <deque>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace tolm {
namespace {

class TolmDisciplineInfo final : public ITolmDisciplineInfo {
public:
    explicit TolmDisciplineInfo(const TolmDisciplineData& data) : m_data(data) {}
    std::wstring GetId() const override { return m_data.id; }
    std::wstring GetName() const override { return m_data.name; }
    std::wstring GetEnglishName() const override { return m_data.englishName; }

private:
    TolmDisciplineData m_data;
};

class CategoryNode : public ITolmCategoryInfo {
public:
    explicit CategoryNode(const TolmCategoryData& data) : m_data(data) {}
    std::wstring GetCode() const override { return m_data.code; }
    std::wstring GetParentCode() const override { return m_data.parentCode; }
    std::wstring GetDisciplineId() const override { return m_data.disciplineId; }
    std::wstring GetName() const override { return m_data.name; }
    std::wstring GetEnglishName() const override { return m_data.englishName; }
    std::vector<const ITolmCategoryInfo*> GetChildren() const override { return m_children; }

    void AddChild(const CategoryNode* child) { m_children.push_back(child); }

private:
    TolmCategoryData m_data;
    std::vector<const ITolmCategoryInfo*> m_children;
};

/// A category with all below it. The nodes lie in one flat list: however deep the tree, nothing here recurs.
class CategoryTree final : public CategoryNode {
public:
    using CategoryNode::CategoryNode;
    CategoryNode* AddNode(const TolmCategoryData& data) { return &m_descendants.emplace_back(data); }

private:
    std::deque<CategoryNode> m_descendants;
};

/// Disciplines and categories as they were read, with the links between them.
class Catalogue {
public:
    bool Read(const std::wstring& path) {
        std::vector<TolmCategoryData> categories;
        if (!ReadCatalogue(path, m_disciplines, categories))
            return false;
        for (const TolmCategoryData& category : categories)
            m_categories.emplace(category.code, category);
        for (const TolmCategoryData& category : categories)
            ListOf(category).push_back(category.code);
        return true;
    }

    const std::vector<TolmDisciplineData>& Disciplines() const { return m_disciplines; }
    const std::vector<std::wstring>& Roots() const { return m_roots; }

    const TolmCategoryData* Find(const std::wstring& code) const {
        const auto found = m_categories.find(code);
        return found != m_categories.end() ? &found->second : nullptr;
    }

    const std::vector<std::wstring>& ChildrenOf(const std::wstring& code) const {
        static const std::vector<std::wstring> none;
        const auto found = m_children.find(code);
        return found != m_children.end() ? found->second : none;
    }

private:
    std::vector<std::wstring>& ListOf(const TolmCategoryData& category) {
        const bool hasParent = !category.parentCode.empty() && m_categories.contains(category.parentCode);
        return hasParent ? m_children[category.parentCode] : m_roots;
    }

    std::vector<TolmDisciplineData> m_disciplines;
    std::unordered_map<std::wstring, TolmCategoryData> m_categories;
    std::unordered_map<std::wstring, std::vector<std::wstring>> m_children;
    std::vector<std::wstring> m_roots;
};

/// Builds the tree level by level; a code that was met already closes a circle and is left out.
vorn::OwnerPtr<ITolmCategoryInfo> BuildTree(const Catalogue& catalogue, const TolmCategoryData& top) {
    auto tree = vorn::MakeOwner<CategoryTree>(top);
    std::unordered_set<std::wstring> met{top.code};
    std::deque<CategoryNode*> open{tree.get()};
    for (; !open.empty(); open.pop_front()) {
        for (const std::wstring& code : catalogue.ChildrenOf(open.front()->GetCode())) {
            if (!met.insert(code).second)
                continue;
            CategoryNode* const child = tree->AddNode(*catalogue.Find(code));
            open.front()->AddChild(child);
            open.push_back(child);
        }
    }
    return tree;
}

class TolmCategoryInfoUtils final : public ITolmCategoryInfoUtils {
public:
    explicit TolmCategoryInfoUtils(const std::wstring& componentFilePath) : m_path(componentFilePath) {}

    bool ReadDisciplineList(std::map<std::wstring, vorn::OwnerPtr<ITolmDisciplineInfo>>& disciplines) override {
        if (!Load())
            return false;
        for (const TolmDisciplineData& discipline : m_catalogue.Disciplines())
            disciplines[discipline.id] = vorn::MakeOwner<TolmDisciplineInfo>(discipline);
        return true;
    }

    std::vector<std::wstring> GetRootCategoryCodes() override {
        return Load() ? m_catalogue.Roots() : std::vector<std::wstring>();
    }

    vorn::OwnerPtr<ITolmCategoryInfo> GetCategoryInfo(const std::wstring& code) override {
        const TolmCategoryData* const category = Find(code);
        return category != nullptr ? BuildTree(m_catalogue, *category) : nullptr;
    }

    std::vector<std::wstring> GetChildCategoryCodes(const std::wstring& code) override {
        return Load() ? m_catalogue.ChildrenOf(code) : std::vector<std::wstring>();
    }

    const ITolmCategoryInfo* FindCategoryInfo(const std::wstring& code) override {
        const TolmCategoryData* const category = Find(code);
        m_found = category != nullptr ? vorn::MakeOwner<CategoryNode>(*category) : nullptr;
        return m_found.get();
    }

private:
    bool Load() {
        if (m_loaded)
            return true;
        Catalogue catalogue;
        m_loaded = catalogue.Read(m_path);
        if (m_loaded)
            m_catalogue = std::move(catalogue);
        return m_loaded;
    }

    const TolmCategoryData* Find(const std::wstring& code) { return Load() ? m_catalogue.Find(code) : nullptr; }

    std::wstring m_path;
    bool m_loaded = false;
    Catalogue m_catalogue;
    vorn::OwnerPtr<CategoryNode> m_found;
};

} // namespace

ITolmDisciplineInfo::~ITolmDisciplineInfo() = default;
ITolmCategoryInfo::~ITolmCategoryInfo() = default;
ITolmCategoryInfoUtils::~ITolmCategoryInfoUtils() = default;

TolmCategoryInfoUtilsHandler& TolmCategoryInfoUtilsHandler::Get() {
    static TolmCategoryInfoUtilsHandler handler;
    return handler;
}

vorn::OwnerPtr<ITolmCategoryInfoUtils> CreateCategoryInfoUtils(const std::wstring& componentFilePath) {
    return vorn::MakeOwner<TolmCategoryInfoUtils>(componentFilePath);
}

} // namespace tolm
