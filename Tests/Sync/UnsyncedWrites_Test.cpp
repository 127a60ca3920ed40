#include "Support/UnsyncedWrites.h"

#include "Support/TempFolder.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>

namespace tolmtest {
namespace {

namespace fs = std::filesystem;

/// What a power cut may leave of what was done to a folder.
class UnsyncedSteps : public testing::Test {
protected:
    void Create(const std::string& name) {
        std::ofstream(At(name)) << name;
        m_log.AddCreation(At(name));
    }
    void CreateFolder(const std::string& name) {
        fs::create_directory(At(name));
        m_log.AddCreation(At(name));
    }
    void Rename(const std::string& from, const std::string& to) {
        m_log.AddRename(At(from), At(to));
        fs::rename(At(from), At(to));
    }
    void Delete(const std::string& name) {
        m_log.AddDeletion(At(name));
        fs::remove(At(name));
    }
    void SyncAll() { m_log.SyncFolder(Root()); }

    std::string Names() const {
        std::set<std::string> names;
        for (const auto& file : fs::recursive_directory_iterator(Root()))
            names.insert(fs::path(file).lexically_relative(Root()).string());
        std::string text;
        for (const auto& name : names)
            text += (text.empty() ? "" : " ") + name;
        return text;
    }

    /// Names that are there after a cut behind these steps, for many seeds.
    std::set<std::string> Left(bool torn, const std::function<void()>& steps) {
        std::set<std::string> all;
        for (std::uint64_t seed = 0; seed < 64; ++seed) {
            fs::remove_all(Root());
            fs::create_directory(Root());
            m_log.Forget();
            steps();
            m_log.Lose(torn, seed);
            all.insert(Names());
        }
        return all;
    }

    std::string Root() const { return vorn::StringUtil::ToString(m_folder.Path()) + "/root"; }
    std::string At(const std::string& name) const { return Root() + "/" + name; }

    TempFolder m_folder;
    UnsyncedWrites m_log;
};

using Outcomes = std::set<std::string>;

TEST_F(UnsyncedSteps, OfDifferentNamesAreLostInAnyOrder) {
    const auto createTwo = [this] {
        Create("a");
        Create("b");
    };
    EXPECT_EQ(Left(true, createTwo), (Outcomes{"", "a", "b", "a b"}));
    EXPECT_EQ(Left(false, createTwo), (Outcomes{""}));
}

TEST_F(UnsyncedSteps, OfOneNameAreLostFromTheEnd) {
    const auto replace = [this] {
        Create("a");
        SyncAll();
        Create("b");
        Rename("b", "a");
        Delete("a");
    };
    EXPECT_EQ(Left(true, replace), (Outcomes{"", "a", "a b"}));
    EXPECT_EQ(Left(false, replace), (Outcomes{"a"}));
}

TEST_F(UnsyncedSteps, WithinALostFolderAreLostWithIt) {
    const auto fill = [this] {
        CreateFolder("f");
        Create("f/a");
        Create("f/b");
    };
    EXPECT_EQ(Left(true, fill), (Outcomes{"", "f", "f f/a", "f f/b", "f f/a f/b"}));
}

TEST_F(UnsyncedSteps, StandOnceTheirFolderIsSynced) {
    const auto sync = [this] {
        Create("a");
        SyncAll();
        Create("b");
    };
    EXPECT_EQ(Left(true, sync), (Outcomes{"a", "a b"}));
    EXPECT_EQ(Left(false, sync), (Outcomes{"a"}));
}

} // namespace
} // namespace tolmtest
