#include "Qbase/LockRegistryInternal.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace qbase {
namespace {

struct Holding {
    FileIdentity file;
    LockKind kind;
    const void* owner;
    std::thread::id thread;
};

struct Registry {
    std::mutex mutex;
    std::vector<Holding> holdings;
};

struct WorkingCopy {
    std::string path;
    const void* owner;
    std::optional<FileIdentity> file; ///< once it has been made
    std::shared_ptr<CopyRecord> record;
};

struct WorkingCopies {
    std::mutex mutex;
    std::vector<WorkingCopy> copies;
};

WorkingCopies& TheCopies() {
    static WorkingCopies copies;
    return copies;
}

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

template <class Test> bool AnyOfThisThread(const FileIdentity& file, Test test) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    return std::ranges::any_of(registry.holdings, [&](const Holding& holding) {
        return holding.file == file && holding.thread == std::this_thread::get_id() && test(holding);
    });
}

} // namespace

void LockRegistry::Add(const FileIdentity& file, LockKind kind, const void* owner) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.holdings.push_back({file, kind, owner, std::this_thread::get_id()});
}

void LockRegistry::Remove(const void* owner) noexcept {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    std::erase_if(registry.holdings, [&](const Holding& holding) { return holding.owner == owner; });
}

bool LockRegistry::WouldWaitForItself(const FileIdentity& file, LockKind wanted, const void* owner) {
    return AnyOfThisThread(file, [&](const Holding& holding) {
        return holding.owner != owner && (holding.kind == LockKind::Update || wanted == LockKind::Update);
    });
}

bool LockRegistry::IsHeld(const FileIdentity& file) {
    return AnyOfThisThread(file, [](const Holding&) { return true; });
}

bool LockRegistry::IsHeldForUpdate(const FileIdentity& file) {
    return AnyOfThisThread(file, [](const Holding& holding) { return holding.kind == LockKind::Update; });
}

void WorkingCopyRegistry::Add(const void* owner, const std::vector<std::string>& paths) {
    Remove(owner);
    const std::lock_guard lock(TheCopies().mutex);
    for (const auto& path : paths)
        TheCopies().copies.push_back({path, owner, std::nullopt, nullptr});
}

void WorkingCopyRegistry::Remove(const void* owner) noexcept {
    const std::lock_guard lock(TheCopies().mutex);
    std::erase_if(TheCopies().copies, [&](const WorkingCopy& copy) { return copy.owner == owner; });
}

bool WorkingCopyRegistry::Has(const std::string& path) {
    const std::lock_guard lock(TheCopies().mutex);
    return std::ranges::any_of(TheCopies().copies, [&](const WorkingCopy& copy) { return copy.path == path; });
}

void WorkingCopyRegistry::Fix(const void* owner, const std::string& path, const FileIdentity& file,
                              std::shared_ptr<CopyRecord> record) {
    const std::lock_guard lock(TheCopies().mutex);
    const auto isMeant = [&](const WorkingCopy& copy) { return copy.owner == owner && copy.path == path; };
    const auto copy = std::ranges::find_if(TheCopies().copies, isMeant);
    copy->file = file;
    copy->record = std::move(record);
}

bool WorkingCopyRegistry::Admits(const std::string& path, const FileIdentity& file) {
    const std::lock_guard lock(TheCopies().mutex);
    bool isCopy = false;
    for (const auto& copy : TheCopies().copies) {
        if (copy.path != path)
            continue;
        if (!copy.file || copy.file == file)
            return true;
        isCopy = true;
    }
    return !isCopy;
}

std::shared_ptr<CopyRecord> WorkingCopyRegistry::RecordOf(const FileIdentity& file) {
    const std::lock_guard lock(TheCopies().mutex);
    const auto found = std::ranges::find(TheCopies().copies, file, &WorkingCopy::file);
    return found == TheCopies().copies.end() ? nullptr : found->record;
}

} // namespace qbase
