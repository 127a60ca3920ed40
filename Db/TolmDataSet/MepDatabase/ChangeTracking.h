#pragma once

#include "Qbase/Qbase.h"
#include "TolmDataSet/MepEnums.h"
#include "Vorn/OwnerPtr.h"

namespace tolm {

/// What the status store says of a record that changed since the last synchronisation. A record that it does not
/// hold is unchanged.
enum class ChangeStatus : std::int32_t { Created = 1, Edited = 2, Removed = 3 };

/// One change of a tracked record.
struct LocalChange {
    const char* classCode;
    wstring id;
    std::int32_t status; ///< a `ChangeStatus`
    short mepType;
    short disciplineId;
};

/// Notes a change in a status store that is open for update. What stood there decides what becomes of it: a record
/// created and removed since the last synchronisation leaves no trace, one that was created stays so when edited.
void NoteLocalChange(CQbase& status, const LocalChange& change);

/// The status store beside an open data store: what both change is committed together or not at all, when the data
/// store is closed. It is opened with the first change, so that no file comes into being for none. It is used on the
/// data store's thread and must be destroyed before the data store is closed.
class StatusCompanion {
public:
    /// `data` must be open until the companion is gone; `filePath` is its path.
    StatusCompanion(CQbase& data, const wstring& filePath, const wstring& ddqFilePath);

    /// Notes a change. False when the status store does not open; the data store is as it was then, and the status
    /// store is not tried again.
    bool Note(const LocalChange& change);

private:
    bool Open();

    CQbase& m_data;
    wstring m_statusPath;
    wstring m_ddqFilePath;
    vorn::OwnerPtr<CQbase> m_status;
    bool m_tried = false;
};

} // namespace tolm
