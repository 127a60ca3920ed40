#pragma once

#include "Support/Certificates.h"

#include <memory>
#include <string>
#include <vector>

namespace tolmtest {

/// A server on the loopback address that speaks TLS with this certificate and answers each request with 200 and the
/// same JSON text, one request a connection. Any thread may call it; the destructor waits for its thread.
class TlsServer {
public:
    enum class Protocol { Newest, Only12, Only13, AtMost11, AtMost10 };

    TlsServer(const Certificate& certificate, std::string json, Protocol protocol = Protocol::Newest);
    ~TlsServer();
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    /// "https://host:port"
    std::wstring Address(const std::wstring& host) const;

    /// What was read of requests so far, through the encryption.
    std::vector<std::string> Requests() const;
    /// Connections that came in, whatever became of them.
    int ConnectionCount() const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace tolmtest
