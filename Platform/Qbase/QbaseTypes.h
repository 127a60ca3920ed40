#pragma once

#include "Vorn/Export.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// A holder of wide text.
class TOLM_PLATFORM_API CWsz {
public:
    CWsz() = default;
    CWsz(const wchar_t* text) : m_text(text != nullptr ? text : L"") {}
    CWsz(const std::wstring& text) : m_text(text) {}
    CWsz(std::wstring&& text) noexcept : m_text(std::move(text)) {}
    /// From narrow text; the code page 0 is the system's, which is UTF-8.
    CWsz(const char* text, int codePage);

    operator const wchar_t*() const { return m_text.c_str(); }
    bool isEmpty() const { return m_text.empty(); }
    const std::wstring& str() const { return m_text; }
    /// The text, without a copy; nothing is to be expected of the holder afterwards but that it can be set again.
    std::wstring take() { return std::move(m_text); }

private:
    std::wstring m_text;
};

/// A list of wide texts.
class TOLM_PLATFORM_API CWszArray {
public:
    int length() const { return static_cast<int>(m_texts.size()); }
    /// `index` must be from 0 to `length()` - 1.
    const CWsz& wszAt(int index) const { return m_texts[static_cast<std::size_t>(index)]; }
    void append(const CWsz& text) { m_texts.push_back(text); }
    void append(CWsz&& text) { m_texts.push_back(std::move(text)); }
    /// Index of the first entry that is exactly this text; -1 when absent.
    int find(const wchar_t* text) const;
    void reset() { m_texts.clear(); }

private:
    std::vector<CWsz> m_texts;
};

/// A growable byte buffer.
class TOLM_PLATFORM_API CByteBuffer {
public:
    void reset() { m_bytes.clear(); }
    const char* data() const { return m_bytes.data(); }
    int dataLen() const { return static_cast<int>(m_bytes.size()); }
    void assign(const void* bytes, std::size_t count);

private:
    std::vector<char> m_bytes;
};

/// A list of floats.
class TOLM_PLATFORM_API CFloatArray {
public:
    void reset() { m_values.clear(); }
    int length() const { return static_cast<int>(m_values.size()); }
    /// `index` must be from 0 to `length()` - 1.
    float valueAt(int index) const { return m_values[static_cast<std::size_t>(index)]; }
    void append(float value) { m_values.push_back(value); }

private:
    std::vector<float> m_values;
};
