#include "MepDatabase/CloudTrust.h"

#include "Host/Trust.h"
#include "Vorn/Files.h"

#include <cpprest/http_client.h>

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <memory>
#include <stdexcept>

namespace tolm {
namespace {

using Authorities = std::shared_ptr<X509_STORE>;

/// Null for those of the system.
Authorities LoadAuthorities() {
    const std::wstring path = TolmTrustSettings::GetCertificateAuthorityFile();
    if (path.empty())
        return nullptr;
    Authorities authorities(X509_STORE_new(), &X509_STORE_free);
    if (authorities == nullptr ||
        X509_STORE_load_file(authorities.get(), vorn::FileSystem::ToNative(path).c_str()) != 1) {
        ERR_clear_error();
        throw std::runtime_error("The file of certificate authorities cannot be read");
    }
    return authorities;
}

} // namespace

void SetTrust(web::http::client::http_client_config& config) {
    config.set_ssl_context_callback([authorities = LoadAuthorities()](boost::asio::ssl::context& context) {
        SSL_CTX* const native = context.native_handle();
        if (SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION) != 1)
            throw std::runtime_error("TLS 1.2 cannot be had");
        if (authorities != nullptr)
            SSL_CTX_set1_cert_store(native, authorities.get());
    });
}

} // namespace tolm
