#include "Qbase/ValuesInternal.h"

#include <algorithm>
#include <bit>

namespace qbase {
namespace {

constexpr int kFirstAttributeColumn = 2;

void LoadCell(Cell& cell, const Statement& row, int column) {
    switch (row.ColumnType(column)) {
    case SQLITE_INTEGER:
        cell.Set(std::int64_t{row.Integer(column)});
        break;
    case SQLITE_FLOAT:
        cell.Set(row.Real(column));
        break;
    case SQLITE_TEXT:
        cell.SetBytes(Cell::Kind::Text, row.Bytes(column));
        break;
    case SQLITE_BLOB:
        cell.SetBytes(Cell::Kind::Blob, row.Bytes(column));
        break;
    default:
        cell.Clear();
        break;
    }
}

} // namespace

bool Record::HasChanges() const {
    return std::ranges::find(changed, true) != changed.end();
}

void Record::Load(ClassTable& from, const Statement& row) {
    state = State::Stored;
    table = &from;
    number = row.Integer(0);
    id = row.Bytes(1);
    const std::size_t count = from.Definition().attributes.size();
    cells.resize(count);
    changed.assign(count, false);
    for (std::size_t i = 0; i < count; ++i)
        LoadCell(cells[i], row, static_cast<int>(i) + kFirstAttributeColumn);
}

void Record::Start(ClassTable& in, std::string_view newId) {
    state = State::New;
    table = &in;
    number = std::numeric_limits<sqlite3_int64>::max(); // after all others, until it is saved
    id = newId;
    epoch.reset();
    const std::size_t count = in.Definition().attributes.size();
    cells.assign(count, {});
    changed.assign(count, false);
}

void Record::Bind(Statement& statement, int index, std::size_t position) const {
    const Cell& cell = cells[position];
    switch (cell.kind) {
    case Cell::Kind::Missing:
        return statement.BindNull(index);
    case Cell::Kind::Integer:
        return statement.Bind(index, sqlite3_int64{cell.integer});
    case Cell::Kind::Real:
        return statement.Bind(index, cell.real);
    case Cell::Kind::Text:
        return statement.BindText(index, cell.bytes);
    case Cell::Kind::Blob:
        return statement.BindBlob(index, cell.bytes);
    }
}

std::string EncodeFloats(const float* values, std::size_t count) {
    std::string bytes;
    bytes.reserve(count * sizeof(float));
    for (std::size_t i = 0; i < count; ++i) {
        const auto bits = std::bit_cast<std::uint32_t>(Finite<float>(double{values[i]}));
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>((bits >> shift) & 0xff);
    }
    return bytes;
}

bool DecodeFloats(std::string_view bytes, std::vector<float>& values) {
    if (bytes.size() % sizeof(float) != 0)
        return false;
    values.clear();
    for (std::size_t at = 0; at < bytes.size(); at += sizeof(float)) {
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < sizeof(float); ++i)
            bits |= std::uint32_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
        values.push_back(Finite<float>(double{std::bit_cast<float>(bits)}));
    }
    return true;
}

} // namespace qbase
