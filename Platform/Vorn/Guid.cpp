#include "Vorn/Guid.h"

#include <uuid/uuid.h>

#include <atomic>

namespace vorn {
namespace {

constinit std::atomic<GuidUtils::Generator> g_generator = nullptr;

Guid GenerateRandom() {
    Guid guid;
    uuid_generate_random(guid.bytes.data());
    return guid;
}

/// True where a hyphen stands before the byte of this index.
constexpr bool StartsGroup(std::size_t index) {
    return index == 4 || index == 6 || index == 8 || index == 10;
}

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
    std::wstring text;
    text.reserve(38);
    if (braces)
        text += L'{';
    for (std::size_t i = 0; i < guid.bytes.size(); ++i) {
        if (StartsGroup(i))
            text += L'-';
        text += digits[guid.bytes[i] >> 4];
        text += digits[guid.bytes[i] & 0x0F];
    }
    if (braces)
        text += L'}';
    return text;
}

void GuidUtils::SetGenerator(Generator generator) {
    g_generator = generator;
}

} // namespace vorn
