#pragma once

#include "Support/SearchedChannel.h"

#include <csignal>
#include <string>
#include <sys/resource.h>
#include <sys/types.h>
#include <vector>

namespace tolmtest {

/// A run of a program: its output can be read, what it says on the error channel is dropped. Both are searched for
/// secrets. It is killed at the end of the object, if it still runs.
class ChildProcess {
public:
    /// The first word is the program's path. With a limit, the system kills it at the first write to a file beyond so
    /// many bytes.
    explicit ChildProcess(std::vector<std::string> words, rlim_t fileLimit = RLIM_INFINITY);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// The next line of its output; empty when it ends without one.
    std::string ReadLine() const;
    void Signal(int signal) const { kill(m_process, signal); }
    /// Exit code, or minus the signal that ended it.
    int Wait();

private:
    [[noreturn]] static void Become(const std::vector<char*>& argv, int output, int errors, rlim_t fileLimit);

    std::string m_program;
    pid_t m_process = -1;
    int m_output = -1;
    SearchedChannel m_errors;
};

} // namespace tolmtest
