#include "MepDatabase/StoreFrame.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/MergeFixture.h"

#include <filesystem>
#include <fstream>

namespace tolmtest {
namespace {

using Percentages = std::vector<double>;
using Lines = std::vector<std::string>;

const Percentages kAllTables{1, 5, 8, 11, 14, 17, 20, 23, 26, 29, 32, 35, 38, 41, 44, 47, 50, 53, 56, 59, 62, 65, 80};

class Merge : public MergeFixture {
protected:
    void Write(const wstring& at, const std::string& text) const {
        std::ofstream(vorn::FileSystem::ToNative(at), std::ios::binary) << text;
    }
    void ExpectNoCopies() const { EXPECT_FALSE(Exists(tempPath) || Exists(tempStatusPath)); }
};

// --- what comes out ------------------------------------------------------------------------------------------------

TEST_F(Merge, CloudAndLocalChangesOfDifferentRecordsBothStand) {
    Synced({L"a", L"b"});
    Edits(L"a", L"mine");
    CloudEdits(L"b", L"theirs");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(Materials(), (Lines{"a mine", "b theirs"}));
    EXPECT_EQ(StatusRecords(), Lines{"MTS a 2 1 2"});
    EXPECT_TRUE(pending);
    ExpectNoCopies();
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(Merge, TheCloudWinsAConflictAndWithTheLastLocalChangeTheStatusStoreGoes) {
    Synced({L"a", L"b"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(Materials(), (Lines{"b b", "a theirs"}));
    EXPECT_FALSE(Exists(statusPath));
    EXPECT_FALSE(pending);
    ExpectNoCopies();
}

TEST_F(Merge, ARecordThatWasRemovedHereAndChangedThereIsBack) {
    Synced({L"a"});
    Removes(L"a");
    CloudEdits(L"a", L"theirs");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(Materials(), Lines{"a theirs"});
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(Merge, ALocalNameGivesWayAndIsSentUnderTheNewOne) {
    Synced({L"a"});
    Edits(L"mine", L"Steel");
    CloudEdits(L"a", L"Steel");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(Materials(), (Lines{"mine Steel(1)", "a Steel"}));
    EXPECT_EQ(StatusRecords(), Lines{"MTS mine 1 1 2"});
}

TEST_F(Merge, AsksForWhatChangedSinceTheLocalVersionAndDoesNotStampANewOne) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"b", L"theirs");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(server.Paths(), Lines{"/api/DownloadVersion/P1/7"});
    EXPECT_EQ(LocalVersion(), 7);
}

TEST_F(Merge, OrderAndNumbersOfRecordsAreThoseOfTheMergedCopy) {
    Synced({L"a", L"b", L"c"});
    Edits(L"c", L"mine");
    CloudEdits(L"b", L"theirs");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(SqlValue(path, "SELECT group_concat(seq||id) FROM (SELECT * FROM MTS ORDER BY seq)"), "2a,4c,5b");
}

TEST_F(Merge, ACallerThatDoesNotAskWhatIsPendingNeedNotSay) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    EXPECT_TRUE(util.MergeCloudAndLocalDataset(L"P1", &progress, 8, 7, path, ddq, combinedPath, binaryFolder, nullptr));
}

TEST_F(Merge, WhatTheCallerSaysOfPendingChangesStaysWhileSomeAreLeft) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"b", L"theirs");
    pending = false;
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_FALSE(pending);
}

// --- order and progress --------------------------------------------------------------------------------------------

TEST_F(Merge, PercentagesNeverFallAndStopAtEighty) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"b", L"theirs");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(progress.percentages, kAllTables);
}

/// An increment in which each of the eighteen tables holds something that spoils it.
std::string SpoiltAdditions() {
    std::string add = "{";
    for (const char* table : {"PipeSystemType", "HVACPipeSystemType", "DuctSystemType", "ElectricalSystemType",
                              "PipeType", "HVACPipeType", "DuctType", "ConduitFittingsType", "CableTrayFittingsType"})
        add += std::string("'") + table + "':7,";
    add += "'ConfigTree':[";
    for (const char* group : {"ductFittingGroup", "havcFittingGroup", "pipeFittingGroup", "cableTray",
                              "electricLinePipe", "electricWireType", "ductSeriesType"})
        add += std::string("{'ID':7,'groupName':'") + group + "'},";
    return add + "{'ID':'late','groupName':'nobodyKnows'}]}";
}

