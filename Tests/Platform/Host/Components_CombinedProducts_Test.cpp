#include "Host/Components.h"

#include "Platform/Support/ComponentSamples.h"
#include "Support/TempFolder.h"
#include "Vorn/Files.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using tolm::TolmCombinedProduct;
using tolm::TolmComponentSqlUtil;
using tolmtest::MakeEquipmentProduct;
using tolmtest::MakeListProduct;
using tolmtest::ProductIds;
using tolmtest::ReadProducts;
using Ids = std::vector<std::wstring>;

class CombinedProducts : public testing::Test {
protected:
    ~CombinedProducts() override { tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr); }

    Ids Insert(const std::vector<TolmCombinedProduct>& products) const {
        Ids newIds{L"left over"};
        EXPECT_TRUE(TolmComponentSqlUtil::InsertCombinedProduct(m_path, products, newIds));
        return newIds;
    }
    bool Remove(const std::wstring& first, const std::wstring& second, const Ids& ids) const {
        return TolmComponentSqlUtil::RemoveCombinedProduct(m_path, first, second, ids);
    }
    static bool ImportCategories(const std::wstring& path) {
        return TolmComponentSqlUtil::Import(
            path, {},
            {{L"16353515", L"", L"", L"支架", L"Brackets"}, {L"16352020", L"", L"", L"风机盘管", L"Fan coils"}}, {});
    }

    tolmtest::TempFolder m_folder;
    std::wstring m_path = m_folder.File(L"combined.db");
};

TEST_F(CombinedProducts, EveryFieldComesBack) {
    const auto list = MakeListProduct(L"list");
    const auto equipment = MakeEquipmentProduct(L"equipment");
    Insert({list, equipment});
    EXPECT_EQ(ReadProducts(m_path), (std::vector<TolmCombinedProduct>{equipment, list}));
}

TEST_F(CombinedProducts, ComponentsKeepTheirOrderAndRepetitions) {
    auto product = MakeListProduct(L"p");
    product.components.clear();
    for (const wchar_t* name : {L"z", L"a", L"z", L"m"})
        product.components.push_back(tolmtest::MakeReference(name));
    product.components.emplace_back();
    for (int i = 0; i < 20; ++i)
        product.components.push_back(tolmtest::MakeReference(std::to_wstring(i)));
    Insert({product});
    EXPECT_EQ(ReadProducts(m_path).at(0), product);
}

TEST_F(CombinedProducts, ANewIdIsReportedAndAKnownOneIsAnUpdate) {
    EXPECT_EQ(Insert({MakeListProduct(L"b"), MakeListProduct(L"a")}), (Ids{L"b", L"a"}));
    auto changed = MakeListProduct(L"a");
    changed.Name = L"changed";
    EXPECT_EQ(Insert({changed, MakeListProduct(L"c")}), (Ids{L"c"}));
    EXPECT_EQ(ProductIds(m_path), (Ids{L"a", L"b", L"c"}));
    EXPECT_EQ(ReadProducts(m_path).at(0).Name, L"changed");
}

TEST_F(CombinedProducts, AnUpdateReplacesTheProductWhole) {
    Insert({MakeEquipmentProduct(L"p")});
    auto bare = TolmCombinedProduct();
    bare.Id = L"p";
    bare.categoryCode = L"16353515";
    bare.components = {tolmtest::MakeReference(L"only")};
    EXPECT_EQ(Insert({bare}), Ids());
    EXPECT_EQ(ReadProducts(m_path), (std::vector<TolmCombinedProduct>{bare}));
}

TEST_F(CombinedProducts, TheSameIdTwiceInOneCallIsNewOnceAndTheLastStays) {
    auto second = MakeListProduct(L"p");
    second.Name = L"second";
    EXPECT_EQ(Insert({MakeListProduct(L"p"), second}), (Ids{L"p"}));
    EXPECT_EQ(ReadProducts(m_path), (std::vector<TolmCombinedProduct>{second}));
}

TEST_F(CombinedProducts, NoProductsMakeNoFile) {
    EXPECT_EQ(Insert({}), Ids());
    EXPECT_FALSE(vorn::FileInfo(m_path).Exists());
}

TEST_F(CombinedProducts, NumbersThatAreNotFiniteAreClamped) {
    using Limits = std::numeric_limits<double>;
    auto product = MakeEquipmentProduct(L"p");
    product.supplyHoseLength = Limits::quiet_NaN();
    product.supplyAirTerminalDist1 = Limits::infinity();
    product.supplyAirTerminalDist2 = -Limits::infinity();
    Insert({product});
    const auto read = ReadProducts(m_path).at(0);
    EXPECT_EQ(read.supplyHoseLength, 0.0);
    EXPECT_EQ(read.supplyAirTerminalDist1, Limits::max());
    EXPECT_EQ(read.supplyAirTerminalDist2, Limits::lowest());
}

