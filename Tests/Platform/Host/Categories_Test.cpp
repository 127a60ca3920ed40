#include "Host/Categories.h"

#include "Host/Components.h"
#include "Support/TempFolder.h"
#include "Vorn/Files.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using tolm::ITolmCategoryInfo;
using tolm::TolmCategoryData;
using tolm::TolmCategoryInfoUtilsHandler;
using Codes = std::vector<std::wstring>;

Codes CodesOf(const std::vector<const ITolmCategoryInfo*>& categories) {
    Codes codes;
    for (const ITolmCategoryInfo* category : categories)
        codes.push_back(category->GetCode());
    return codes;
}

class Categories : public testing::Test {
protected:
    bool Import(const std::vector<TolmCategoryData>& categories) const {
        return tolm::TolmComponentSqlUtil::Import(m_path, {{L"D1", L"暖通", L"HVAC"}, {L"D2", L"给排水", L"Plumbing"}},
                                                  categories, {});
    }
    /// A tree whose order is neither that of the codes nor that of the levels.
    bool ImportTree() const {
        return Import({{L"20", L"", L"D2", L"管件", L"Fittings"},
                       {L"202", L"20", L"D2", L"三通", L"Tees"},
                       {L"201", L"20", L"D2", L"弯头", L"Elbows"},
                       {L"2011", L"201", L"D2", L"长弯头", L"Long elbows"},
                       {L"10", L"", L"D1", L"风口", L"Terminals"}});
    }

    tolmtest::TempFolder m_folder;
    std::wstring m_path = m_folder.File(L"components.db");
    vorn::OwnerPtr<tolm::ITolmCategoryInfoUtils> m_utils = tolm::CreateCategoryInfoUtils(m_path);
};

TEST_F(Categories, DisciplinesComeUnderTheirIds) {
    ASSERT_TRUE(ImportTree());
    std::map<std::wstring, vorn::OwnerPtr<tolm::ITolmDisciplineInfo>> disciplines;
    ASSERT_TRUE(m_utils->ReadDisciplineList(disciplines));
    ASSERT_EQ(disciplines.size(), 2U);
    EXPECT_EQ(disciplines[L"D2"]->GetId(), L"D2");
    EXPECT_EQ(disciplines[L"D2"]->GetName(), L"给排水");
    EXPECT_EQ(disciplines[L"D2"]->GetEnglishName(), L"Plumbing");
}

TEST_F(Categories, RootsAndChildrenComeInTheOrderOfTheFile) {
    ASSERT_TRUE(ImportTree());
    EXPECT_EQ(m_utils->GetRootCategoryCodes(), (Codes{L"20", L"10"}));
    EXPECT_EQ(m_utils->GetChildCategoryCodes(L"20"), (Codes{L"202", L"201"}));
    EXPECT_EQ(m_utils->GetChildCategoryCodes(L"10"), Codes());
    EXPECT_EQ(m_utils->GetChildCategoryCodes(L"unknown"), Codes());
}

TEST_F(Categories, ACategoryComesWithAllBelowIt) {
    ASSERT_TRUE(ImportTree());
    const auto fittings = m_utils->GetCategoryInfo(L"20");
    ASSERT_TRUE(fittings);
    EXPECT_EQ(fittings->GetCode(), L"20");
    EXPECT_EQ(fittings->GetParentCode(), L"");
    EXPECT_EQ(fittings->GetDisciplineId(), L"D2");
    EXPECT_EQ(fittings->GetName(), L"管件");
    EXPECT_EQ(fittings->GetEnglishName(), L"Fittings");
    EXPECT_EQ(CodesOf(fittings->GetChildren()), (Codes{L"202", L"201"}));
    const ITolmCategoryInfo* const elbows = fittings->GetChildren()[1];
    EXPECT_EQ(elbows->GetParentCode(), L"20");
    EXPECT_EQ(CodesOf(elbows->GetChildren()), (Codes{L"2011"}));
    EXPECT_TRUE(elbows->GetChildren()[0]->GetChildren().empty());
}

