#pragma once

#include "Vorn/Export.h"

#include <array>
#include <cstdint>
#include <string>

namespace vorn {

/// A 128-bit globally unique identifier, its bytes in the order in which they are printed (RFC 4122).
struct Guid {
    std::array<std::uint8_t, 16> bytes{};
    friend bool operator==(const Guid&, const Guid&) = default;
};

/// An identifier of an object, made from a GUID.
class UniIdentity {
public:
    explicit UniIdentity(const Guid& guid) noexcept : m_guid(guid) {}
    const Guid& GetGuid() const noexcept { return m_guid; }

private:
    Guid m_guid;
};

/// Makes GUIDs and turns them to text. Any thread may call it.
class TOLM_PLATFORM_API GuidUtils {
public:
    using Generator = Guid (*)();

    /// A new random GUID (RFC 4122, version 4).
    static Guid Generate();

    /// Text of the identifier: 36 characters, in braces if `braces`, in upper case if `upperCase`.
    static std::wstring ToString(const UniIdentity& identity, bool braces, bool upperCase);
    static std::wstring ToString(const Guid& guid, bool braces, bool upperCase);

    /// Puts another source of GUIDs in place, for tests; null restores the system's.
    static void SetGenerator(Generator generator);
};

} // namespace vorn
