#pragma once

#include "MepDatabase/AttributeTable.h"
#include "MepDatabase/CallSite.h"
#include "MepDatabase/ChangeTracking.h"
#include "Qbase/Qbase.h"
#include "TolmDataSet/MepEnums.h"
#include "Vorn/OwnerPtr.h"

#include <optional>
#include <utility>
#include <vector>

namespace tolm {

/// What an operation wants of the store.
enum class StoreAccess {
    Read,          ///< read lock; the file must exist
    Write,         ///< update lock; the file comes into being
    Change,        ///< update lock; the file must exist
    ChangeUnlocked ///< no lock, each record is committed by itself; the file must exist
};

/// The frame of one store operation: makes a handle, opens and locks a store with it, and closes it at the end,
/// also while an exception is under way. The destructor never throws.
///
/// Faults are reported in the name of the operation that made the frame. It is a local object of one operation and
/// its thread; with it go the handle and the status store beside it.
class StoreFrame {
public:
    /// A handle that cannot be made is reported as `notMade`, and nothing opens.
    explicit StoreFrame(CallSite site, const wchar_t* notMade = L"qb为空");
    /// Closes the store if `Close` did not; what was changed is kept where it can be.
    ~StoreFrame() = default;
    StoreFrame(const StoreFrame&) = delete;
    StoreFrame& operator=(const StoreFrame&) = delete;

    /// True when the store is open and locked as asked for. Reports nothing but a fault of its caller: who holds the
    /// status store of a dataset on this thread is refused its data store, since everybody takes the data store
    /// first.
    bool Open(const wstring& filePath, const wstring& ddqFilePath, StoreAccess access);
    /// Commits and closes. Where that fails nothing of the changes is kept, which is reported, and false.
    bool Close();

    /// True, and reported in the name of `site`, when this thread holds the status store of the dataset at the path:
    /// two processes that took the two locks crosswise would wait for each other. To be asked before a lock on a data
    /// store is taken past `Open`.
    static bool IsOutOfOrder(const CallSite& site, const wstring& dataPath);

    bool IsMade() const { return m_qb.get() != nullptr; }
    CQbase* get() const { return m_qb.get(); }
    CQbase* operator->() const { return m_qb.get(); }
    CQbase& operator*() const { return *m_qb; }

    /// Notes a change in the status store beside this one, in the same commit. Where the status store does not open
    /// the change of the data stands, unknown to the next upload; this is not reported.
    void Track(const LocalChange& change);

    /// The record whose id `record` gives, created where it does not exist, and what that makes of it. An empty id
    /// is replaced by a generated one, here and not in the record. Empty when neither was possible.
    struct Target {
        wstring id;
        ChangeStatus status;
    };
    std::optional<Target> FetchOrCreate(const char* classCode, wstring id);

    /// Writes one record of a tracked class and closes: `setAttributes(CQbase&)` sets what the record says.
    template <class Record, class SetAttributes>
    bool WriteTracked(const char* classCode, const Record& record, SetAttributes setAttributes) {
        const auto target = FetchOrCreate(classCode, record.GetId());
        if (target) {
            setAttributes(*m_qb);
            m_qb->saveRec();
            Track(ChangeOf(classCode, target->id, target->status, record));
        }
        if (!Close())
            return false;
        if (!target)
            m_site.Warn(L"createRec 失败");
        return target.has_value();
    }

    /// Deletes the records of a tracked class that exist and closes. A null entry is reported as `nullEntry`.
    template <class Record>
    bool DeleteTracked(const char* classCode, const std::vector<const Record*>& records, const wchar_t* nullEntry) {
        for (const Record* record : records) {
            if (record == nullptr)
                m_site.Warn(nullEntry);
            else
                DeleteOne(classCode, *record);
        }
        return Close();
    }

    /// Walks the records of a class through the filters. `make()` gives a new object, empty ones are reported as
    /// `notMade`; `read(object)` fills it from the current record, which must be current again afterwards; an object
    /// for which it returns true goes to the list.
    template <class Record, class Make, class Read>
    void ReadAll(const char* classCode, const wchar_t* notMade, Make make, Read read,
                 std::vector<vorn::OwnerPtr<Record>>& list) {
        for (bool more = m_qb->fetchFirstMember(classCode); more; more = m_qb->fetchNextMember()) {
            vorn::OwnerPtr<Record> object = make();
            if (object == nullptr)
                m_site.Warn(notMade);
            else if (read(object))
                list.push_back(std::move(object));
        }
    }

    /// Makes the handles of all frames; null restores the usual way. For tests of what happens without one.
    using Maker = vorn::OwnerPtr<CQbase> (*)();
    static void SetMaker(Maker maker);

private:
    template <class Record>
    static LocalChange ChangeOf(const char* classCode, const wstring& id, ChangeStatus status, const Record& record) {
        return {classCode, id, static_cast<std::int32_t>(status), ToShort(record.GetMEPType()),
                ToShort(record.GetDisciplineId())};
    }

    template <class Record> void DeleteOne(const char* classCode, const Record& record) {
        const wstring id = record.GetId();
        if (m_qb->existRec(classCode, id) && m_qb->deleteRec(classCode, id))
            Track(ChangeOf(classCode, id, ChangeStatus::Removed, record));
    }

    CallSite m_site;
    vorn::OwnerPtr<CQbase> m_qb;
    std::optional<StatusCompanion> m_status; // after the store: it must go first
    wstring m_filePath;
    wstring m_ddqFilePath;
};

/// The id of the current record; empty when there is none.
wstring CurrentId(CQbase& qb);

/// `id`, or a generated one in place of an empty one.
wstring IdOrNew(wstring id);

/// The ids that an attribute of the current record lists, the first hundred of them; none when it is missing.
std::vector<wstring> ReadIdList(CQbase& qb, short attributeId);

/// Makes the record of this class and id the current one and reads it: `make()` gives a new object, an empty one is
/// reported as `notMade` in the name of `site`; `read(object)` fills it. Empty without such a record, and when either
/// fails.
template <class Make, class Read>
auto ReadOne(CQbase& qb, const char* classCode, const wstring& id, CallSite site, const wchar_t* notMade, Make make,
             Read read) -> decltype(make()) {
    if (id.empty() || !qb.fetchEqualRec(classCode, id))
        return {};
    auto object = make();
    if (object == nullptr) {
        site.Warn(notMade);
        return {};
    }
    return read(object) ? std::move(object) : decltype(make())();
}

} // namespace tolm