TEST_F(Categories, ATreeOutlivesTheService) {
    ASSERT_TRUE(ImportTree());
    const auto fittings = m_utils->GetCategoryInfo(L"20");
    m_utils.reset();
    EXPECT_EQ(CodesOf(fittings->GetChildren()), (Codes{L"202", L"201"}));
}

TEST_F(Categories, AnUnknownCodeGivesAnEmptyOwnerAndNull) {
    ASSERT_TRUE(ImportTree());
    EXPECT_FALSE(m_utils->GetCategoryInfo(L"99"));
    EXPECT_FALSE(m_utils->GetCategoryInfo(L""));
    EXPECT_EQ(m_utils->FindCategoryInfo(L"99"), nullptr);
}

TEST_F(Categories, FindGivesTheNamesOfOneCategory) {
    ASSERT_TRUE(ImportTree());
    const ITolmCategoryInfo* const elbows = m_utils->FindCategoryInfo(L"201");
    ASSERT_NE(elbows, nullptr);
    EXPECT_EQ(elbows->GetName(), L"弯头");
    EXPECT_EQ(elbows->GetEnglishName(), L"Elbows");
    const ITolmCategoryInfo* const tees = m_utils->FindCategoryInfo(L"202");
    EXPECT_EQ(tees->GetCode(), L"202");
}

TEST_F(Categories, ParentsThatRunInACircleAreCut) {
    ASSERT_TRUE(Import({{L"a", L"c", L"", L"", L""},
                        {L"b", L"a", L"", L"", L""},
                        {L"c", L"b", L"", L"", L""},
                        {L"self", L"self", L"", L"", L""}}));
    const auto a = m_utils->GetCategoryInfo(L"a");
    ASSERT_TRUE(a);
    ASSERT_EQ(CodesOf(a->GetChildren()), (Codes{L"b"}));
    const ITolmCategoryInfo* const b = a->GetChildren()[0];
    ASSERT_EQ(CodesOf(b->GetChildren()), (Codes{L"c"}));
    EXPECT_TRUE(b->GetChildren()[0]->GetChildren().empty());
    EXPECT_TRUE(m_utils->GetCategoryInfo(L"self")->GetChildren().empty());
    EXPECT_EQ(m_utils->GetRootCategoryCodes(), Codes());
}

TEST_F(Categories, AParentThatIsNotThereMakesARoot) {
    ASSERT_TRUE(Import({{L"x", L"gone", L"", L"", L""}}));
    EXPECT_EQ(m_utils->GetRootCategoryCodes(), (Codes{L"x"}));
}

TEST_F(Categories, ADeepChainIsBuiltAndReleased) {
    constexpr int kDepth = 100'000;
    std::vector<TolmCategoryData> chain;
    for (int i = 0; i < kDepth; ++i)
        chain.push_back({std::to_wstring(i), i > 0 ? std::to_wstring(i - 1) : L"", L"", L"", L""});
    ASSERT_TRUE(Import(chain));
    const auto top = m_utils->GetCategoryInfo(L"0");
    int depth = 0;
    for (const ITolmCategoryInfo* node = top.get(); node != nullptr; ++depth)
        node = node->GetChildren().empty() ? nullptr : node->GetChildren()[0];
    EXPECT_EQ(depth, kDepth);
}

TEST_F(Categories, AreReadOnceAndKept) {
    ASSERT_TRUE(ImportTree());
    EXPECT_NE(m_utils->FindCategoryInfo(L"201"), nullptr);
    ASSERT_TRUE(vorn::FileSystem::RemoveFile(m_path));
    EXPECT_NE(m_utils->FindCategoryInfo(L"202"), nullptr);
    EXPECT_EQ(m_utils->GetRootCategoryCodes(), (Codes{L"20", L"10"}));
}

