#pragma once

#include <functional>
#include <memory>
#include <string>

namespace tolmtest {

/// Stands before a service and passes requests on, and answers back. A test says what else is to happen, each time for
/// the next request alone whose path begins with a prefix: others come first, the answer is lost, the answer is another
/// one. Any thread may call it; the destructor finishes what is under way.
class Interceptor {
public:
    explicit Interceptor(int targetPort);
    ~Interceptor();
    Interceptor(const Interceptor&) = delete;
    Interceptor& operator=(const Interceptor&) = delete;

    /// "http://127.0.0.1:port"
    std::wstring Address() const;

    /// Does something before the request is passed on. Several for one prefix serve one request each, in their order.
    void Before(const std::string& pathPrefix, std::function<void()> action);
    /// Passes the request on and cuts the connection within the answer.
    void LoseAnswer(const std::string& pathPrefix);
    /// Answers in place of the service.
    void Answer(const std::string& pathPrefix, int status, const std::string& body);

    /// How many requests with this prefix came in.
    int Count(const std::string& pathPrefix) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace tolmtest
