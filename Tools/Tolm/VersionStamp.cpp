#include "Tolm/VersionStamp.h"

#include "Host/Definitions.h"
#include "Qbase/Qbase.h"

namespace tolmcli {
namespace {

// The header record, as Docs/store-format.md gives it.
constexpr const char* kHeaderClass = "000";
constexpr const char* kHeaderId = "FileHeader";
constexpr short kLocalVersion = 1200;

long StandingVersion(CQbase& store) {
    long version = -1;
    return store.fetchFirstMember(kHeaderClass) && store.getLong(kLocalVersion, version) && version >= 0 ? version : -1;
}

bool Stamp(CQbase& store, long version) {
    return (store.fetchFirstMember(kHeaderClass) || store.createRec(kHeaderClass, kHeaderId)) &&
           store.setLong(kLocalVersion, version) && store.saveRec();
}

} // namespace

bool ReplaceVersion(const std::wstring& datasetPath, long expected, long& version) {
    CQbase store;
    if (!store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, datasetPath, false) || !store.lockForUpdate())
        return false;
    const long stands = StandingVersion(store);
    const bool isStamped = stands != expected || Stamp(store, version);
    if (stands != expected)
        version = stands;
    return store.closeDatabase() && isStamped;
}

} // namespace tolmcli
