#include "Tolm/Commands.h"

#include "Tolm/Errors.h"
#include "Tolm/Find.h"
#include "Tolm/TextTable.h"
#include "Tolm/Workplace.h"

#include "Vorn/Text.h"

#include <array>
#include <ostream>

namespace tolmcli {
namespace {

using tolm::EditTable;
using Material = tolm::IProjectSettingMaterial;
using SizeModule = tolm::IProjectSettingSizeModule;
using Serie = tolm::IProjectSettingMEPMaterialSerie;
using Group = tolm::IProjectSettingMEPMaterialSerieGroup;
using SystemType = tolm::IProjectSettingSystemType;
using vorn::StringUtil;

std::string UserText(const std::wstring& name) {
    return name.empty() ? "a record without a name" : StringUtil::ToString(WithoutControls(name));
}

std::string CouldNotLook(const std::string& what, const std::wstring& name) {
    return "could not look whether " + what + " " + StringUtil::ToString(WithoutControls(name)) + " is used";
}

// Each tells who uses the record; empty when nobody does. A record that was handed in may be gone afterwards: the
// look may collect anew.

std::string UserOf(Workplace& place, const Material& material) {
    const std::wstring id = material.GetId();
    const std::wstring name = material.GetName();
    const auto modules = CollectSizes(place, "");
    place.FailOnFaults(CouldNotLook("material", name));
    for (const auto* module : modules) {
        if (module->GetMaterial() != nullptr && module->GetMaterial()->GetId() == id)
            return UserText(module->GetName());
    }
    return {};
}

std::string UserOf(Workplace& place, const Group& group) {
    const std::wstring id = group.GetId();
    const std::wstring name = group.GetName();
    const auto series = CollectSeries(place, "");
    place.FailOnFaults(CouldNotLook("group", name));
    for (const auto* serie : series) {
        if (serie->GetSerieGroup() != nullptr && serie->GetSerieGroup()->GetId() == id)
            return UserText(serie->GetName());
    }
    return {};
}

/// The dataset says no as well where it cannot look.
std::string UserOf(Workplace& place, const SizeModule& module) {
    const std::string fault = CouldNotLook("size table", module.GetName());
    place.FailUnlessChangeable(fault);
    std::wstring user;
    const bool used = place.Dataset().GetSizeModuleData()->IsTheSizeModuleReferred(&module, user);
    place.FailOnFaults(fault);
    return used ? UserText(user) : std::string();
}

std::string UserOf(Workplace& place, const Serie& serie) {
    const std::string fault = CouldNotLook("series", serie.GetName());
    place.FailUnlessChangeable(fault);
    std::wstring user;
    const bool used = place.Dataset().GetMEPMaterialSerieData()->IsTheMEPMaterialSeireReferred(&serie, user);
    place.FailOnFaults(fault);
    return used ? UserText(user) : std::string();
}

/// A system type stands on its own: the model uses it, not another setting.
std::string UserOf(Workplace&, const SystemType&) {
    return {};
}

void Erase(tolm::ITolmDataset& dataset, const Material& material) {
    EditTable(dataset.GetMaterialData())->DeleteMaterialList({&material});
}

void Erase(tolm::ITolmDataset& dataset, const SizeModule& module) {
    EditTable(dataset.GetSizeModuleData())->DeleteSizeModuleList({&module});
}

void Erase(tolm::ITolmDataset& dataset, const Serie& serie) {
    EditTable(dataset.GetMEPMaterialSerieData())->DeleteSerieList({&serie});
}

/// The store loses this group; which one the table in memory loses does not matter, as it is collected anew.
void Erase(tolm::ITolmDataset& dataset, const Group& group) {
    EditTable(dataset.GetMEPMaterialSerieData())->DeleteSerieGroupList({&group});
}

void Erase(tolm::ITolmDataset& dataset, const SystemType& system) {
    EditTable(dataset.GetSystemTypeData())->DeleteSystemTypeList({&system});
}

void RefuseIfUsed(const char* what, const std::string& name, const std::string& user) {
    if (!user.empty())
        throw Failure(std::string(what) + " " + name + " is used by " + user + " (--force deletes it all the same)",
                      Refused);
}

template <class Record> using Collector = std::vector<const Record*> (*)(Workplace&, const std::string&);

/// One kind of record that can be deleted: the user's word, and how to delete the one that goes by a name or an id.
struct Deletable {
    const char* word;
    const char* what;
    void (*run)(Workplace&, const Options&, const Deletable&, const std::string& name);
};

template <class Record, Collector<Record> collect>
void DeleteOne(Workplace& place, const Options& options, const Deletable& deletable, const std::string& name) {
    const Record& found = FindOne(collect(place, options.kind), name, deletable.what);
    const std::wstring id = found.GetId();
    if (!options.force)
        RefuseIfUsed(deletable.what, name, UserOf(place, found));
    const auto records = collect(place, options.kind);
    Erase(place.Dataset(), FindOne(records, StringUtil::ToString(id), deletable.what));
    place.FailUnlessStored(!Stands(collect(place, options.kind), id));
}

constexpr std::array kDeletables{
    Deletable{"material", "material", DeleteOne<Material, CollectMaterials>},
    Deletable{"size", "size table", DeleteOne<SizeModule, CollectSizes>},
    Deletable{"series", "series", DeleteOne<Serie, CollectSeries>},
    Deletable{"group", "group", DeleteOne<Group, CollectGroups>},
    Deletable{"system", "system type", DeleteOne<SystemType, CollectSystems>},
};

} // namespace

std::vector<std::string> DeletableWords() {
    std::vector<std::string> words;
    words.reserve(kDeletables.size());
    for (const Deletable& deletable : kDeletables)
        words.emplace_back(deletable.word);
    const auto exchanged = ExchangedWords(false, false);
    words.insert(words.end(), exchanged.begin(), exchanged.end());
    return words;
}

void RunDelete(const Options& options, Context& context) {
    if (DeleteExchanged(options, context))
        return;
    Workplace place(StringUtil::ToWString(options.dataset));
    for (const Deletable& deletable : kDeletables) {
        if (options.what != deletable.word)
            continue;
        for (const auto& name : options.names) {
            deletable.run(place, options, deletable, name);
            context.out << "Deleted " << name << '\n';
        }
    }
}

} // namespace tolmcli
