#pragma once

#include "Service/Router.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace tolm::service {

/// The HTTP side: listens from construction on, serves while `Run` runs. Each connection carries one request.
class HttpServer {
public:
    struct Settings {
        std::string address = "127.0.0.1";
        int port = 0; ///< 0 takes a free one
        std::size_t threads = 16;
        std::size_t bodyLimit = 64U << 20;
        std::function<void(const std::string&)> log; ///< one line for each request; may be empty. Any thread calls it.
        /// For a request to come and for its answer to be taken; more for long ones.
        std::chrono::milliseconds patience{30'000};
    };

    /// Binds the address; throws `std::runtime_error` when it cannot.
    HttpServer(const Router& router, Settings settings);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    int Port() const;
    /// Serves until `Stop`; requests under way are finished.
    void Run();
    /// Any thread may call it, before `Run` has begun as well.
    void Stop();

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace tolm::service
