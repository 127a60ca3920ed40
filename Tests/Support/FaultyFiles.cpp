#include "Support/FaultyFiles.h"

#include "Support/FaultyFilesState.h"
#include "Vorn/Files.h"

#include <sqlite3.h>

#include <cstring>
#include <new>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace tolmtest {

namespace {

using State = FaultyFiles::State;

/// An open file: SQLite's own one stands behind it in memory.
struct WatchedFile {
    sqlite3_file base;
    State* state;
    char* path;       ///< as SQLite keeps it for as long as the file is open
    bool syncsFolder; ///< with its first sync, as SQLite's own files do

    sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

WatchedFile& Of(sqlite3_file* file) {
    return *reinterpret_cast<WatchedFile*>(file);
}
State& StateOf(sqlite3_vfs* vfs) {
    return *static_cast<State*>(vfs->pAppData);
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
    if (!Of(file).state->Look(Of(file).path, "read"))
        return real->pMethods->xRead(real, bytes, count, at);
    std::memset(bytes, 0xA5, static_cast<std::size_t>(count));
    real->pMethods->xRead(real, bytes, count / 2, at);
    return SQLITE_IOERR_READ;
}

/// A write that fails has written a part, what fits on a disk that fills up.
int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
    State& state = *Of(file).state;
    const bool fails = state.Change(Of(file).path, "write");
    const int room = fails ? count / 2 : state.Room(Of(file).path, count);
    if (state.CutsPower())
        state.Log().AddWrite(Of(file).path, at, bytes, static_cast<std::size_t>(count));
    sqlite3_file* const real = Of(file).Real();
    const int code = room > 0 ? real->pMethods->xWrite(real, bytes, room, at) : SQLITE_OK;
    if (fails)
        return SQLITE_IOERR_WRITE;
    return room < count ? SQLITE_FULL : code;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    State& state = *Of(file).state;
    if (state.Change(Of(file).path, "truncate"))
        return SQLITE_IOERR_TRUNCATE;
    if (state.CutsPower())
        state.Log().AddTruncation(Of(file).path, size);
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xTruncate(real, size);
}

/// Counts, and is done: the system itself goes on running in a test.
int Sync(sqlite3_file* file, int) {
    State& state = *Of(file).state;
    if (state.Change(Of(file).path, "sync"))
        return SQLITE_IOERR_FSYNC;
    state.Log().Sync(Of(file).path);
    if (std::exchange(Of(file).syncsFolder, false))
        state.Log().SyncFolderOf(Of(file).path);
    return SQLITE_OK;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    if (Of(file).state->Look(Of(file).path, "size"))
        return SQLITE_IOERR_FSTAT;
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xFileSize(real, size);
}
int Lock(sqlite3_file* file, int level) {
    if (Of(file).state->Look(Of(file).path, "lock"))
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

constexpr sqlite3_io_methods kMethods{1,
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
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      nullptr};

bool Stands(const char* path) {
    return ::access(path, F_OK) == 0;
}

/// The flags with which a file opens that may not be written, as the system's own layer falls back to them.
int ForReadingOnly(int flags) {
    return (flags & ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) | SQLITE_OPEN_READONLY;
}

int Open(sqlite3_vfs* vfs, sqlite3_filename path, sqlite3_file* file, int flags, int* outFlags) {
    State& state = StateOf(vfs);
    if (!state.Watches(path))
        return state.Real()->xOpen(state.Real(), path, file, flags, outFlags);
    auto* const watched = new (file) WatchedFile{};
    const bool creates = (flags & SQLITE_OPEN_CREATE) != 0 && !Stands(path);
    if (creates ? state.Change(path, "create") : state.Look(path, "open"))
        return SQLITE_CANTOPEN;
    const int asked = state.OpensForReadingOnly(path) ? ForReadingOnly(flags) : flags;
    const int code = state.Real()->xOpen(state.Real(), path, watched->Real(), asked, outFlags);
    if (code != SQLITE_OK)
        return code;
    if (creates && state.CutsPower())
        state.Log().AddCreation(path);
    watched->state = &state;
    watched->path = sqlite3_mprintf("%s", path);
    watched->syncsFolder = creates && (flags & (SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL)) != 0;
    watched->base.pMethods = &kMethods;
    return SQLITE_OK;
}

int Delete(sqlite3_vfs* vfs, const char* path, int syncFolder) {
    State& state = StateOf(vfs);
    if (!state.Watches(path))
        return state.Real()->xDelete(state.Real(), path, syncFolder);
    state.TellOfDeletion(path);
    if (Stands(path) && (state.OpensForReadingOnly(path) || state.Change(path, "delete")))
        return SQLITE_IOERR_DELETE;
    if (state.CutsPower())
        state.Log().AddDeletion(path);
    const int code = state.Real()->xDelete(state.Real(), path, syncFolder);
    if (syncFolder != 0)
        state.Log().SyncFolderOf(path);
    return code;
}

int Access(sqlite3_vfs* vfs, const char* path, int flags, int* result) {
    State& state = StateOf(vfs);
    if (state.Watches(path) && state.Look(path, "access"))
        return SQLITE_IOERR_ACCESS;
    return state.Real()->xAccess(state.Real(), path, flags, result);
}
int FullPathname(sqlite3_vfs* vfs, const char* path, int size, char* whole) {
    return StateOf(vfs).Real()->xFullPathname(StateOf(vfs).Real(), path, size, whole);
}
int Randomness(sqlite3_vfs* vfs, int count, char* bytes) {
    return StateOf(vfs).Real()->xRandomness(StateOf(vfs).Real(), count, bytes);
}
int Sleep(sqlite3_vfs* vfs, int microseconds) {
    return StateOf(vfs).Real()->xSleep(StateOf(vfs).Real(), microseconds);
}
int GetLastError(sqlite3_vfs* vfs, int size, char* text) {
    return StateOf(vfs).Real()->xGetLastError(StateOf(vfs).Real(), size, text);
}
int CurrentTimeInt64(sqlite3_vfs* vfs, sqlite3_int64* time) {
    return StateOf(vfs).Real()->xCurrentTimeInt64(StateOf(vfs).Real(), time);
}

/// The one layer that SQLite knows; its name and its functions never change.
sqlite3_vfs& Layer() {
    static sqlite3_vfs layer{};
    return layer;
}

} // namespace

FaultyFiles::State* FaultyFiles::State::Living() {
    return static_cast<State*>(Layer().pAppData);
}

FaultyFiles::Unsynced FaultyFiles::UnsyncedOf(const std::string& name) {
    if (name == "kept")
        return Unsynced::Kept;
    return name == "torn" ? Unsynced::Torn : Unsynced::Dropped;
}

FaultyFiles::FaultyFiles(const std::wstring& folder) {
    sqlite3_vfs* const real = sqlite3_vfs_find("unix");
    sqlite3_vfs& layer = Layer();
    if (real == nullptr || layer.pAppData != nullptr)
        throw std::logic_error("one FaultyFiles at a time");
    m_state = std::make_unique<State>(vorn::FileSystem::ToNative(folder), real);
    layer = {};
    layer.iVersion = 2;
    layer.szOsFile = static_cast<int>(sizeof(WatchedFile)) + real->szOsFile;
    layer.mxPathname = real->mxPathname;
    layer.zName = "faulty";
    layer.pAppData = m_state.get();
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
    sqlite3_vfs_register(m_state->Real(), 1);
    Layer().pAppData = nullptr;
}

void FaultyFiles::FailAt(long number, Lasts lasts) {
    m_state->FailAt(number, lasts);
}
void FaultyFiles::FillDiskAfter(std::int64_t bytes) {
    m_state->FillDiskAfter(bytes);
}
void FaultyFiles::RefuseChanges() {
    m_state->RefuseChanges();
}
void FaultyFiles::OpenForReadingOnly(std::string part) {
    m_state->OpenForReadingOnly(std::move(part));
}
void FaultyFiles::CutPower() {
    m_state->CutPower();
}
void FaultyFiles::CutPowerAt(long number, Unsynced unsynced, std::uint64_t seed) {
    m_state->CutPowerAt(number, unsynced, seed);
}
void FaultyFiles::Rest() {
    m_state->Reset();
}
void FaultyFiles::BeforeDeletions(std::function<void(const std::string& path)> action) {
    m_state->BeforeDeletions(std::move(action));
}
long FaultyFiles::Calls() const {
    return m_state->Calls();
}
long FaultyFiles::Changes() const {
    return m_state->Changes();
}
std::set<std::string> FaultyFiles::FunctionsPastSqlite() const {
    return m_state->FunctionsPastSqlite();
}
bool FaultyFiles::HasFailed() const {
    return m_state->HasFailed();
}
std::string FaultyFiles::FailedPath() const {
    return m_state->FailedPath();
}
std::string FaultyFiles::FailedCall() const {
    return m_state->FailedCall();
}

} // namespace tolmtest
