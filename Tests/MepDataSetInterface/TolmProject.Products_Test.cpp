#include "MepDataSetInterface/DatasetTestSupport.h"

#include "Host/Categories.h"
#include "Host/Components.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class Products : public DatasetOnStore {
protected:
    void SetUp() override {
        TolmComponentData elbow;
        elbow.id = L"c-1";
        elbow.componentTypeId = L"t-1";
        elbow.categoryCode = L"elbow";
        elbow.name = L"elbow 90";
        elbow.productId = 7;
        TolmComponentData second = elbow;
        second.id = L"c-2";
        second.version = 2;
        second.name = L"elbow 45";
        TolmComponentData tee = elbow;
        tee.id = L"c-3";
        tee.categoryCode = L"tee";
        tee.productId = 8;
        ASSERT_TRUE(TolmComponentSqlUtil::Import(
            componentPath, {{L"1", L"暖通", L"HVAC"}, {L"2", L"给排水", L"Plumbing"}},
            {{L"elbow", L"", L"2", L"弯头", L"Elbow"}, {L"tee", L"", L"2", L"三通", L"Tee"}}, {elbow, second, tee}));
        TolmCategoryInfoUtilsHandler::Get().SetUtils(CreateCategoryInfoUtils(componentPath));
    }
    void TearDown() override { TolmCategoryInfoUtilsHandler::Get().SetUtils({}); }
};

TEST_F(Products, DisciplinesComeFromTheCategoryService) {
    IdMap<ITolmDisciplineInfo> disciplines;
    EXPECT_TRUE(dataset->ReadDisciplineList(disciplines));
    ASSERT_EQ(disciplines.size(), 2U);
    EXPECT_EQ(disciplines.at(L"1")->GetEnglishName(), L"HVAC");
}

TEST_F(Products, WithoutACategoryServiceEachOperationSaysSo) {
    TolmCategoryInfoUtilsHandler::Get().SetUtils({});
    IdMap<ITolmDisciplineInfo> disciplines;
    std::map<wstring, wstring> conditions;
    EXPECT_FALSE(dataset->ReadDisciplineList(disciplines));
    EXPECT_TRUE(dataset->GetProjectProductList(L"elbow", conditions, true).empty());
    EXPECT_TRUE(dataset->GetProjectProductList({L"elbow"}).empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmDataset::ReadDisciplineList: pInfoUtils为空！",
                                                         L"TolmDataset::GetProjectProductList: pInfoUtils为空！",
                                                         L"TolmDataset::GetProjectProductList: pInfoUtils为空！"}));
}

TEST_F(Products, OfACategoryMeetTheConditions) {
    std::map<wstring, wstring> none;
    EXPECT_EQ(dataset->GetProjectProductList(L"elbow", none, false).size(), 2U);
    std::map<wstring, wstring> conditions{{L"Name", L"elbow 45"}};
    const auto found = dataset->GetProjectProductList(L"elbow", conditions, true);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0]->GetId(), L"c-2");
}

TEST_F(Products, OfAnUnknownCategoryAreNone) {
    std::map<wstring, wstring> none;
    EXPECT_TRUE(dataset->GetProjectProductList(L"valve", none, true).empty());
}

TEST_F(Products, OfSeveralCategoriesComeByCategoryAndAnUnknownOneIsPassedOver) {
    const auto found = dataset->GetProjectProductList({L"elbow", L"valve", L"tee"});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found.at(L"elbow").size(), 2U);
    ASSERT_EQ(found.at(L"tee").size(), 1U);
    EXPECT_EQ(found.at(L"tee")[0]->GetId(), L"c-3");
}

TEST_F(Products, OfUnknownCategoriesAloneAreNone) {
    EXPECT_TRUE(dataset->GetProjectProductList({L"valve", L"pump"}).empty());
    EXPECT_TRUE(dataset->GetProjectProductList(std::vector<wstring>{}).empty());
}

TEST_F(Products, OneProductComesInTheVersionsAskedFor) {
    const auto category = TolmCategoryInfoUtilsHandler::Get().GetUtils()->GetCategoryInfo(L"elbow");
    const auto found = dataset->GetOneProjectProduct(category.get(), 7, {2, 3});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.at(2)->GetId(), L"c-2");
}

TEST_F(Products, OneProductOfNoCategoryIsReported) {
    EXPECT_TRUE(dataset->GetOneProjectProduct(nullptr, 7, {1}).empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmDataset::GetOneProjectProduct: pCategory为空"}));
}

TEST_F(Products, ComponentIdentifiersAreChangedInTheComponentDatabase) {
    std::map<wstring, wstring> ids{{L"c-3", L"c-9"}};
    std::map<wstring, wstring> typeIds{{L"t-1", L"t-9"}};
    EXPECT_TRUE(dataset->UpdateAllComponentId(ids, typeIds));
    const auto found = dataset->GetProjectProductList({L"tee"});
    EXPECT_EQ(found.at(L"tee")[0]->GetId(), L"c-9");
    EXPECT_EQ(found.at(L"tee")[0]->GetComponentTypeId(), L"t-9");
    EXPECT_FALSE(Exists(path)) << "the fittings of the store are the host's to change";
}

TEST_F(Products, ComponentIdentifiersOfFittingsAreReplacedInTheStoreAlone) {
    MakeStore();
    EXPECT_TRUE(dataset->ReplaceFittingComponentId({{L"c-3", L"c-9"}}));
    EXPECT_NE(dataset->GetLastUpdateTimePointString(), L"");
    EXPECT_EQ(dataset->GetProjectProductList({L"tee"}).at(L"tee")[0]->GetId(), L"c-3");
    EXPECT_FALSE(dataset->ReplaceFittingComponentId({}));
}

TEST_F(Products, ComponentIdentifiersOfFittingsInAStoreThatIsNotThereAreNotReplaced) {
    EXPECT_FALSE(dataset->ReplaceFittingComponentId({{L"a", L"b"}}));
    EXPECT_FALSE(Exists(path));
}

} // namespace
