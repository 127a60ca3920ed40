#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tolmcli {

/// Columns that a terminal shows the text in; East Asian wide characters take two.
std::size_t DisplayWidth(const std::wstring& text);

/// Control characters would let a name rewrite the terminal: each becomes U+FFFD.
std::wstring WithoutControls(std::wstring text);

/// A table with aligned columns. Columns that hold only numbers are aligned to the right.
class TextTable {
public:
    explicit TextTable(std::vector<std::wstring> header) : m_header(std::move(header)) {}
    /// A row with fewer cells than the header is filled up with empty ones.
    void Add(std::vector<std::wstring> row);
    std::size_t RowCount() const { return m_rows.size(); }
    void Print(std::ostream& out) const;

private:
    std::vector<std::wstring> m_header;
    std::vector<std::vector<std::wstring>> m_rows;
};

/// A number without needless digits: 25 and not 25.000000.
std::wstring Number(double value);

} // namespace tolmcli
