#include "Tolm/Commands.h"

#include "Tolm/ComponentFile.h"
#include "Tolm/Errors.h"
#include "Tolm/Workplace.h"

#include "Host/Definitions.h"
#include "Qbase/Qbase.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace tolmcli {
namespace {

using vorn::StringUtil;

std::wstring Wide(const std::string& text) {
    return StringUtil::ToWString(text);
}

/// Given twice, a name that the user chose stands in place of the usual one.
void Take(std::wstring& field, const std::string& given) {
    if (!given.empty())
        field = Wide(given);
}

bool HasEnding(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

/// A store with its schema and nothing in it.
void MakeStore(const std::wstring& path) {
    const std::wstring folder = vorn::FileSystem::FolderOf(path);
    if (!folder.empty() && !vorn::FileSystem::CreateDirectories(folder))
        throw Failure("cannot make the folder " + StringUtil::ToString(folder));
    CQbase store;
    if (!store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, true) || !store.closeDatabase())
        throw Failure("cannot make " + StringUtil::ToString(path) + " (error " + std::to_string(store.getLastError()) +
                      ")");
}

struct Standing {
    int version = 0;
    std::wstring timePoint;
    std::size_t changes = 0;
};

/// Version of the header; -1 when there is none.
int ReadVersion(const std::wstring& path) {
    constexpr short kLocalVersion = 1200;
    CQbase store;
    if (!store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, false) || !store.lockForRead())
        throw Failure("cannot open " + StringUtil::ToString(path) + " (error " + std::to_string(store.getLastError()) +
                      ")");
    long version = -1;
    if (store.fetchFirstMember("000"))
        store.getLong(kLocalVersion, version);
    return static_cast<int>(version);
}

} // namespace

void RunNew(const Options& options, Context& context) {
    const std::wstring path = Wide(options.dataset);
    CheckDatasetPath(path);
    if (vorn::FileInfo(path).Exists())
        throw Failure("there is a file " + options.dataset + " already");
    Profile profile = Profile::ForNew(path);
    Take(profile.server, options.server);
    Take(profile.project, options.project);
    Take(profile.workUnit, options.workUnit);
    Take(profile.user, options.user);
    Take(profile.combinedProductFile, options.combinedProducts);
    Take(profile.binaryFolder, options.binaryFolder);
    const bool importComponents = HasEnding(options.components, ".json");
    if (!importComponents)
        Take(profile.componentFile, options.components);
    if (importComponents)
        ImportComponents(options.components, profile.componentFile);
    MakeStore(path);
    profile.Save(path);
    context.out << "Made " << options.dataset << '\n';
}

void RunInfo(const Options& options, Context& context) {
    Workplace place(Wide(options.dataset));
    const Standing standing{ReadVersion(place.Path()), place.Dataset().GetLastUpdateTimePointString(),
                            ReadNotedChanges(place.Path()).size()};
    place.FailOnFaults("the dataset cannot be read");
    const Profile& profile = place.Settings();
    const nlohmann::ordered_json json{
        {"dataset", options.dataset},
        {"localVersion", standing.version},
        {"lastUpdate", StringUtil::ToString(standing.timePoint)},
        {"localChanges", standing.changes},
        {"server", StringUtil::ToString(profile.server)},
        {"project", StringUtil::ToString(profile.project)},
        {"workUnit", StringUtil::ToString(profile.workUnit)},
        {"user", StringUtil::ToString(profile.user)},
        {"componentFile", StringUtil::ToString(profile.componentFile)},
        {"combinedProductFile", StringUtil::ToString(profile.combinedProductFile)},
        {"binaryFolder", StringUtil::ToString(profile.binaryFolder)},
    };
    if (context.json) {
        context.out << json.dump(2) << '\n';
        return;
    }
    for (const auto& [key, value] : json.items()) {
        const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
        context.out << key << std::string(21 - key.size(), ' ') << (text.empty() ? "-" : text) << '\n';
    }
    if (standing.version < 0)
        context.out << "The dataset was never synchronised: 'tolm pull' fills it.\n";
}

void RunImportComponents(const Options& options, Context& context) {
    const std::wstring path = Wide(options.dataset);
    CheckDatasetPath(path);
    const auto counts = ImportComponents(options.components, Profile::Load(path).componentFile);
    context.out << "Imported " << counts.components << " components in " << counts.categories << " categories\n";
}

} // namespace tolmcli
