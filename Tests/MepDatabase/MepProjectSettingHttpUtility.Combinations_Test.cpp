#include "Platform/Support/ComponentSamples.h"
#include "StoreSupport/CircuitTemplates.h"
#include "StoreSupport/CloudTestSupport.h"
#include "Support/ClosedPort.h"
#include "Support/Golden.h"
#include "TolmDataSet/SmallRecords.h"

#include <functional>

namespace {

using namespace tolm;
using namespace tolmtest;

const wstring kListCode = L"16353515";
const wstring kTerminalCode = L"16352020";

/// One of the calls with arguments that it does not refuse.
struct Call {
    const char* name;
    std::string path;
    std::wstring function; ///< that reports its faults
    const char* golden;
    std::function<bool()> run;
};

std::vector<Call> CallsOf(const wstring& projectId = L"P1") {
    static const auto circuit = FullCircuitTemplate(L"t1");
    static const auto plain = CircuitTemplate(L"t2", L"4");
    const TemplateList circuits{circuit.get(), plain.get()};
    return {
        {"SendCreatedCircuitTemplateList", "/api/CreateList/P1/CircuitTemplate", L"SendCreatedEvent",
         "CreatedCircuitTemplates", [=] { return Client().SendCreatedCircuitTemplateList(projectId, circuits); }},
        {"SendEditedCircuitTemplateList", "/api/EditList/P1/CircuitTemplate", L"SendEditedEvent",
         "EditedCircuitTemplates", [=] { return Client().SendEditedCircuitTemplateList(projectId, circuits); }},
        {"SendCreatedCombinationList", "/api/CreateCombinations/P1/16353515", L"SendCreatedCombinationList",
         "CreatedCombinationsList",
         [] { return Client().SendCreatedCombinationList(kListCode, {MakeListProduct(L"p1")}); }},
        {"SendCreatedCombinationList", "/api/CreateCombinations/P1/16352020", L"SendCreatedCombinationList",
         "CreatedCombinationsTerminal",
         [] { return Client().SendCreatedCombinationList(kTerminalCode, {MakeEquipmentProduct(L"p2")}); }},
        {"SendEditedCombinationList", "/api/EditCombinations/P1/16353515", L"SendEditedCombinationList",
         "EditedCombinationsList",
         [] { return Client().SendEditedCombinationList(kListCode, {MakeListProduct(L"p1")}); }},
        {"SendEditedCombinationList", "/api/EditCombinations/P1/16352020", L"SendEditedCombinationList",
         "EditedCombinationsTerminal",
         [] { return Client().SendEditedCombinationList(kTerminalCode, {MakeEquipmentProduct(L"p2")}); }},
        {"SendRemovedCombinationList", "/api/RemoveCombinations/P1/16353515", L"SendRemovedCombinationList",
         "RemovedCombinations",
         [] {
             return Client().SendRemovedCombinationList(kListCode, {L"p1", L"组合"});
         }},
    };
}

std::wstring Failed(const Call& call) {
    return L"TolmProjectSettingHttpUtility::" + call.function + L": " +
           std::wstring(call.path.begin(), call.path.end()) + L" 失败";
}

TEST(CombinationCalls, SendWhatTheServiceKnows) {
    for (const auto& call : CallsOf()) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Data("null"));
        const TestSession session(server.Address());
        EXPECT_TRUE(call.run()) << call.name;
        const auto request = OnlyRequest(server);
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.path, call.path);
        EXPECT_EQ(SessionHeaders(request), WithContentType);
        ExpectGolden(std::string("Data/Requests/") + call.golden + ".txt", Recorded(server), "What goes over the wire");
    }
}

TEST(CombinationCalls, ARemovalTellsNoVersionAndTheOthersDo) {
    for (const auto& call : CallsOf()) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Data("null"));
        const TestSession session(server.Address());
        EXPECT_TRUE(call.run());
        const bool tells = OnlyRequest(server).body.find(R"("tolm_version":"1.2.3")") != std::string::npos;
        EXPECT_EQ(tells, std::string(call.golden) != "RemovedCombinations") << call.golden;
    }
}

