#include "Tolm/SignIn.h"

#include "Host/Trust.h"
#include "Tolm/Errors.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <httplib.h>
#include <nlohmann/json.hpp>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <set>
#include <strings.h>
#include <vector>

namespace tolmcli {
namespace {

using vorn::StringUtil;

CallLimits g_limits = kSignInLimits;

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

/// A peer that goes away while OpenSSL writes to it ends the process by a signal, which is held back while this lives.
class HeldPipeSignal {
public:
    HeldPipeSignal() {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
    }
    ~HeldPipeSignal() {
        const timespec atOnce{};
        while (sigtimedwait(&m_pipe, nullptr, &atOnce) > 0) {
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    HeldPipeSignal(const HeldPipeSignal&) = delete;
    HeldPipeSignal& operator=(const HeldPipeSignal&) = delete;

private:
    sigset_t m_pipe{};
    sigset_t m_before{};
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

/// The host of an address, without scheme, port and brackets.
std::string HostOf(const std::string& address) {
    const auto scheme = address.find("://");
    const std::string rest = scheme == std::string::npos ? address : address.substr(scheme + 3);
    if (rest.starts_with('['))
        return rest.substr(1, rest.find(']') - 1);
    return rest.substr(0, rest.find_first_of(":/?#"));
}

/// The HTTP library verifies the host itself, but takes a common name beside other names.
bool RequireSafety(SSL_CTX* context, const std::string& host) {
    X509_VERIFY_PARAM* const parameters = SSL_CTX_get0_param(context);
    X509_VERIFY_PARAM_set_hostflags(parameters, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    const bool isRequired = X509_VERIFY_PARAM_set1_ip_asc(parameters, host.c_str()) == 1 ||
                            X509_VERIFY_PARAM_set1_host(parameters, host.c_str(), host.size()) == 1;
    ERR_clear_error();
    return isRequired && SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) == 1;
}

/// Throws Failure when the connection cannot be made safe. The watch hears of the client's sockets.
void Prepare(httplib::Client& client, const std::string& address, CallWatch& watch) {
    client.set_follow_location(false);
    client.set_socket_options([&watch](socket_t socket) { watch.Watch(socket); });
    const auto longer = 2 * g_limits.time; // the watch is to end it
    client.set_connection_timeout(longer);
    client.set_read_timeout(longer);
    client.set_write_timeout(longer);
    if (SSL_CTX* const context = client.ssl_context(); context != nullptr && !RequireSafety(context, HostOf(address)))
        throw Failure("the connection to " + address + " cannot be made safe");
    const std::wstring authorities = tolm::TolmTrustSettings::GetCertificateAuthorityFile();
    if (!authorities.empty())
        client.set_ca_cert_path(vorn::FileSystem::ToNative(authorities).c_str());
}

httplib::Request RequestWith(const nlohmann::json& body, std::string& answer) {
    httplib::Request request;
    request.method = "POST";
    request.path = "/api/SignIn";
    request.body = body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    request.headers.emplace("Content-Type", "application/json");
    request.content_receiver = [&answer](const char* bytes, std::size_t count, std::uint64_t, std::uint64_t) {
        answer.append(bytes, count);
        return answer.size() <= g_limits.bytes;
    };
    return request;
}

std::string CauseOf(CallWatch::End end, httplib::Error error) {
    if (end == CallWatch::End::TooLate)
        return "it did not answer in time";
    if (end == CallWatch::End::TooMuch || error == httplib::Error::Canceled)
        return "it answers without end";
    return httplib::to_string(error);
}

/// Whether a type of content is that of JSON, with or without parameters.
bool IsJson(const std::string& contentType) {
    std::string type = contentType.substr(0, contentType.find(';'));
    type.erase(type.find_last_not_of(" \t") + 1);
    return strcasecmp(type.c_str(), "application/json") == 0;
}

/// Hears a JSON text read, and whether it is one that has only one meaning: without two members of one name, and no
/// deeper than anybody writes.
class PlainJson {
public:
    bool Hear(int depth, nlohmann::json::parse_event_t event, const nlohmann::json& parsed) {
        using Event = nlohmann::json::parse_event_t;
        m_isPlain = m_isPlain && depth <= kDeepest;
        if (event == Event::object_start)
            m_names.emplace_back();
        else if (event == Event::object_end)
            m_names.pop_back();
        else if (event == Event::key)
            m_isPlain = m_names.back().insert(parsed.get<std::string>()).second && m_isPlain;
        return true;
    }
    bool IsPlain() const { return m_isPlain; }

private:
    static constexpr int kDeepest = 128;
    std::vector<std::set<std::string>> m_names; ///< of the objects that are open
    bool m_isPlain = true;
};

/// The token of a sign-in's answer; empty when it holds none.
std::string TokenOf(const std::string& body) {
    PlainJson plain;
    const auto answer = nlohmann::json::parse(
        body, [&plain](int depth, auto event, const auto& parsed) { return plain.Hear(depth, event, parsed); }, false);
    if (!plain.IsPlain())
        return {};
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
    const nlohmann::json body{{"userId", name}, {"secret", AskForSecret(name)}};
    std::string answer;
    const HeldPipeSignal held;
    CallWatch watch(g_limits);
    Prepare(client, host, watch);
    const auto result = client.send(RequestWith(body, answer));
    if (!result)
        throw Failure("the service at " + host + " cannot be reached (" + CauseOf(watch.Ended(), result.error()) + ")");
    const bool isAnswer = result->status == 200 && IsJson(result->get_header_value("Content-Type"));
    const std::string token = isAnswer ? TokenOf(answer) : std::string();
    if (token.empty())
        throw Failure("the service at " + host + " does not let user " + name + " in");
    return StringUtil::ToWString(token);
}

void SetSignInLimits(const CallLimits& limits) {
    g_limits = limits;
}

} // namespace tolmcli
