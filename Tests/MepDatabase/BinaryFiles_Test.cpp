#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/BinaryFiles.h"
#include "Qbase/Qbase.h"
#include "Support/DebugWarnings.h"
#include "Support/FaultyFiles.h"
#include "Support/TempFolder.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace tolmtest {
namespace {

namespace fs = std::filesystem;
using tolm::wstring;

TEST(PlainFileName, IsAnyNameOfAFile) {
    for (const wchar_t* name : {L"a", L"a.rfa", L".hidden", L"风管 弯头.rfa", L"a..b", L"con1.txt", L"COM10", L"NULL"})
        EXPECT_TRUE(tolm::IsPlainFileName(name)) << vorn::StringUtil::ToString(name);
    EXPECT_TRUE(tolm::IsPlainFileName(wstring(255, L'x')));
}

TEST(PlainFileName, IsNoPath) {
    for (const wchar_t* name :
         {L"", L".", L"..", L"../x", L"..\\x", L"a/b", L"a\\b", L"/etc/passwd", L"\\\\host\\share", L"C:\\x", L"C:x"})
        EXPECT_FALSE(tolm::IsPlainFileName(name)) << vorn::StringUtil::ToString(name);
}

TEST(PlainFileName, HasNoCharacterOfMeaningToAFileSystem) {
    for (const wchar_t* name : {L"a:stream", L"a*", L"a?", L"a\"b", L"<a", L"a>", L"a|b", L"a\nb", L"\x1Fx", L"a\x7F"})
        EXPECT_FALSE(tolm::IsPlainFileName(name)) << vorn::StringUtil::ToString(name);
    EXPECT_FALSE(tolm::IsPlainFileName(wstring(L"a\0b", 3)));
}

TEST(PlainFileName, HasNoCharacterThatIsNotSeenButChangesHowItShows) {
    for (const wchar_t* name : {L"a\u0085b", L"a\u009F", L"photo\u202Egpj.exe", L"\u202Dx", L"a\u200Eb", L"a\u200Fb",
                                L"a\u061Cb", L"a\u2066b", L"a\u2069b", L"a\u2028b", L"a\u2029b", L"\uFEFFset.db"})
        EXPECT_FALSE(tolm::IsPlainFileName(name)) << vorn::StringUtil::ToString(name);
    for (const wchar_t* name : {L"\u05E7\u05D5\u05D1\u05E5.txt", L"\u0645\u0644\u0641", L"a\u00A0b", L"a\u200Db"})
        EXPECT_TRUE(tolm::IsPlainFileName(name)) << vorn::StringUtil::ToString(name);
}

TEST(PlainFileName, IsNoDeviceWhateverItsExtensionOrCase) {
    for (const wchar_t* name : {L"CON", L"con", L"Nul.txt", L"AUX.tar.gz", L"com1", L"LPT9.x", L"PRN ", L"CON .txt",
                                L"COM\u00B9", L"lpt\u00B3.txt", L"conin$", L"COM0"})
        EXPECT_FALSE(tolm::IsPlainFileName(name)) << vorn::StringUtil::ToString(name);
}

TEST(PlainFileName, EndsInNoPointOrBlank) {
    for (const wchar_t* name : {L"a.", L"a ", L" a", L"set.db.", L"..."})
        EXPECT_FALSE(tolm::IsPlainFileName(name)) << vorn::StringUtil::ToString(name);
}

TEST(PlainFileName, IsNotTooLong) {
    EXPECT_FALSE(tolm::IsPlainFileName(wstring(256, L'x')));
    EXPECT_FALSE(tolm::IsPlainFileName(wstring(300, L'x')));
    EXPECT_TRUE(tolm::IsPlainFileName(wstring(85, L'管')));
    EXPECT_FALSE(tolm::IsPlainFileName(wstring(86, L'管')));
}

/// The folder of files is the folder of the dataset: the worst place for it.
class BinaryFiles : public testing::Test {
protected:
    void SetUp() override {
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(dataset);
        fs::copy_file(vorn::FileSystem::ToNative(definition), Native(L"classes.ddq"));
        tolm::DataSetFilePath::TOLMDDQFilePath = folder.File(L"classes.ddq");
    }
    void TearDown() override {
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
        tolm::DataSetFilePath::TOLMDDQFilePath = definition;
    }

