#include "Host/Components.h"

#include "Platform/Support/ComponentSamples.h"
#include "Support/TempFolder.h"
#include "Vorn/Files.h"

#include <gtest/gtest.h>

namespace {

using tolm::TolmComponentData;
using tolm::TolmComponentSqlUtil;
using tolmtest::IdsOf;
using tolmtest::ImportComponents;
using tolmtest::MakeComponent;
using tolmtest::MakeListProduct;
using tolmtest::ReadCategory;
using Ids = std::vector<std::wstring>;
using Renames = std::map<std::wstring, std::wstring>;

class ComponentImport : public testing::Test {
protected:
    bool Rename(Renames ids, Renames types = {}) const {
        return TolmComponentSqlUtil::UpdateAllComponentId(m_path, ids, types);
    }

    tolmtest::TempFolder m_folder;
    std::wstring m_path = m_folder.File(L"components.db");
};

TEST_F(ComponentImport, ImportingNothingMakesAnEmptyDatabase) {
    EXPECT_TRUE(ImportComponents(m_path, {}));
    EXPECT_TRUE(vorn::FileInfo(m_path).IsRegularFile());
    EXPECT_TRUE(ReadCategory(m_path, L"E").empty());
}

TEST_F(ComponentImport, AKnownComponentIsReplacedWithItsAttributes) {
    TolmComponentData component = MakeComponent(L"a", L"E");
    component.attributes = {{L"DN", L"25"}, {L"old", L"1"}};
    ASSERT_TRUE(ImportComponents(m_path, {component, MakeComponent(L"b", L"E")}));
    component.name = L"new name";
    component.categoryCode = L"T";
    component.attributes = {{L"DN", L"32"}};
    ASSERT_TRUE(ImportComponents(m_path, {component}));
    EXPECT_EQ(IdsOf(ReadCategory(m_path, L"E")), (Ids{L"b"}));
    const auto moved = ReadCategory(m_path, L"T");
    ASSERT_EQ(moved.size(), 1U);
    EXPECT_EQ(moved[0]->GetName(), L"new name");
    EXPECT_EQ(moved[0]->GetAttributes(), component.attributes);
}

TEST_F(ComponentImport, VersionsOfOneIdStandBesideEachOther) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E", 1)}));
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E", 2)}));
    const auto found = ReadCategory(m_path, L"E");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0]->GetVersion(), 1);
    EXPECT_EQ(found[1]->GetVersion(), 2);
}

TEST_F(ComponentImport, AKnownCategoryIsReplacedInItsPlace) {
    ASSERT_TRUE(TolmComponentSqlUtil::Import(m_path, {{L"D", L"旧", L"old"}},
                                             {{L"1", L"", L"D", L"one", L""}, {L"2", L"", L"D", L"two", L""}}, {}));
    ASSERT_TRUE(TolmComponentSqlUtil::Import(m_path, {{L"D", L"新", L"new"}},
                                             {{L"3", L"", L"D", L"three", L""}, {L"1", L"", L"D", L"uno", L""}}, {}));
    const auto utils = tolm::CreateCategoryInfoUtils(m_path);
    EXPECT_EQ(utils->GetRootCategoryCodes(), (Ids{L"1", L"2", L"3"}));
    EXPECT_EQ(utils->FindCategoryInfo(L"1")->GetName(), L"uno");
    std::map<std::wstring, vorn::OwnerPtr<tolm::ITolmDisciplineInfo>> disciplines;
    ASSERT_TRUE(utils->ReadDisciplineList(disciplines));
    EXPECT_EQ(disciplines.at(L"D")->GetName(), L"新");
}

TEST_F(ComponentImport, AnyTextIsKeptAsItIs) {
    using namespace std::string_literals;
    const std::wstring odd = L"'; DROP TABLE components; --\0\n😀"s;
    TolmComponentData component = MakeComponent(odd, odd);
    component.attributes = {{odd, odd}};
    ASSERT_TRUE(ImportComponents(m_path, {component}));
    const auto found = ReadCategory(m_path, odd);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0]->GetId(), odd);
    EXPECT_EQ(found[0]->GetAttributes(), component.attributes);
}