TEST_F(CombinedProducts, AListIsAppendedAndMayBeOfOneCategory) {
    Insert({MakeListProduct(L"b"), MakeEquipmentProduct(L"e"), MakeListProduct(L"a")});
    EXPECT_EQ(ProductIds(m_path, L"16353515"), (Ids{L"a", L"b"}));
    EXPECT_EQ(ReadProducts(m_path, L"16352020"), (std::vector<TolmCombinedProduct>{MakeEquipmentProduct(L"e")}));
    EXPECT_EQ(ProductIds(m_path, L"none"), Ids());
    std::vector<TolmCombinedProduct> products{MakeListProduct(L"mine")};
    EXPECT_TRUE(TolmComponentSqlUtil::ReadCombinedProductList(m_path, L"16352020", products));
    EXPECT_EQ(products.size(), 2U);
    EXPECT_EQ(products[0].Id, L"mine");
}

TEST_F(CombinedProducts, OnlyTheListedOnesOfTheCategoryAreRemoved) {
    Insert({MakeListProduct(L"a"), MakeListProduct(L"b"), MakeEquipmentProduct(L"e")});
    EXPECT_TRUE(Remove(L"16353515", L"16353515", {L"a", L"e", L"none"}));
    EXPECT_EQ(ProductIds(m_path), (Ids{L"b", L"e"}));
}

TEST_F(CombinedProducts, RemovedOnesLeaveNoComponentsBehind) {
    Insert({MakeListProduct(L"a")});
    ASSERT_TRUE(Remove(L"16353515", L"", {L"a"}));
    auto bare = TolmCombinedProduct();
    bare.Id = L"a";
    EXPECT_EQ(Insert({bare}), (Ids{L"a"}));
    EXPECT_TRUE(ReadProducts(m_path).at(0).components.empty());
}

TEST_F(CombinedProducts, TheCategoryIsGivenByCodeOrByEitherNameOfTheFile) {
    ASSERT_TRUE(ImportCategories(m_path));
    for (const auto& [first, second] : std::vector<std::pair<std::wstring, std::wstring>>{{L"支架", L"Brackets"},
                                                                                          {L"Brackets", L"16353515"},
                                                                                          {L"16353515", L"支架"},
                                                                                          {L"", L"Brackets"},
                                                                                          {L"支架", L""}}) {
        Insert({MakeListProduct(L"a"), MakeEquipmentProduct(L"e")});
        EXPECT_TRUE(Remove(first, second, {L"a", L"e"}));
        EXPECT_EQ(ProductIds(m_path), (Ids{L"e"}));
    }
}

TEST_F(CombinedProducts, TheNamesOfTheCategoryServiceCountToo) {
    const std::wstring catalogue = m_folder.File(L"components.db");
    ASSERT_TRUE(ImportCategories(catalogue));
    Insert({MakeListProduct(L"a")});
    EXPECT_TRUE(Remove(L"支架", L"Brackets", {L"a"}));
    EXPECT_EQ(ProductIds(m_path), (Ids{L"a"}));
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(catalogue));
    EXPECT_TRUE(Remove(L"支架", L"Brackets", {L"a"}));
    EXPECT_EQ(ProductIds(m_path), Ids());
}

TEST_F(CombinedProducts, TextsThatGiveTwoCategoriesOrNoneRemoveNothing) {
    ASSERT_TRUE(ImportCategories(m_path));
    Insert({MakeListProduct(L"a"), MakeEquipmentProduct(L"e")});
    EXPECT_TRUE(Remove(L"支架", L"风机盘管", {L"a", L"e"}));
    EXPECT_TRUE(Remove(L"unknown", L"16353515", {L"a", L"e"}));
    EXPECT_TRUE(Remove(L"", L"", {L"a", L"e"}));
    EXPECT_EQ(ProductIds(m_path), (Ids{L"a", L"e"}));
}

TEST_F(CombinedProducts, AKnownCategoryWithoutNamesIsGivenByTwoEmptyTexts) {
    ASSERT_TRUE(TolmComponentSqlUtil::Import(m_path, {}, {{L"16353515", L"", L"", L"", L""}}, {}));
    Insert({MakeListProduct(L"a"), MakeEquipmentProduct(L"e")});
    EXPECT_TRUE(Remove(L"", L"", {L"a", L"e"}));
    EXPECT_EQ(ProductIds(m_path), (Ids{L"e"}));
}

TEST_F(CombinedProducts, RemovingFromAFileThatIsNotThereIsNoFailure) {
    EXPECT_TRUE(Remove(L"16353515", L"", {L"a"}));
    EXPECT_FALSE(vorn::FileInfo(m_path).Exists());
}

TEST_F(CombinedProducts, ManyAreWrittenAndRemovedAtOnce) {
    std::vector<TolmCombinedProduct> products;
    Ids ids;
    for (int i = 0; i < 5000; ++i) {
        ids.push_back(std::to_wstring(i));
        products.push_back(MakeListProduct(ids.back()));
    }
    EXPECT_EQ(Insert(products), ids);
    EXPECT_EQ(ReadProducts(m_path).size(), 5000U);
    EXPECT_TRUE(Remove(L"16353515", L"", ids));
    EXPECT_EQ(ProductIds(m_path), Ids());
}

} // namespace
