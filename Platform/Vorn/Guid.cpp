#include "Vorn/Guid.h"

#include <uuid/uuid.h>

#include <algorithm>
#include <atomic>
#include <pthread.h>
#include <sys/random.h>

namespace vorn {
namespace {

constinit std::atomic<GuidUtils::Generator> g_generator = nullptr;

/// How often this process came out of a fork since it began to count. Asking the system for the process is dear.
constinit std::atomic<unsigned> g_forks = 0;

bool CountsForks() {
    static const bool counts = pthread_atfork(nullptr, nullptr, [] { ++g_forks; }) == 0;
    return counts;
}

/// Random bytes of the system for several GUIDs at a time, of one thread. A process that was forked asks anew.
class RandomBytes {
public:
    /// False when the system has none to give.
    bool Take(Guid& guid) {
        if ((m_used == m_bytes.size() || m_forks != g_forks) && !Fill())
            return false;
        std::copy_n(m_bytes.begin() + m_used, guid.bytes.size(), guid.bytes.begin());
        m_used += guid.bytes.size();
        return true;
    }

private:
    /// Where nobody tells of forks there is no more than one to give.
    bool Fill() {
        const std::size_t first = CountsForks() ? 0 : m_bytes.size() - sizeof(Guid::bytes);
        m_forks = g_forks;
        m_used = getentropy(m_bytes.data(), m_bytes.size()) == 0 ? first : m_bytes.size();
        return m_used == first;
    }

    std::array<std::uint8_t, 256> m_bytes{}; // as many as are given at once
    std::size_t m_used = m_bytes.size();
    unsigned m_forks = 0;
};

/// Version 4 of variant 1 (RFC 4122, section 4.4).
void MarkAsRandom(Guid& guid) {
    guid.bytes[6] = static_cast<std::uint8_t>((guid.bytes[6] & 0x0F) | 0x40);
    guid.bytes[8] = static_cast<std::uint8_t>((guid.bytes[8] & 0x3F) | 0x80);
}

Guid GenerateRandom() {
    thread_local RandomBytes random;
    Guid guid;
    if (random.Take(guid))
        MarkAsRandom(guid);
    else
        uuid_generate_random(guid.bytes.data());
    return guid;
}

/// Where the digits of each byte stand; between them are the hyphens.
constexpr std::array<std::uint8_t, 16> kPlaces{0, 2, 4, 6, 9, 11, 14, 16, 19, 21, 24, 26, 28, 30, 32, 34};

} // namespace

Guid GuidUtils::Generate() {
    const Generator generator = g_generator.load();
    return generator != nullptr ? generator() : GenerateRandom();
}

std::wstring GuidUtils::ToString(const UniIdentity& identity, bool braces, bool upperCase) {
    return ToString(identity.GetGuid(), braces, upperCase);
}

std::wstring GuidUtils::ToString(const Guid& guid, bool braces, bool upperCase) {
    const wchar_t* const digits = upperCase ? L"0123456789ABCDEF" : L"0123456789abcdef";
    std::wstring text(braces ? 38 : 36, L'-');
    wchar_t* const first = text.data() + (braces ? 1 : 0);
    for (std::size_t i = 0; i < kPlaces.size(); ++i) {
        first[kPlaces[i]] = digits[guid.bytes[i] >> 4];
        first[kPlaces[i] + 1] = digits[guid.bytes[i] & 0x0F];
    }
    if (braces) {
        text.front() = L'{';
        text.back() = L'}';
    }
    return text;
}

void GuidUtils::SetGenerator(Generator generator) {
    g_generator = generator;
}

} // namespace vorn
