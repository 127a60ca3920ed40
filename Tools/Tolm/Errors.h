#pragma once

#include <stdexcept>
#include <string>

namespace tolmcli {

/// Exit codes of the command.
enum ExitCode { Done = 0, Failed = 1, Misused = 2, Refused = 3 };

/// Something went wrong; the text tells the user what and, where it can, what to do about it.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& text, ExitCode code = Failed) : std::runtime_error(text), m_code(code) {}
    ExitCode Code() const { return m_code; }

private:
    ExitCode m_code;
};

} // namespace tolmcli
