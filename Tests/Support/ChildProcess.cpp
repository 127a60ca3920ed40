#include "Support/ChildProcess.h"

#include "Support/Canary.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace tolmtest {

ChildProcess::ChildProcess(std::vector<std::string> words, rlim_t fileLimit)
    : m_program(words.at(0)), m_errors("what " + words.at(0) + " says of errors") {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    std::vector<char*> argv;
    for (auto& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    m_process = fork();
    if (m_process == 0)
        Become(argv, ends[1], m_errors.ChildsEnd(), fileLimit);
    close(ends[1]);
    m_output = ends[0];
    m_errors.Begin();
}

ChildProcess::~ChildProcess() {
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        Wait();
    }
    close(m_output);
}

std::string ChildProcess::ReadLine() const {
    std::string line;
    for (char c = 0; read(m_output, &c, 1) == 1 && c != '\n';)
        line.push_back(c);
    SearchForSecrets("the output of " + m_program, std::string_view(line));
    return line;
}

/// What it said and nobody read is searched too.
int ChildProcess::Wait() {
    int status = 0;
    waitpid(m_process, &status, 0);
    m_process = -1;
    m_errors.Finish();
    fcntl(m_output, F_SETFL, O_NONBLOCK);
    std::string rest;
    std::array<char, 8192> bytes{};
    for (ssize_t count = 0; (count = read(m_output, bytes.data(), bytes.size())) > 0;)
        rest.append(bytes.data(), static_cast<std::size_t>(count));
    SearchForSecrets("the output of " + m_program, std::string_view(rest));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void ChildProcess::Become(const std::vector<char*>& argv, int output, int errors, rlim_t fileLimit) {
    const rlimit noCore{0, 0};
    const rlimit longestFile{fileLimit, fileLimit};
    unsetenv("GTEST_TOTAL_SHARDS"); // a test program that a test runs is not one part of many
    unsetenv("GTEST_SHARD_INDEX");
    setrlimit(RLIMIT_CORE, &noCore);
    setrlimit(RLIMIT_FSIZE, &longestFile);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
}

} // namespace tolmtest
