#include "Support/UnsyncedWrites.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>

namespace tolmtest {
namespace {

constexpr std::size_t kSector = 512;

std::vector<char> ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
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

void UnsyncedWrites::Lose(bool torn, std::uint64_t seed) const {
    std::mt19937_64 chance(seed);
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
        std::ofstream(path, std::ios::binary | std::ios::trunc)
            .write(content.data(), static_cast<std::streamsize>(content.size()));
    }
}

} // namespace tolmtest
