#pragma once

#include "Support/SearchedChannel.h"

#include <nlohmann/json.hpp>

#include <string>
#include <sys/types.h>

namespace tolmtest {

/// A host in a process of its own, that is told what to do line by line. Used from one thread at a time; the
/// destructor ends the process.
class HostProcess {
public:
    HostProcess();
    ~HostProcess();
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    /// Lets it begin; `Answer` waits until it is done.
    void Tell(const nlohmann::json& command) const;
    nlohmann::json Answer();
    nlohmann::json Ask(const nlohmann::json& command) {
        Tell(command);
        return Answer();
    }

private:
    int m_to = -1;
    int m_from = -1;
    pid_t m_pid = -1;
    std::string m_read;
    SearchedChannel m_errors;
};

} // namespace tolmtest
