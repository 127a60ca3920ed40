#include "MepDataSetInterface/TolmProject.h"
#include "StoreSupport/MergeFixture.h"
#include "StoreSupport/StoreContent.h"
#include "Support/HostileWorks.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

/// Whole operations against a service that answers one of their calls as none should: the dataset is old or new, and
/// local changes are kept until the service has them.
namespace tolmtest {
namespace {

namespace fs = std::filesystem;

const std::string kVersion8 = R"({"code":"10000","data":8})";
const std::string kVersion9 = R"({"code":"10000","data":9})";
const std::string kNoChanges = R"({"code":"10000","data":[]})";
const std::string kTaken = R"({"code":"10000","data":{"version":9}})";
const std::string kNoted = R"({"code":"10000","data":null})";
const std::string kIncrement = R"({"code":"10000","data":{"add":{"ConfigTree":[)"
                               R"({"ID":"m1","groupName":"MaterialSeries","parentID":"","text":"bronze","content":{}},)"
                               R"({"ID":"m3","groupName":"MaterialSeries","parentID":"","text":"zinc","content":{}}]},)"
                               R"("del":{"ConfigTree":[{"ID":"m1","groupName":"MaterialSeries","parentID":""},)"
                               R"({"ID":"m2","groupName":"MaterialSeries","parentID":""}]}}})";

/// What is on disk of a dataset and of its changes.
struct State {
    Facts data;
    std::vector<std::string> changes;
    friend bool operator==(const State&, const State&) = default;
};

/// What the failure of a call leaves behind.
enum class Leaves {
    Old,     ///< what was there before
    Merged,  ///< the cloud's changes, and the local ones still noted
    Sent,    ///< nothing is left to send, but the version is the old one
    SentAll, ///< the same, and the operation is done all the same
    Either,  ///< the call matters little: what its success leaves, or what was there before
};

class Operation;

struct Call {
    std::string path;
    std::string trueBody;
    Leaves leaves;
};

struct Work {
    const char* name;
    bool hasDataset;
    bool hasChanges;
    bool (*run)(Operation& operation);
    std::vector<Call> calls;
};

const Call kDownload{"/api/DownloadVersion/P1/7", kIncrement, Leaves::Old};
const Call kUpload{"/api/UpLoad/P1", kTaken, Leaves::Old};
const Call kTold{"/api/workunit/uploadData", kNoted, Leaves::Either};
const Call kUnitChanges{"/api/workunit/downloadData/W1", kNoChanges, Leaves::Either};
Call VersionIs(const std::string& body, Leaves leaves) {
    return {"/api/GetVersion/P1", body, leaves};
}

bool Pull(Operation& operation);
bool MergeAlone(Operation& operation);
bool Send(Operation& operation);
bool SendByTable(Operation& operation);
bool MergeAndSend(Operation& operation);

const Work kWorks[] = {
    {"FirstPull",
     false,
     false,
     &Pull,
     {VersionIs(kVersion8, Leaves::Old), {"/api/DownloadVersion/P1/0", kIncrement, Leaves::Old}, kUnitChanges}},
    {"Pull", true, false, &Pull, {VersionIs(kVersion8, Leaves::Old), kDownload, kUnitChanges}},
    {"Merge", true, true, &MergeAlone, {kDownload}},
    {"Send", true, true, &Send, {kTold, kUpload}},
    {"SendByTable",
     true,
     true,
     &SendByTable,
     {{"/api/CreateList/P1/ConfigTree", kNoted, Leaves::Old},
      {"/api/RemoveList/P1/PipeSystemType", kNoted, Leaves::Old},
      VersionIs(kVersion9, Leaves::SentAll)}},
    {"MergeAndSend",
     true,
     true,
     &MergeAndSend,
     {kDownload,
      VersionIs(kVersion8, Leaves::Merged),
      kTold,
      {"/api/UpLoad/P1", kTaken, Leaves::Merged},
      VersionIs(kVersion9, Leaves::Sent)}},
};

class Operation : public MergeFixture, public testing::WithParamInterface<WorkAndCall<Work>> {
public:
    bool DoPull() { return RefreshWith(false, nullptr, nullptr); }
    bool DoMerge() { return Merge(&progress); }
    bool DoSend(bool byTable) { return util.SendModifiedDataToCloud(false, nullptr, path, ddq, L"", byTable); }
    bool DoMergeAndSend() {
        int cloud = 8;
        int local = 7;
        return tolm::TolmDataset::Create(path, L"", combinedPath, binaryFolder)
            ->MergeDataAndSendModifiedData(L"P1", &progress, cloud, local);
    }

protected:
    using Files = std::map<std::string, std::string>;

