#include "Qbase/TextListInternal.h"

#include <array>
#include <charconv>
#include <cstdint>

namespace qbase {
namespace {

struct Escape {
    char letter;
    char meaning;
};

constexpr std::array kEscapes{Escape{'"', '"'},  Escape{'\\', '\\'}, Escape{'/', '/'},  Escape{'b', '\b'},
                              Escape{'f', '\f'}, Escape{'n', '\n'},  Escape{'r', '\r'}, Escape{'t', '\t'}};

constexpr std::string_view kHexDigits = "0123456789abcdef";

void AppendEscaped(std::string& json, char c) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
        json += '\\';
        json += c;
    } else if (byte < 0x20) {
        json += "\\u00";
        json += kHexDigits[byte >> 4];
        json += kHexDigits[byte & 0xf];
    } else {
        json += c;
    }
}

void AppendUtf8(std::string& text, std::uint32_t code) {
    const auto tail = [&](int shift) { text += static_cast<char>(0x80 | ((code >> shift) & 0x3f)); };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xc0 | (code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xe0 | (code >> 12));
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xf0 | (code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

bool IsHighSurrogate(std::uint32_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool IsLowSurrogate(std::uint32_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

class Reader {
public:
    explicit Reader(std::string_view json) : m_rest(json) {}

    bool ReadList(std::vector<std::string>& texts) {
        if (!Take('['))
            return false;
        if (!Take(']')) {
            do {
                if (!ReadString(texts.emplace_back()))
                    return false;
            } while (Take(','));
            if (!Take(']'))
                return false;
        }
        SkipSpace();
        return m_rest.empty();
    }

private:
    void SkipSpace() {
        const auto next = m_rest.find_first_not_of(" \t\r\n");
        m_rest.remove_prefix(next == std::string_view::npos ? m_rest.size() : next);
    }

    bool Take(char c) {
        SkipSpace();
        if (m_rest.empty() || m_rest.front() != c)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    bool ReadString(std::string& text) {
        if (!Take('"'))
            return false;
        while (!m_rest.empty()) {
            const char c = m_rest.front();
            m_rest.remove_prefix(1);
            if (c == '"')
                return true;
            if (c != '\\')
                text += c;
            else if (!ReadEscape(text))
                return false;
        }
        return false;
    }

    bool ReadEscape(std::string& text) {
        if (m_rest.empty())
            return false;
        const char letter = m_rest.front();
        m_rest.remove_prefix(1);
        if (letter == 'u')
            return ReadCode(text);
        for (const auto& escape : kEscapes) {
            if (escape.letter == letter) {
                text += escape.meaning;
                return true;
            }
        }
        return false;
    }

    bool ReadUnit(std::uint32_t& unit) {
        if (m_rest.size() < 4)
            return false;
        const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + 4, unit, 16);
        if (error != std::errc() || end != m_rest.data() + 4)
            return false;
        m_rest.remove_prefix(4);
        return true;
    }

    bool ReadCode(std::string& text) {
        std::uint32_t unit = 0;
        if (!ReadUnit(unit) || IsLowSurrogate(unit))
            return false;
        if (IsHighSurrogate(unit)) {
            std::uint32_t low = 0;
            if (!m_rest.starts_with("\\u"))
                return false;
            m_rest.remove_prefix(2);
            if (!ReadUnit(low) || !IsLowSurrogate(low))
                return false;
            unit = 0x10000 + ((unit - 0xd800) << 10) + (low - 0xdc00);
        }
        AppendUtf8(text, unit);
        return true;
    }

    std::string_view m_rest;
};

} // namespace

std::string EncodeTextList(const std::vector<std::string>& texts) {
    std::string json = "[";
    for (const auto& text : texts) {
        json += json.size() > 1 ? ",\"" : "\"";
        for (const char c : text)
            AppendEscaped(json, c);
        json += '"';
    }
    json += ']';
    return json;
}

bool DecodeTextList(std::string_view json, std::vector<std::string>& texts) {
    std::vector<std::string> read;
    if (!Reader(json).ReadList(read))
        return false;
    texts = std::move(read);
    return true;
}

} // namespace qbase
