#pragma once

#include "MepDatabase/CallSite.h"
#include "MepDatabase/ChangeTracking.h"
#include "MepDatabase/SharedReads.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/UploadTables.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace tolm {

/// The local changes of a dataset: what the status store notes, read from the data store. Both stores stay locked for
/// update as long as it lives, so that no edit slips in between reading and forgetting the changes.
///
/// Faults are reported in the name of the operation that made it. It is a local object of one operation and its
/// thread.
class ModifiedData {
public:
    ModifiedData(CallSite site, const wstring& datasetFilePath, wstring definitionPath, wstring componentFilePath);

    enum class Found {
        Changes, ///< both stores are open
        Nothing, ///< there is no status store, or no record in it
        Failure  ///< a store could not be opened
    };
    /// Looks for changes and opens both stores, the data store first. It looks under a read lock before it takes any
    /// other, and once more with both locks.
    Found Open();

    StoreFrame& Data() { return *m_data; }

    /// The following reads take changes of this kind.
    void Select(ChangeStatus status);
    /// The records of a class. One that the data store does not have is left out.
    template <class Record> typename UploadClass<Record>::List Records(const UploadClass<Record>& row);

    using IdsByTable = std::map<wstring, std::vector<wstring>>;
    /// The ids of a class by table, in the order of the tables' names. One that no row of the class fits is reported
    /// and left out.
    IdsByTable RemovedByTable(const RemovedClass& removed);
    std::vector<wstring> RemovedIds(const char* classCode);

    /// False, and reported, when a read failed for the disk's sake: what was read is then not all.
    bool IsWhole();

    /// Forgets the changes, which the service has, and closes. True when everything is on disk; what is not is
    /// reported.
    bool Finish();

private:
    Found Look(StoreFrame& status, StoreAccess access) const;
    std::optional<wstring> RemovedTableName(const RemovedClass& removed);

    CallSite m_site;
    wstring m_datasetPath;
    wstring m_statusPath;
    wstring m_definitionPath;
    SharedReads m_reads;
    std::optional<StoreFrame> m_data;
    std::optional<StoreFrame> m_status;
};

/// The same object under shared ownership, released as its owner says.
template <class Record> std::shared_ptr<const Record> Share(vorn::OwnerPtr<Record> owner) {
    const auto held = std::make_shared<vorn::OwnerPtr<Record>>(std::move(owner));
    return {held, held->get()};
}

template <class Record> typename UploadClass<Record>::List ModifiedData::Records(const UploadClass<Record>& row) {
    typename UploadClass<Record>::List list;
    CQbase& data = *m_data->get();
    CQbase& status = *m_status->get();
    for (bool more = status.fetchFirstMember(row.classCode); more; more = (status.*row.next)()) {
        auto record = ReadOne(data, row.classCode, CurrentId(status), m_site, row.notMade, row.make,
                              [&](auto& made) { return row.read(&data, made, m_reads); });
        if (record)
            list.push_back(Share(std::move(record)));
    }
    return list;
}

} // namespace tolm
