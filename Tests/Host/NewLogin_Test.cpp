#include "Support/DebugWarnings.h"
#include "Support/NewLogin.h"
#include "Support/ScriptedServer.h"
#include "Support/TempFolder.h"
#include "Support/TestSession.h"
#include "TolmDataSet/TolmDataSet.h"

namespace tolmtest {
namespace {

TEST_F(NewLogin, EachCallBearsTheTokenOfItsUser) {
    const TempFolder folder;
    ScriptedServer server;
    server.On("/api/GetVersion/", ScriptedAnswer::Data("7"));
    const TestSession session(server.Address());
    const auto dataset = tolm::ITolmDataSetFactory::Get()->CreateDataset(
        folder.File(L"set.db"), folder.File(L"components.db"), folder.File(L"products.db"), folder.Path());
    During([&dataset] {
        for (int round = 0; round < 500; ++round)
            ASSERT_EQ(dataset->GetCloudVersion(L"P1"), 7);
    });
    for (const auto& request : server.Requests())
        EXPECT_EQ(request.Header("Authorization"), "token of " + request.Header("x-kfe-userid").value_or("nobody"));
    EXPECT_EQ(server.Requests().size(), 500U);
}

} // namespace
} // namespace tolmtest
