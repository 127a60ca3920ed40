#include "Support/FaultyFiles.h"

#include "Vorn/Files.h"

#include <sqlite3.h>

#include <cstring>
#include <new>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace tolmtest {

namespace {

/// The system's own layer.
sqlite3_vfs* Real() {
    static sqlite3_vfs* const real = sqlite3_vfs_find("unix");
    return real;
}

/// An open file: SQLite's own one stands behind it in memory.
struct WatchedFile {
    sqlite3_file base;
    FaultyFiles* faults;
    char* path;       ///< as SQLite keeps it for as long as the file is open
    bool syncsFolder; ///< with its first sync, as SQLite's own files do

    sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

WatchedFile& Of(sqlite3_file* file) {
    return *reinterpret_cast<WatchedFile*>(file);
}
FaultyFiles& FaultsOf(sqlite3_vfs* vfs) {
    return *static_cast<FaultyFiles*>(vfs->pAppData);
}

int Close(sqlite3_file* file) {
    sqlite3_file* const real = Of(file).Real();
    const int code = real->pMethods->xClose(real);
    sqlite3_free(Of(file).path);
    return code;
}

/// A read that fails has brought a part of the bytes. A disk ends none early but at the end of a file: the system asks
/// again, and gets the rest or an error.
int Read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 at) {
    sqlite3_file* const real = Of(file).Real();
    if (!Of(file).faults->Look(Of(file).path, "read"))
        return real->pMethods->xRead(real, bytes, count, at);
    std::memset(bytes, 0xA5, static_cast<std::size_t>(count));
    real->pMethods->xRead(real, bytes, count / 2, at);
    return SQLITE_IOERR_READ;
}

/// A write that fails has written a part, what fits on a disk that fills up.
int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
    FaultyFiles& faults = *Of(file).faults;
    const bool fails = faults.Change(Of(file).path, "write");
    const int room = fails ? count / 2 : faults.Room(Of(file).path, count);
    if (faults.CutsPower())
        faults.Log().AddWrite(Of(file).path, at, bytes, static_cast<std::size_t>(count));
    sqlite3_file* const real = Of(file).Real();
    const int code = room > 0 ? real->pMethods->xWrite(real, bytes, room, at) : SQLITE_OK;
    if (fails)
        return SQLITE_IOERR_WRITE;
    return room < count ? SQLITE_FULL : code;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    FaultyFiles& faults = *Of(file).faults;
    if (faults.Change(Of(file).path, "truncate"))
        return SQLITE_IOERR_TRUNCATE;
    if (faults.CutsPower())
        faults.Log().AddTruncation(Of(file).path, size);
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xTruncate(real, size);
}

/// Counts, and is done: the system itself goes on running in a test.
int Sync(sqlite3_file* file, int) {
    FaultyFiles& faults = *Of(file).faults;
    if (faults.Change(Of(file).path, "sync"))
        return SQLITE_IOERR_FSYNC;
    faults.Log().Sync(Of(file).path);
    if (std::exchange(Of(file).syncsFolder, false))
        faults.Log().SyncFolderOf(Of(file).path);
    return SQLITE_OK;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    if (Of(file).faults->Look(Of(file).path, "size"))
        return SQLITE_IOERR_FSTAT;
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xFileSize(real, size);
}
int Lock(sqlite3_file* file, int level) {
    if (Of(file).faults->Look(Of(file).path, "lock"))
        return SQLITE_IOERR_LOCK;
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xLock(real, level);
}
int Unlock(sqlite3_file* file, int level) {
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xUnlock(real, level);
}
int CheckReservedLock(sqlite3_file* file, int* reserved) {
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xCheckReservedLock(real, reserved);
}
int FileControl(sqlite3_file* file, int operation, void* argument) {
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xFileControl(real, operation, argument);
}
int SectorSize(sqlite3_file* file) {
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xSectorSize(real);
}
/// Promises nothing: what SQLite does to be safe on any disk is done here too.
int DeviceCharacteristics(sqlite3_file*) {
    return 0;
}

/// The memory that processes share over a write-ahead log is no matter of the disk: it is made anew from the log.
int ShmMap(sqlite3_file* file, int page, int size, int extend, void volatile** memory) {
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xShmMap(real, page, size, extend, memory);
}
int ShmLock(sqlite3_file* file, int at, int count, int flags) {
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xShmLock(real, at, count, flags);
}
void ShmBarrier(sqlite3_file* file) {
    sqlite3_file* const real = Of(file).Real();
    real->pMethods->xShmBarrier(real);
}
int ShmUnmap(sqlite3_file* file, int removes) {
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xShmUnmap(real, removes);
}

constexpr sqlite3_io_methods kMethods{2,
                                      Close,
                                      Read,
                                      Write,
                                      Truncate,
                                      Sync,
                                      FileSize,
                                      Lock,
                                      Unlock,
                                      CheckReservedLock,
                                      FileControl,
                                      SectorSize,
                                      DeviceCharacteristics,
                                      ShmMap,
                                      ShmLock,
                                      ShmBarrier,
                                      ShmUnmap,
                                      nullptr,
                                      nullptr};

