#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace tolmcli {

/// What a finding is about, in the order in which findings are told.
enum class FindingGroup { File, Record, List, Reference, Name, Change, Library };

/// Something about a dataset that is not as it should be.
struct Finding {
    FindingGroup group = FindingGroup::File;
    std::string classCode; ///< empty when it is about no record
    std::wstring id;
    std::wstring name;
    std::wstring text;
};

/// Value of one attribute; what the attribute's type does not have stays empty.
struct StoredValue {
    long number = 0;
    std::vector<std::wstring> texts;
    std::vector<double> reals;
    std::vector<char> bytes; ///< of a binary value or list
    std::size_t entryCount = 0;
};

/// One record with the attributes that it has, under their numbers.
struct StoredRecord {
    std::wstring id;
    std::map<short, StoredValue> values;

    /// The number or the text of an attribute; 0 or an empty text where the record lacks it.
    long Number(short attribute) const;
    std::wstring Text(short attribute) const;
};

/// The records of a store under the codes of their classes, in order of creation.
using StoreContents = std::map<std::string, std::vector<StoredRecord>>;

/// Number of the attribute that holds a record's name.
inline constexpr short kNameAttribute = 1601;

/// Reads every attribute of every record of a store, under a read lock. What cannot be read, and packed lists of a
/// wrong length, become findings; `what` is how they call the file. The contents are what could be read. Throws
/// Failure when the definition file cannot be read.
StoreContents WalkStore(const std::wstring& path, const std::wstring& what, std::vector<Finding>& findings);

/// Reads the same without looking records up by their ids and without a word on packed lists. Throws Failure when the
/// store cannot be read whole.
StoreContents ReadStore(const std::wstring& path, const std::wstring& what);

/// The records of a class; none where the store holds no such class.
const std::vector<StoredRecord>& RecordsOf(const StoreContents& contents, const std::string& classCode);

} // namespace tolmcli
