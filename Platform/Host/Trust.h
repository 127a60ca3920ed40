#pragma once

#include "Vorn/Export.h"

#include <string>

namespace tolm {

/// Who vouches for a service that is reached over TLS. Certificates and host names are always verified; nothing turns
/// that off. Any thread may set it and ask for it; it holds for calls that begin afterwards.
class TOLM_PLATFORM_API TolmTrustSettings {
public:
    /// A file of one or several certificates in PEM; empty stands for the system's authorities.
    static std::wstring GetCertificateAuthorityFile();
    /// The file's authorities take the place of the system's. While it cannot be read, every call over TLS fails.
    static void SetCertificateAuthorityFile(const std::wstring& path);
};

} // namespace tolm