bool Stands(const char* path) {
    return ::access(path, F_OK) == 0;
}

/// The flags with which a file opens that may not be written, as the system's own layer falls back to them.
int ForReadingOnly(int flags) {
    return (flags & ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) | SQLITE_OPEN_READONLY;
}

/// Files whose folder is synced with them.
constexpr int kSyncTheirFolder = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL | SQLITE_OPEN_WAL;

int Open(sqlite3_vfs* vfs, sqlite3_filename path, sqlite3_file* file, int flags, int* outFlags) {
    FaultyFiles& faults = FaultsOf(vfs);
    if (!faults.Watches(path))
        return Real()->xOpen(Real(), path, file, flags, outFlags);
    auto* const watched = new (file) WatchedFile{};
    const bool creates = (flags & SQLITE_OPEN_CREATE) != 0 && !Stands(path);
    if (creates ? faults.Change(path, "create") : faults.Look(path, "open"))
        return SQLITE_CANTOPEN;
    const int asked = faults.OpensForReadingOnly(path) ? ForReadingOnly(flags) : flags;
    const int code = Real()->xOpen(Real(), path, watched->Real(), asked, outFlags);
    if (code != SQLITE_OK)
        return code;
    if (creates && faults.CutsPower())
        faults.Log().AddCreation(path);
    watched->faults = &faults;
    watched->path = sqlite3_mprintf("%s", path);
    watched->syncsFolder = creates && (flags & kSyncTheirFolder) != 0;
    watched->base.pMethods = &kMethods;
    return SQLITE_OK;
}

int Delete(sqlite3_vfs* vfs, const char* path, int syncFolder) {
    FaultyFiles& faults = FaultsOf(vfs);
    if (!faults.Watches(path))
        return Real()->xDelete(Real(), path, syncFolder);
    faults.TellOfDeletion(path);
    if (Stands(path) && (faults.OpensForReadingOnly(path) || faults.Change(path, "delete")))
        return SQLITE_IOERR_DELETE;
    if (faults.CutsPower())
        faults.Log().AddDeletion(path);
    const int code = Real()->xDelete(Real(), path, syncFolder);
    if (syncFolder != 0)
        faults.Log().SyncFolderOf(path);
    return code;
}

int Access(sqlite3_vfs* vfs, const char* path, int flags, int* result) {
    FaultyFiles& faults = FaultsOf(vfs);
    if (faults.Watches(path) && faults.Look(path, "access"))
        return SQLITE_IOERR_ACCESS;
    return Real()->xAccess(Real(), path, flags, result);
}
int FullPathname(sqlite3_vfs*, const char* path, int size, char* whole) {
    return Real()->xFullPathname(Real(), path, size, whole);
}
int Randomness(sqlite3_vfs*, int count, char* bytes) {
    return Real()->xRandomness(Real(), count, bytes);
}
int Sleep(sqlite3_vfs*, int microseconds) {
    return Real()->xSleep(Real(), microseconds);
}
int GetLastError(sqlite3_vfs*, int size, char* text) {
    return Real()->xGetLastError(Real(), size, text);
}
int CurrentTimeInt64(sqlite3_vfs*, sqlite3_int64* time) {
    return Real()->xCurrentTimeInt64(Real(), time);
}

/// The one layer that SQLite knows; its name and its functions never change.
sqlite3_vfs& Layer() {
    static sqlite3_vfs layer{};
    return layer;
}

} // namespace

FaultyFiles* FaultyFiles::Living() {
    return static_cast<FaultyFiles*>(Layer().pAppData);
}

FaultyFiles::FaultyFiles(const std::wstring& folder) : FileFaults(vorn::FileSystem::ToNative(folder)) {
    sqlite3_vfs& layer = Layer();
    if (Real() == nullptr || layer.pAppData != nullptr)
        throw std::logic_error("one FaultyFiles at a time");
    layer = {};
    layer.iVersion = 2;
    layer.szOsFile = static_cast<int>(sizeof(WatchedFile)) + Real()->szOsFile;
    layer.mxPathname = Real()->mxPathname;
    layer.zName = "faulty";
    layer.pAppData = this;
    layer.xOpen = Open;
    layer.xDelete = Delete;
    layer.xAccess = Access;
    layer.xFullPathname = FullPathname;
    layer.xRandomness = Randomness;
    layer.xSleep = Sleep;
    layer.xGetLastError = GetLastError;
    layer.xCurrentTimeInt64 = CurrentTimeInt64;
    sqlite3_vfs_register(&layer, 1);
}

FaultyFiles::~FaultyFiles() {
    sqlite3_vfs_unregister(&Layer());
    sqlite3_vfs_register(Real(), 1);
    Layer().pAppData = nullptr;
}

} // namespace tolmtest
