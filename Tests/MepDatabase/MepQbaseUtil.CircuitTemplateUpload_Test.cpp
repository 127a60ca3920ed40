#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/CircuitTemplates.h"
#include "StoreSupport/CloudTestSupport.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/ClosedPort.h"
#include "Support/FileSizeLimit.h"
#include "Vorn/Text.h"

#include <chrono>

namespace {

using namespace tolm;
using namespace tolmtest;
using Notifications = std::vector<Notification>;

const Notifications kWritten{{0, L"修改回路模板成功！"}};
const Notifications kDeleted{{0, L"删除回路模板成功！"}};
const std::string kCreatePath = "/api/CreateList/P1/CircuitTemplate";
const std::string kEditPath = "/api/EditList/P1/CircuitTemplate";
const std::string kRemovePath = "/api/RemoveList/P1/CircuitTemplate";
const Warnings kCreateFailed{L"TolmProjectSettingHttpUtility::SendCreatedEvent: "
                             L"/api/CreateList/P1/CircuitTemplate 失败"};
const Warnings kRemoveFailed{L"TolmProjectSettingHttpUtility::SendRemovedDataList: "
                             L"/api/RemoveList/P1/CircuitTemplate 失败"};

/// What a write or deletion does with the cloud, once the store has it.
class CircuitTemplateUpload : public StoreFixture {
protected:
    bool Write(const TemplateList& list) { return util.WriteCircuitTemplateList(path, ddq, list); }
    bool Delete(const TemplateList& list) { return util.DeleteCircuitTemplateList(path, ddq, list); }
    std::string StoredCount() { return SqlValue(path, "select count(*) from CRT"); }
    /// Puts the first template into the store without a word to any cloud.
    void Store() {
        const TestSession session(L"", L"");
        ASSERT_TRUE(Write({first.get()}));
    }

    const TemplatePtr first = CircuitTemplate(L"t1");
    const TemplatePtr second = CircuitTemplate(L"t2");
    ScriptedServer server;
};

TEST_F(CircuitTemplateUpload, SendsTheCreatedAndThenTheEdited) {
    Store();
    server.On("/", ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Write({first.get(), second.get()}));
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{kCreatePath, kEditPath}));
    const auto requests = server.Requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_NE(requests[0].body.find(R"("ID":"t2")"), std::string::npos);
    EXPECT_EQ(requests[0].body.find("t1"), std::string::npos);
    EXPECT_NE(requests[1].body.find(R"("id":"t1")"), std::string::npos);
    EXPECT_EQ(TakeNotifications(), kWritten) << "one message for both";
}

TEST_F(CircuitTemplateUpload, SendsNoEmptyList) {
    server.On("/", ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Write({}));
    EXPECT_TRUE(Write({first.get()}));
    EXPECT_TRUE(Write({first.get()}));
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{kCreatePath, kEditPath}));
    EXPECT_EQ(TakeNotifications(), (Notifications{kWritten[0], kWritten[0]}));
}

TEST_F(CircuitTemplateUpload, OfOneIdTwiceGoesAsCreatedAndAsEdited) {
    server.On("/", ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Write({first.get(), first.get()}));
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{kCreatePath, kEditPath}));
}

