#include "Support/Canary.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
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

constexpr std::ptrdiff_t kForms = 3;
constexpr std::size_t kMostForms = 20 * kForms;

struct Watch {
    std::mutex mutex;
    std::vector<std::string> forms;
    std::vector<std::string> leaks;

    Watch() { Add("secret-token"); }

    void Add(const std::string& secret) {
        for (const std::size_t width : {std::size_t{1}, std::size_t{2}, std::size_t{4}}) {
            const std::string form = Widened(secret, width);
            if (std::find(forms.begin(), forms.end(), form) == forms.end())
                forms.push_back(form);
        }
        if (forms.size() > kMostForms) // the oldest but for the first secret
            forms.erase(forms.begin() + kForms, forms.begin() + 2 * kForms);
    }
};

Watch& TheWatch() {
    static Watch watch;
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
    return std::any_of(watch.forms.begin(), watch.forms.end(), [&](const std::string& form) {
        return memmem(bytes.data(), bytes.size(), form.data(), form.size()) != nullptr;
    });
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