std::string SpoiltDeletions() {
    std::string del = "{";
    for (const char* table : {"PipeSystemType", "HVACPipeSystemType", "DuctSystemType", "ElectricalSystemType",
                              "PipeType", "HVACPipeType", "DuctType", "ConduitFittingsType", "CableTrayFittingsType"})
        del += std::string("'") + table + "':[{'ID':'d'}],";
    del += "'ConfigTree':[";
    for (const char* group : {"ductFittingGroup", "havcFittingGroup", "pipeFittingGroup", "cableTray",
                              "electricLinePipe", "electricWireType", "ductSeriesType", "HVACMaterialSeries"})
        del += std::string("{'ID':'d ") + group + "','groupName':'" + group + "'},";
    return del + "{'ID':'d','groupName':'MaterialSeries'}]}";
}

TEST_F(Merge, EachTableFailsByItselfInTheirOrderAndTheMergeSucceeds) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudSays(SpoiltAdditions(), SpoiltDeletions());
    EXPECT_TRUE(MergeFixture::Merge());
    Warnings expected;
    for (const wchar_t* key :
         {L"PipeSystemType", L"HVACPipeSystemType", L"DuctSystemType", L"ElectricalSystemType", L"PipeType",
          L"HVACPipeType", L"DuctType", L"ConduitFittingsType", L"CableTrayFittingsType", L"MaterialSeries",
          L"HVACMaterialSeries", L"ductSeriesType", L"electricWireType", L"electricLinePipe", L"cableTray",
          L"pipeFittingGroup", L"havcFittingGroup", L"ductFittingGroup"})
        expected.push_back(key + wstring(L":下载失败"));
    EXPECT_EQ(TakeDebugWarnings(), expected);
    EXPECT_EQ(progress.percentages, kAllTables);
    EXPECT_EQ(Materials(), Lines{"a mine"});
    EXPECT_TRUE(pending);
}

TEST_F(Merge, OtherContentComesWithAChangeInConfigTree) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudSays("{'ConfigTree':[{'ID':'x','groupName':'nobodyKnows'}],"
              "'BinaryTable':[{'ID':'b','fileName':'new.bin','length':3,'data':'QUJD'}]}",
              "{'ConfigTree':[],'BinaryTable':[{'ID':'o','fileName':'old.bin'}]}");
    Write(folder.File(L"old.bin"), "old");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(FileBytes(folder.File(L"new.bin")), "ABC");
    EXPECT_FALSE(Exists(folder.File(L"old.bin")));
    EXPECT_EQ(progress.percentages, kAllTables);
}

TEST_F(Merge, WithoutAChangeInConfigTreeOtherContentIsNotTaken) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudSays("{'BinaryTable':[{'ID':'b','fileName':'new.bin','length':3,'data':'QUJD'}],"
              "'PipeType':[{'ID':'s','name':'serie'}]}",
              "{'ConfigTree':[]}");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_FALSE(Exists(folder.File(L"new.bin")));
    EXPECT_EQ(Records("SMS"), Lines{"s serie 1 2"});
    EXPECT_EQ(progress.percentages, (Percentages{1, 5, 8, 11, 14, 17, 20, 23, 26, 29, 32, 35, 65, 80}));
}

TEST_F(Merge, ATableThatIsNoListFailsAndDoesNotPassForAnEmptyOne) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudSays("{'PipeType':{'ID':'x'},'ConfigTree':[]}", "{'DuctType':null}");
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"PipeType:下载失败", L"DuctType:下载失败"}));
    EXPECT_EQ(Materials(), Lines{"a mine"});
}

TEST_F(Merge, AnIncrementOfAnotherFormIsNoneAndChangesNothing) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    const std::pair<const char*, const char*> increments[] = {{"[1]", "{}"},
                                                              {"{}", "[1]"},
                                                              {"null", "{'ConfigTree':[]}"},
                                                              {"{'ConfigTree':[]}", "null"},
                                                              {"'x'", "{}"},
                                                              {"5", "true"},
                                                              {"{'ConfigTree':{'a':1}}", "{}"},
                                                              {"{}", "{'ConfigTree':null}"},
                                                              {"{'ConfigTree':5,'PipeType':[]}", "{}"}};
    for (const auto& [add, del] : increments) {
        CloudSays(add, del);
        EXPECT_FALSE(MergeFixture::Merge()) << add << del;
        EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"getCloudDataSucc 为false"})) << add << del;
        EXPECT_EQ(Materials(), Lines{"a mine"});
        EXPECT_EQ(StatusRecords(), Lines{"MTS a 2 1 2"});
    }
}

// --- failures ------------------------------------------------------------------------------------------------------

TEST_F(Merge, NeedsAProgressReporter) {
    EXPECT_FALSE(MergeFixture::Merge(nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"pProgressReporter 为空"}));
    EXPECT_TRUE(server.Paths().empty());
    EXPECT_TRUE(pending);
}

