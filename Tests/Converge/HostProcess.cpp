#include "Converge/HostProcess.h"

#include "Support/Canary.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace tolmtest {
namespace {

/// Reading end and writing end, which no other child inherits.
std::array<int, 2> Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    return ends;
}

} // namespace

HostProcess::HostProcess() : m_errors("what a host says of errors") {
    const auto in = Pipe();
    const auto out = Pipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, m_errors.ChildsEnd(), STDERR_FILENO);
    std::string path = TOLM_CONVERGE_HOST;
    std::array<char*, 2> arguments{path.data(), nullptr};
    const int code = posix_spawn(&m_pid, path.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    m_errors.Begin();
    m_to = in[1];
    m_from = out[0];
    if (code != 0)
        throw std::runtime_error("the host does not start");
}

HostProcess::~HostProcess() {
    close(m_to);
    close(m_from);
    if (m_pid > 0)
        waitpid(m_pid, nullptr, 0);
    std::cerr << m_errors.Finish();
}

void HostProcess::Tell(const nlohmann::json& command) const {
    const std::string line = command.dump() + "\n";
    if (write(m_to, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        throw std::runtime_error("the host does not listen");
}

nlohmann::json HostProcess::Answer() {
    std::size_t end = m_read.find('\n');
    while (end == std::string::npos) {
        std::array<char, 8192> bytes{};
        const auto count = read(m_from, bytes.data(), bytes.size());
        if (count <= 0)
            throw std::runtime_error("the host is gone");
        m_read.append(bytes.data(), static_cast<std::size_t>(count));
        end = m_read.find('\n');
    }
    SearchForSecrets("the answer of a host", std::string_view(m_read).substr(0, end));
    const auto answer = nlohmann::json::parse(m_read.substr(0, end));
    m_read.erase(0, end + 1);
    return answer;
}

} // namespace tolmtest
