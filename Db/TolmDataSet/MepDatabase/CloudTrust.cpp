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

/// The HTTP library verifies the host itself, but takes a common name beside other names.
bool RequireHost(SSL_CTX* context, const std::string& host) {
    X509_VERIFY_PARAM* const parameters = SSL_CTX_get0_param(context);
    X509_VERIFY_PARAM_set_hostflags(parameters, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return X509_VERIFY_PARAM_set1_ip_asc(parameters, host.c_str()) == 1 ||
           X509_VERIFY_PARAM_set1_host(parameters, host.c_str(), host.size()) == 1;
}

void Prepare(SSL_CTX* context, const Authorities& authorities, const std::string& host) {
    if (SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) != 1 || !RequireHost(context, host))
        throw std::runtime_error("The connection cannot be made safe");
    if (authorities != nullptr)
        SSL_CTX_set1_cert_store(context, authorities.get());
    ERR_clear_error();
}

} // namespace

void SetTrust(web::http::client::http_client_config& config, const std::string& host) {
    config.set_ssl_context_callback([authorities = LoadAuthorities(), host](auto& context) {
        Prepare(context.native_handle(), authorities, host);
    });
}

} // namespace tolm
