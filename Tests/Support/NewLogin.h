#pragma once

#include "Host/Session.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace tolmtest {

/// Users sign in one after the other in one thread, as fast as they can, while another one works.
class NewLogin : public testing::Test {
protected:
    ~NewLogin() override { tolm::TolmUserSessionUtils::SetUser(L"", L""); }

    template <class Work> static void During(const Work& work) {
        tolm::TolmUserSessionUtils::SetUser(L"anna", L"token of anna");
        std::atomic<bool> isOver = false;
        std::thread logins([&isOver] {
            while (!isOver) {
                tolm::TolmUserSessionUtils::SetUser(L"ben", L"token of ben");
                tolm::TolmUserSessionUtils::SetUser(L"anna", L"token of anna");
            }
        });
        work();
        isOver = true;
        logins.join();
    }
};

} // namespace tolmtest
