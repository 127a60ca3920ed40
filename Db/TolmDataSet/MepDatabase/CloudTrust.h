#pragma once

#include <string>

namespace web::http::client {
class http_client_config;
}

namespace tolm {

/// Prepares a connection over TLS: version 1.2 at least, and the host's authorities in place of the system's where it
/// names any. The certificate has to be for this host: a common name counts only where no other names are given. Throws
/// where the host's authorities cannot be read: nobody is trusted then.
void SetTrust(web::http::client::http_client_config& config, const std::string& host);

} // namespace tolm
