#include "Service/HttpServer.h"

#include "Service/Answer.h"
#include "Service/BoundedServer.h"
#include "Service/JsonText.h"

#include <httplib.h>

#include <atomic>
#include <limits>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

namespace tolm::service {
namespace {

constexpr auto kJson = "application/json";

/// A second service on the same port has to fail, not to share the port.
void LeavePortToOne(socket_t socket) {
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
}

void Put(httplib::Response& response, int status, std::string body) {
    response.status = status;
    response.body = std::move(body);
    response.set_header("Content-Type", kJson);
}

void PutRefusal(httplib::Response& response, const std::string& path, Answer answer, std::string_view message) {
    const auto status = Router::RefusesWithOk(path) ? 200 : RowOf(answer).httpStatus;
    Put(response, status, RefusalEnvelope(answer, message));
}

/// The refusal for a request that never came as far as a call.
Answer AnswerForStatus(int status) {
    switch (status) {
    case 404:
        return Answer::UnknownPath;
    case 413:
    case 414:
        return Answer::TooLarge;
    case 500:
        return Answer::Internal;
    default:
        return Answer::BadRequest;
    }
}

void PutEarlyRefusal(const httplib::Request&, httplib::Response& response) {
    if (!response.body.empty())
        return;
    const auto answer = AnswerForStatus(response.status);
    Put(response, response.status, RefusalEnvelope(answer, RowOf(answer).message));
}

RequestHead HeadOf(const httplib::Request& request) {
    return {request.method, request.path, request.get_header_value("x-kfe-userid"),
            request.get_header_value("Authorization")};
}

bool HasBody(const httplib::Request& request) {
    const auto length = request.get_header_value("Content-Length");
    return request.has_header("Transfer-Encoding") || (!length.empty() && length != "0");
}

/// Reads a body piece by piece, so that no more of it is kept than is allowed.
class BodyReader {
public:
    BodyReader(const httplib::Request& request, const httplib::ContentReader* reader, std::size_t limit)
        : m_request(request), m_reader(HasBody(request) ? reader : nullptr), m_limit(limit) {}

    std::string Read() {
        if (m_reader == nullptr)
            return {};
        if (m_request.is_multipart_form_data())
            throw Refusal(Answer::UnsupportedMedia);
        std::string body;
        const bool whole = Pull([&](const char* data, std::size_t size) { body.append(data, size); });
        if (m_taken > m_limit)
            throw Refusal(Answer::TooLarge);
        if (!whole)
            throw Refusal(Answer::BadRequest, "the body ended early");
        return body;
    }

    /// Takes what is still to come, within the limit, so that the peer gets to reading the answer.
    void Drain() {
        if (m_reader != nullptr && !m_request.is_multipart_form_data())
            Pull([](const char*, std::size_t) {});
    }

private:
    template <class Take> bool Pull(Take take) {
        const auto& reader = *std::exchange(m_reader, nullptr);
        return reader([&](const char* data, std::size_t size) {
            m_taken += size;
            if (m_taken > m_limit)
                return false;
            take(data, size);
            return true;
        });
    }

    const httplib::Request& m_request;
    const httplib::ContentReader* m_reader;
    std::size_t m_limit;
    std::size_t m_taken = 0;
};

} // namespace

struct HttpServer::Impl {
    const Router& router;
    Settings settings;
    BoundedServer server;
    int port = -1;
    std::atomic<bool> stopped = false;
    std::atomic<bool> done = false;

    void Log(const std::string& line) const {
        if (settings.log)
            settings.log(line);
    }

    void Serve(const httplib::Request& request, httplib::Response& response, BodyReader& body) const {
        const auto call = router.Match(HeadOf(request));
        Put(response, 200, SuccessEnvelope(router.Answer(call, body.Read())));
    }

    void Handle(const httplib::Request& request, httplib::Response& response,
                const httplib::ContentReader* reader) const {
        BodyReader body(request, reader, settings.bodyLimit);
        try {
            Serve(request, response, body);
        } catch (const Refusal& refusal) {
            body.Drain();
            PutRefusal(response, request.path, refusal.What(), refusal.what());
        } catch (const std::exception& error) {
            Log("fault: " + QuotedJson(error.what()));
            body.Drain();
            PutRefusal(response, request.path, Answer::Internal, RowOf(Answer::Internal).message);
        }
    }

    void SetHandlers() {
        const auto plain = [this](const httplib::Request& request, httplib::Response& response) {
            Handle(request, response, nullptr);
        };
        const auto reading = [this](const httplib::Request& request, httplib::Response& response,
                                    const httplib::ContentReader& reader) { Handle(request, response, &reader); };
        server.Get(".*", plain).Options(".*", plain);
        server.Post(".*", reading).Put(".*", reading).Patch(".*", reading).Delete(".*", reading);
        server.set_error_handler(PutEarlyRefusal);
        server.set_logger([this](const httplib::Request& request, const httplib::Response& response) {
            Log(request.method + " " + QuotedJson(request.path) + " " + std::to_string(response.status));
        });
    }

    void SetLimits() {
        server.set_socket_options(LeavePortToOne);
        server.set_keep_alive_max_count(1);
        server.set_tcp_nodelay(true);
        server.patience = settings.patience;
        // The limit is kept by BodyReader, which counts what comes out of a compressed body as well.
        server.set_payload_max_length(std::numeric_limits<std::size_t>::max());
        server.new_task_queue = [threads = settings.threads] { return new httplib::ThreadPool(threads); };
    }

    void Bind() {
        port = settings.port == 0                                     ? server.bind_to_any_port(settings.address)
               : server.bind_to_port(settings.address, settings.port) ? settings.port
                                                                      : -1;
        if (port < 0)
            throw std::runtime_error("cannot listen on " + settings.address + ", port " +
                                     std::to_string(settings.port));
    }
};

HttpServer::HttpServer(const Router& router, Settings settings) : m_impl(new Impl{router, std::move(settings), {}}) {
    m_impl->SetHandlers();
    m_impl->SetLimits();
    m_impl->Bind();
}

HttpServer::~HttpServer() = default;

int HttpServer::Port() const {
    return m_impl->port;
}

void HttpServer::Run() {
    if (!m_impl->stopped)
        m_impl->server.listen_after_bind();
    m_impl->done = true;
}

void HttpServer::Stop() {
    m_impl->stopped = true;
    while (!m_impl->server.is_running() && !m_impl->done)
        std::this_thread::yield();
    m_impl->server.stop();
}

} // namespace tolm::service
