#include "MepDatabase/DatasetPaths.h"
#include "StoreSupport/StoreContent.h"
#include "StoreSupport/WorkFixture.h"
#include "Support/FaultyFiles.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>

/// Pull, edit, merge and upload on datasets in places that are not plain: what they say is what is on disk.
namespace tolmtest {
namespace {

namespace fs = std::filesystem;

const wstring kLongFolder = wstring(100, L'a') + L"/" + wstring(100, L'b') + L"/" + wstring(60, L'c');

struct Place {
    const char* name;
    wstring folder; ///< below the test's own
    wstring file;
};

const Place kGoodPlaces[] = {
    {"Plain", L"", L"set.db"},
    {"ChineseCharacters", L"项目 设置", L"数据集 甲.库"},
    {"Blanks", L" a  folder ", L" my  set .db"},
    {"Beyond260Characters", kLongFolder, L"set.db"},
    {"PointInTheFolder", L"my.project", L"set.db"},
    {"Quotes", L"it's \"quoted\"", L"se't;--.db"},
    {"QueryCharacters", L"a?b#c%20d&e", L"file:set.db"},
    {"FourByteCharacters", L"\U0001F600", L"\U0001F4D0.db"},
    {"OnlyAnExtension", L"", L".db"},
    {"TwoPoints", L"", L"set.v2.db"},
};

class DatasetPlaces : public WorkFixture {
protected:
    wstring PathOf(const Place& place) const {
        return folder.Path() + (place.folder.empty() ? L"" : L"/" + place.folder) + L"/" + place.file;
    }
    void MakeFolder(const Place& place) const { fs::create_directories(Native(folder.File(place.folder))); }
    static std::string Native(const wstring& at) { return vorn::FileSystem::ToNative(at); }

    bool RunAt(const wstring& at, const char* work) {
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(at);
        return FindDatasetWork(work).run({at, combinedPath, binaryFolder});
    }
    bool UploadAt(const wstring& at) {
        server.On("/api/UpLoad/", ScriptedAnswer::Data(R"({"version":4})"));
        return util.SendModifiedDataToCloud(false, nullptr, at, ddq, L"", false);
    }

    static std::string NamesAt(const wstring& at) {
        return SqlValue(at, "SELECT group_concat(Name) FROM (SELECT Name FROM MTS ORDER BY id)");
    }
    static std::string ChangesAt(const wstring& at) {
        const wstring status = tolm::DatasetPaths::Of(at).status;
        return fs::exists(Native(status)) ? SqlValue(status, "SELECT group_concat(id||':'||Status) FROM MTS") : "none";
    }

    /// Every path below the folder.
    std::set<std::string> Tree() const {
        std::set<std::string> paths;
        for (const auto& entry : fs::recursive_directory_iterator(Native(folder.Path())))
            paths.insert(entry.path().string());
        return paths;
    }
};

class GoodPlaces : public DatasetPlaces, public testing::WithParamInterface<Place> {
protected:
    const wstring at = PathOf(GetParam());
};

TEST_P(GoodPlaces, ServeEveryOperation) {
    FillCloud();
    EXPECT_TRUE(RunAt(at, "pull"));
    EXPECT_EQ(NamesAt(at), "copper,steel");
    EXPECT_TRUE(RunAt(at, "create"));
    EXPECT_EQ(NamesAt(at), "copper,steel,brass");
    EXPECT_EQ(ChangesAt(at), "m9:1");
    CloudMoves();
    EXPECT_TRUE(RunAt(at, "merge"));
    EXPECT_EQ(NamesAt(at), "bronze,zinc,brass");
    EXPECT_EQ(ChangesAt(at), "m9:1");
    EXPECT_TRUE(UploadAt(at));
    EXPECT_EQ(ChangesAt(at), "none");
    EXPECT_TRUE(RunAt(at, "edit"));
    EXPECT_EQ(ChangesAt(at), "m1:2");
    EXPECT_TRUE(RunAt(at, "delete"));
    EXPECT_EQ(NamesAt(at), "zinc,brass");
    for (const std::string& file : Tree())
        EXPECT_EQ(file.find("_temp"), std::string::npos) << file;
}

INSTANTIATE_TEST_SUITE_P(Each, GoodPlaces, testing::ValuesIn(kGoodPlaces),
                         [](const auto& place) { return place.param.name; });

class BadPlaces : public DatasetPlaces {
protected:
    /// A local change that fails may say so by its result alone.
    static void ExpectTold(const std::string& work) {
        const bool isTold = !TakeDebugWarnings().empty() || !TakeNotifications().empty();
        EXPECT_TRUE(isTold || (work != "pull" && work != "merge")) << work;
    }