TEST_F(Merge, AFailedDownloadIsToldAndTouchesNothing) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    server.On("/api/DownloadVersion/", ScriptedAnswer::Code("10001"));
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarningsWithFunction().back(), Says({L"getCloudDataSucc 为false"}).front());
    EXPECT_EQ(TakeNotifications(), (Notifications{{2, L"获取云端数据失败！"}}));
    EXPECT_EQ(progress.percentages, Percentages{1});
    EXPECT_TRUE(pending);
    ExpectNoCopies();
}

TEST_F(Merge, NothingNewInTheCloudIsTheSameWithoutAWordToTheUser) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudSays("{}", "{}");
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"getCloudDataSucc 为false"}));
    EXPECT_TRUE(TakeNotifications().empty());
    EXPECT_TRUE(pending);
}

TEST_F(Merge, AnAnswerThatIsNoIncrementIsTheSameToo) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    for (const char* answer : {R"({"add":{"PipeType":[]}})", R"({"del":{}})", "7", "[]"}) {
        server.On("/api/DownloadVersion/", ScriptedAnswer::Data(answer));
        EXPECT_FALSE(MergeFixture::Merge()) << answer;
        EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"getCloudDataSucc 为false"})) << answer;
    }
}

TEST_F(Merge, ADatasetOrAStatusStoreThatIsMissingIsAFailure) {
    CloudEdits(L"a", L"theirs");
    MakeStore();
    EXPECT_FALSE(MergeFixture::Merge());
    ASSERT_TRUE(CQbase::removeStore(path));
    MakeStoreAt(statusPath);
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"ducplicateFilesSucc为false", L"ducplicateFilesSucc为false"}));
    EXPECT_EQ(progress.percentages, (Percentages{1, 5, 1, 5}));
    EXPECT_TRUE(pending);
    ExpectNoCopies();
}

TEST_F(Merge, FilesThatCannotBeCopiedAreAFailure) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    const LockTimeout atOnce(0);
    CQbase held;
    ASSERT_TRUE(held.openDatabase(ddq, path, false) && held.lockForUpdate());
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"复制文件失败 exception", L"ducplicateFilesSucc为false"}));
    EXPECT_TRUE(pending);
}

TEST_F(Merge, APathWithoutAPointIsAFailure) {
    CloudEdits(L"a", L"theirs");
    EXPECT_FALSE(
        util.MergeCloudAndLocalDataset(L"P1", &progress, 8, 7, L"set", ddq, combinedPath, binaryFolder, &pending));
    EXPECT_EQ(TakeDebugWarnings(), Warnings{L"ducplicateFilesSucc为false"});
}

TEST_F(Merge, WithoutAHandleTheCopiesAreLeftBehind) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    {
        const NoStoreHandles none;
        EXPECT_FALSE(MergeFixture::Merge());
    }
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"qb_statusQbase为空"}));
    EXPECT_TRUE(Exists(tempPath) && Exists(tempStatusPath));
    EXPECT_EQ(Materials(), Lines{"a mine"});
    EXPECT_TRUE(pending);
}

TEST_F(Merge, WithoutAHandleForTheStatusStoreItIsTheSame) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    static int handles = 0;
    handles = 0;
    tolm::StoreFrame::SetMaker([] { return ++handles == 1 ? vorn::MakeOwner<CQbase>() : vorn::OwnerPtr<CQbase>(); });
    EXPECT_FALSE(MergeFixture::Merge());
    tolm::StoreFrame::SetMaker(nullptr);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"qb_statusQbase为空"}));
    EXPECT_TRUE(Exists(tempPath) && Exists(tempStatusPath));
    EXPECT_TRUE(pending);
}

TEST_F(Merge, ACopyThatWillNotOpenEndsTheMergeAndNothingIsPending) {
    for (const wstring& damaged : {path, statusPath}) {
        CQbase::removeStore(path);
        CQbase::removeStore(statusPath);
        Synced({L"a"});
        Edits(L"a", L"mine");
        CloudEdits(L"a", L"theirs");
        Write(damaged, "no store");
        pending = true;
        progress.percentages.clear();
        EXPECT_FALSE(MergeFixture::Merge());
        EXPECT_FALSE(pending);
        EXPECT_EQ(progress.percentages, (Percentages{1, 5}));
        EXPECT_EQ(FileBytes(damaged), "no store");
        ExpectNoCopies();
        ASSERT_TRUE(vorn::FileSystem::RemoveFile(damaged));
    }
}

