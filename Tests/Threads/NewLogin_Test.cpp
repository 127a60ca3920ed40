#include "Support/DebugWarnings.h"
#include "Support/NewLogin.h"

namespace tolmtest {
namespace {

TEST_F(NewLogin, NeverPairsAUserWithTheTokenOfAnother) {
    During([] {
        for (int round = 0; round < 20'000; ++round) {
            const auto user = tolm::TolmUserSessionUtils::GetUser();
            ASSERT_EQ(user.token, L"token of " + user.id) << round;
        }
    });
}

} // namespace
} // namespace tolmtest