TEST_F(ComponentImport, AChainOfNewIdsDoesNotRunOn) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"A"), MakeComponent(L"b", L"B"),
                                          MakeComponent(L"c", L"C"), MakeComponent(L"d", L"D")}));
    ASSERT_TRUE(Rename({{L"a", L"b"}, {L"b", L"c"}, {L"c", L"a"}, {L"none", L"x"}}));
    EXPECT_EQ(IdsOf(ReadCategory(m_path, L"A")), (Ids{L"b"}));
    EXPECT_EQ(IdsOf(ReadCategory(m_path, L"B")), (Ids{L"c"}));
    EXPECT_EQ(IdsOf(ReadCategory(m_path, L"C")), (Ids{L"a"}));
    EXPECT_EQ(IdsOf(ReadCategory(m_path, L"D")), (Ids{L"d"}));
}

TEST_F(ComponentImport, ANewIdKeepsAttributesAndAllVersions) {
    TolmComponentData first = MakeComponent(L"a", L"E", 1);
    first.attributes = {{L"DN", L"25"}};
    ASSERT_TRUE(ImportComponents(m_path, {first, MakeComponent(L"a", L"E", 2)}));
    ASSERT_TRUE(Rename({{L"a", L"z"}}));
    const auto found = ReadCategory(m_path, L"E");
    EXPECT_EQ(IdsOf(found), (Ids{L"z", L"z"}));
    EXPECT_EQ(found[0]->GetAttributes(), first.attributes);
}

TEST_F(ComponentImport, TypeIdsFollowTheSecondMapOnly) {
    TolmComponentData component = MakeComponent(L"a", L"E");
    component.componentTypeId = L"t";
    TolmComponentData other = MakeComponent(L"t", L"E");
    other.componentTypeId = L"u";
    ASSERT_TRUE(ImportComponents(m_path, {component, other}));
    ASSERT_TRUE(Rename({{L"a", L"b"}}, {{L"t", L"u"}, {L"u", L"v"}, {L"a", L"wrong"}}));
    const auto found = ReadCategory(m_path, L"E");
    EXPECT_EQ(IdsOf(found), (Ids{L"b", L"t"}));
    EXPECT_EQ(found[0]->GetComponentTypeId(), L"u");
    EXPECT_EQ(found[1]->GetComponentTypeId(), L"v");
}

TEST_F(ComponentImport, CombinedProductsReferToTheNewIds) {
    auto product = MakeListProduct(L"p");
    product.equipment = tolmtest::MakeReference(L"c");
    std::vector<std::wstring> newIds;
    ASSERT_TRUE(TolmComponentSqlUtil::InsertCombinedProduct(m_path, {product}, newIds));
    ASSERT_TRUE(Rename({{L"a-id", L"b-id"}, {L"b-id", L"new"}}, {{L"c-type", L"new-type"}, {L"a-type", L"b-type"}}));
    const auto read = tolmtest::ReadProducts(m_path).at(0);
    EXPECT_EQ(read.components[0].componentId, L"new");
    EXPECT_EQ(read.components[1].componentId, L"b-id");
    EXPECT_EQ(read.components[1].componentTypeId, L"b-type");
    EXPECT_EQ(read.equipment.componentId, L"c-id");
    EXPECT_EQ(read.equipment.componentTypeId, L"new-type");
    EXPECT_EQ(read.equipment.categoryName, product.equipment.categoryName);
}

TEST_F(ComponentImport, TwoComponentsThatWouldEndAsOneChangeNothing) {
    ASSERT_TRUE(
        ImportComponents(m_path, {MakeComponent(L"a", L"E"), MakeComponent(L"b", L"E"), MakeComponent(L"c", L"E")}));
    EXPECT_FALSE(Rename({{L"a", L"x"}, {L"b", L"c"}}));
    EXPECT_EQ(IdsOf(ReadCategory(m_path, L"E")), (Ids{L"a", L"b", L"c"}));
}

TEST_F(ComponentImport, NewIdsForAFileThatIsNotThereAreNoFailure) {
    EXPECT_TRUE(Rename({{L"a", L"b"}}));
    EXPECT_FALSE(vorn::FileInfo(m_path).Exists());
}

} // namespace
