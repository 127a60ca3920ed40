#include "Tolm/NoteAll.h"

#include "Tolm/Errors.h"
#include "Tolm/StoreWalk.h"
#include "Tolm/Workplace.h"

#include "Host/Definitions.h"
#include "Qbase/Qbase.h"
#include "TolmDataSet/MepEnums.h"

#include <array>

namespace tolmcli {
namespace {

using Type = tolm::TolmProjectSettingMEPObjectType;

// Attributes of a status record, as Docs/store-format.md gives them.
constexpr short kMEPType = 1104;
constexpr short kStatus = 1109;
constexpr short kDisciplineId = 1181;
constexpr short kCreated = 1;

constexpr std::array kUploadedClasses{"SYS", "SMS", "PSI", "MTS", "MSG"};

/// Of the materials only those of pipes travel by themselves; the others travel within their size tables.
bool Travels(const std::string& code, const StoredRecord& record) {
    return code != "MTS" || record.Number(kMEPType) == static_cast<long>(Type::Pipe);
}

/// Settings that were removed here are not in the data store, and so keep their note.
bool Note(CQbase& status, const char* code, const StoredRecord& record) {
    const bool stands =
        status.existRec(code, record.id) ? status.fetchEqualRec(code, record.id) : status.createRec(code, record.id);
    return stands && status.setShort(kStatus, kCreated) &&
           status.setShort(kMEPType, static_cast<short>(record.Number(kMEPType))) &&
           status.setShort(kDisciplineId, static_cast<short>(record.Number(kDisciplineId))) && status.saveRec();
}

[[noreturn]] void FailToNote(const CQbase& status) {
    throw Failure("the settings could not be noted for the upload (error " + std::to_string(status.getLastError()) +
                  ")");
}

} // namespace

std::size_t NoteEverythingAsCreated(const std::wstring& datasetPath) {
    const StoreContents contents = ReadStore(datasetPath, L"dataset");
    CQbase status;
    if (!status.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, StatusPath(datasetPath), true) ||
        !status.lockForUpdate())
        FailToNote(status);
    std::size_t noted = 0;
    for (const char* code : kUploadedClasses) {
        for (const StoredRecord& record : RecordsOf(contents, code)) {
            if (!Travels(code, record))
                continue;
            if (!Note(status, code, record))
                FailToNote(status);
            ++noted;
        }
    }
    if (!status.closeDatabase())
        FailToNote(status);
    return noted;
}

} // namespace tolmcli