TEST_F(CircuitTemplateUpload, SendsTheIdThatATemplateWasGiven) {
    server.On("/", ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    const auto circuit = CircuitTemplate(L"");
    EXPECT_TRUE(Write({circuit.get()}));
    const std::string id = vorn::StringUtil::ToString(circuit->GetId());
    EXPECT_EQ(id.size(), 36U);
    EXPECT_NE(OnlyRequest(server).body.find(R"("ID":")" + id), std::string::npos);
}

TEST_F(CircuitTemplateUpload, IsToldWhenOneOfTheTwoCallsSucceeded) {
    Store();
    server.Next(ScriptedAnswer::Code("10003")).Next(ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Write({first.get(), second.get()}));
    EXPECT_EQ(TakeNotifications(), kWritten);
    EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>{L"发送失败!"});
}

TEST_F(CircuitTemplateUpload, OfAnUnknownProjectStoresAndSaysNothing) {
    const TestSession session(server.Address(), L"");
    EXPECT_TRUE(Write({first.get(), second.get()}));
    EXPECT_EQ(StoredCount(), "2");
    EXPECT_TRUE(Delete({first.get()}));
    EXPECT_EQ(StoredCount(), "1");
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(CircuitTemplateUpload, WithoutASessionStoresAndReportsIt) {
    EXPECT_FALSE(Write({first.get(), second.get()}));
    EXPECT_EQ(StoredCount(), "2");
    EXPECT_FALSE(Delete({first.get()}));
    EXPECT_EQ(StoredCount(), "1");
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::WriteCircuitTemplateList: pProjectSetting为空",
                        L"MepQbaseUtil::DeleteCircuitTemplateList: pProjectSetting为空"}));
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(CircuitTemplateUpload, ToAServiceThatIsDownStoresAndIsNotToldAsASuccess) {
    const ClosedPort port;
    const TestSession session(port.Address());
    EXPECT_TRUE(Write({first.get(), second.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), kCreateFailed);
    EXPECT_TRUE(Delete({first.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), kRemoveFailed);
    EXPECT_EQ(StoredCount(), "1");
    EXPECT_FALSE(Exists(statusPath)) << "nothing notes that the cloud lacks it";
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(CircuitTemplateUpload, ToAServiceThatRefusesStoresAndWritesALogLine) {
    server.On("/", ScriptedAnswer::Code("10003"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Write({first.get(), second.get()}));
    EXPECT_TRUE(Delete({first.get()}));
    EXPECT_EQ(StoredCount(), "1");
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{kCreatePath, kRemovePath}));
    EXPECT_EQ(TakeLogLines(), (std::vector<std::wstring>{L"发送失败!", L"发送失败!"}));
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(CircuitTemplateUpload, ToAServiceThatBreaksOffIsReportedAndNotRepeated) {
    server.On("/", ScriptedAnswer::CutAfter(10, "{}"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Write({first.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), kCreateFailed);
    EXPECT_EQ(server.Requests().size(), 1U);
    EXPECT_EQ(StoredCount(), "1");
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(CircuitTemplateUpload, WaitsForASlowServiceLongerThanTheTimeOutOfDownloads) {
    auto slow = ScriptedAnswer::Data("null");
    slow.delay = std::chrono::milliseconds(300);
    server.On("/", slow);
    const TestSession session(
        CollaborationProjectSettingForPS::Settings{server.Address(), L"P1", L"W1", /*microseconds*/ 50'000});
    EXPECT_TRUE(Write({first.get()}));
    EXPECT_EQ(TakeNotifications(), kWritten);
}

TEST_F(CircuitTemplateUpload, GivesASilentServiceUpAndKeepsTheChange) {
    server.On("/", ScriptedAnswer::Silence());
    const TestSession session(server.Address());
    EXPECT_TRUE(Write({first.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), kCreateFailed);
    EXPECT_EQ(server.Paths(), std::vector<std::string>{kCreatePath});
    EXPECT_EQ(StoredCount(), "1");
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(CircuitTemplateUpload, OfADeletionSendsAllIdsKnownOrNot) {
    Store();
    server.On("/", ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Delete({first.get(), second.get()}));
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.path, kRemovePath);
    EXPECT_EQ(request.body, R"({"ids":["t1","t2"]})");
    EXPECT_EQ(TakeNotifications(), kDeleted);
    EXPECT_EQ(StoredCount(), "0");
}

TEST_F(CircuitTemplateUpload, OfADeletionOfNothingSendsNothing) {
    const TestSession session(server.Address());
    EXPECT_TRUE(Delete({}));
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(CircuitTemplateUpload, OfADeletionThatMeetsANullEntrySendsNothing) {
    Store();
    const TestSession session(server.Address());
    EXPECT_FALSE(Delete({first.get(), nullptr}));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"circuitTemplateList[i]为空"}));
    EXPECT_EQ(StoredCount(), "0");
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(CircuitTemplateUpload, SendsNothingThatIsNotOnDisk) {
    Store();
    const TestSession session(server.Address());
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(Write({second.get()}));
        EXPECT_FALSE(Delete({first.get()}));
    }
    const Warnings warnings = TakeDebugWarningsWithFunction();
    EXPECT_EQ(
        std::count(warnings.begin(), warnings.end(), L"MepQbaseUtil::WriteCircuitTemplateList: closeDatabase 失败"), 1);
    EXPECT_EQ(
        std::count(warnings.begin(), warnings.end(), L"MepQbaseUtil::DeleteCircuitTemplateList: closeDatabase 失败"),
        1);
    EXPECT_EQ(StoredCount(), "1");
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_TRUE(TakeNotifications().empty());
}

} // namespace
