#include "Tolm/Commands.h"

#include "Tolm/Errors.h"
#include "Tolm/Find.h"
#include "Tolm/Records.h"
#include "Tolm/TextTable.h"
#include "Tolm/Trees.h"
#include "Tolm/Workplace.h"

#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <array>
#include <map>
#include <ostream>

namespace tolmcli {
namespace {

using Json = nlohmann::ordered_json;
using vorn::StringUtil;

std::wstring KindOfRecord(const auto& record) {
    return KindWord(static_cast<int>(record.GetMEPType()), static_cast<int>(record.GetDisciplineId()));
}

std::wstring NameOf(const auto* record) {
    return record != nullptr ? record->GetName() : std::wstring();
}

/// What a list shows of one kind of record: the columns, and a row of them.
template <class Record> struct Listing;

template <> struct Listing<tolm::IProjectSettingMaterial> {
    static constexpr const char* kWord = "materials";
    static std::vector<std::wstring> Header() { return {L"name", L"kind", L"id"}; }
    static std::vector<std::wstring> Row(const tolm::IProjectSettingMaterial& material) {
        return {material.GetName(), KindOfRecord(material), material.GetId()};
    }
};

template <> struct Listing<tolm::IProjectSettingSizeModule> {
    static constexpr const char* kWord = "size tables";
    static std::vector<std::wstring> Header() { return {L"name", L"kind", L"material", L"rows", L"id"}; }
    static std::vector<std::wstring> Row(const tolm::IProjectSettingSizeModule& module) {
        return {module.GetName(), KindOfRecord(module), NameOf(module.GetMaterial()), std::to_wstring(RowCount(module)),
                module.GetId()};
    }
};

template <> struct Listing<tolm::IProjectSettingMEPMaterialSerie> {
    static constexpr const char* kWord = "series";
    static std::vector<std::wstring> Header() { return {L"name", L"kind", L"group", L"sizes", L"fittings", L"id"}; }
    static std::vector<std::wstring> Row(const tolm::IProjectSettingMEPMaterialSerie& serie) {
        const auto* connection = serie.GetConnectionSerie();
        return {serie.GetName(),
                KindOfRecord(serie),
                NameOf(serie.GetSerieGroup()),
                NameOf(serie.GetSizeModule()),
                std::to_wstring(connection != nullptr ? connection->GetProducts().size() : 0),
                serie.GetId()};
    }
};

template <> struct Listing<tolm::IProjectSettingMEPMaterialSerieGroup> {
    static constexpr const char* kWord = "groups";
    static std::vector<std::wstring> Header() { return {L"name", L"kind", L"id"}; }
    static std::vector<std::wstring> Row(const tolm::IProjectSettingMEPMaterialSerieGroup& group) {
        return {group.GetName(), KindOfRecord(group), group.GetId()};
    }
};

template <> struct Listing<tolm::IProjectSettingSystemType> {
    static constexpr const char* kWord = "system types";
    static std::vector<std::wstring> Header() { return {L"name", L"kind", L"code", L"series", L"cables", L"id"}; }
    static std::vector<std::wstring> Row(const tolm::IProjectSettingSystemType& system) {
        return {system.GetName(),
                KindOfRecord(system),
                system.GetCode(),
                std::to_wstring(system.GetSystemMaterialSerieList().size()),
                std::to_wstring(system.GetCableSpecTypeList().size()),
                system.GetId()};
    }
};

template <> struct Listing<tolm::IProjectSettingConnectionSerie> {
    static constexpr const char* kWord = "connection series";
    static std::vector<std::wstring> Header() { return {L"name", L"connector", L"fittings", L"id"}; }
    static std::vector<std::wstring> Row(const tolm::IProjectSettingConnectionSerie& connection) {
        return {connection.GetName(), ConnectorWord(connection.GetConnectionType()),
                std::to_wstring(connection.GetProducts().size()), connection.GetId()};
    }
};

using tolmcli::Print;

void Print(std::ostream& out, const tolm::IProjectSettingMaterial& material) {
    TextTable table(Listing<tolm::IProjectSettingMaterial>::Header());
    table.Add(Listing<tolm::IProjectSettingMaterial>::Row(material));
    table.Print(out);
}

template <class Record> using Collector = std::vector<const Record*> (*)(Workplace&, const std::string&);

template <class Record, Collector<Record> collect>
void ListAll(Workplace& place, const Options& options, Context& context) {
    const auto records = collect(place, options.kind);
    if (context.json) {
        Json list = Json::array();
        for (const auto* record : records)
            list.push_back(ToJson(*record));
        context.out << list.dump(2) << '\n';
        return;
    }
    TextTable table(Listing<Record>::Header());
    for (const auto* record : records)
        table.Add(Listing<Record>::Row(*record));
    table.Print(context.out);
    context.out << records.size() << ' ' << Listing<Record>::kWord << '\n';
}

template <class Record, Collector<Record> collect>
void ShowOne(Workplace& place, const Options& options, Context& context) {
    const Record& record = FindOne(collect(place, options.kind), options.names.front(), options.what);
    if (context.json)
        context.out << ToJson(record).dump(2) << '\n';
    else
        Print(context.out, record);
}

using Show = void (*)(Workplace&, const Options&, Context&);

/// One kind of record under the words that the user gives for many and for one.
struct Readable {
    const char* many;
    const char* one;
    Show list;
    Show show;
};

template <class Record, Collector<Record> collect> constexpr Readable MakeReadable(const char* many, const char* one) {
    return {many, one, ListAll<Record, collect>, ShowOne<Record, collect>};
}

constexpr std::array kReadables{
    MakeReadable<tolm::IProjectSettingMaterial, CollectMaterials>("materials", "material"),
    MakeReadable<tolm::IProjectSettingSizeModule, CollectSizes>("sizes", "size"),
    MakeReadable<tolm::IProjectSettingMEPMaterialSerie, CollectSeries>("series", "series"),
    MakeReadable<tolm::IProjectSettingMEPMaterialSerieGroup, CollectGroups>("groups", "group"),
    MakeReadable<tolm::IProjectSettingSystemType, CollectSystems>("systems", "system"),
    MakeReadable<tolm::IProjectSettingConnectionSerie, CollectConnections>("connections", "connection"),
};

void Read(const char* Readable::*word, Show Readable::*run, const Options& options, Context& context) {
    Workplace place(StringUtil::ToWString(options.dataset));
    for (const Readable& readable : kReadables) {
        if (options.what == readable.*word)
            (readable.*run)(place, options, context);
    }
    place.FailOnFaults("the dataset could not be read whole");
}

std::vector<std::string> Words(const char* Readable::*word) {
    std::vector<std::string> words;
    words.reserve(kReadables.size());
    for (const Readable& readable : kReadables)
        words.emplace_back(readable.*word);
    const auto exchanged = ExchangedWords(word == &Readable::many, true);
    words.insert(words.end(), exchanged.begin(), exchanged.end());
    return words;
}

} // namespace

std::vector<std::string> ListableWords() {
    return Words(&Readable::many);
}

std::vector<std::string> ShowableWords() {
    return Words(&Readable::one);
}

void RunList(const Options& options, Context& context) {
    if (!ListExchanged(options, context))
        Read(&Readable::many, &Readable::list, options, context);
}

void RunShow(const Options& options, Context& context) {
    if (!ShowExchanged(options, context))
        Read(&Readable::one, &Readable::show, options, context);
}

void RunUsedBy(const Options& options, Context& context) {
    Workplace place(StringUtil::ToWString(options.dataset));
    std::wstring user;
    bool used = false;
    if (options.what == "size") {
        const auto& module = FindOne(CollectSizes(place, options.kind), options.names.front(), "size table");
        used = place.Dataset().GetSizeModuleData()->IsTheSizeModuleReferred(&module, user);
    } else {
        const auto& serie = FindOne(CollectSeries(place, options.kind), options.names.front(), "series");
        used = place.Dataset().GetMEPMaterialSerieData()->IsTheMEPMaterialSeireReferred(&serie, user);
    }
    place.FailOnFaults("the dataset could not be asked");
    if (context.json)
        context.out << Json{{"used", used}, {"by", StringUtil::ToString(user)}}.dump(2) << '\n';
    else
        context.out << (used ? "Used by " + StringUtil::ToString(WithoutControls(user)) : "Not used") << '\n';
}

void RunAvailable(const Options& options, Context& context) {
    Workplace place(StringUtil::ToWString(options.dataset));
    const Kind& kind = KindOf(options.kind);
    auto& dataset = place.Dataset();
    const auto materials = dataset.GetAvailableMaterialList(kind.type, kind.discipline);
    const auto modules = dataset.GetAvailableSizeModuleList(kind.type, kind.discipline);
    const auto series = dataset.GetAvailableMEPMaterialSerieList(kind.type, kind.discipline);
    std::map<tolm::MEPConnectorType, std::wstring> connectors;
    std::map<std::wstring, vorn::OwnerPtr<tolm::IProjectSettingConnectionSerie>> connections;
    dataset.GetAvailableConnectionList(kind.type, connectors, connections);
    place.FailOnFaults("the dataset could not be read whole");
    Json json{{"kind", options.kind},        {"materials", materials.size()},
              {"sizes", modules.size()},     {"connections", connections.size()},
              {"connectors", Json::array()}, {"series", Json::array()}};
    for (const auto& [type, name] : connectors)
        json["connectors"].push_back(StringUtil::ToString(name));
    for (const auto& [id, serie] : series)
        json["series"].push_back({{"id", StringUtil::ToString(id)}, {"name", StringUtil::ToString(serie->GetName())}});
    if (context.json) {
        context.out << json.dump(2) << '\n';
        return;
    }
    context.out << materials.size() << " materials, " << modules.size() << " size tables, " << connections.size()
                << " connection series over " << connectors.size() << " connector types\n\n";
    TextTable table(Listing<tolm::IProjectSettingMEPMaterialSerie>::Header());
    for (const auto& [id, serie] : series)
        table.Add(Listing<tolm::IProjectSettingMEPMaterialSerie>::Row(*serie));
    table.Print(context.out);
    context.out << series.size() << " series\n";
}

void RunChanges(const Options& options, Context& context) {
    const std::wstring path = StringUtil::ToWString(options.dataset);
    CheckDatasetPath(path);
    const auto changes = ReadNotedChanges(path);
    if (context.json) {
        Json list = Json::array();
        for (const auto& change : changes)
            list.push_back({{"change", StringUtil::ToString(change.change)},
                            {"what", StringUtil::ToString(change.what)},
                            {"name", StringUtil::ToString(change.name)},
                            {"kind", StringUtil::ToString(change.kind)},
                            {"id", StringUtil::ToString(change.id)}});
        context.out << list.dump(2) << '\n';
        return;
    }
    if (changes.empty()) {
        context.out << "No local changes\n";
        return;
    }
    TextTable table({L"change", L"what", L"name", L"kind", L"id"});
    for (const auto& change : changes)
        table.Add({change.change, change.what, change.name, change.kind, change.id});
    table.Print(context.out);
}

} // namespace tolmcli
