#pragma once

#include "Support/HostileAnswers.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <ostream>
#include <string>
#include <vector>

/// Tables of operations, each of whose calls is answered as none should be.
namespace tolmtest {

/// One call of an operation; `Work` has a `name` and `calls`.
template <class Work> struct WorkAndCall {
    const Work* work;
    std::size_t call;

    friend void PrintTo(const WorkAndCall& param, std::ostream* out) {
        *out << param.work->name << ", call " << param.call + 1;
    }
    /// For the name of a test.
    static std::string NameOf(const testing::TestParamInfo<WorkAndCall>& info) {
        return std::string(info.param.work->name) + "_Call" + std::to_string(info.param.call + 1);
    }
};

template <class Work, std::size_t count> std::vector<WorkAndCall<Work>> EachCall(const Work (&works)[count]) {
    std::vector<WorkAndCall<Work>> calls;
    for (const Work& work : works)
        for (std::size_t i = 0; i < work.calls.size(); ++i)
            calls.push_back({&work, i});
    return calls;
}

/// Of so many answers one is tried, unless TOLM_HOSTILE_STRIDE says otherwise. Each call meets all of them by itself.
inline std::size_t HostileStride() {
    const char* const stride = std::getenv("TOLM_HOSTILE_STRIDE");
    return stride != nullptr ? std::max(1UL, std::strtoul(stride, nullptr, 10)) : 17;
}

/// The first answer that a call meets: of each call another one.
template <class Work> std::size_t FirstOf(const WorkAndCall<Work>& param) {
    const std::string name = testing::PrintToString(param);
    return std::accumulate(name.begin(), name.end(), std::size_t{0}) % HostileStride();
}

/// Tries one answer in so many, or in `weight` times as many; none that is slow.
template <class Work>
void TrySome(const WorkAndCall<Work>& param, const std::vector<HostileAnswer>& answers, std::size_t weight,
             const std::function<void(const HostileAnswer&)>& tryOne) {
    const std::size_t stride = HostileStride();
    for (std::size_t i = FirstOf(param); i < answers.size(); i += stride == 1 ? 1 : stride * weight)
        if (!answers[i].isSlow)
            tryOne(answers[i]);
}

} // namespace tolmtest
