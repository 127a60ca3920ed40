#include "Tolm/TextTable.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace tolmcli {
namespace {

struct WideRange {
    char32_t first;
    char32_t last;
};

// Blocks whose characters are wide or full-width (Unicode Standard Annex 11).
constexpr std::array kWideRanges{
    WideRange{0x1100, 0x115F},   WideRange{0x2E80, 0x303E}, WideRange{0x3041, 0x33FF}, WideRange{0x3400, 0x4DBF},
    WideRange{0x4E00, 0x9FFF},   WideRange{0xA000, 0xA4CF}, WideRange{0xAC00, 0xD7A3}, WideRange{0xF900, 0xFAFF},
    WideRange{0xFE30, 0xFE6F},   WideRange{0xFF00, 0xFF60}, WideRange{0xFFE0, 0xFFE6}, WideRange{0x1F300, 0x1F64F},
    WideRange{0x20000, 0x3FFFD},
};

bool IsWide(wchar_t character) {
    const auto code = static_cast<char32_t>(character);
    return std::any_of(kWideRanges.begin(), kWideRanges.end(),
                       [code](const WideRange& range) { return code >= range.first && code <= range.last; });
}

bool IsNumber(const std::wstring& text) {
    return !text.empty() && text.find_first_not_of(L"0123456789.-+e") == std::wstring::npos;
}

void PrintCell(std::ostream& out, const std::wstring& text, std::size_t width, bool toTheRight, bool last) {
    const std::string padding(width - DisplayWidth(text), ' ');
    if (toTheRight)
        out << padding;
    out << vorn::StringUtil::ToString(text);
    if (!toTheRight && !last)
        out << padding;
    if (!last)
        out << "  ";
}

} // namespace

std::size_t DisplayWidth(const std::wstring& text) {
    std::size_t width = 0;
    for (const wchar_t character : text)
        width += IsWide(character) ? 2 : 1;
    return width;
}

std::wstring WithoutControls(std::wstring text) {
    std::replace_if(
        text.begin(), text.end(), [](wchar_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }, L'\xFFFD');
    return text;
}

void TextTable::Add(std::vector<std::wstring> row) {
    row.resize(m_header.size());
    std::transform(row.begin(), row.end(), row.begin(), WithoutControls);
    m_rows.push_back(std::move(row));
}

void TextTable::Print(std::ostream& out) const {
    const std::size_t columns = m_header.size();
    std::vector<std::size_t> widths;
    std::vector<bool> numeric(columns, !m_rows.empty());
    for (const auto& title : m_header)
        widths.push_back(DisplayWidth(title));
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < columns; ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
            numeric[i] = numeric[i] && (row[i].empty() || IsNumber(row[i]));
        }
    }
    const auto printRow = [&](const std::vector<std::wstring>& row) {
        for (std::size_t i = 0; i < columns; ++i)
            PrintCell(out, row[i], widths[i], numeric[i], i + 1 == columns);
        out << '\n';
    };
    printRow(m_header);
    std::vector<std::wstring> rule;
    for (const std::size_t width : widths)
        rule.emplace_back(width, L'-');
    printRow(rule);
    for (const auto& row : m_rows)
        printRow(row);
}

std::wstring Number(double value) {
    std::ostringstream text;
    text << std::setprecision(7) << value;
    return vorn::StringUtil::ToWString(text.str());
}

} // namespace tolmcli
