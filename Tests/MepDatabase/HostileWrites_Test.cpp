#include "Host/Components.h"
#include "MepDataSetInterface/TolmProject.h"
#include "Platform/Support/ComponentSamples.h"
#include "StoreSupport/CircuitTemplates.h"
#include "StoreSupport/MergeFixture.h"
#include "StoreSupport/StoreContent.h"
#include "Support/FolderContent.h"
#include "Support/HostileWorks.h"

#include <algorithm>
#include <optional>

/// Operations that send what the host writes, against a service that answers one of their calls as none should: an
/// edit stays noted until the service has it; circuit templates and combined products stand here whatever it says, and
/// nobody is told that they stand there.
namespace tolmtest {
namespace {

const std::string kNoted = R"({"code":"10000","data":null})";
const std::string kVersion9 = R"({"code":"10000","data":9})";
const std::wstring kListCode = L"16353515";

/// What is on disk of a dataset, of its changes and of its products.
struct State {
    Facts data;
    std::vector<std::string> changes;
    Facts products;
    friend bool operator==(const State&, const State&) = default;
};

class HostileWrites;

/// One call of an operation, and what the operation comes to where it fails.
struct WriteCall {
    enum class Leaves {
        Old,       ///< what was there before
        New,       ///< what its success leaves
        OldVersion ///< the same but for the version, and nobody is told
    };
    std::string path;
    std::string trueBody;
    Leaves leaves;
    bool isDone; ///< the operation's result
    bool isTold; ///< the user hears of success
};
using Leaves = WriteCall::Leaves;

struct WriteWork {
    const char* name;
    bool (*run)(HostileWrites& writes);
    std::vector<WriteCall> calls;
};

bool EditByTable(HostileWrites& writes);
bool WriteTemplates(HostileWrites& writes);
bool DeleteTemplates(HostileWrites& writes);
bool AddProduct(HostileWrites& writes);
bool AddProducts(HostileWrites& writes);
bool RemoveProducts(HostileWrites& writes);

const WriteWork kWorks[] = {
    {"EditByTable",
     &EditByTable,
     {{"/api/EditList/P1/ConfigTree", kNoted, Leaves::Old, false, false},
      {"/api/GetVersion/P1", kVersion9, Leaves::OldVersion, true, true}}},
    {"WriteTemplates",
     &WriteTemplates,
     {{"/api/CreateList/P1/CircuitTemplate", kNoted, Leaves::New, true, true},
      {"/api/EditList/P1/CircuitTemplate", kNoted, Leaves::New, true, true}}},
    {"DeleteTemplates", &DeleteTemplates, {{"/api/RemoveList/P1/CircuitTemplate", kNoted, Leaves::New, true, false}}},
    {"AddProduct", &AddProduct, {{"/api/CreateCombinations/P1/16353515", kNoted, Leaves::New, false, false}}},
    {"AddProducts",
     &AddProducts,
     {{"/api/CreateCombinations/P1/16353515", kNoted, Leaves::New, true, false},
      {"/api/EditCombinations/P1/16353515", kNoted, Leaves::New, true, false}}},
    {"RemoveProducts", &RemoveProducts, {{"/api/RemoveCombinations/P1/16353515", kNoted, Leaves::New, false, false}}},
};

class HostileWrites : public MergeFixture, public testing::WithParamInterface<WorkAndCall<WriteWork>> {
public:
    bool SendByTable() { return util.SendModifiedDataToCloud(false, nullptr, path, ddq, L"", true); }
    bool Write(const TemplateList& list) { return util.WriteCircuitTemplateList(path, ddq, list); }
    bool Delete(const TemplateList& list) { return util.DeleteCircuitTemplateList(path, ddq, list); }
    vorn::OwnerPtr<tolm::ITolmDataset> Dataset() {
        return tolm::TolmDataset::Create(path, L"", combinedPath, binaryFolder);
    }

protected:
    static const WriteWork& TheWork() { return *GetParam().work; }
    static const WriteCall& TheCall() { return TheWork().calls[GetParam().call]; }

    /// An edited material, and a template and a product of which the cloud knows.
    void SetUp() override {
        Synced({L"m1"});
        const auto known = CircuitTemplate(L"t1", L"4");
        std::vector<std::wstring> ids;
        {
            const TestSession offline(L"", L"");
            ASSERT_TRUE(Write({known.get()}));
        }
        ASSERT_TRUE(tolm::TolmComponentSqlUtil::InsertCombinedProduct(combinedPath, {MakeListProduct(L"p1")}, ids));
        Edits(L"m1", L"brass");
        m_files.emplace(folder.Path());
        m_old = StateNow();
        ASSERT_TRUE(RunWith(ScriptedAnswer::Json(TheCall().trueBody)));
        m_new = StateNow();
        ASSERT_NE(m_new, m_old);
        ASSERT_EQ(TakeDebugWarnings(), Warnings{});
        m_newNotifications = TakeNotifications();
        ASSERT_TRUE(TakeLogLines().empty());
        m_files->PutBack();
    }

