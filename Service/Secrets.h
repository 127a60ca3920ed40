#pragma once

#include <string>
#include <string_view>

namespace tolm::service {

/// What is kept of a secret: enough to know it again, not enough to tell it.
struct SecretHash {
    std::string salt; ///< hexadecimal
    std::string hash; ///< hexadecimal, PBKDF2 with HMAC-SHA-256
    int rounds = 0;
};

/// A secret with a fresh salt.
SecretHash HashSecret(std::string_view secret, int rounds);
/// Compares in a time that does not depend on where the two differ.
bool IsSecret(std::string_view secret, const SecretHash& kept);

/// A fresh token: 256 random bits in hexadecimal.
std::string MakeToken();
/// What is kept of a token: its SHA-256 in hexadecimal.
std::string HashToken(std::string_view token);
/// SHA-256 of a text, in hexadecimal.
std::string HashText(std::string_view text);

} // namespace tolm::service
