#include "Service/Secrets.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <array>
#include <span>
#include <stdexcept>

namespace tolm::service {
namespace {

using Bytes32 = std::array<unsigned char, 32>;

std::string ToHex(std::span<const unsigned char> bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const auto byte : bytes)
        text.append({digits[byte >> 4], digits[byte & 15]});
    return text;
}

void Check(int opensslResult, const char* what) {
    if (opensslResult != 1)
        throw std::runtime_error(std::string("the cryptographic library failed: ") + what);
}

Bytes32 RandomBytes() {
    Bytes32 bytes{};
    Check(RAND_bytes(bytes.data(), static_cast<int>(bytes.size())), "random bytes");
    return bytes;
}

std::string Derive(std::string_view secret, const std::string& salt, int rounds) {
    Bytes32 derived{};
    Check(PKCS5_PBKDF2_HMAC(secret.data(), static_cast<int>(secret.size()),
                            reinterpret_cast<const unsigned char*>(salt.data()), static_cast<int>(salt.size()), rounds,
                            EVP_sha256(), static_cast<int>(derived.size()), derived.data()),
          "PBKDF2");
    return ToHex(derived);
}

} // namespace

SecretHash HashSecret(std::string_view secret, int rounds) {
    SecretHash made;
    made.salt = ToHex(RandomBytes());
    made.hash = Derive(secret, made.salt, rounds);
    made.rounds = rounds;
    return made;
}

bool IsSecret(std::string_view secret, const SecretHash& kept) {
    const auto hash = Derive(secret, kept.salt, kept.rounds);
    return hash.size() == kept.hash.size() && CRYPTO_memcmp(hash.data(), kept.hash.data(), hash.size()) == 0;
}

std::string MakeToken() {
    return ToHex(RandomBytes());
}

std::string HashToken(std::string_view token) {
    return HashText(token);
}

std::string HashText(std::string_view text) {
    Bytes32 digest{};
    unsigned int size = 0;
    Check(EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_sha256(), nullptr), "SHA-256");
    return ToHex(digest);
}

} // namespace tolm::service
