#include "Support/Canary.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <set>
#include <unordered_map>
#include <utility>

namespace tolmtest {
namespace {

namespace fs = std::filesystem;

std::string Widened(const std::string& text, std::size_t width) {
    std::string wide;
    for (const char c : text)
        wide.append(1, c).append(width - 1, '\0');
    return wide;
}

/// Texts that are looked for all at once, in a time that does not grow with their number.
class Needles {
public:
    void Add(std::string needle) {
        if (needle.size() < sizeof(Beginning)) {
            m_brief.insert(std::move(needle));
            return;
        }
        auto& needles = m_byBeginning[BeginningOf(needle.data())];
        if (std::find(needles.begin(), needles.end(), needle) == needles.end())
            needles.push_back(std::move(needle));
    }

    bool AreIn(std::string_view bytes) const {
        for (std::size_t at = 0; at + sizeof(Beginning) <= bytes.size(); ++at) {
            const auto found = m_byBeginning.find(BeginningOf(bytes.data() + at));
            if (found != m_byBeginning.end() && StandsAt(bytes.substr(at), found->second))
                return true;
        }
        return std::any_of(m_brief.begin(), m_brief.end(), [&](const std::string& needle) {
            return memmem(bytes.data(), bytes.size(), needle.data(), needle.size()) != nullptr;
        });
    }

private:
    using Beginning = std::uint64_t;

    static Beginning BeginningOf(const char* bytes) {
        Beginning beginning = 0;
        std::memcpy(&beginning, bytes, sizeof beginning);
        return beginning;
    }
    static bool StandsAt(std::string_view bytes, const std::vector<std::string>& needles) {
        return std::any_of(needles.begin(), needles.end(),
                           [&](const std::string& needle) { return bytes.starts_with(needle); });
    }

    std::unordered_map<Beginning, std::vector<std::string>> m_byBeginning;
    std::set<std::string> m_brief;
};

struct Watch {
    std::mutex mutex;
    Needles needles;
    std::vector<std::string> leaks;

    Watch() { Add("secret-token"); }

    void Add(const std::string& secret) {
        for (const std::size_t width : {std::size_t{1}, std::size_t{2}, std::size_t{4}})
            needles.Add(Widened(secret, width));
    }
};

/// Never taken down: what goes at the end of the process is searched too.
Watch& TheWatch() {
    static auto& watch = *std::make_unique<Watch>().release();
    return watch;
}

std::string Content(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace

void WatchForSecret(const std::string& secret) {
    Watch& watch = TheWatch();
    const std::lock_guard lock(watch.mutex);
    if (!secret.empty())
        watch.Add(secret);
}

bool HoldsSecret(std::string_view bytes) {
    Watch& watch = TheWatch();
    const std::lock_guard lock(watch.mutex);
    return watch.needles.AreIn(bytes);
}

bool HoldsSecret(std::wstring_view text) {
    return HoldsSecret(vorn::StringUtil::ToString(text));
}

void SearchForSecrets(const std::string& where, std::string_view bytes) {
    if (!HoldsSecret(bytes))
        return;
    Watch& watch = TheWatch();
    const std::lock_guard lock(watch.mutex);
    watch.leaks.push_back(where);
}

void SearchForSecrets(const std::string& where, std::wstring_view text) {
    SearchForSecrets(where, vorn::StringUtil::ToString(text));
}

void SearchFolderForSecrets(const std::string& folder) {
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().string();
        SearchForSecrets("the name of the file " + name, std::string_view(name));
        if (entry->is_regular_file(error))
            SearchForSecrets("the file " + name, Content(entry->path()));
    }
}

std::vector<std::string> TakeLeaks() {
    Watch& watch = TheWatch();
    const std::lock_guard lock(watch.mutex);
    return std::exchange(watch.leaks, {});
}

} // namespace tolmtest
