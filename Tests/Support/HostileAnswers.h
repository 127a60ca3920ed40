#pragma once

#include "Support/ScriptedServer.h"

#include <string>
#include <vector>

namespace tolmtest {

/// An answer as no service should give it.
struct HostileAnswer {
    /// What a call may make of it, at most.
    enum class Means {
        Failure,     ///< no call succeeds
        TrueContent, ///< what it says is true, however it says it: a call fails, or does as with the true answer
        StatusAlone, ///< true but for the status: a call that looks at that fails
    };

    std::string name;
    ScriptedAnswer answer;
    Means means = Means::Failure;
    bool isSlow = false; ///< ends with the time-out that is configured, not before
};

/// The table of hostile answers: what can be made of the true answer's body, which is a JSON object with "code" and
/// "data". Those that lead away lead to the port.
std::vector<HostileAnswer> HostileAnswers(const std::string& trueBody, int elsewhere);

/// The true answer cut behind each of its bytes, in each of the ways in which a body's end is told.
std::vector<HostileAnswer> CutAnswers(const std::string& trueBody);

} // namespace tolmtest
