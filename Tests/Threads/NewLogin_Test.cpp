#include "Host/Session.h"
#include "Support/DebugWarnings.h"
#include "Support/ScriptedServer.h"
#include "Support/TempFolder.h"
#include "Support/TestSession.h"
#include "TolmDataSet/TolmDataSet.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace tolmtest {
namespace {

using tolm::TolmUserSessionUtils;

/// Users sign in one after the other in one thread, as fast as they can, while another one works.
class NewLogin : public testing::Test {
protected:
    ~NewLogin() override { TolmUserSessionUtils::SetUser(L"", L""); }

    template <class Work> static void During(const Work& work) {
        TolmUserSessionUtils::SetUser(L"anna", L"token of anna");
        std::atomic<bool> isOver = false;
        std::thread logins([&isOver] {
            while (!isOver) {
                TolmUserSessionUtils::SetUser(L"ben", L"token of ben");
                TolmUserSessionUtils::SetUser(L"anna", L"token of anna");
            }
        });
        work();
        isOver = true;
        logins.join();
    }
};

TEST_F(NewLogin, NeverPairsAUserWithTheTokenOfAnother) {
    During([] {
        for (int round = 0; round < 20'000; ++round) {
            const auto user = TolmUserSessionUtils::GetUser();
            ASSERT_EQ(user.token, L"token of " + user.id) << round;
        }
    });
}

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
