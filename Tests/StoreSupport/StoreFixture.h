#pragma once

#include "Host/Definitions.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Qbase/Qbase.h"
#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"
#include "TolmDataSet/ITolmDataSetFactory.h"
#include "Vorn/Files.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tolmtest {

using tolm::wstring;

/// What a person sees who opens a store with any SQLite tool: the rows of a query, its values as text, "NULL" for a
/// missing one. A query that fails throws.
using SqlRow = std::vector<std::string>;
std::vector<SqlRow> Sql(const wstring& path, const std::string& query);
/// The one value of a query.
std::string SqlValue(const wstring& path, const std::string& query);

/// The bytes of a file.
std::string FileBytes(const wstring& path);

/// A fresh dataset path with its companions, nothing on disk yet.
class StoreFixture : public testing::Test {
protected:
    bool Exists(const wstring& at) const { return vorn::FileInfo(at).Exists(); }
    /// Makes an empty data store.
    void MakeStore() { MakeStoreAt(path); }
    void MakeStoreAt(const wstring& at) const;
    /// "class id status type discipline" of each status record, in order of creation within the classes given.
    std::vector<std::string> StatusRecords() const;

    TempFolder folder;
    const wstring path = folder.File(L"set.db");
    const wstring statusPath = folder.File(L"set_Status.db");
    const wstring ddq = tolm::DataSetFilePath::TOLMDDQFilePath;
    tolm::MepQbaseUtil& util = *tolm::MepQbaseUtil::GetInstance();
};

/// While it lives, the library's factory makes nothing.
class EmptyFactory {
public:
    EmptyFactory();
    ~EmptyFactory();
    EmptyFactory(const EmptyFactory&) = delete;
    EmptyFactory& operator=(const EmptyFactory&) = delete;

private:
    class Factory;
    tolm::ITolmDataSetFactory* m_before;
    std::unique_ptr<Factory> m_factory;
};

/// While it lives, no handle on a store can be made.
class NoStoreHandles {
public:
    NoStoreHandles();
    ~NoStoreHandles();
    NoStoreHandles(const NoStoreHandles&) = delete;
    NoStoreHandles& operator=(const NoStoreHandles&) = delete;
};

} // namespace tolmtest
