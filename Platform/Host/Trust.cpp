#include "Host/Trust.h"

#include <mutex>

namespace tolm {
namespace {

struct AuthorityFile {
    std::mutex mutex;
    std::wstring path;
};

AuthorityFile& Authorities() {
    static AuthorityFile file;
    return file;
}

} // namespace

std::wstring TolmTrustSettings::GetCertificateAuthorityFile() {
    const std::lock_guard lock(Authorities().mutex);
    return Authorities().path;
}

void TolmTrustSettings::SetCertificateAuthorityFile(const std::wstring& path) {
    const std::lock_guard lock(Authorities().mutex);
    Authorities().path = path;
}

} // namespace tolm
