#pragma once

#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tolmtest {

/// A kind of record that is merged: its table, and the rows by which the cloud adds and deletes one.
struct MergedKind {
    const char* name; ///< of the tests
    const char* classCode;
    const wchar_t* key;
    const char* table; ///< of the increment
    short mepType;
    short disciplineId;
    const char* addRow; ///< with "%ID" and "%NAME"
    const char* delRow; ///< with "%ID"
};
void PrintTo(const MergedKind& kind, std::ostream* out);

/// One kind for each form of a merge and each class.
extern const std::vector<MergedKind> kMergedKinds;

/// An open data store and an open status store, and increments that are merged into them.
class TableMergeFixture : public IngestFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Adds the row by which the cloud adds this record to the increment that comes next.
    void CloudAdds(const MergedKind& kind, const wstring& id, const wstring& name);
    void CloudDeletes(const MergedKind& kind, const wstring& id);
    void CloudModifies(const MergedKind& kind, const wstring& id, const wstring& name);
    /// Adds a row of any form, with single quotation marks.
    void CloudAddsRow(const char* table, const std::string& row);
    void CloudDeletesRow(const char* table, const std::string& row);

    /// Puts a record into the data store.
    void Stands(const MergedKind& kind, const wstring& id, const wstring& name);
    /// Notes a local change.
    void Notes(const MergedKind& kind, const wstring& id, short status);
    void NotesAt(const char* classCode, const wstring& id, short status, short mepType, short disciplineId);

    /// Merges the table of this kind.
    bool Merge(const MergedKind& kind);

    /// Name of a record; "gone" without one.
    wstring NameOf(const MergedKind& kind, const wstring& id);
    /// Status of a record; 0 without one.
    short StatusOf(const MergedKind& kind, const wstring& id);
    /// "class id status" of all status records, in the order of classes.
    std::vector<std::string> Notes();

    web::json::value add = web::json::value::object();
    web::json::value del = web::json::value::object();
    const wstring statusPath = folder.File(L"set_Status.db");
    CQbase statusQb;
};

} // namespace tolmtest
