#include "Host/Components.h"

#include "Platform/Support/ComponentSamples.h"
#include "Support/TempFolder.h"
#include "Vorn/Files.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using tolm::TolmComponentData;
using tolm::TolmComponentSqlUtil;
using tolmtest::CodeOnly;
using tolmtest::Components;
using tolmtest::IdsOf;
using tolmtest::ImportComponents;
using tolmtest::MakeComponent;
using Conditions = std::map<std::wstring, std::wstring>;
using Ids = std::vector<std::wstring>;

class ComponentReading : public testing::Test {
protected:
    Ids Find(const std::wstring& code, const Conditions& conditions) const {
        Components found;
        const CodeOnly category(code);
        EXPECT_TRUE(TolmComponentSqlUtil::ReadComponentListWithCondition(m_path, &category, conditions, found, true));
        return IdsOf(found);
    }

    std::map<std::wstring, Components> ReadList(const Ids& codes, bool flag = true) const {
        std::vector<CodeOnly> categories(codes.begin(), codes.end());
        std::vector<const tolm::ITolmCategoryInfo*> pointers{nullptr};
        for (const CodeOnly& category : categories)
            pointers.push_back(&category);
        std::map<std::wstring, Components> result;
        EXPECT_TRUE(TolmComponentSqlUtil::ReadComponentList(m_path, pointers, result, flag));
        return result;
    }

    tolmtest::TempFolder m_folder;
    std::wstring m_path = m_folder.File(L"components.db");
};

TolmComponentData FullComponent() {
    return {L"id-1", L"type-1", L"E", L"90°弯头", 4, -5'000'000'000, 6'000'000'000, {{L"DN", L"25"}, {L"材质", L""}}};
}

TEST_F(ComponentReading, EveryFieldComesBack) {
    ASSERT_TRUE(ImportComponents(m_path, {FullComponent()}));
    const Components found = tolmtest::ReadCategory(m_path, L"E");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0]->GetId(), L"id-1");
    EXPECT_EQ(found[0]->GetComponentTypeId(), L"type-1");
    EXPECT_EQ(found[0]->GetCategoryCode(), L"E");
    EXPECT_EQ(found[0]->GetName(), L"90°弯头");
    EXPECT_EQ(found[0]->GetVersion(), 4);
    EXPECT_EQ(found[0]->GetPublicComponentId(), -5'000'000'000);
    EXPECT_EQ(found[0]->GetAttributes(), FullComponent().attributes);
}

TEST_F(ComponentReading, ACloneIsEqualAndItsOwn) {
    ASSERT_TRUE(ImportComponents(m_path, {FullComponent()}));
    Components found = tolmtest::ReadCategory(m_path, L"E");
    const auto clone = found[0]->Clone();
    EXPECT_NE(clone.get(), found[0].get());
    found.clear();
    EXPECT_EQ(clone->GetId(), L"id-1");
    EXPECT_EQ(clone->GetVersion(), 4);
    EXPECT_EQ(clone->GetAttributes(), FullComponent().attributes);
}

TEST_F(ComponentReading, AListComesUnderItsCategoriesInOrderOfId) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"c", L"E"), MakeComponent(L"t", L"T"),
                                          MakeComponent(L"a", L"E"), MakeComponent(L"x", L"X"),
                                          MakeComponent(L"b", L"E", 2), MakeComponent(L"b", L"E", 1)}));
    const auto result = ReadList({L"T", L"E", L"E", L"none"});
    ASSERT_EQ(result.size(), 2U);
    EXPECT_EQ(IdsOf(result.at(L"E")), (Ids{L"a", L"b", L"b", L"c"}));
    EXPECT_EQ(result.at(L"E")[1]->GetVersion(), 1);
    EXPECT_EQ(result.at(L"E")[2]->GetVersion(), 2);
    EXPECT_EQ(IdsOf(result.at(L"T")), (Ids{L"t"}));
}

TEST_F(ComponentReading, AListIsAddedToWhatTheMapHolds) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    const CodeOnly category(L"E");
    std::map<std::wstring, Components> result;
    EXPECT_TRUE(TolmComponentSqlUtil::ReadComponentList(m_path, {&category}, result, true));
    EXPECT_TRUE(TolmComponentSqlUtil::ReadComponentList(m_path, {&category}, result, true));
    EXPECT_EQ(IdsOf(result.at(L"E")), (Ids{L"a", L"a"}));
}

TEST_F(ComponentReading, TheFlagChangesNothing) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    EXPECT_EQ(IdsOf(ReadList({L"E"}, false).at(L"E")), IdsOf(ReadList({L"E"}, true).at(L"E")));
}

TEST_F(ComponentReading, ManyCategoriesAreReadAtOnce) {
    std::vector<TolmComponentData> components;
    Ids codes;
    for (int i = 0; i < 40'000; ++i) { // more than one statement takes parameters
        codes.push_back(L"C" + std::to_wstring(i));
        if (i % 1000 == 0)
            components.push_back(MakeComponent(std::to_wstring(i), codes.back()));
    }
    ASSERT_TRUE(ImportComponents(m_path, components));
    EXPECT_EQ(ReadList(codes).size(), 40U);
}

TEST_F(ComponentReading, WithoutConditionsAllOfTheCategoryAreAppended) {
    ASSERT_TRUE(
        ImportComponents(m_path, {MakeComponent(L"b", L"E"), MakeComponent(L"a", L"E"), MakeComponent(L"t", L"T")}));
    Components found;
    const CodeOnly category(L"E");
    EXPECT_TRUE(TolmComponentSqlUtil::ReadComponentListWithCondition(m_path, &category, {}, found, true));
    EXPECT_TRUE(TolmComponentSqlUtil::ReadComponentListWithCondition(m_path, &category, {}, found, false));
    EXPECT_EQ(IdsOf(found), (Ids{L"a", L"b", L"a", L"b"}));
}

