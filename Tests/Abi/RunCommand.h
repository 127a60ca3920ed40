#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace tolmtest {

/// What a command prints. Throws when it cannot be run or fails.
inline std::string OutputOf(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::string output;
    char buffer[4096];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, pipe.get()))
        output.append(buffer, count);
    if (pclose(pipe.release()) != 0)
        throw std::runtime_error("failed: " + command + "\n" + output);
    return output;
}

} // namespace tolmtest
