#include "Tolm/SignIn.h"

#include "Host/Trust.h"
#include "Tolm/Errors.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

namespace tolmcli {
namespace {

using vorn::StringUtil;

/// Turns the echo of the terminal off while it lives.
class SilentTerminal {
public:
    SilentTerminal() {
        tcgetattr(STDIN_FILENO, &m_before);
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~SilentTerminal() { tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before); }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

private:
    termios m_before{};
};

std::string AskForSecret(const std::string& user) {
    if (const char* secret = std::getenv("TOLM_SECRET"))
        return secret;
    if (isatty(STDIN_FILENO) == 0)
        throw Failure("no secret for user " + user + ": set TOLM_SECRET");
    std::cerr << "Secret of " << user << ": " << std::flush;
    std::string secret;
    {
        const SilentTerminal silent;
        std::getline(std::cin, secret);
    }
    std::cerr << '\n';
    return secret;
}

/// The token of a sign-in's answer; empty when it holds none.
std::string TokenOf(const std::string& body) {
    const auto answer = nlohmann::json::parse(body, nullptr, false);
    if (!answer.is_object() || answer.value("code", nlohmann::json()) != "10000")
        return {};
    const auto data = answer.find("data");
    if (data == answer.end() || !data->is_object())
        return {};
    const auto token = data->find("token");
    return token != data->end() && token->is_string() ? token->get<std::string>() : std::string();
}

} // namespace

std::wstring SignIn(const std::wstring& server, const std::wstring& user) {
    const std::string host = StringUtil::ToString(server);
    const std::string name = StringUtil::ToString(user);
    httplib::Client client(host);
    if (!client.is_valid())
        throw Failure("not an address of a service: " + host, Misused);
    client.set_follow_location(false);
    const std::wstring authorities = tolm::TolmTrustSettings::GetCertificateAuthorityFile();
    if (!authorities.empty())
        client.set_ca_cert_path(vorn::FileSystem::ToNative(authorities).c_str());
    const nlohmann::json body{{"userId", name}, {"secret", AskForSecret(name)}};
    const auto result = client.Post("/api/SignIn", body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace),
                                    "application/json");
    if (!result)
        throw Failure("the service at " + host + " cannot be reached (" + httplib::to_string(result.error()) + ")");
    const std::string token = result->status == 200 ? TokenOf(result->body) : std::string();
    if (token.empty())
        throw Failure("the service at " + host + " does not let user " + name + " in");
    return StringUtil::ToWString(token);
}

} // namespace tolmcli
