#include "Qbase/SchemaPagesInternal.h"

#include "Qbase/RawFileInternal.h"
#include "Qbase/StoreFileInternal.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace qbase {
namespace {

using Bytes = std::vector<unsigned char>;

// Positions in the header of an SQLite file, which stands at the beginning of its first page.
constexpr std::size_t kHeaderSize = 100;
constexpr std::size_t kPageSizeAt = 16;
constexpr std::size_t kPageCountAt = 28;

/// What two files of one format have in common: not how often they changed and how many pages they have.
struct Range {
    std::size_t from;
    std::size_t to;
};
constexpr Range kCommon[] = {{0, 24}, {44, 48}, {52, 72}};

// Positions in a page of a table's tree, behind the file's header on the first page.
constexpr unsigned char kInterior = 5;
constexpr unsigned char kLeaf = 13;
constexpr std::size_t kCellCountAt = 3;
constexpr std::size_t kLastChildAt = 8;
constexpr std::size_t kCellsAt = 12;
constexpr std::size_t kLeafCellsAt = 8;
/// What a page keeps for itself at most when a row fills it, generously.
constexpr std::size_t kBesidePayload = 512;

std::uint32_t Number(const Bytes& bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + size && i < bytes.size(); ++i)
        value = (value << 8) | bytes[i];
    return value;
}

/// Empty where the file is shorter.
Bytes Read(sqlite3_file& file, std::size_t at, std::size_t size) {
    Bytes bytes(size);
    if (file.pMethods->xRead(&file, bytes.data(), static_cast<int>(size), static_cast<sqlite3_int64>(at)) != SQLITE_OK)
        bytes.clear();
    return bytes;
}

sqlite3_file* MainFileOf(Connection& connection) {
    sqlite3_file* file = nullptr;
    const int code = sqlite3_file_control(connection.Get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    return code == SQLITE_OK && file != nullptr && file->pMethods != nullptr ? file : nullptr;
}

/// The pages below the first one; nothing where the tree is of another shape.
std::vector<std::uint32_t> ChildrenOf(const Bytes& first) {
    std::vector<std::uint32_t> children;
    const std::size_t count = Number(first, kHeaderSize + kCellCountAt, 2);
    for (std::size_t i = 0; i < count; ++i)
        children.push_back(Number(first, Number(first, kHeaderSize + kCellsAt + 2 * i, 2), 4));
    children.push_back(Number(first, kHeaderSize + kLastChildAt, 4));
    return children;
}

/// Two files that are compared page by page.
class Pair {
public:
    Pair(sqlite3_file& known, sqlite3_file& other) : m_known(known), m_other(other) {}

    bool HaveSameSchema() {
        const Bytes header = Read(m_known, 0, kHeaderSize);
        m_pageSize = Number(header, kPageSizeAt, 2);
        const Bytes first = Read(m_known, 0, m_pageSize);
        const Bytes other = Read(m_other, 0, m_pageSize);
        if (first.size() <= kHeaderSize || other.size() != first.size() || !AreAlike(first, other))
            return false;
        if (first[kHeaderSize] == kLeaf)
            return IsSelfContained(first, kHeaderSize);
        return first[kHeaderSize] == kInterior &&
               std::ranges::all_of(ChildrenOf(first), [this](std::uint32_t child) { return IsSameLeaf(child); });
    }

    /// How many pages the other file has, by its size and by its header; 0 where these do not agree.
    sqlite3_int64 PageCount() {
        sqlite3_int64 size = 0;
        if (m_other.pMethods->xFileSize(&m_other, &size) != SQLITE_OK)
            return 0;
        const sqlite3_int64 count = Number(Read(m_other, 0, kHeaderSize), kPageCountAt, 4);
        return count <= size / static_cast<sqlite3_int64>(m_pageSize) ? count : 0;
    }

private:
    static bool AreAlike(const Bytes& first, const Bytes& other) {
        const auto isSame = [&](const Range& range) {
            return std::equal(first.begin() + range.from, first.begin() + range.to, other.begin() + range.from);
        };
        return std::ranges::all_of(kCommon, isSame) && isSame({kHeaderSize, first.size()});
    }

    bool IsSameLeaf(std::uint32_t number) {
        if (number < 2)
            return false;
        const std::size_t at = (std::size_t{number} - 1) * m_pageSize;
        const Bytes page = Read(m_known, at, m_pageSize);
        return !page.empty() && page.front() == kLeaf && IsSelfContained(page, 0) &&
               page == Read(m_other, at, m_pageSize);
    }

    /// True when no row of the leaf, whose tree header stands at the place, goes on on another page.
    bool IsSelfContained(const Bytes& page, std::size_t header) const {
        const std::size_t count = Number(page, header + kCellCountAt, 2);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t cell = Number(page, header + kLeafCellsAt + 2 * i, 2);
            if (PayloadSize(Number(page, cell, 2)) + kBesidePayload > m_pageSize)
                return false;
        }
        return true;
    }

    /// Of a cell that begins with these two bytes: seven bits of each, the first of them telling whether the next
    /// follows.
    static std::size_t PayloadSize(std::uint32_t begin) {
        const std::size_t high = begin >> 8;
        const std::size_t low = begin & 0xFF;
        if (high < 0x80)
            return high;
        return low < 0x80 ? ((high & 0x7F) << 7) | low : std::numeric_limits<std::uint16_t>::max();
    }

    sqlite3_file& m_known;
    sqlite3_file& m_other;
    std::size_t m_pageSize = 0;
};

/// The last page on which a table or an index of the main file begins.
sqlite3_int64 LastRoot(Connection& connection) {
    return connection.Query("SELECT max(rootpage) FROM main.sqlite_schema");
}

} // namespace

bool HasSchemaOfMain(Connection& connection, const std::string& path) {
    sqlite3_file* const known = MainFileOf(connection);
    if (known == nullptr || IdentityOf(path + "-journal"))
        return false;
    RawFile other(path);
    Pair pair(*known, other.Get());
    return pair.HaveSameSchema() && LastRoot(connection) <= pair.PageCount();
}

} // namespace qbase
