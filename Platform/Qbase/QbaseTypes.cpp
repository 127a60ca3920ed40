#include "Qbase/QbaseTypes.h"

#include "Vorn/Text.h"

#include <algorithm>

CWsz::CWsz(const char* text, int) {
    if (text != nullptr)
        m_text = vorn::StringUtil::ToWString(text);
}

int CWszArray::find(const wchar_t* text) const {
    if (text == nullptr)
        return -1;
    const auto found = std::ranges::find(m_texts, std::wstring_view(text), &CWsz::str);
    return found == m_texts.end() ? -1 : static_cast<int>(found - m_texts.begin());
}

void CByteBuffer::assign(const void* bytes, std::size_t count) {
    const char* first = static_cast<const char*>(bytes);
    m_bytes.assign(first, first + count);
}
