#pragma once

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tolmtest {

/// A run of a program: its output can be read, what it says on the error channel is dropped. It is killed at the end
/// of the object, if it still runs.
class ChildProcess {
public:
    /// The first word is the program's path. With a limit, the system kills it at the first write to a file beyond so
    /// many bytes.
    explicit ChildProcess(std::vector<std::string> words, rlim_t fileLimit = RLIM_INFINITY) {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        std::vector<char*> argv;
        for (auto& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        m_process = fork();
        if (m_process == 0)
            Become(argv, ends[1], fileLimit);
        close(ends[1]);
        m_output = ends[0];
    }
    ~ChildProcess() {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            Wait();
        }
        close(m_output);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// The next line of its output; empty when it ends without one.
    std::string ReadLine() const {
        std::string line;
        for (char c = 0; read(m_output, &c, 1) == 1 && c != '\n';)
            line.push_back(c);
        return line;
    }
    void Signal(int signal) const { kill(m_process, signal); }
    /// Exit code, or minus the signal that ended it.
    int Wait() {
        int status = 0;
        waitpid(m_process, &status, 0);
        m_process = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    [[noreturn]] static void Become(const std::vector<char*>& argv, int output, rlim_t fileLimit) {
        const rlimit noCore{0, 0};
        const rlimit longestFile{fileLimit, fileLimit};
        unsetenv("GTEST_TOTAL_SHARDS"); // a test program that a test runs is not one part of many
        unsetenv("GTEST_SHARD_INDEX");
        setrlimit(RLIMIT_CORE, &noCore);
        setrlimit(RLIMIT_FSIZE, &longestFile);
        dup2(output, STDOUT_FILENO);
        dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        execv(argv[0], argv.data());
        _exit(127);
    }

    pid_t m_process = -1;
    int m_output = -1;
};

} // namespace tolmtest
