#include "Vorn/Files.h"

#include "Support/TempFolder.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using vorn::FileInfo;
using vorn::FileSystem;
using vorn::FileUtility;

class Files : public testing::Test {
protected:
    std::wstring File(const std::wstring& name) const { return m_folder.File(name); }
    std::string Native(const std::wstring& name) const { return vorn::StringUtil::ToString(File(name)); }

    static bool Save(const std::wstring& path, const std::string& text, bool append = false) {
        return FileUtility::SaveInBinaryMode(path, text.data(), text.size(), append);
    }
    static std::string Load(const std::wstring& path) {
        std::ifstream in(vorn::StringUtil::ToString(path), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::size_t EntryCount() const {
        const fs::path folder = vorn::StringUtil::ToString(m_folder.Path());
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
    }

    tolmtest::TempFolder m_folder;
};

// Paths that can name no file: over-long, cut by a zero, empty.
std::vector<std::wstring> ImpossiblePaths(const std::wstring& folder) {
    return {L"", folder + L"/" + std::wstring(300, L'x'), folder + L"/" + std::wstring(5000, L'y'),
            folder + L"/cut\0here"s, L"\0"s};
}

TEST_F(Files, InfoTellsFilesFoldersAndNothingApart) {
    ASSERT_TRUE(Save(File(L"材料.dat"), "12345"));
    const FileInfo file(File(L"材料.dat"));
    EXPECT_TRUE(file.Exists() && file.IsRegularFile() && !file.IsFolder());
    EXPECT_EQ(file.Size(), 5U);
    const FileInfo folder(m_folder.Path());
    EXPECT_TRUE(folder.Exists() && folder.IsFolder() && !folder.IsRegularFile());
    EXPECT_EQ(folder.Size(), 0U);
    const FileInfo none(File(L"none"));
    EXPECT_FALSE(none.Exists() || none.IsFolder() || none.IsRegularFile());
}

TEST_F(Files, InfoKeepsItsAnswer) {
    const FileInfo before(File(L"later"));
    ASSERT_TRUE(Save(File(L"later"), "x"));
    EXPECT_FALSE(before.Exists());
}

TEST_F(Files, ImpossiblePathsNeverExistAndAreNeverMade) {
    ASSERT_TRUE(Save(File(L"cut"), "stays"));
    for (const std::wstring& path : ImpossiblePaths(m_folder.Path())) {
        EXPECT_FALSE(FileInfo(path).Exists());
        EXPECT_FALSE(Save(path, "x"));
        EXPECT_FALSE(Save(path, "x", true));
        EXPECT_FALSE(FileSystem::CreateDirectories(path));
        EXPECT_FALSE(FileUtility::Copy(path, File(L"copy")));
        EXPECT_FALSE(FileUtility::Copy(File(L"cut"), path));
        EXPECT_TRUE(FileSystem::RemoveFile(path));
        EXPECT_TRUE(FileUtility::RemoveAll(path));
    }
    EXPECT_EQ(Load(File(L"cut")), "stays");
    EXPECT_EQ(EntryCount(), 1U);
}

TEST_F(Files, BothSeparatorsAreTaken) {
    EXPECT_EQ(FileSystem::ToNative(L"a\\b/c\\材"), "a/b/c/材");
    ASSERT_TRUE(FileSystem::CreateDirectories(m_folder.Path() + L"\\x\\y/z"));
    EXPECT_TRUE(FileInfo(m_folder.Path() + L"/x\\y\\z").IsFolder());
    ASSERT_TRUE(Save(m_folder.Path() + L"\\x\\f", "1"));
    EXPECT_TRUE(fs::exists(Native(L"x/f")));
}

TEST_F(Files, FolderOfIsWhatStandsBeforeTheLastSeparator) {
    EXPECT_EQ(FileSystem::FolderOf(L"a/b\\c"), L"a/b");
    EXPECT_EQ(FileSystem::FolderOf(L"a\\b/c"), L"a\\b");
    EXPECT_EQ(FileSystem::FolderOf(L"a/b/"), L"a/b");
    EXPECT_EQ(FileSystem::FolderOf(L"/c"), L"");
    EXPECT_EQ(FileSystem::FolderOf(L"c"), L"");
}

TEST_F(Files, FoldersAreMadeWithThoseAboveAndOnlyOnce) {
    EXPECT_TRUE(FileSystem::CreateDirectories(File(L"a/b/c/")));
    EXPECT_TRUE(FileSystem::CreateDirectories(File(L"a/b/c")));
    EXPECT_TRUE(FileInfo(File(L"a/b/c")).IsFolder());
    ASSERT_TRUE(Save(File(L"file"), "x"));
    EXPECT_FALSE(FileSystem::CreateDirectories(File(L"file")));
    EXPECT_FALSE(FileSystem::CreateDirectories(File(L"file/below")));
}

TEST_F(Files, RemoveFileRemovesAFileAndIsContentWithNone) {
    ASSERT_TRUE(Save(File(L"f"), "x"));
    EXPECT_TRUE(FileSystem::RemoveFile(File(L"f")));
    EXPECT_FALSE(FileInfo(File(L"f")).Exists());
    EXPECT_TRUE(FileSystem::RemoveFile(File(L"f")));
}

TEST_F(Files, RemoveFileLeavesAFolder) {
    ASSERT_TRUE(FileSystem::CreateDirectories(File(L"folder")));
    EXPECT_FALSE(FileSystem::RemoveFile(File(L"folder")));
    EXPECT_TRUE(FileInfo(File(L"folder")).IsFolder());
}

TEST_F(Files, RemoveFileTakesALinkAndNotItsTarget) {
    ASSERT_TRUE(Save(File(L"target"), "x"));
    fs::create_symlink(Native(L"target"), Native(L"link"));
    fs::create_symlink(Native(L"nowhere"), Native(L"dangling"));
    EXPECT_TRUE(FileSystem::RemoveFile(File(L"link")));
    EXPECT_TRUE(FileSystem::RemoveFile(File(L"dangling")));
    EXPECT_FALSE(fs::is_symlink(Native(L"dangling")));
    EXPECT_EQ(Load(File(L"target")), "x");
}

TEST_F(Files, RemoveAllTakesFilesAndFoldersWithAllInThem) {
    ASSERT_TRUE(FileSystem::CreateDirectories(File(L"a/b")));
    ASSERT_TRUE(Save(File(L"a/b/f"), "x"));
    EXPECT_TRUE(FileUtility::RemoveAll(File(L"a")));
    EXPECT_FALSE(FileInfo(File(L"a")).Exists());
    ASSERT_TRUE(Save(File(L"f"), "x"));
    EXPECT_TRUE(FileUtility::RemoveAll(File(L"f")));
    EXPECT_TRUE(FileUtility::RemoveAll(File(L"f")));
    EXPECT_EQ(EntryCount(), 0U);
}

TEST_F(Files, CopyTakesThePlaceOfWhatStandsThere) {
    ASSERT_TRUE(Save(File(L"source"), "new content\0with zero"s));
    ASSERT_TRUE(Save(File(L"target"), "old"));
    EXPECT_TRUE(FileUtility::Copy(File(L"source"), File(L"target")));
    EXPECT_EQ(Load(File(L"target")), "new content\0with zero"s);
    EXPECT_EQ(Load(File(L"source")), "new content\0with zero"s);
    EXPECT_EQ(EntryCount(), 2U);
}

TEST_F(Files, CopyFailsWithoutASourceAndLeavesTheTarget) {
    ASSERT_TRUE(Save(File(L"target"), "old"));
    EXPECT_FALSE(FileUtility::Copy(File(L"none"), File(L"target")));
    EXPECT_FALSE(FileUtility::Copy(m_folder.Path(), File(L"target")));
    EXPECT_FALSE(FileUtility::Copy(File(L"target"), m_folder.Path()));
    EXPECT_FALSE(FileUtility::Copy(File(L"target"), File(L"no/folder")));
    EXPECT_EQ(Load(File(L"target")), "old");
    EXPECT_EQ(EntryCount(), 1U);
}

TEST_F(Files, SaveReplacesTheWholeContent) {
    ASSERT_TRUE(Save(File(L"f"), "a longer text"));
    ASSERT_TRUE(Save(File(L"f"), "short"));
    EXPECT_EQ(Load(File(L"f")), "short");
    EXPECT_EQ(EntryCount(), 1U);
}

TEST_F(Files, ManyFilesOfAFolderAreSavedWholeAndItsEntriesAfterwards) {
    const auto save = [&](const std::wstring& name, const std::string& text) {
        return FileUtility::SaveOneOfMany(File(name), text.data(), text.size());
    };
    ASSERT_TRUE(save(L"f", "a longer text"));
    ASSERT_TRUE(save(L"f", "short"));
    ASSERT_TRUE(save(L"g", ""));
    FileUtility::FlushFolder(m_folder.Path());
    EXPECT_EQ(Load(File(L"f")), "short");
    EXPECT_TRUE(FileInfo(File(L"g")).IsRegularFile());
    EXPECT_EQ(EntryCount(), 2U);
    EXPECT_FALSE(save(L"no/f", "x"));
    EXPECT_FALSE(FileUtility::SaveOneOfMany(File(L"h"), nullptr, 1));
    FileUtility::FlushFolder(File(L"no"));
    EXPECT_EQ(EntryCount(), 2U);
}

TEST_F(Files, SaveOfNothingMakesAnEmptyFile) {
    EXPECT_TRUE(FileUtility::SaveInBinaryMode(File(L"f"), nullptr, 0, false));
    EXPECT_TRUE(FileInfo(File(L"f")).IsRegularFile());
    EXPECT_EQ(FileInfo(File(L"f")).Size(), 0U);
    EXPECT_FALSE(FileUtility::SaveInBinaryMode(File(L"g"), nullptr, 1, false));
    EXPECT_FALSE(FileInfo(File(L"g")).Exists());
}

TEST_F(Files, AppendAddsAtTheEndAndMakesTheFile) {
    EXPECT_TRUE(Save(File(L"f"), "one", true));
    EXPECT_TRUE(Save(File(L"f"), " two", true));
    EXPECT_EQ(Load(File(L"f")), "one two");
}

TEST_F(Files, SaveIntoAMissingFolderFails) {
    EXPECT_FALSE(Save(File(L"no/f"), "x"));
    EXPECT_FALSE(Save(File(L"no/f"), "x", true));
    EXPECT_EQ(EntryCount(), 0U);
}

TEST_F(Files, SaveOverAFolderOrADeviceFailsAndLeavesNothingBehind) {
    ASSERT_TRUE(FileSystem::CreateDirectories(File(L"folder")));
    EXPECT_FALSE(Save(File(L"folder"), "x"));
    EXPECT_FALSE(Save(File(L"folder"), "x", true));
    EXPECT_FALSE(Save(L"/dev/full", "x"));
    EXPECT_FALSE(Save(L"/dev/full", "x", true));
    EXPECT_EQ(EntryCount(), 1U);
}

TEST_F(Files, SaveKeepsTheModeOfTheFileAndFollowsALink) {
    ASSERT_TRUE(Save(File(L"target"), "old"));
    fs::permissions(Native(L"target"), fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("target", Native(L"link"));
    ASSERT_TRUE(Save(File(L"link"), "new"));
    EXPECT_TRUE(fs::is_symlink(Native(L"link")));
    EXPECT_EQ(Load(File(L"target")), "new");
    EXPECT_EQ(fs::status(Native(L"target")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Files, ALongNameThatFitsCanBeSaved) {
    const std::wstring name(255, L'n');
    EXPECT_TRUE(Save(File(name), "x"));
    EXPECT_TRUE(Save(File(name), "y"));
    EXPECT_EQ(Load(File(name)), "y");
}

TEST_F(Files, AReaderOfTheOldContentKeepsIt) {
    ASSERT_TRUE(Save(File(L"f"), "old"));
    std::ifstream reader(Native(L"f"), std::ios::binary);
    ASSERT_TRUE(Save(File(L"f"), "new"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "old");
    EXPECT_EQ(Load(File(L"f")), "new");
}

} // namespace