    tolm::BinaryFileFolder Folder() const { return {folder.Path(), folder.File(L"products.db"), synchronised}; }
    std::string Native(const wstring& name) const { return vorn::FileSystem::ToNative(folder.File(name)); }
    void Put(const wstring& name, const std::string& content) const { std::ofstream(Native(name)) << content; }
    std::string Content(const wstring& name) const {
        std::ifstream file(Native(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    void ExpectRefused(const wstring& name) const {
        EXPECT_THROW(Folder().Write(name, "x"), std::runtime_error) << vorn::StringUtil::ToString(name);
        EXPECT_THROW(Folder().Remove(name), std::runtime_error) << vorn::StringUtil::ToString(name);
    }

    TempFolder folder;
    const wstring dataset = folder.File(L"set.db");
    wstring synchronised; ///< the dataset that is synchronised, where it is another one
    const wstring definition = tolm::DataSetFilePath::TOLMDDQFilePath;
};

TEST_F(BinaryFiles, AFileIsWrittenReplacedAndRemoved) {
    Folder().Write(L"风管.rfa", std::string("a\0b", 3));
    EXPECT_EQ(Content(L"风管.rfa"), std::string("a\0b", 3));
    Folder().Write(L"风管.rfa", "");
    EXPECT_TRUE(fs::exists(Native(L"风管.rfa")));
    EXPECT_EQ(Content(L"风管.rfa"), "");
    Folder().Remove(L"风管.rfa");
    EXPECT_FALSE(fs::exists(Native(L"风管.rfa")));
    EXPECT_NO_THROW(Folder().Remove(L"风管.rfa"));
}

TEST_F(BinaryFiles, TheFolderComesIntoBeing) {
    tolm::BinaryFileFolder deep(folder.File(L"a\\b"), L"", L"");
    deep.Write(L"f", "x");
    EXPECT_EQ(Content(L"a/b/f"), "x");
}

TEST_F(BinaryFiles, WithoutAFolderNothingIsWritten) {
    tolm::BinaryFileFolder none(L"", L"", L"");
    EXPECT_THROW(none.Write(L"f", "x"), std::runtime_error);
    EXPECT_THROW(none.Remove(L"f"), std::runtime_error);
}

TEST_F(BinaryFiles, ANameThatIsNotPlainIsRefused) {
    for (const wchar_t* name : {L"", L".", L"..", L"../x", L"C:\\x", L"CON", L"a/b"})
        ExpectRefused(name);
    ExpectRefused(wstring(300, L'x'));
    EXPECT_FALSE(fs::exists(Native(L"../x")));
}

TEST_F(BinaryFiles, ARefusalTellsTheNameAndHidesWhatDeceives) {
    const auto told = [&](const wstring& name) {
        try {
            Folder().Write(name, "x");
        } catch (const std::runtime_error& error) {
            const std::string text = error.what();
            return text.substr(text.find(": ") + 2);
        }
        return std::string("nothing");
    };
    EXPECT_EQ(told(L"set.db"), "set.db");
    EXPECT_EQ(told(L"..\\风管\u202Egpj"), "..?风管?gpj");
    EXPECT_EQ(told(wstring(300, L'x')), std::string(80, 'x'));
}

TEST_F(BinaryFiles, TheHostsFilesAreRefused) {
    for (const wchar_t* name :
         {L"set.db", L"set_Status.db", L"set_temp.db", L"set_Status_temp.db", L"products.db", L"classes.ddq"}) {
        for (const wchar_t* suffix : {L"", L"-journal", L"-wal", L"-shm", L"-mj0C1B86955"})
            ExpectRefused(wstring(name) + suffix);
        Put(name, "precious");
        ExpectRefused(name);
        EXPECT_EQ(Content(name), "precious");
    }
}

TEST_F(BinaryFiles, TheHostsFilesAreRefusedInAnyCase) {
    ExpectRefused(L"SET.DB");
    ExpectRefused(L"Products.db-JOURNAL");
    ExpectRefused(L"Set.db-MJ0c1b86955");
}

TEST_F(BinaryFiles, ASuperJournalOfAHostsFileIsRefusedHoweverItGoesOn) {
    for (const wchar_t* end : {L"", L"0", L"0C1B86955", L"0C1B86955-journal", L"-mj0C1B86955", L".db"})
        ExpectRefused(wstring(L"set.db-mj") + end);
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(folder.File(L"a-mj.db"));
    ExpectRefused(L"a-mj.db-mj0C1B86955");
    for (const wchar_t* name : {L"-mj0C1B86955", L"set.d-mj0C1B86955", L"a-mj", L"duct-mj.rfa"})
        EXPECT_NO_THROW(Folder().Write(name, "x")) << vorn::StringUtil::ToString(name);
}

TEST_F(BinaryFiles, TheFileThatBindsTwoStoresToOneCommitIsNamedSo) {
    FaultyFiles files(folder.Path());
    std::vector<std::string> names;
    files.BeforeDeletions([&](const std::string& path) { names.push_back(fs::path(path).filename().string()); });
    CQbase data;
    CQbase status;
    ASSERT_TRUE(data.openDatabase(definition, folder.File(L"set.db"), true) && data.lockForUpdate());
    ASSERT_TRUE(status.openBeside(data, definition, folder.File(L"set_Status.db"), true));
    for (CQbase* store : {&data, &status})
        ASSERT_TRUE(store->createRec("SYS", L"a") && store->saveRec());
    names.clear();
    ASSERT_TRUE(status.closeDatabase() && data.closeDatabase());
    const auto bound = std::find_if(names.begin(), names.end(), [](const std::string& name) {
        return name.starts_with("set.db-mj") && name.size() == std::string_view("set.db-mj0C1B86955").size();
    });
    ASSERT_NE(bound, names.end()) << testing::PrintToString(names);
    ExpectRefused(vorn::StringUtil::ToWString(*bound));
}

TEST_F(BinaryFiles, TheHostsFilesAreRefusedWhereverTheirPathsLead) {
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(folder.Path() + L"/./sub/..\\set.db");
    fs::create_directory(Native(L"sub"));
    ExpectRefused(L"set.db");
    fs::create_directory_symlink(Native(L"."), Native(L"alias"));
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(folder.File(L"alias/other.db"));
    ExpectRefused(L"other.db");
}

TEST_F(BinaryFiles, AnotherNameOfTheDatasetIsRefused) {
    Put(L"set.db", "precious");
    fs::create_hard_link(Native(L"set.db"), Native(L"second"));
    ExpectRefused(L"second");
    EXPECT_EQ(Content(L"set.db"), "precious");
}

TEST_F(BinaryFiles, ANameLikeTheDatasetsInAnotherFolderIsAllowed) {
    tolm::BinaryFileFolder other(folder.File(L"files"), folder.File(L"products.db"), synchronised);
    EXPECT_NO_THROW(other.Write(L"set.db", "x"));
    EXPECT_EQ(Content(L"files/set.db"), "x");
}

TEST_F(BinaryFiles, OnlyRegularFilesAreOverwrittenOrRemoved) {
    fs::create_directory(Native(L"sub"));
    ExpectRefused(L"sub");
    EXPECT_TRUE(fs::is_directory(Native(L"sub")));
    Put(L"target", "precious");
    fs::create_symlink(Native(L"target"), Native(L"link"));
    ExpectRefused(L"link");
    EXPECT_TRUE(fs::is_symlink(Native(L"link")));
    EXPECT_EQ(Content(L"target"), "precious");
    fs::create_symlink(Native(L"nowhere"), Native(L"dangling"));
    ExpectRefused(L"dangling");
    EXPECT_FALSE(fs::exists(Native(L"nowhere")));
}

TEST_F(BinaryFiles, AFolderThatIsAFileCannotBeWrittenTo) {
    Put(L"file", "x");
    tolm::BinaryFileFolder wrong(folder.File(L"file"), L"", L"");
    EXPECT_THROW(wrong.Write(L"f", "x"), std::runtime_error);
}

TEST_F(BinaryFiles, EveryStoreIsRefusedAlsoWhileItIsInUse) {
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
    CQbase store;
    ASSERT_TRUE(store.openDatabase(definition, folder.File(L"other.db"), true));
    ExpectRefused(L"other.db");
    ASSERT_TRUE(store.lockForUpdate());
    ASSERT_TRUE(store.createRec("SYS", L"a"));
    ASSERT_TRUE(store.saveRec());
    ExpectRefused(L"other.db");
    ASSERT_TRUE(store.closeDatabase());
    ExpectRefused(L"other.db");
}

TEST_F(BinaryFiles, WhatStandsBesideAnyStoreIsRefused) {
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
    const wchar_t* const names[] = {L"other_Status.db", L"other_temp.db", L"other_Status_temp.db"};
    const wchar_t* const suffixes[] = {L"-journal", L"-wal", L"-shm", L"-mj0C1B86955"};
    for (const wchar_t* name : names)
        EXPECT_NO_THROW(Folder().Write(name, "x"));
    for (const wchar_t* suffix : suffixes)
        EXPECT_NO_THROW(Folder().Write(wstring(L"other.db") + suffix, "x"));
    fs::remove(Native(L"other.db-journal"));
    CQbase store;
    ASSERT_TRUE(store.openDatabase(definition, folder.File(L"other.db"), true));
    for (const wchar_t* name : names) {
        ExpectRefused(name);
        for (const wchar_t* suffix : suffixes) {
            ExpectRefused(wstring(L"other.db") + suffix);
            ExpectRefused(wstring(name) + suffix);
        }
    }
    EXPECT_NO_THROW(Folder().Write(L"another_Status.db", "x"));
    EXPECT_NO_THROW(Folder().Write(L"_Status.db", "x"));
    EXPECT_NO_THROW(Folder().Write(L"-journal", "x"));
}

TEST_F(BinaryFiles, AFileThatIsNoStoreIsTheClouds) {
    Put(L"f", "SQLite format 3");
    EXPECT_NO_THROW(Folder().Write(L"f", ""));
    EXPECT_NO_THROW(Folder().Write(L"f", "x"));
    EXPECT_EQ(Content(L"f"), "x");
}

TEST_F(BinaryFiles, AFileOfWhichNobodyCanTellWhetherItIsAStoreIsRefused) {
    Put(L"f", "precious");
    tolm::DataSetFilePath::TOLMDDQFilePath = folder.File(L"none.ddq");
    ExpectRefused(L"f");
    tolm::DataSetFilePath::TOLMDDQFilePath = folder.File(L"classes.ddq");
    EXPECT_EQ(Content(L"f"), "precious");
    EXPECT_NO_THROW(Folder().Remove(L"f"));
}

TEST_F(BinaryFiles, AStoreThatTheDiskDoesNotGiveIsRefused) {
    FaultyFiles files(folder.Path());
    {
        CQbase store;
        ASSERT_TRUE(store.openDatabase(definition, folder.File(L"other.db"), true));
    }
    const std::string before = Content(L"other.db");
    files.FailAt(1, FaultyFiles::Lasts::ForGood);
    ExpectRefused(L"other.db");
    EXPECT_TRUE(files.HasFailed());
    files.Rest();
    EXPECT_EQ(Content(L"other.db"), before);
}

TEST_F(BinaryFiles, TheDatasetThatIsSynchronisedIsRefusedBesideTheHostsOpenOne) {
    synchronised = folder.File(L"other.db");
    for (const wchar_t* name : {L"other.db", L"other_Status.db", L"other_temp.db", L"other_Status_temp.db"})
        for (const wchar_t* suffix : {L"", L"-journal", L"-wal", L"-shm", L"-mj0C1B86955"})
            ExpectRefused(wstring(name) + suffix);
    ExpectRefused(L"OTHER.DB");
    ExpectRefused(L"set.db");
    EXPECT_NO_THROW(Folder().Write(L"third.db", "x"));
}

TEST_F(BinaryFiles, WithoutAnOpenDatasetTheRestIsStillRefused) {
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
    ExpectRefused(L"products.db");
    EXPECT_NO_THROW(Folder().Write(L"set.db", "x"));
}

} // namespace
} // namespace tolmtest
