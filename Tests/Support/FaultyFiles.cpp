#include "Support/FaultyFiles.h"

#include "Support/UnsyncedWrites.h"
#include "Vorn/Files.h"

#include <sqlite3.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace tolmtest {

/// What is to fail, and what was counted. The table of open files and the writes that are not synced yet.
class FaultyFiles::State {
public:
    State(std::string folder, sqlite3_vfs* real) : m_folder(std::move(folder)), m_real(real) {}

    sqlite3_vfs* Real() const { return m_real; }
    bool Watches(const char* path) const {
        return path != nullptr && std::strncmp(path, m_folder.c_str(), m_folder.size()) == 0;
    }

    void Reset() {
        m_calls = m_changes = 0;
        m_failAt = m_cutAt = 0;
        m_diskLeft = -1;
        m_hasFailed = false;
        m_failedPath.clear();
        m_unsynced.Forget();
    }
    void FailAt(long number, Lasts lasts) {
        Reset();
        m_failAt = number;
        m_lasts = lasts;
    }
    void FillDiskAfter(std::int64_t bytes) {
        Reset();
        m_diskLeft = bytes;
    }
    void CutPowerAt(long number, Unsynced unsynced, std::uint64_t seed) {
        Reset();
        m_cutAt = number;
        m_kept = unsynced;
        m_seed = seed;
    }

    /// True when this call is to fail.
    bool Read(const char* path) { return Count(path); }
    bool Change(const char* path) {
        if (++m_changes == m_cutAt)
            CutPower();
        return Count(path);
    }
    /// True when the disk is too full for so many bytes.
    bool IsFull(const char* path, int bytes) {
        if (m_diskLeft < 0)
            return false;
        const bool full = bytes > m_diskLeft;
        m_diskLeft = full ? 0 : m_diskLeft - bytes;
        if (full)
            NoteFailure(path);
        return full;
    }

    void BeforeDeletions(std::function<void(const std::string&)> action) { m_beforeDeletion = std::move(action); }
    void TellOfDeletion(const char* path) const {
        if (m_beforeDeletion)
            m_beforeDeletion(path);
    }

    bool CutsPower() const { return m_cutAt != 0; }
    UnsyncedWrites& Log() { return m_unsynced; }
    long Calls() const { return m_calls; }
    long Changes() const { return m_changes; }
    bool HasFailed() const { return m_hasFailed; }
    const std::string& FailedPath() const { return m_failedPath; }

private:
    bool Count(const char* path) {
        ++m_calls;
        const bool fails = m_failAt != 0 && (m_calls == m_failAt || (m_lasts == Lasts::ForGood && m_calls > m_failAt));
        if (fails)
            NoteFailure(path);
        return fails;
    }

    void NoteFailure(const char* path) {
        if (!m_hasFailed)
            m_failedPath = path;
        m_hasFailed = true;
    }

    [[noreturn]] void CutPower() {
        if (m_kept != Unsynced::Kept)
            m_unsynced.Lose(m_kept == Unsynced::Torn, m_seed);
        std::raise(SIGKILL);
        std::abort();
    }

    std::string m_folder;
    sqlite3_vfs* m_real;
    long m_calls = 0;
    long m_changes = 0;
    long m_failAt = 0;
    Lasts m_lasts = Lasts::Once;
    std::int64_t m_diskLeft = -1;
    long m_cutAt = 0;
    Unsynced m_kept = Unsynced::Kept;
    std::uint64_t m_seed = 0;
    bool m_hasFailed = false;
    std::string m_failedPath;
    UnsyncedWrites m_unsynced;
    std::function<void(const std::string&)> m_beforeDeletion;
};

namespace {

using State = FaultyFiles::State;

/// An open file: SQLite's own one stands behind it in memory.
struct WatchedFile {
    sqlite3_file base;
    State* state;
    char* path; ///< as SQLite keeps it for as long as the file is open

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

int Read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 at) {
    if (Of(file).state->Read(Of(file).path))
        return SQLITE_IOERR_READ;
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xRead(real, bytes, count, at);
}

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
    State& state = *Of(file).state;
    if (state.Change(Of(file).path))
        return SQLITE_IOERR_WRITE;
    if (state.IsFull(Of(file).path, count))
        return SQLITE_FULL;
    if (state.CutsPower())
        state.Log().AddWrite(Of(file).path, at, bytes, static_cast<std::size_t>(count));
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xWrite(real, bytes, count, at);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    State& state = *Of(file).state;
    if (state.Change(Of(file).path))
        return SQLITE_IOERR_TRUNCATE;
    if (state.CutsPower())
        state.Log().AddTruncation(Of(file).path, size);
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xTruncate(real, size);
}

/// Counts, and is done: the system itself goes on running in a test.
int Sync(sqlite3_file* file, int) {
    State& state = *Of(file).state;
    if (state.Change(Of(file).path))
        return SQLITE_IOERR_FSYNC;
    state.Log().Sync(Of(file).path);
    return SQLITE_OK;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    sqlite3_file* const real = Of(file).Real();
    return real->pMethods->xFileSize(real, size);
}
int Lock(sqlite3_file* file, int level) {
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

int Open(sqlite3_vfs* vfs, sqlite3_filename path, sqlite3_file* file, int flags, int* outFlags) {
    State& state = StateOf(vfs);
    if (!state.Watches(path))
        return state.Real()->xOpen(state.Real(), path, file, flags, outFlags);
    auto* const watched = new (file) WatchedFile{};
    const bool creates = (flags & SQLITE_OPEN_CREATE) != 0 && ::access(path, F_OK) != 0;
    if (creates ? state.Change(path) : state.Read(path))
        return SQLITE_CANTOPEN;
    const int code = state.Real()->xOpen(state.Real(), path, watched->Real(), flags, outFlags);
    if (code != SQLITE_OK)
        return code;
    watched->state = &state;
    watched->path = sqlite3_mprintf("%s", path);
    watched->base.pMethods = &kMethods;
    return SQLITE_OK;
}

int Delete(sqlite3_vfs* vfs, const char* path, int syncFolder) {
    State& state = StateOf(vfs);
    if (state.Watches(path)) {
        state.TellOfDeletion(path);
        if (::access(path, F_OK) == 0 && state.Change(path))
            return SQLITE_IOERR_DELETE;
        state.Log().Forget(path);
    }
    return state.Real()->xDelete(state.Real(), path, syncFolder);
}

int Access(sqlite3_vfs* vfs, const char* path, int flags, int* result) {
    return StateOf(vfs).Real()->xAccess(StateOf(vfs).Real(), path, flags, result);
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
bool FaultyFiles::HasFailed() const {
    return m_state->HasFailed();
}
std::string FaultyFiles::FailedPath() const {
    return m_state->FailedPath();
}

} // namespace tolmtest
