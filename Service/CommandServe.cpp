#include "Service/CommandContext.h"

#include "Service/Service.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <ostream>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>

namespace tolm::service {
namespace {

struct ServeOptions {
    HttpServer::Settings http;
    UserStore::Settings users;
    std::string portFile;
    double idleMinutes = 480;
    double bodyLimit = 64; ///< MiB
    bool quiet = false;
};

/// Lets the signals that end the service wait until somebody asks for them. Threads begun later inherit it.
class EndSignals {
public:
    EndSignals() {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGTERM);
        sigaddset(&m_signals, SIGINT);
        pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
        std::signal(SIGPIPE, SIG_IGN);
    }
    void Wait() const {
        int signal = 0;
        sigwait(&m_signals, &signal);
    }

private:
    sigset_t m_signals{};
};

/// Appears as a whole, so that who waits for it never reads half a port.
void WritePortFile(const std::string& path, int port) {
    const auto beside = path + ".new";
    std::ofstream file(beside, std::ios::trunc);
    file << port << '\n';
    file.close();
    if (!file)
        throw std::runtime_error("the port file \"" + path + "\" cannot be written");
    std::filesystem::rename(beside, path);
}

std::function<void(const std::string&)> LineLog(std::ostream& out) {
    auto mutex = std::make_shared<std::mutex>();
    return [&out, mutex](const std::string& line) {
        const std::lock_guard lock(*mutex);
        out << line << std::endl;
    };
}

void ServeUntilSignal(HttpServer& http, const EndSignals& signals) {
    std::thread serving([&http] { http.Run(); });
    signals.Wait();
    http.Stop();
    serving.join();
}

void Serve(const CommandContext& context, ServeOptions options) {
    const EndSignals signals;
    umask(S_IRWXG | S_IRWXO);
    options.users.idleSeconds = static_cast<std::int64_t>(options.idleMinutes * 60);
    options.http.bodyLimit = static_cast<std::size_t>(options.bodyLimit * 1024 * 1024);
    if (!options.quiet)
        options.http.log = LineLog(context.streams.err);
    Service service(context.database, options.users, options.http);
    context.streams.out << "listening on http://" << options.http.address << ':' << service.Http().Port() << std::endl;
    if (!options.portFile.empty())
        WritePortFile(options.portFile, service.Http().Port());
    ServeUntilSignal(service.Http(), signals);
    context.streams.out << "stopped" << std::endl;
}

} // namespace

void AddServeCommand(CLI::App& app, CommandContext& context) {
    auto& command = *app.add_subcommand("serve", "Serve clients until SIGTERM or SIGINT");
    auto options = std::make_shared<ServeOptions>();
    AddDatabaseOption(command, context);
    command.add_option("--listen", options->http.address, "address to listen on")->capture_default_str();
    command.add_option("--port", options->http.port, "port; 0 takes a free one")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    command.add_option("--port-file", options->portFile, "file to write the port to, once the service listens");
    command.add_option("--idle-minutes", options->idleMinutes, "a sign-in that is not used for so long ends")
        ->check(CLI::Range(1.0, 1e6))
        ->capture_default_str();
    command.add_option("--body-limit", options->bodyLimit, "largest request body, in MiB")
        ->check(CLI::Range(0.001, 4096.0))
        ->capture_default_str();
    command.add_option("--threads", options->http.threads, "requests served at one time")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str();
    command.add_flag("--quiet", options->quiet, "write no line for each request");
    command.footer("Example:\n  tolm-service serve --db settings.db --listen 127.0.0.1 --port 0 --port-file port.txt");
    command.callback([&context, options] { context.chosen = [&context, options] { Serve(context, *options); }; });
}

} // namespace tolm::service
