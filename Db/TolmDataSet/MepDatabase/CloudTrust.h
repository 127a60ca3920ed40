#pragma once

namespace web::http::client {
class http_client_config;
}

namespace tolm {

/// Prepares a connection over TLS: version 1.2 at least, and the host's authorities in place of the system's where it
/// names any. The HTTP library verifies certificate and host name against them. Throws where the host's authorities
/// cannot be read: nobody is trusted then.
void SetTrust(web::http::client::http_client_config& config);

} // namespace tolm
