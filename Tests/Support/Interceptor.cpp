#include "Support/Interceptor.h"

#include <httplib.h>

#include <algorithm>
#include <list>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace tolmtest {
namespace {

struct Canned {
    int status;
    std::string body;
};

/// What is to happen with one request.
struct Plan {
    std::string pathPrefix;
    std::function<void()> action;
    bool loseAnswer = false;
    std::optional<Canned> canned;
};

bool CutWithin(std::size_t, std::size_t, httplib::DataSink&) {
    return false;
}

} // namespace

class Interceptor::Impl {
public:
    explicit Impl(int targetPort) : m_targetPort(targetPort) {
        const auto handle = [this](const httplib::Request& request, httplib::Response& response) {
            Handle(request, response);
        };
        m_server.Get(".*", handle).Post(".*", handle);
        m_server.set_keep_alive_max_count(1);
        m_port = m_server.bind_to_any_port("127.0.0.1");
        if (m_port < 0)
            throw std::runtime_error("no port for the interceptor");
        m_thread = std::thread([this] { m_server.listen_after_bind(); });
    }
    ~Impl() {
        while (!m_server.is_running())
            std::this_thread::yield();
        m_server.stop();
        m_thread.join();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    int Port() const { return m_port; }

    void Add(Plan plan) {
        const std::lock_guard lock(m_mutex);
        m_plans.push_back(std::move(plan));
    }

    int Count(const std::string& pathPrefix) const {
        const std::lock_guard lock(m_mutex);
        return static_cast<int>(
            std::ranges::count_if(m_paths, [&](const auto& path) { return path.starts_with(pathPrefix); }));
    }

private:
    Plan TakePlan(const std::string& path) {
        const std::lock_guard lock(m_mutex);
        m_paths.push_back(path);
        const auto found =
            std::ranges::find_if(m_plans, [&](const Plan& plan) { return path.starts_with(plan.pathPrefix); });
        if (found == m_plans.end())
            return {};
        Plan plan = std::move(*found);
        m_plans.erase(found);
        return plan;
    }

    void Handle(const httplib::Request& request, httplib::Response& response) {
        const Plan plan = TakePlan(request.path);
        if (plan.action)
            plan.action();
        if (plan.canned) {
            response.status = plan.canned->status;
            response.set_content(plan.canned->body, "application/json");
            return;
        }
        PassOn(request, response);
        if (plan.loseAnswer) {
            const std::size_t size = response.body.size();
            response.body.clear();
            response.set_content_provider(size, "application/json", CutWithin);
        }
    }

    void PassOn(const httplib::Request& request, httplib::Response& response) const {
        httplib::Client client("127.0.0.1", m_targetPort);
        httplib::Request passed;
        passed.method = request.method;
        passed.path = request.path;
        passed.body = request.body;
        for (const char* name : {"x-kfe-userid", "Authorization", "Content-Type"}) {
            if (request.has_header(name))
                passed.set_header(name, request.get_header_value(name));
        }
        const auto answer = client.send(passed);
        response.status = answer ? answer->status : 502;
        response.set_content(answer ? answer->body : "", "application/json");
    }

    int m_targetPort;
    httplib::Server m_server;
    int m_port = -1;
    mutable std::mutex m_mutex;
    std::list<Plan> m_plans;
    std::vector<std::string> m_paths;
    std::thread m_thread;
};

Interceptor::Interceptor(int targetPort) : m_impl(std::make_unique<Impl>(targetPort)) {}

Interceptor::~Interceptor() = default;

std::wstring Interceptor::Address() const {
    return L"http://127.0.0.1:" + std::to_wstring(m_impl->Port());
}

void Interceptor::Before(const std::string& pathPrefix, std::function<void()> action) {
    m_impl->Add({pathPrefix, std::move(action), false, {}});
}

void Interceptor::LoseAnswer(const std::string& pathPrefix) {
    m_impl->Add({pathPrefix, {}, true, {}});
}

void Interceptor::Answer(const std::string& pathPrefix, int status, const std::string& body) {
    m_impl->Add({pathPrefix, {}, false, Canned{status, body}});
}

int Interceptor::Count(const std::string& pathPrefix) const {
    return m_impl->Count(pathPrefix);
}

} // namespace tolmtest