TEST_F(ComponentReading, AConditionMayNameAnyColumn) {
    TolmComponentData other = FullComponent();
    other.id = L"id-2";
    other.componentTypeId = L"type-2";
    other.name = L"other";
    other.version = 5;
    other.publicId = 1;
    other.productId = 2;
    ASSERT_TRUE(ImportComponents(m_path, {FullComponent(), other}));
    const Conditions all{{L"Id", L"id-1"},
                         {L"Name", L"90°弯头"},
                         {L"Version", L"4"},
                         {L"ComponentTypeId", L"type-1"},
                         {L"PublicId", L"-5000000000"},
                         {L"ProductId", L"6000000000"}};
    for (const auto& condition : all)
        EXPECT_EQ(Find(L"E", {condition}), (Ids{L"id-1"}));
    EXPECT_EQ(Find(L"E", all), (Ids{L"id-1"}));
}

TEST_F(ComponentReading, AConditionWithAnotherNameAsksForAnAttribute) {
    TolmComponentData a = MakeComponent(L"a", L"E");
    a.attributes = {{L"DN", L"25"}, {L"材质", L"钢"}};
    TolmComponentData b = MakeComponent(L"b", L"E");
    b.attributes = {{L"DN", L"25"}, {L"材质", L"铜"}};
    ASSERT_TRUE(ImportComponents(m_path, {a, b, MakeComponent(L"c", L"E")}));
    EXPECT_EQ(Find(L"E", {{L"DN", L"25"}}), (Ids{L"a", L"b"}));
    EXPECT_EQ(Find(L"E", {{L"DN", L"25"}, {L"材质", L"铜"}}), (Ids{L"b"}));
    EXPECT_EQ(Find(L"E", {{L"DN", L"25"}, {L"Id", L"a"}}), (Ids{L"a"}));
    EXPECT_EQ(Find(L"E", {{L"DN", L"32"}}), Ids());
    EXPECT_EQ(Find(L"E", {{L"无", L""}}), Ids());
    EXPECT_EQ(Find(L"T", {{L"DN", L"25"}}), Ids());
}

TEST_F(ComponentReading, ConditionsAreTextAndNeverStatements) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    EXPECT_EQ(Find(L"E", {{L"Id", L"' OR 1=1 --"}}), Ids());
    EXPECT_EQ(Find(L"E", {{L"x) OR 1=1 --", L"y"}}), Ids());
    EXPECT_EQ(Find(L"E' OR '1'='1", {}), Ids());
    EXPECT_EQ(Find(L"E", {{L"Version", L"01"}}), Ids());
}

TEST_F(ComponentReading, WithoutACategoryNothingIsRead) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    Components found;
    EXPECT_FALSE(TolmComponentSqlUtil::ReadComponentListWithCondition(m_path, nullptr, {}, found, true));
    EXPECT_TRUE(found.empty());
    EXPECT_TRUE(TolmComponentSqlUtil::ReadOneComponent(m_path, nullptr, 1, {1}).empty());
}

TEST_F(ComponentReading, OneComponentComesForEachVersionThatExists) {
    std::vector<TolmComponentData> components;
    for (const int version : {1, 2, 3, 5}) {
        components.push_back(MakeComponent(L"p", L"E", version));
        components.back().productId = 4711;
    }
    components.push_back(MakeComponent(L"q", L"E", 4)); // another product
    components.push_back(MakeComponent(L"r", L"T", 4)); // another category
    components.back().productId = 4711;
    ASSERT_TRUE(ImportComponents(m_path, components));
    const CodeOnly category(L"E");
    const auto found = TolmComponentSqlUtil::ReadOneComponent(m_path, &category, 4711, {5, 2, 4, 2});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found.at(2)->GetVersion(), 2);
    EXPECT_EQ(found.at(5)->GetVersion(), 5);
    EXPECT_TRUE(TolmComponentSqlUtil::ReadOneComponent(m_path, &category, 4711, {}).empty());
    EXPECT_TRUE(TolmComponentSqlUtil::ReadOneComponent(m_path, &category, 1, {1}).empty());
}

TEST_F(ComponentReading, OfTwoComponentsOfOneProductAndVersionTheFirstIdIsTaken) {
    TolmComponentData a = MakeComponent(L"a", L"E");
    TolmComponentData b = MakeComponent(L"b", L"E");
    a.productId = b.productId = 8;
    ASSERT_TRUE(ImportComponents(m_path, {b, a}));
    const CodeOnly category(L"E");
    EXPECT_EQ(TolmComponentSqlUtil::ReadOneComponent(m_path, &category, 8, {1}).at(1)->GetId(), L"a");
}

TEST_F(ComponentReading, AFileThatIsNotThereHasNothingAndIsNotMade) {
    EXPECT_TRUE(ReadList({L"E"}).empty());
    EXPECT_EQ(Find(L"E", {}), Ids());
    const CodeOnly category(L"E");
    EXPECT_TRUE(TolmComponentSqlUtil::ReadOneComponent(m_path, &category, 1, {1}).empty());
    EXPECT_TRUE(tolmtest::ReadProducts(m_path).empty());
    EXPECT_FALSE(vorn::FileInfo(m_path).Exists());
}

} // namespace