    static const Work& TheWork() { return *GetParam().work; }
    static const Call& TheCall() { return TheWork().calls[GetParam().call]; }

    void SetUp() override {
        if (TheWork().hasDataset)
            Synced({L"m1", L"m2"});
        if (TheWork().hasChanges) {
            Edits(L"m9", L"brass");
            NoteRemovedSystemType();
        }
        m_files = FilesNow();
        m_old = StateNow();
        SeeMerged();
        Restore();
        ASSERT_TRUE(RunWith(ScriptedAnswer::Json(TheCall().trueBody)));
        m_new = StateNow();
        ASSERT_NE(m_new, m_old);
        ASSERT_EQ(TakeDebugWarnings(), Warnings{});
        m_newNotifications = TakeNotifications();
        ASSERT_TRUE(TakeLogLines().empty());
        Restore();
    }

    void NoteRemovedSystemType() {
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(ddq, statusPath, true) && qb.createRec("SYS", L"y1"));
        ASSERT_TRUE(qb.setShort(tolm::schema::kStatus, 3) && qb.setShort(tolm::schema::kMEPType, 1));
        ASSERT_TRUE(qb.setShort(tolm::schema::kDisciplineId, 2) && qb.saveRec());
    }

    void SeeMerged() {
        if (TheWork().run != &MergeAndSend)
            return;
        server.Next(ScriptedAnswer::Json(kIncrement));
        EXPECT_TRUE(DoMerge());
        m_merged = StateNow();
        EXPECT_NE(m_merged.data, m_old.data);
        EXPECT_EQ(m_merged.changes, m_old.changes);
    }

    // --- the dataset's files, as bytes and as what they hold

    Files FilesNow() const {
        Files files;
        for (const auto& entry : fs::directory_iterator(vorn::StringUtil::ToString(folder.Path()))) {
            std::ifstream in(entry.path(), std::ios::binary);
            files[entry.path().filename().string()] = {std::istreambuf_iterator<char>(in),
                                                       std::istreambuf_iterator<char>()};
        }
        return files;
    }

    void Restore() const {
        const std::string place = vorn::StringUtil::ToString(folder.Path());
        for (const auto& entry : fs::directory_iterator(place))
            fs::remove_all(entry.path());
        for (const auto& [name, bytes] : m_files)
            std::ofstream(place + "/" + name, std::ios::binary) << bytes;
    }

    State StateNow() const {
        State state;
        if (Exists(path))
            state.data = StoreFacts(path);
        if (Exists(statusPath))
            state.changes = StatusRecords();
        return state;
    }

    // --- one run

    /// The call of the parameter gets the answer, the others their true ones. Nothing else is asked.
    bool RunWith(const ScriptedAnswer& answer) {
        ScriptedServer service;
        const auto& calls = TheWork().calls;
        for (const Call& call : calls)
            service.Next(&call == &TheCall() ? answer : ScriptedAnswer::Json(call.trueBody));
        tolm::CollaborationProjectSettingForPS::Open({service.Address(), L"P1", L"W1", 30'000'000});
        const bool done = TheWork().run(*this);
        const auto asked = service.Paths();
        EXPECT_LE(asked.size(), calls.size());
        for (std::size_t i = 0; i < std::min(asked.size(), calls.size()); ++i)
            EXPECT_EQ(asked[i], calls[i].path);
        EXPECT_TRUE(elsewhere.Requests().empty());
        return done;
    }

    /// Whether what is on disk may stand there after a failure.
    bool IsLeft(const State& state) const {
        switch (TheCall().leaves) {
        case Leaves::Old:
        case Leaves::Either:
            return state == m_old;
        case Leaves::Merged:
            return state == m_merged;
        case Leaves::Sent:
        case Leaves::SentAll:
            return state.changes.empty() && state.data.at("000/FileHeader/LocalVersion") == "7";
        }
        return false;
    }

    /// Only the dataset and its changes, if there are any, are left in the folder.
    void ExpectNoOtherFiles() const {
        for (const auto& [name, bytes] : FilesNow())
            EXPECT_TRUE(name == "set.db" || name == "set_Status.db") << name;
    }

    void ExpectOldOrNew(const std::string& name, const ScriptedAnswer& answer) {
        SCOPED_TRACE(name);
        const bool done = RunWith(answer);
        const State state = StateNow();
        const auto notifications = TakeNotifications();
        const bool isTold = !TakeDebugWarnings().empty() || !TakeLogLines().empty() || !notifications.empty();
        if (done) {
            EXPECT_TRUE(state == m_new || (TheCall().leaves == Leaves::SentAll && IsLeft(state)))
                << Difference(m_new.data, state.data);
            EXPECT_EQ(notifications, m_newNotifications);
        } else {
            EXPECT_TRUE(isTold);
            EXPECT_TRUE(IsLeft(state)) << Difference(m_old.data, state.data);
        }
        ExpectNoOtherFiles();
        Restore();
    }

