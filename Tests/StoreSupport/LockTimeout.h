#pragma once

#include "Qbase/Qbase.h"

namespace tolmtest {

/// While it lives, locks are waited for only this long.
class LockTimeout {
public:
    explicit LockTimeout(int milliseconds) : m_before(CQbase::lockTimeout()) { CQbase::setLockTimeout(milliseconds); }
    ~LockTimeout() { CQbase::setLockTimeout(m_before); }
    LockTimeout(const LockTimeout&) = delete;
    LockTimeout& operator=(const LockTimeout&) = delete;

private:
    int m_before;
};

} // namespace tolmtest
