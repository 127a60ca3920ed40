#include "Tolm/Commands.h"

#include "Tolm/Errors.h"
#include "Tolm/Find.h"
#include "Tolm/Records.h"
#include "Tolm/TextTable.h"
#include "Tolm/Workplace.h"

#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace tolmcli {
namespace {

using Json = nlohmann::ordered_json;
using vorn::StringUtil;

std::wstring KindOfRecord(const auto& record) {
    return KindWord(static_cast<int>(record.GetMEPType()), static_cast<int>(record.GetDisciplineId()));
}

std::wstring MaterialName(const tolm::IProjectSettingSizeModule& module) {
    return module.GetMaterial() != nullptr ? module.GetMaterial()->GetName() : std::wstring();
}

void PrintMaterials(const std::vector<const tolm::IProjectSettingMaterial*>& materials, std::ostream& out) {
    TextTable table({L"name", L"kind", L"id"});
    for (const auto* material : materials)
        table.Add({material->GetName(), KindOfRecord(*material), material->GetId()});
    table.Print(out);
    out << materials.size() << " materials\n";
}

void PrintSizes(const std::vector<const tolm::IProjectSettingSizeModule*>& modules, std::ostream& out) {
    TextTable table({L"name", L"kind", L"material", L"rows", L"id"});
    for (const auto* module : modules)
        table.Add({module->GetName(), KindOfRecord(*module), MaterialName(*module), std::to_wstring(RowCount(*module)),
                   module->GetId()});
    table.Print(out);
    out << modules.size() << " size tables\n";
}

template <class Record> void PrintJson(const std::vector<const Record*>& records, std::ostream& out) {
    Json list = Json::array();
    for (const auto* record : records)
        list.push_back(ToJson(*record));
    out << list.dump(2) << '\n';
}

} // namespace

void RunList(const Options& options, Context& context) {
    Workplace place(StringUtil::ToWString(options.dataset));
    if (options.what == "materials") {
        const auto materials = CollectMaterials(place, options.kind);
        context.json ? PrintJson(materials, context.out) : PrintMaterials(materials, context.out);
    } else {
        const auto modules = CollectSizes(place, options.kind);
        context.json ? PrintJson(modules, context.out) : PrintSizes(modules, context.out);
    }
    place.FailOnFaults("the dataset could not be read whole");
}

void RunShow(const Options& options, Context& context) {
    Workplace place(StringUtil::ToWString(options.dataset));
    if (options.what == "material") {
        const auto& material = FindOne(CollectMaterials(place, options.kind), options.names.front(), "material");
        if (context.json)
            context.out << ToJson(material).dump(2) << '\n';
        else
            PrintMaterials({&material}, context.out);
    } else {
        const auto& module = FindOne(CollectSizes(place, options.kind), options.names.front(), "size table");
        if (context.json)
            context.out << ToJson(module).dump(2) << '\n';
        else
            Print(context.out, module);
    }
    place.FailOnFaults("the dataset could not be read whole");
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
