#include "Host/Components.h"

#include "Platform/Support/ComponentSamples.h"
#include "Support/TempFolder.h"
#include "Vorn/Files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using tolm::TolmComponentReader;
using tolmtest::CodeOnly;
using tolmtest::Components;
using tolmtest::IdsOf;
using tolmtest::ImportComponents;
using tolmtest::MakeComponent;
using Ids = std::vector<std::wstring>;

class ComponentReader : public testing::Test {
protected:
    static Ids Find(TolmComponentReader& reader, const std::wstring& code) {
        Components found;
        const CodeOnly category(code);
        EXPECT_TRUE(reader.Read(&category, found));
        return IdsOf(found);
    }

    std::string Native() const { return vorn::FileSystem::ToNative(m_path); }

    tolmtest::TempFolder m_folder;
    std::wstring m_path = m_folder.File(L"components.db");
};

TEST_F(ComponentReader, ReadsOneCategoryAfterTheOther) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"b", L"E"), MakeComponent(L"a", L"E"),
                                          MakeComponent(L"c", L"F"), MakeComponent(L"a", L"E", 2)}));
    TolmComponentReader reader(m_path);
    EXPECT_EQ(Find(reader, L"E"), (Ids{L"a", L"a", L"b"}));
    EXPECT_EQ(Find(reader, L"F"), Ids{L"c"});
    EXPECT_EQ(Find(reader, L"G"), Ids{});
    EXPECT_EQ(Find(reader, L"E"), IdsOf(tolmtest::ReadCategory(m_path, L"E")));
}

TEST_F(ComponentReader, WithoutACategoryItFails) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    TolmComponentReader reader(m_path);
    Components found;
    EXPECT_FALSE(reader.Read(nullptr, found));
    EXPECT_EQ(Find(reader, L"E"), Ids{L"a"});
}

TEST_F(ComponentReader, NobodyWaitsForItAndItSeesWhatWasCommittedMeanwhile) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    TolmComponentReader reader(m_path);
    EXPECT_EQ(Find(reader, L"E"), Ids{L"a"});
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"b", L"E")}));
    EXPECT_EQ(Find(reader, L"E"), (Ids{L"a", L"b"}));
}

TEST_F(ComponentReader, AFileThatIsNotThereHoldsNothingUntilItComes) {
    TolmComponentReader reader(m_path);
    EXPECT_EQ(Find(reader, L"E"), Ids{});
    EXPECT_FALSE(vorn::FileInfo(m_path).Exists());
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    EXPECT_EQ(Find(reader, L"E"), Ids{L"a"});
}

TEST_F(ComponentReader, AFileThatTookThePlaceIsRead) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    const std::wstring other = m_folder.File(L"other.db");
    ASSERT_TRUE(ImportComponents(other, {MakeComponent(L"b", L"E")}));
    TolmComponentReader reader(m_path);
    EXPECT_EQ(Find(reader, L"E"), Ids{L"a"});
    std::filesystem::rename(vorn::FileSystem::ToNative(other), Native());
    EXPECT_EQ(Find(reader, L"E"), Ids{L"b"});
    std::filesystem::remove(Native());
    EXPECT_EQ(Find(reader, L"E"), Ids{});
}

TEST_F(ComponentReader, AFileThatIsNoneFailsEachTime) {
    std::ofstream(Native()) << std::string(5000, 'z');
    TolmComponentReader reader(m_path);
    Components found;
    const CodeOnly category(L"E");
    EXPECT_FALSE(reader.Read(&category, found));
    EXPECT_FALSE(reader.Read(&category, found));
    EXPECT_TRUE(found.empty());
}

TEST_F(ComponentReader, AClonedComponentLivesOnWithoutTheFirst) {
    ASSERT_TRUE(ImportComponents(m_path, {MakeComponent(L"a", L"E")}));
    Components found = tolmtest::ReadCategory(m_path, L"E");
    ASSERT_EQ(found.size(), 1U);
    const auto clone = found[0]->Clone();
    found.clear();
    EXPECT_EQ(clone->GetId(), L"a");
    EXPECT_EQ(clone->GetName(), MakeComponent(L"a", L"E").name);
}

} // namespace
