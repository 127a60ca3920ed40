#pragma once

#include "MepDatabase/MepQbaseUtil.h"

#include <utility>
#include <vector>

namespace tolm {

/// What tests see of the store's private operations.
struct MepQbaseUtilTestAccess {
    static bool OpenQbase(wstring filePath, wstring ddqFilePath, CQbase* qb, bool forUpdate, bool create) {
        return MepQbaseUtil::GetInstance()->OpenQbase(std::move(filePath), std::move(ddqFilePath), qb, forUpdate,
                                                      create);
    }
    static bool RecordLocalChange(wstring filePath, wstring ddqFilePath, const char* classCode, wstring id, int status,
                                  short mepType, short disciplineId) {
        return MepQbaseUtil::GetInstance()->RecordLocalChange(std::move(filePath), std::move(ddqFilePath), classCode,
                                                              std::move(id), status, mepType, disciplineId);
    }
    static std::vector<wstring>& RecoveredSystemTypeIds() {
        return MepQbaseUtil::GetInstance()->m_recoveredSystemTypeIds;
    }
};

} // namespace tolm