TEST_F(Categories, AFileThatComesLaterIsReadThen) {
    std::map<std::wstring, vorn::OwnerPtr<tolm::ITolmDisciplineInfo>> disciplines;
    EXPECT_FALSE(m_utils->ReadDisciplineList(disciplines));
    EXPECT_EQ(m_utils->GetRootCategoryCodes(), Codes());
    EXPECT_FALSE(m_utils->GetCategoryInfo(L"20"));
    EXPECT_FALSE(vorn::FileInfo(m_path).Exists());
    ASSERT_TRUE(ImportTree());
    EXPECT_TRUE(m_utils->GetCategoryInfo(L"20"));
}

TEST_F(Categories, ADamagedFileGivesNoDisciplines) {
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(m_path, "no database at all", 18, false));
    std::map<std::wstring, vorn::OwnerPtr<tolm::ITolmDisciplineInfo>> disciplines;
    EXPECT_FALSE(m_utils->ReadDisciplineList(disciplines));
    EXPECT_TRUE(disciplines.empty());
}

TEST(CategoryHandler, HasNoUtilsUntilAServiceIsUp) {
    auto& handler = TolmCategoryInfoUtilsHandler::Get();
    EXPECT_EQ(&handler, &TolmCategoryInfoUtilsHandler::Get());
    EXPECT_EQ(handler.GetUtils(), nullptr);
    handler.SetUtils(tolm::CreateCategoryInfoUtils(L"/nowhere"));
    EXPECT_NE(handler.GetUtils(), nullptr);
    handler.SetUtils(nullptr);
    EXPECT_EQ(handler.GetUtils(), nullptr);
}

/// A host's own service; the virtual operations answer with their place in the interface.
class OwnUtils final : public tolm::ITolmCategoryInfoUtils {
public:
    bool ReadDisciplineList(std::map<std::wstring, vorn::OwnerPtr<tolm::ITolmDisciplineInfo>>& disciplines) override {
        disciplines[L"first"];
        return true;
    }
    std::vector<std::wstring> GetRootCategoryCodes() override { return {L"second"}; }
    vorn::OwnerPtr<ITolmCategoryInfo> GetCategoryInfo(const std::wstring&) override { return {}; }
    std::vector<std::wstring> GetChildCategoryCodes(const std::wstring&) override { return {L"fourth"}; }
    const ITolmCategoryInfo* FindCategoryInfo(const std::wstring&) override { return nullptr; }
};

TEST(CategoryHandler, AHostMayPutItsOwnServiceInPlace) {
    auto& handler = TolmCategoryInfoUtilsHandler::Get();
    handler.SetUtils(vorn::MakeOwner<OwnUtils>());
    EXPECT_EQ(handler.GetUtils()->GetRootCategoryCodes(), (Codes{L"second"}));
    std::map<std::wstring, vorn::OwnerPtr<tolm::ITolmDisciplineInfo>> disciplines;
    EXPECT_TRUE(handler.GetUtils()->ReadDisciplineList(disciplines));
    EXPECT_TRUE(disciplines.contains(L"first"));
    handler.SetUtils(nullptr);
}

/// Position of a virtual operation in the table, as the ABI writes it into a pointer to a member.
template <class Operation> std::ptrdiff_t SlotOf(Operation operation) {
    std::ptrdiff_t words[2];
    static_assert(sizeof operation == sizeof words);
    std::memcpy(words, &operation, sizeof words);
    return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(CategoryHandler, OperationsOfTheServiceStandInTheirSlots) {
    using Utils = tolm::ITolmCategoryInfoUtils;
    constexpr std::ptrdiff_t kBehindDestructors = 2;
    EXPECT_EQ(SlotOf(&Utils::ReadDisciplineList), kBehindDestructors + 0);
    EXPECT_EQ(SlotOf(&Utils::GetRootCategoryCodes), kBehindDestructors + 1);
    EXPECT_EQ(SlotOf(&Utils::GetCategoryInfo), kBehindDestructors + 2);
    EXPECT_EQ(SlotOf(&Utils::GetChildCategoryCodes), kBehindDestructors + 3);
    EXPECT_EQ(SlotOf(&Utils::FindCategoryInfo), kBehindDestructors + 4);
}

} // namespace
