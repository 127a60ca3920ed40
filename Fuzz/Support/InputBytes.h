#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tolmfuzz {

/// Takes values from the bytes of an input, one after the other. Past the end every number is 0 and every text empty.
class InputBytes {
public:
    InputBytes(const std::uint8_t* data, std::size_t size) : m_rest(data, size) {}

    bool AtEnd() const { return m_rest.empty(); }

    std::uint32_t Number(int bytes) {
        std::uint32_t value = 0;
        for (int i = 0; i < bytes; ++i)
            value = value << 8 | Byte();
        return value;
    }
    /// A number below `limit`, which is at least 1, of as many bytes as given.
    std::size_t Below(std::size_t limit, int bytes = 1) { return Number(bytes) % limit; }

    std::string Text(std::size_t length) {
        length = std::min(length, m_rest.size());
        std::string text(m_rest.begin(), m_rest.begin() + static_cast<std::ptrdiff_t>(length));
        m_rest = m_rest.subspan(length);
        return text;
    }
    std::string Rest() { return Text(m_rest.size()); }

private:
    std::uint8_t Byte() {
        if (m_rest.empty())
            return 0;
        const std::uint8_t byte = m_rest.front();
        m_rest = m_rest.subspan(1);
        return byte;
    }

    std::span<const std::uint8_t> m_rest;
};

} // namespace tolmfuzz
