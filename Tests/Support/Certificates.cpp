#include "Support/Certificates.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace tolmtest {
namespace {

constexpr long kSecondsOfADay = 24 * 60 * 60;

void Need(bool done) {
    if (!done)
        throw std::runtime_error("the certificate cannot be made");
}

void SetName(X509_NAME* subject, const std::string& name) {
    const auto* text = reinterpret_cast<const unsigned char*>(name.c_str());
    Need(X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8, text, -1, -1, 0) == 1);
}

void AddExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
        X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()), &X509_EXTENSION_free);
    Need(extension != nullptr && X509_add_ext(certificate, extension.get(), -1) == 1);
}

long NextSerial() {
    static long serial = 0;
    return ++serial;
}

} // namespace

Certificate::Certificate(const Wish& wish, const Certificate* issuer)
    : m_key(EVP_EC_gen("P-256"), &EVP_PKEY_free), m_certificate(X509_new(), &X509_free) {
    Need(m_key != nullptr && m_certificate != nullptr);
    const Certificate& signer = issuer != nullptr ? *issuer : *this;
    X509* const certificate = m_certificate.get();
    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), NextSerial());
    X509_gmtime_adj(X509_getm_notBefore(certificate), wish.validFrom * kSecondsOfADay);
    X509_gmtime_adj(X509_getm_notAfter(certificate), wish.validTo * kSecondsOfADay);
    SetName(X509_get_subject_name(certificate), wish.name);
    Need(X509_set_issuer_name(certificate, X509_get_subject_name(signer.Get())) == 1);
    Need(X509_set_pubkey(certificate, m_key.get()) == 1);
    AddExtension(certificate, signer.Get(), NID_basic_constraints, wish.isAuthority ? "critical,CA:TRUE" : "CA:FALSE");
    if (!wish.subjectAltName.empty())
        AddExtension(certificate, signer.Get(), NID_subject_alt_name, wish.subjectAltName);
    Need(X509_sign(certificate, signer.Key(), EVP_sha256()) > 0);
}

std::string Certificate::Pem() const {
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), &BIO_free);
    Need(PEM_write_bio_X509(memory.get(), Get()) == 1);
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

} // namespace tolmtest