    /// Expects that each operation says that it failed, and that nothing came into being.
    void ExpectNothing(const wstring& at) {
        const auto before = Tree();
        FillCloud();
        for (const char* work : {"pull", "create", "edit", "delete", "merge", "stamp"}) {
            TakeNotifications();
            EXPECT_FALSE(RunAt(at, work)) << work;
            ExpectTold(work);
            EXPECT_EQ(Tree(), before) << work;
        }
    }
};

TEST_F(BadPlaces, APathThatIsTooLongServesNobody) {
    const Place place{"", kLongFolder + L"/" + kLongFolder, L"set.db"};
    MakeFolder(place);
    ExpectNothing(PathOf(place));
}

TEST_F(BadPlaces, ANameThatIsTooLongServesNobody) {
    ExpectNothing(folder.File(wstring(300, L'n') + L".db"));
}

TEST_F(BadPlaces, AFolderIsNoDataset) {
    fs::create_directory(Native(folder.File(L"set.db")));
    ExpectNothing(folder.File(L"set.db"));
}

TEST_F(BadPlaces, AFileIsNoFolder) {
    const wstring file = folder.File(L"file");
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(file, "x", 1, false));
    ExpectNothing(file + L"/set.db");
}

TEST_F(BadPlaces, ANameWithAZeroServesNobody) {
    ExpectNothing(folder.File(wstring(L"a\0b.db", 6)));
}

TEST_F(BadPlaces, AMissingFolderIsMadeByAPullAlone) {
    const wstring at = folder.File(L"none/set.db");
    FillCloud();
    for (const char* work : {"create", "edit", "delete", "merge", "stamp"}) {
        EXPECT_FALSE(RunAt(at, work)) << work;
        ExpectTold(work);
        EXPECT_FALSE(Exists(folder.File(L"none"))) << work;
    }
    EXPECT_TRUE(UploadAt(at)); // there is nothing to send
    EXPECT_TRUE(RunAt(at, "pull"));
    EXPECT_EQ(NamesAt(at), "copper,steel");
}

TEST_F(BadPlaces, APathWithoutAPointHasItsChangesUntracked) {
    const wstring at = folder.File(L"set");
    ASSERT_EQ(at.find(L'.'), wstring::npos);
    FillCloud();
    EXPECT_TRUE(RunAt(at, "pull"));
    EXPECT_TRUE(RunAt(at, "create"));
    EXPECT_EQ(NamesAt(at), "copper,steel,brass");
    EXPECT_EQ(Tree(), (std::set<std::string>{Native(at)}));
    TakeDebugWarnings();
    CloudMoves();
    EXPECT_FALSE(RunAt(at, "merge"));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"ducplicateFilesSucc为false"}));
    EXPECT_EQ(NamesAt(at), "copper,steel,brass");
    EXPECT_TRUE(UploadAt(at)); // nothing is noted
    EXPECT_EQ(NamesAt(at), "copper,steel,brass");
}

TEST_F(BadPlaces, APointInTheFolderAloneLeavesTheFolderBesideAlone) {
    const Place place{"", L"my.project", L"set"};
    const wstring at = PathOf(place);
    FillCloud();
    EXPECT_TRUE(RunAt(at, "pull"));
    EXPECT_TRUE(RunAt(at, "create")); // untracked, as without any point
    EXPECT_EQ(NamesAt(at), "copper,steel,brass");
    EXPECT_EQ(Tree(), (std::set<std::string>{Native(folder.File(L"my.project")), Native(at)}));
}

/// Root may write anywhere: that a folder or file may not be written is the answer of the layer beneath the store.
class UnwritablePlaces : public BadPlaces {
protected:
    UnwritablePlaces() {
        Load();
        EXPECT_TRUE(Run("create"));
        before = StoreFacts(path);
    }

    void ExpectUnchanged(const std::string& work) const {
        EXPECT_EQ(StoreFacts(path), before) << work;
        EXPECT_EQ(ChangesAt(path), "m9:1") << work;
    }

    /// Expects that each operation says that it failed, and that everything stays as it is; it can be read.
    void ExpectNothingDone(const std::function<void()>& protect) {
        CloudMoves();
        for (const char* work : {"pull", "edit", "create", "delete", "merge", "stamp"}) {
            protect();
            TakeNotifications();
            EXPECT_FALSE(Run(work)) << work;
            ExpectTold(work);
            EXPECT_TRUE(Run("read")) << work;
            files.Rest();
            ExpectUnchanged(work);
        }
    }

    std::size_t UploadsAsked() const {
        return static_cast<std::size_t>(std::ranges::count(server.Paths(), "/api/UpLoad/P1"));
    }

    Facts before;
    FaultyFiles files{folder.Path()};
};

TEST_F(UnwritablePlaces, AReadOnlyFolderKeepsTheDatasetAsItIs) {
    ExpectNothingDone([&] { files.RefuseChanges(); });
}

TEST_F(UnwritablePlaces, FilesThatOpenForReadingOnlyKeepTheDatasetAsItIs) {
    ExpectNothingDone([&] { files.OpenForReadingOnly("set"); });
}

/// The status store does not open for writing then: the change stands, and is not noted.
TEST_F(UnwritablePlaces, AnEditBesideAStatusStoreForReadingOnlyGoesUnnoted) {
    files.OpenForReadingOnly("set_Status");
    EXPECT_TRUE(Run("edit"));
    files.Rest();
    EXPECT_EQ(NamesAt(path), "brass,steel,brass");
    EXPECT_EQ(ChangesAt(path), "m9:1");
}

/// The service has the changes then; that they could not be marked as sent is told.
TEST_F(UnwritablePlaces, AnUploadFromAReadOnlyFolderIsNoSuccess) {
    files.RefuseChanges();
    EXPECT_FALSE(UploadAt(path));
    files.Rest();
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"RemoveFile 失败"}));
    EXPECT_EQ(UploadsAsked(), 1U);
    ExpectUnchanged("upload");
}

/// What could not be marked as sent is not sent.
TEST_F(UnwritablePlaces, AnUploadOfFilesForReadingOnlySendsNothing) {
    files.OpenForReadingOnly("set");
    EXPECT_FALSE(UploadAt(path));
    files.Rest();
    EXPECT_EQ(UploadsAsked(), 0U);
    ExpectUnchanged("upload");
}

TEST_F(UnwritablePlaces, AnUploadOfFilesThatCannotBeReadSendsNothing) {
    files.FailAt(1, FaultyFiles::Lasts::ForGood);
    EXPECT_FALSE(UploadAt(path));
    files.Rest();
    EXPECT_EQ(UploadsAsked(), 0U);
    ExpectUnchanged("upload");
}

} // namespace
} // namespace tolmtest
