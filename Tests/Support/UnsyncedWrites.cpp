#include "Support/UnsyncedWrites.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace tolmtest {
namespace {

constexpr std::size_t kSector = 512;

std::vector<char> ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void Store(const std::string& path, const std::vector<char>& content) {
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
}

void Put(std::vector<char>& content, std::size_t at, const char* bytes, std::size_t count) {
    content.resize(std::max(content.size(), at + count));
    std::copy_n(bytes, count, content.begin() + static_cast<std::ptrdiff_t>(at));
}

} // namespace

UnsyncedWrites::File& UnsyncedWrites::FileAt(const std::string& path) {
    const auto [place, isNew] = m_files.try_emplace(path);
    if (isNew)
        place->second.synced = ContentOf(path);
    return place->second;
}

void UnsyncedWrites::AddWrite(const std::string& path, std::int64_t at, const void* bytes, std::size_t count) {
    const auto* const first = static_cast<const char*>(bytes);
    FileAt(path).changes.push_back({false, at, {first, first + count}});
}

void UnsyncedWrites::AddTruncation(const std::string& path, std::int64_t size) {
    FileAt(path).changes.push_back({true, size, {}});
}

void UnsyncedWrites::AddDeletion(const std::string& path) {
    if (std::filesystem::exists(path))
        m_steps.push_back({Step::Kind::Deletion, path, {}, SyncedContentOf(path), true});
    m_files.erase(path);
}

void UnsyncedWrites::AddRename(const std::string& from, const std::string& to) {
    m_steps.push_back({Step::Kind::Rename, from, to, SyncedContentOf(to), std::filesystem::exists(to)});
    m_files.erase(to);
    if (auto file = m_files.extract(from)) {
        file.key() = to;
        m_files.insert(std::move(file));
    }
}

void UnsyncedWrites::SyncFolderOf(const std::string& path) {
    SyncFolder(std::filesystem::path(path).parent_path().string());
}

void UnsyncedWrites::SyncFolder(const std::string& folder) {
    std::erase_if(m_steps, [&](const Step& step) { return std::filesystem::path(step.path).parent_path() == folder; });
}

std::vector<char> UnsyncedWrites::SyncedContentOf(const std::string& path) const {
    const auto found = m_files.find(path);
    return found != m_files.end() ? found->second.synced : ContentOf(path);
}

void UnsyncedWrites::Lose(bool torn, std::uint64_t seed) const {
    std::mt19937_64 chance(seed);
    LoseWrites(torn, chance);
    LoseSteps(torn, chance);
}

void UnsyncedWrites::LoseSteps(bool torn, std::mt19937_64& chance) const {
    std::vector<const Step*> lost;
    for (const Step& step : m_steps) {
        const bool isLost = !torn || chance() % 2 == 0;
        if (isLost || std::ranges::any_of(lost, [&](const Step* other) { return step.DependsOn(*other); }))
            lost.push_back(&step);
    }
    std::for_each(lost.rbegin(), lost.rend(), [](const Step* step) { Undo(*step); });
}

bool UnsyncedWrites::Step::DependsOn(const Step& other) const {
    const auto isOf = [](const std::string& name, const std::string& earlier) {
        return !name.empty() && !earlier.empty() && (name == earlier || name.starts_with(earlier + '/'));
    };
    return isOf(path, other.path) || isOf(path, other.to) || isOf(to, other.path) || isOf(to, other.to);
}

void UnsyncedWrites::Undo(const Step& step) {
    switch (step.kind) {
    case Step::Kind::Creation:
        std::filesystem::remove_all(step.path);
        return;
    case Step::Kind::Deletion:
        return Store(step.path, step.content);
    case Step::Kind::Rename:
        std::filesystem::rename(step.to, step.path);
        if (step.stood)
            Store(step.to, step.content);
    }
}

void UnsyncedWrites::LoseWrites(bool torn, std::mt19937_64& chance) const {
    for (const auto& [path, file] : m_files) {
        auto content = file.synced;
        for (const auto& change : file.changes) {
            const auto fate = torn ? chance() % 3 : 0; // lost, kept, or some of its sectors
            if (fate == 0)
                continue;
            if (change.truncates) {
                content.resize(static_cast<std::size_t>(change.at));
                continue;
            }
            for (std::size_t from = 0; from < change.bytes.size(); from += kSector) {
                if (fate == 1 || chance() % 2 == 0)
                    Put(content, static_cast<std::size_t>(change.at) + from, change.bytes.data() + from,
                        std::min(kSector, change.bytes.size() - from));
            }
        }
        Store(path, content);
    }
}

} // namespace tolmtest
