#pragma once

#include "MepDatabase/PackedLists.h"
#include "MepDatabase/StoreSchema.h"
#include "Qbase/Qbase.h"

#include <cpprest/json.h>

#include <array>
#include <cstddef>
#include <span>
#include <string>

/// What the ingest of all tables shares: records found or made by id, members of a row written to attributes by a
/// table, and lists packed into one attribute. A row that does not fit raises an exception, which spoils one unit of
/// work only; so does a record that cannot be made or stored.
namespace tolm::ingest {

/// How the value of a member becomes that of an attribute.
enum class FieldKind {
    Text,
    Short,
    Float,
    Time, ///< an unsigned 64-bit number, kept as a double
};

enum class Presence { Required, Optional };

/// One member of a row and the attribute that takes it. An optional member that is missing leaves the attribute.
struct Field {
    const char* key;
    short attribute;
    FieldKind kind;
    Presence presence = Presence::Required;
};

/// Writes the members to the current record, in the order of the table.
void WriteFields(CQbase& qb, std::span<const Field> fields, const web::json::object& row);

/// Makes the record of this id the current one. True when it had to be created.
bool FetchOrCreate(CQbase& qb, const char* classCode, const std::wstring& id);

/// Stores the current record.
void Save(CQbase& qb);

/// Does a step that sets nothing where it throws: then the current record is stored as it is.
template <class Step> auto DoOrSave(CQbase& qb, Step step) {
    try {
        return step();
    } catch (...) {
        Save(qb);
        throw;
    }
}

void SetText(CQbase& qb, short attribute, const std::wstring& text);
/// Empty when the current record lacks the attribute.
std::wstring GetText(CQbase& qb, short attribute);

/// A new identifier as text.
std::wstring NewId();

/// Throws when a list of this length cannot be packed.
void RequireRoom(std::size_t rowCount);

/// A list that a record keeps in one attribute, and how one row of "sizeList" becomes an entry of it.
struct SizeList {
    short attribute;
    std::size_t entrySize;
    void (*pack)(char* at, const web::json::object& row);
    bool isFloatArray = false; ///< kept as a float array and not as bytes
};

/// The rows of a content's "sizeList", packed.
class PackedSizes {
public:
    /// Reads the rows. The list must outlive it.
    PackedSizes(const SizeList& list, const web::json::value& content);
    /// Writes the rows to the list's attribute of the current record; without rows the attribute is removed.
    void WriteTo(CQbase& qb) const;

private:
    static constexpr std::size_t kWidestEntry = 56;

    const SizeList* m_list;
    std::array<char, kPackedListCapacity * kWidestEntry> m_entries; ///< filled as far as rows go
    int m_count = 0;
};

extern const SizeList kPipeSizes;
extern const SizeList kConduitSizes;
extern const SizeList kDuctSizes;
extern const SizeList kTraySizes;
extern const SizeList kCableSpecifications;

} // namespace tolm::ingest
