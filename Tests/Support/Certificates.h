#pragma once

#include <memory>
#include <string>

using EVP_PKEY = struct evp_pkey_st;
using X509 = struct x509_st;

namespace tolmtest {

/// A certificate with its key, made for one test.
class Certificate {
public:
    struct Wish {
        std::string name = {};
        std::string subjectAltName = {}; ///< as "DNS:localhost,IP:127.0.0.1"; empty for none
        bool isAuthority = false;
        int validFrom = -1; ///< in days from now
        int validTo = 1;
    };

    /// Signed by `issuer`, or by itself where that is null.
    explicit Certificate(const Wish& wish, const Certificate* issuer = nullptr);

    X509* Get() const { return m_certificate.get(); }
    EVP_PKEY* Key() const { return m_key.get(); }
    /// The certificate alone, as text.
    std::string Pem() const;

private:
    std::shared_ptr<EVP_PKEY> m_key;
    std::shared_ptr<X509> m_certificate;
};

} // namespace tolmtest