TEST_F(Merge, AStatusStoreWithoutRecordsEndsTheMergeBeforeAnyTable) {
    Synced({L"a"});
    MakeStoreAt(statusPath);
    CloudEdits(L"a", L"theirs");
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_FALSE(pending);
    EXPECT_EQ(progress.percentages, (Percentages{1, 5}));
    EXPECT_EQ(Materials(), Lines{"a a"});
    EXPECT_TRUE(Exists(statusPath));
    ExpectNoCopies();
}

TEST_F(Merge, OnAVersionBelowTheFilesIsRefusedBeforeAnyTable) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 8));
    const std::string data = FileBytes(path);
    const std::string status = FileBytes(statusPath);
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"localVersion 已过期"}));
    EXPECT_TRUE(pending);
    EXPECT_EQ(progress.percentages, (Percentages{1, 5}));
    EXPECT_EQ(FileBytes(path), data);
    EXPECT_EQ(FileBytes(statusPath), status);
    ExpectNoCopies();
}

TEST_F(Merge, OnAVersionAboveTheFilesIsNoneOfItsBusiness) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 6));
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(Materials(), Lines{"a theirs"});
}

// --- the end -------------------------------------------------------------------------------------------------------

TEST_F(Merge, LeftoversOfAnEarlierCrashAreRemovedFirst) {
    Synced({L"a", L"b"});
    Edits(L"a", L"mine");
    CloudEdits(L"b", L"theirs");
    Write(tempPath, "leftover");
    MakeStoreAt(tempStatusPath);
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(Materials(), (Lines{"a mine", "b theirs"}));
    ExpectNoCopies();
}

TEST_F(Merge, AStoreThatChangedMeanwhileIsNotOverwritten) {
    Synced({L"a", L"b"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    progress.onReport = [&](double percentage) {
        if (percentage == 65)
            Edits(L"b", L"meanwhile");
    };
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Says({L"覆盖文件失败"}));
    EXPECT_NE(TakeLogLines().back().find(L"覆盖文件失败"), wstring::npos);
    EXPECT_EQ(Materials(), (Lines{"a mine", "b meanwhile"}));
    EXPECT_EQ(StatusRecords(), (Lines{"MTS a 2 1 2", "MTS b 2 1 2"}));
    EXPECT_TRUE(pending);
    EXPECT_EQ(progress.percentages.back(), 65);
    EXPECT_TRUE(Exists(tempPath) && Exists(tempStatusPath)) << "the next merge removes them";

    progress.onReport = nullptr;
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(Materials(), (Lines{"b meanwhile", "a theirs"}));
    EXPECT_EQ(StatusRecords(), Lines{"MTS b 2 1 2"});
    ExpectNoCopies();
}

TEST_F(Merge, AStatusStoreThatChangedMeanwhileIsNotOverwritten) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    progress.onReport = [&](double percentage) {
        if (percentage == 65)
            Sql(statusPath, "INSERT INTO PSI(seq,id,Status,MEPType,DisciplineId) VALUES(9,'p',3,1,2)");
    };
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarnings(), Warnings{L"覆盖文件失败"});
    EXPECT_EQ(Materials(), Lines{"a mine"});
    EXPECT_EQ(StatusRecords(), (Lines{"MTS a 2 1 2", "PSI p 3 1 2"}));
    EXPECT_TRUE(pending);
}

TEST_F(Merge, AStoreThatIsInUseAtTheEndIsNotOverwritten) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    const LockTimeout atOnce(0);
    CQbase reading;
    progress.onReport = [&](double percentage) {
        if (percentage == 65) {
            EXPECT_TRUE(reading.openDatabase(ddq, statusPath, false) && reading.lockForRead());
        }
    };
    EXPECT_FALSE(MergeFixture::Merge());
    EXPECT_EQ(TakeDebugWarnings(), Warnings{L"覆盖文件失败"});
    EXPECT_EQ(Materials(), Lines{"a mine"});
    EXPECT_TRUE(pending);
}

TEST_F(Merge, TheRealFilesAreAsTheyWereUntilTheEnd) {
    Synced({L"a"});
    Edits(L"a", L"mine");
    CloudEdits(L"a", L"theirs");
    const std::string data = FileBytes(path);
    const std::string status = FileBytes(statusPath);
    progress.onReport = [&](double percentage) {
        if (percentage < 80) {
            EXPECT_EQ(FileBytes(path), data) << percentage;
            EXPECT_EQ(FileBytes(statusPath), status) << percentage;
        }
    };
    EXPECT_TRUE(MergeFixture::Merge());
    EXPECT_EQ(Materials(), Lines{"a theirs"});
}

} // namespace
} // namespace tolmtest
