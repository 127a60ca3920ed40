// Calls by which the library changes files past SQLite: those of binary files and of folders. They stand before the
// system's own, count as changes of `FaultyFiles`, which names them too, and are noted as not synced. SQLite's files
// pass, which its own layer stands for.

#include "Support/FaultyFiles.h"

#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using tolmtest::FaultyFiles;

/// The function that would have been called.
template <class Function> Function* Real(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool IsOfSqlite(std::string_view path) {
    return path.ends_with(".db") || path.find(".db-") != std::string_view::npos;
}

/// The faults among which a change of this path counts; null where it is left alone.
FaultyFiles* FaultsFor(const char* path) {
    FaultyFiles* const faults = FaultyFiles::Living();
    return faults != nullptr && faults->Watches(path) && !IsOfSqlite(path) ? faults : nullptr;
}

std::string PathOf(int handle) {
    char path[4096];
    const auto length = ::readlink(("/proc/self/fd/" + std::to_string(handle)).c_str(), path, sizeof path);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}

bool IsFolder(int handle) {
    struct stat status {};
    return ::fstat(handle, &status) == 0 && S_ISDIR(status.st_mode);
}

/// What happens before a file goes.
void BeforeDeletion(const char* path, const char* function) {
    FaultyFiles* const faults = FaultsFor(path);
    if (faults == nullptr || ::access(path, F_OK) != 0)
        return;
    faults->ChangePastSqlite(path, "delete", function);
    faults->Log().AddDeletion(path);
}

} // namespace

// Seen by the libraries that call them.
#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    FaultyFiles* const faults = (flags & O_CREAT) != 0 && ::access(path, F_OK) != 0 ? FaultsFor(path) : nullptr;
    if (faults != nullptr)
        faults->ChangePastSqlite(path, "create", "open");
    const int handle = Real(&open, "open")(path, flags, mode);
    if (faults != nullptr && handle >= 0)
        faults->Log().AddCreation(path);
    return handle;
}

ssize_t write(int handle, const void* bytes, std::size_t size) {
    if (const std::string path = FaultyFiles::Living() != nullptr ? PathOf(handle) : std::string();
        FaultyFiles* const faults = FaultsFor(path.c_str())) {
        faults->ChangePastSqlite(path.c_str(), "write", "write");
        faults->Log().AddWrite(path, ::lseek(handle, 0, SEEK_CUR), bytes, size);
    }
    return Real(&write, "write")(handle, bytes, size);
}

/// Counts, and is done: the system itself goes on running in a test.
int fsync(int handle) {
    const std::string path = FaultyFiles::Living() != nullptr ? PathOf(handle) : std::string();
    FaultyFiles* const faults = FaultsFor(path.c_str());
    if (faults == nullptr)
        return Real(&fsync, "fsync")(handle);
    faults->ChangePastSqlite(path.c_str(), "sync", "fsync");
    if (IsFolder(handle))
        faults->Log().SyncFolder(path);
    else
        faults->Log().Sync(path);
    return 0;
}

int rename(const char* from, const char* to) {
    if (FaultyFiles* const faults = FaultsFor(to)) {
        faults->ChangePastSqlite(to, "rename", "rename");
        faults->Log().AddRename(from, to);
    }
    return Real(&rename, "rename")(from, to);
}

int mkdir(const char* path, mode_t mode) {
    FaultyFiles* const faults = ::access(path, F_OK) != 0 ? FaultsFor(path) : nullptr;
    if (faults != nullptr)
        faults->ChangePastSqlite(path, "create", "mkdir");
    const int code = Real(&mkdir, "mkdir")(path, mode);
    if (faults != nullptr && code == 0)
        faults->Log().AddCreation(path);
    return code;
}

int unlink(const char* path) {
    BeforeDeletion(path, "unlink");
    return Real(&unlink, "unlink")(path);
}

int remove(const char* path) {
    BeforeDeletion(path, "remove");
    return Real(&remove, "remove")(path);
}
}
#pragma GCC visibility pop