TEST(CombinationCalls, AreRefusedWithoutATargetOrAList) {
    ScriptedServer server;
    const TestSession session(server.Address());
    const auto circuit = CircuitTemplate(L"t");
    EXPECT_FALSE(Client().SendCreatedCircuitTemplateList(L"", {circuit.get()}));
    EXPECT_FALSE(Client().SendCreatedCircuitTemplateList(L"P1", {}));
    EXPECT_FALSE(Client().SendEditedCircuitTemplateList(L"", {circuit.get()}));
    EXPECT_FALSE(Client().SendEditedCircuitTemplateList(L"P1", {}));
    EXPECT_FALSE(Client().SendCreatedCombinationList(L"", {MakeListProduct(L"p")}));
    EXPECT_FALSE(Client().SendEditedCombinationList(L"", {MakeListProduct(L"p")}));
    EXPECT_FALSE(Client().SendRemovedCombinationList(kListCode, {}));
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST(CombinationCalls, OfEditedTemplatesWithoutAProjectAreRefusedOnceTheRowsAreMadeAndOfCreatedOnesBefore) {
    ScriptedServer server;
    const TestSession session(server.Address());
    EXPECT_FALSE(Client().SendCreatedCircuitTemplateList(L"", {nullptr}));
    EXPECT_TRUE(TakeDebugWarnings().empty());
    EXPECT_FALSE(Client().SendEditedCircuitTemplateList(L"", {nullptr}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetEditedCircuitTemplateListJasonValue: pTemplate为空"}));
    EXPECT_TRUE(server.Requests().empty());
}

TEST(CombinationCalls, AnEmptyListOfProductsAndARemovalWithoutACodeAreSent) {
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Client().SendCreatedCombinationList(kListCode, {}));
    EXPECT_TRUE(Client().SendRemovedCombinationList(L"", {L"p"}));
    const auto requests = server.Requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].body, R"({"rows":[],"tolm_version":"1.2.3"})");
    EXPECT_EQ(requests[1].path, "/api/RemoveCombinations/P1/");
}

TEST(CombinationCalls, OfProductsWithoutASessionAreReported) {
    EXPECT_FALSE(Client().SendCreatedCombinationList(kListCode, {MakeListProduct(L"p")}));
    EXPECT_FALSE(Client().SendEditedCombinationList(kListCode, {MakeListProduct(L"p")}));
    EXPECT_FALSE(Client().SendRemovedCombinationList(kListCode, {L"p"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"TolmProjectSettingHttpUtility::SendCreatedCombinationList: pSettings为空",
                        L"TolmProjectSettingHttpUtility::SendEditedCombinationList: pSettings为空",
                        L"TolmProjectSettingHttpUtility::SendRemovedCombinationList: pSettings为空"}));
}

TEST(CombinationCalls, OfProductsWithoutAProjectFailInSilence) {
    ScriptedServer server;
    const TestSession session(server.Address(), L"");
    EXPECT_FALSE(Client().SendCreatedCombinationList(kListCode, {MakeListProduct(L"p")}));
    EXPECT_FALSE(Client().SendEditedCombinationList(kListCode, {MakeListProduct(L"p")}));
    EXPECT_FALSE(Client().SendRemovedCombinationList(kListCode, {L"p"}));
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST(CombinationCalls, WriteALogLineWhenTheServiceRefuses) {
    for (const auto& call : CallsOf()) {
        ScriptedServer server;
        server.Next(ScriptedAnswer::Code("10003"));
        server.Next(ScriptedAnswer::Data("1").WithStatus(500));
        const TestSession session(server.Address());
        EXPECT_FALSE(call.run()) << call.name;
        EXPECT_FALSE(call.run()) << call.name;
        EXPECT_EQ(TakeLogLines(), (std::vector<std::wstring>{L"发送失败!", L"发送失败!"}));
        EXPECT_TRUE(TakeNotifications().empty());
    }
}

TEST(CombinationCalls, ReportAnExceptionWithTheirPath) {
    for (const auto& call : CallsOf()) {
        for (const auto& answer : {ScriptedAnswer::Html(200), ScriptedAnswer::CutAfter(10, "{}"),
                                   ScriptedAnswer::Json(R"({"code":10000})"), ScriptedAnswer::Json("{}")}) {
            ScriptedServer server;
            server.Next(answer);
            const TestSession session(server.Address());
            EXPECT_FALSE(call.run());
            EXPECT_EQ(TakeDebugWarningsWithFunction(), Warnings{Failed(call)});
            EXPECT_EQ(server.Requests().size(), 1U);
        }
    }
}

TEST(CombinationCalls, ReportAServiceThatIsDown) {
    const ClosedPort port;
    const TestSession session(port.Address());
    for (const auto& call : CallsOf()) {
        EXPECT_FALSE(call.run());
        EXPECT_EQ(TakeDebugWarningsWithFunction(), Warnings{Failed(call)});
    }
}

TEST(CombinationCalls, ANullTemplateGoesOutAsANullRow) {
    ScriptedServer server;
    server.On("/", ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Client().SendCreatedCircuitTemplateList(L"P1", {nullptr}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetCreatedCircuitTemplateListJasonValue: pTemplate为空"}));
    EXPECT_EQ(OnlyRequest(server).body, R"({"rows":[null],"tolm_version":"1.2.3"})");
}

} // namespace