    State StateNow() const {
        State state{StoreFacts(path), {}, CombinedProductFacts(combinedPath)};
        if (Exists(statusPath))
            state.changes = StatusRecords();
        return state;
    }

    /// The call of the parameter gets the answer, the others their true ones. Nothing else is asked.
    bool RunWith(const ScriptedAnswer& answer) {
        ScriptedServer service;
        const auto& calls = TheWork().calls;
        for (const WriteCall& call : calls)
            service.Next(&call == &TheCall() ? answer : ScriptedAnswer::Json(call.trueBody));
        tolm::CollaborationProjectSettingForPS::Open({service.Address(), L"P1", L"W1", 30'000'000});
        const bool done = TheWork().run(*this);
        const auto asked = service.Paths();
        EXPECT_EQ(asked.size(), TheCall().leaves == Leaves::Old && !done ? GetParam().call + 1 : calls.size());
        for (std::size_t i = 0; i < std::min(asked.size(), calls.size()); ++i)
            EXPECT_EQ(asked[i], calls[i].path);
        EXPECT_TRUE(elsewhere.Requests().empty());
        return done;
    }

    State LeftByAFailure() const {
        if (TheCall().leaves == Leaves::Old)
            return m_old;
        State state = m_new;
        if (TheCall().leaves == Leaves::OldVersion)
            state.data["000/FileHeader/LocalVersion"] = "7";
        return state;
    }

    void ExpectTakenOrNot(const HostileAnswer& hostile) {
        SCOPED_TRACE(hostile.name);
        const bool done = RunWith(hostile.answer);
        const State state = StateNow();
        const auto notifications = TakeNotifications();
        const bool isFailure = !TakeDebugWarnings().empty() || !TakeLogLines().empty() ||
                               (TheCall().leaves == Leaves::OldVersion && state != m_new);
        EXPECT_TRUE(isFailure || hostile.means != HostileAnswer::Means::Failure);
        EXPECT_EQ(done, !isFailure || TheCall().isDone);
        EXPECT_EQ(notifications, !isFailure || TheCall().isTold ? m_newNotifications : Notifications{});
        const State expected = isFailure ? LeftByAFailure() : m_new;
        EXPECT_EQ(Difference(expected.data, state.data), "");
        EXPECT_EQ(Difference(expected.products, state.products), "");
        EXPECT_EQ(expected.changes, state.changes);
        m_files->PutBack();
    }

    void TryEach(const std::vector<HostileAnswer>& answers, std::size_t weight) {
        TrySome(GetParam(), answers, weight, [&](const HostileAnswer& hostile) { ExpectTakenOrNot(hostile); });
    }

    std::optional<FolderContent> m_files;
    State m_old, m_new;
    Notifications m_newNotifications;
    ScriptedServer elsewhere;
};

bool EditByTable(HostileWrites& writes) {
    return writes.SendByTable();
}
bool WriteTemplates(HostileWrites& writes) {
    const auto edited = CircuitTemplate(L"t1", L"16");
    const auto created = CircuitTemplate(L"t2");
    return writes.Write({edited.get(), created.get()});
}
bool DeleteTemplates(HostileWrites& writes) {
    const auto known = CircuitTemplate(L"t1");
    return writes.Delete({known.get()});
}
bool AddProduct(HostileWrites& writes) {
    return writes.Dataset()->AddCombinedComponents(kListCode, {MakeListProduct(L"p2")});
}
bool AddProducts(HostileWrites& writes) {
    auto edited = MakeListProduct(L"p1");
    edited.spacing = 450;
    return writes.Dataset()->AddCombinedComponents(kListCode, {edited, MakeListProduct(L"p2")});
}
bool RemoveProducts(HostileWrites& writes) {
    return writes.Dataset()->RemoveCombinedComponents(kListCode, kListCode, {L"p1"});
}

TEST_P(HostileWrites, AreTakenOrNotWhateverTheServiceAnswers) {
    TryEach(HostileAnswers(TheCall().trueBody, elsewhere.Port()), 1);
}

TEST_P(HostileWrites, AreTakenOrNotWhereverAnAnswerIsCut) {
    TryEach(CutAnswers(TheCall().trueBody), 8);
}

INSTANTIATE_TEST_SUITE_P(Each, HostileWrites, testing::ValuesIn(EachCall(kWorks)), &WorkAndCall<WriteWork>::NameOf);

} // namespace
} // namespace tolmtest
