#pragma once

#include "Fuzz/Support/Increments.h"
#include "Support/TempFolder.h"

#include <string>

namespace tolmfuzz {

/// A folder in which the stores of the drivers come and go, and the bytes that they begin with, made once for the
/// process by the library itself from the rows of Corpus/Ingest. One thread at a time uses it.
class Workshop {
public:
    static Workshop& Get();

    /// A dataset as nothing but its schema, or with the rows of a project and local changes noted beside it, or with
    /// nothing at all. What stood there before is gone.
    enum class Begin { Nothing, Empty, Filled };
    const DatasetPlace& Prepare(Begin begin);

    /// Holds the folders to what belongs there: an input writes nothing outside of its own.
    void RequireNothingElse() const;

    const std::string& FilledBytes() const { return m_filled; }

private:
    Workshop();
    void MakeComponents() const;
    void MakeStores();
    void MakeLocalChanges() const;
    void MakeMethods() const;

    tolmtest::TempFolder m_outer;
    DatasetPlace m_place;
    std::wstring m_folder;
    std::string m_empty;
    std::string m_filled;
    std::string m_noted; ///< of the status store
    std::string m_products;
};

} // namespace tolmfuzz
