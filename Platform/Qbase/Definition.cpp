#include "Qbase/DefinitionInternal.h"

#include "Vorn/Files.h"
#include "Vorn/Log.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <sstream>
#include <sys/stat.h>
#include <tuple>

namespace qbase {
namespace {

using Stamp = std::tuple<dev_t, ino_t, off_t, time_t, long>;

struct CachedDefinition {
    Stamp stamp;
    std::shared_ptr<const Definition> definition;
};

std::mutex g_cacheMutex;
std::map<std::wstring, CachedDefinition>& Cache() {
    static std::map<std::wstring, CachedDefinition> cache;
    return cache;
}

bool StampOf(const std::string& nativePath, Stamp& stamp) {
    struct stat status {};
    if (::stat(nativePath.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    stamp = {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    return true;
}

std::shared_ptr<const Definition> FindCached(const std::wstring& path, const Stamp& stamp) {
    const std::lock_guard lock(g_cacheMutex);
    const auto found = Cache().find(path);
    return found != Cache().end() && found->second.stamp == stamp ? found->second.definition : nullptr;
}

bool ReadText(const std::string& nativePath, std::string& text) {
    std::ifstream file(nativePath, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return file.is_open() && !file.bad();
}

void LogFault(const std::wstring& path, const std::string& error) {
    vorn::LogManager::CreateOrGetForWrite(L"", L"", false)
        ->DumpLine(L"definition file " + path + L": " + vorn::StringUtil::ToWString(error), false, false);
}

std::shared_ptr<const Definition> ReadDefinition(const std::wstring& path, const std::string& nativePath) {
    std::string text;
    std::string error = "cannot be read";
    std::shared_ptr<const Definition> definition;
    if (ReadText(nativePath, text))
        definition = Definition::Parse(text, error);
    if (!definition)
        LogFault(path, error);
    return definition;
}

} // namespace

int ClassDefinition::Find(short attributeId) const {
    const auto found = std::ranges::lower_bound(byId, attributeId, {}, &std::pair<short, int>::first);
    return found != byId.end() && found->first == attributeId ? found->second : -1;
}

int ClassDefinition::FindName(std::string_view name) const {
    const auto found = std::ranges::find(attributes, name, &Attribute::name);
    return found == attributes.end() ? -1 : static_cast<int>(found - attributes.begin());
}

std::string ClassDefinition::IndexName(const std::vector<int>& index) const {
    std::string name = code;
    for (const int position : index)
        name += "_" + attributes[static_cast<std::size_t>(position)].name;
    return name;
}

std::shared_ptr<const Definition> Definition::Load(const std::wstring& path) {
    const std::string nativePath = vorn::FileSystem::ToNative(path);
    Stamp stamp;
    if (!StampOf(nativePath, stamp))
        return nullptr;
    if (auto cached = FindCached(path, stamp))
        return cached;
    auto definition = ReadDefinition(path, nativePath);
    if (definition) {
        const std::lock_guard lock(g_cacheMutex);
        Cache()[path] = {stamp, definition};
    }
    return definition;
}

int Definition::Find(std::string_view code) const {
    const auto found = std::ranges::find(m_classes, code, &ClassDefinition::code);
    return found == m_classes.end() ? -1 : static_cast<int>(found - m_classes.begin());
}

const Attribute* Definition::FindAttribute(short attributeId) const {
    for (const auto& definition : m_classes) {
        if (const int position = definition.Find(attributeId); position >= 0)
            return &definition.attributes[static_cast<std::size_t>(position)];
    }
    return nullptr;
}

} // namespace qbase