    void TryEach(const std::vector<HostileAnswer>& answers, std::size_t weight) {
        TrySome(GetParam(), answers, weight,
                [&](const HostileAnswer& hostile) { ExpectOldOrNew(hostile.name, hostile.answer); });
    }

    Files m_files;
    State m_old, m_merged, m_new;
    Notifications m_newNotifications;
    ScriptedServer elsewhere;
};

bool Pull(Operation& operation) {
    return operation.DoPull();
}
bool MergeAlone(Operation& operation) {
    return operation.DoMerge();
}
bool Send(Operation& operation) {
    return operation.DoSend(false);
}
bool SendByTable(Operation& operation) {
    return operation.DoSend(true);
}
bool MergeAndSend(Operation& operation) {
    return operation.DoMergeAndSend();
}

TEST_P(Operation, IsDoneOrNotWhateverTheServiceAnswers) {
    TryEach(HostileAnswers(TheCall().trueBody, elsewhere.Port()), 1);
}

TEST_P(Operation, IsDoneOrNotWhereverAnAnswerIsCut) {
    TryEach(CutAnswers(TheCall().trueBody), 8);
}

/// Payloads that are no increment, in a refresh as in a merge. Where everything is loaded, what was deleted is not
/// looked at.
const char* const kSpoiltDeletions = R"({"add":{"ConfigTree":[]},"del":{"ConfigTree":null}})";
const char* const kNoIncrements[] = {"{}",
                                     "[]",
                                     "7",
                                     "\"x\"",
                                     "true",
                                     "null",
                                     R"({"add":{}})",
                                     R"({"del":{}})",
                                     R"({"add":null,"del":null})",
                                     R"({"add":[],"del":[]})",
                                     R"({"add":"x","del":"y"})",
                                     R"({"add":7,"del":7})",
                                     R"({"add":{"ConfigTree":[]},"del":null})",
                                     R"({"add":null,"del":{"ConfigTree":[]}})",
                                     R"({"add":[{"ConfigTree":[]}],"del":{}})",
                                     R"({"add":{"ConfigTree":7},"del":{}})",
                                     R"({"add":{"ConfigTree":{"a":[]}},"del":{}})",
                                     kSpoiltDeletions,
                                     R"({"Add":{"ConfigTree":[]},"Del":{}})",
                                     R"({"add":{"ConfigTree":[]},"add":{},"del":{}})",
                                     R"({"add":{"ConfigTree":[],"ConfigTree":[]},"del":{}})",
                                     R"({"add":{},"del":{}})"};

class Download : public Operation {};

TEST_P(Download, TakesNoIncrementThatIsNone) {
    for (const char* payload : kNoIncrements) {
        SCOPED_TRACE(payload);
        if (payload == kSpoiltDeletions && !TheWork().hasDataset)
            continue;
        EXPECT_FALSE(RunWith(ScriptedAnswer::Data(payload)));
        EXPECT_EQ(Difference(m_old.data, StateNow().data), "");
        EXPECT_EQ(StateNow().changes, m_old.changes);
        ExpectNoOtherFiles();
        TakeDebugWarnings();
        Restore();
    }
}

/// On what the failure left, without any repair.
TEST_P(Operation, SucceedsOnceTheServiceAnswersAgain) {
    const bool isDoneAllTheSame = TheCall().leaves == Leaves::Either || TheCall().leaves == Leaves::SentAll;
    EXPECT_EQ(RunWith(ScriptedAnswer::Html(503)), isDoneAllTheSame);
    TakeDebugWarnings();
    if (TheCall().leaves == Leaves::Old || TheCall().leaves == Leaves::Merged) {
        EXPECT_TRUE(RunWith(ScriptedAnswer::Json(TheCall().trueBody)));
        EXPECT_EQ(Difference(m_new.data, StateNow().data), "");
        EXPECT_EQ(StateNow().changes, m_new.changes);
    }
}

std::vector<WorkAndCall<Work>> EachDownload() {
    auto calls = EachCall(kWorks);
    std::erase_if(calls, [](const WorkAndCall<Work>& call) {
        return !call.work->calls[call.call].path.starts_with("/api/DownloadVersion/");
    });
    return calls;
}

INSTANTIATE_TEST_SUITE_P(Each, Operation, testing::ValuesIn(EachCall(kWorks)), &WorkAndCall<Work>::NameOf);
INSTANTIATE_TEST_SUITE_P(Each, Download, testing::ValuesIn(EachDownload()), &WorkAndCall<Work>::NameOf);

} // namespace
} // namespace tolmtest
