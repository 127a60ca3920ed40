#include "MepDataSetInterface/TableTestSupport.h"

#include <gtest/gtest.h>

namespace {

using namespace tolm;
using namespace tolmtest;

/// A category with children of its own.
class Category : public ITolmCategoryInfo {
public:
    explicit Category(wstring code, std::vector<const ITolmCategoryInfo*> children = {})
        : m_code(std::move(code)), m_children(std::move(children)) {}
    wstring GetCode() const override { return m_code; }
    wstring GetParentCode() const override { return {}; }
    wstring GetDisciplineId() const override { return {}; }
    wstring GetName() const override { return {}; }
    wstring GetEnglishName() const override { return {}; }
    std::vector<const ITolmCategoryInfo*> GetChildren() const override { return m_children; }

private:
    wstring m_code;
    std::vector<const ITolmCategoryInfo*> m_children;
};

class Base : public TolmBaseDesignData {
public:
    Ids EndCodes(const ITolmCategoryInfo* category) const {
        Ids codes;
        for (const auto* end : getEndCategoryList(category))
            codes.push_back(end->GetCode());
        return codes;
    }
};

TEST(EndCategories, OfNoCategoryAreNone) {
    EXPECT_EQ(Base().EndCodes(nullptr), Ids{});
}

TEST(EndCategories, OfACategoryWithoutChildrenIsItself) {
    const Category leaf(L"1");
    EXPECT_EQ(Base().EndCodes(&leaf), (Ids{L"1"}));
}

TEST(EndCategories, AreTheLeavesDepthFirstAndInOrder) {
    const Category a(L"a");
    const Category b(L"b");
    const Category c(L"c");
    const Category d(L"d");
    const Category deep(L"deep", {&b, &c});
    const Category middle(L"middle", {&deep});
    const Category root(L"root", {&a, &middle, nullptr, &d});
    EXPECT_EQ(Base().EndCodes(&root), (Ids{L"a", L"b", L"c", L"d"}));
}

class BaseReads : public TableOnStore<MaterialData> {
protected:
    TolmBaseDesignData& Reads() { return dynamic_cast<TolmBaseDesignData&>(*table); }
};

TEST_F(BaseReads, TakeTheirOwnPathAndLeaveTheTables) {
    util.WriteMaterial(path, ddq, MakeMaterial(L"a", L"copper").get());
    util.WriteSizeModule(path, ddq, MakeSizeModule(L"s").get());
    std::vector<vorn::OwnerPtr<IProjectSettingMaterial>> materials;
    std::vector<vorn::OwnerPtr<IProjectSettingSizeModule>> modules;
    vorn::OwnerPtr<IProjectSettingMaterial> material;
    EXPECT_TRUE(Reads().ReadMaterialList(path, ObjectType::Pipe, MEPDisciplineId::Plumbing, materials));
    EXPECT_TRUE(Reads().ReadSizeModuleList(path, ObjectType::Pipe, MEPDisciplineId::Plumbing, modules));
    EXPECT_TRUE(Reads().ReadSingleMaterial(path, L"a", material));
    EXPECT_EQ(IdsOf(materials), (Ids{L"a"}));
    EXPECT_EQ(IdsOf(modules), (Ids{L"s"}));
    EXPECT_EQ(material->GetName(), L"copper");
    EXPECT_TRUE(table->GetMaterialList().empty());
}

TEST_F(BaseReads, GiveBackWhatTheStoreAnswers) {
    std::vector<vorn::OwnerPtr<IProjectSettingMaterial>> materials;
    vorn::OwnerPtr<IProjectSettingMaterial> material;
    EXPECT_FALSE(Reads().ReadMaterialList(path, ObjectType::Pipe, MEPDisciplineId::Plumbing, materials));
    EXPECT_FALSE(Reads().ReadSingleMaterial(path, L"a", material));
    MakeStore();
    EXPECT_FALSE(Reads().ReadMaterialList(path, ObjectType::Pipe, MEPDisciplineId::Plumbing, materials));
    EXPECT_TRUE(Reads().ReadSingleMaterial(path, L"a", material));
    EXPECT_FALSE(material);
}

} // namespace
