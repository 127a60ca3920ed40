#include "Tolm/Commands.h"

#include "Tolm/Errors.h"
#include "Tolm/Find.h"
#include "Tolm/Records.h"
#include "Tolm/Workplace.h"

#include "Vorn/Clock.h"
#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ostream>

namespace tolmcli {
namespace {

using tolm::IProjectSettingMaterial;
using tolm::IProjectSettingSizeModule;
using Type = tolm::TolmProjectSettingMEPObjectType;
using vorn::StringUtil;

using MaterialPtr = vorn::OwnerPtr<IProjectSettingMaterial>;
using SizeModulePtr = vorn::OwnerPtr<IProjectSettingSizeModule>;

__int64 Milliseconds() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(vorn::Clock::Now().time_since_epoch()).count();
}

/// A copy under the same identifier.
MaterialPtr EditableCopy(const IProjectSettingMaterial& material) {
    MaterialPtr copy = material.Clone();
    std::wstring id = material.GetId();
    copy->SetId(id);
    return copy;
}

/// A copy under the same identifier, with everything that a clone leaves out: the environment temperature and the
/// discipline of the material.
SizeModulePtr EditableCopy(const IProjectSettingSizeModule& module) {
    SizeModulePtr copy = module.Clone();
    std::wstring id = module.GetId();
    copy->SetId(id);
    copy->SetCableEnvironmentTemperature(module.GetCableEnvironmentTemperature());
    if (module.GetMaterial() != nullptr)
        copy->SetMaterial(EditableCopy(*module.GetMaterial()));
    return copy;
}

void SetName(auto& record, const std::string& name) {
    std::wstring text = vorn::StringUtil::TrimSpace(StringUtil::ToWString(name));
    if (text.empty())
        throw Failure("a name must not be empty", Misused);
    record.SetName(text);
}

/// Names are unique within a kind, or the service refuses the upload.
template <class Record> void CheckNameIsFree(const std::vector<const Record*>& records, const Record& candidate) {
    for (const Record* record : records) {
        if (record->GetName() == candidate.GetName() && record->GetId() != candidate.GetId())
            throw Failure("the name " + StringUtil::ToString(candidate.GetName()) + " is taken by " +
                              StringUtil::ToString(record->GetId()),
                          Refused);
    }
}

std::string WordOf(const auto& record) {
    return StringUtil::ToString(
        KindWord(static_cast<int>(record.GetMEPType()), static_cast<int>(record.GetDisciplineId())));
}

template <class Enum> Enum ParseEnum(const std::string& text, const char* what) {
    const double value = ParseNumber(text, what);
    if (value != std::floor(value) || std::abs(value) > 32767)
        throw Failure(std::string(what) + " takes a small whole number", Misused);
    return static_cast<Enum>(static_cast<int>(value));
}

/// An option that only one object type knows.
struct Particular {
    std::optional<std::string> Options::*option;
    const char* flag;
    std::vector<Type> types;
    void (*set)(IProjectSettingSizeModule&, const std::string&);
};

const std::vector<Particular>& AllParticulars() {
    static const std::vector<Particular> particulars{
        {&Options::roughness,
         "--roughness",
         {Type::Pipe},
         [](auto& module, const auto& text) { module.SetRoughness(ParseNumber(text, "--roughness")); }},
        {&Options::shape,
         "--shape",
         {Type::Duct, Type::CableTray},
         [](auto& module, const auto& text) {
             if (module.GetMEPType() == Type::Duct)
                 module.SetDuctShape(ParseEnum<tolm::SectionType>(text, "--shape"));
             else
                 module.SetCableTrayShape(ParseEnum<tolm::CableTrayShape>(text, "--shape"));
         }},
        {&Options::pressureGrade,
         "--pressure-grade",
         {Type::Duct},
         [](auto& module, const auto& text) {
             module.SetPressureGrade(ParseEnum<tolm::PressureGrade>(text, "--pressure-grade"));
         }},
        {&Options::cableMaterial,
         "--cable-material",
         {Type::Wire},
         [](auto& module, const auto& text) {
             module.SetCableMaterial(ParseEnum<tolm::CableMaterial>(text, "--cable-material"));
         }},
        {&Options::environmentTemperature,
         "--temperature",
         {Type::Wire},
         [](auto& module, const auto& text) {
             module.SetCableEnvironmentTemperature(ParseEnum<tolm::EnvironmentTemperature>(text, "--temperature"));
         }},
        {&Options::cableTypeName,
         "--cable-type",
         {Type::Wire},
         [](auto& module, const auto& text) {
             std::wstring name = StringUtil::ToWString(text);
             module.SetCableSpecTypeName(name);
         }},
    };
    return particulars;
}

void SetParticulars(IProjectSettingSizeModule& module, const Options& options) {
    for (const Particular& particular : AllParticulars()) {
        const auto& given = options.*particular.option;
        if (!given)
            continue;
        if (std::find(particular.types.begin(), particular.types.end(), module.GetMEPType()) == particular.types.end())
            throw Failure(std::string(particular.flag) + " means nothing to a size table of kind " + WordOf(module),
                          Misused);
        particular.set(module, *given);
    }
}

void SetMaterial(Workplace& place, IProjectSettingSizeModule& module, const Options& options) {
    if (!options.material)
        return;
    if (module.GetMEPType() != Type::Pipe && module.GetMEPType() != Type::Duct)
        throw Failure("a size table of kind " + WordOf(module) + " has no material", Misused);
    module.SetMaterial(EditableCopy(FindOne(CollectMaterials(place, WordOf(module)), *options.material, "material")));
}

void ChangeRows(IProjectSettingSizeModule& module, const Options& options) {
    std::vector<int> rows = options.removeRows;
    std::sort(rows.rbegin(), rows.rend());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (const int row : rows)
        RemoveRow(module, row);
    if (options.clearRows)
        ClearRows(module);
    for (const auto& row : options.addRows)
        AddRow(module, row);
}

void FillFromOptions(Workplace& place, IProjectSettingSizeModule& module, const Options& options) {
    if (options.name) {
        SetName(module, *options.name);
        // What travels to the cloud as the name of a cable table is its type name.
        if (module.GetMEPType() == Type::Wire && !options.cableTypeName) {
            std::wstring name = module.GetName();
            module.SetCableSpecTypeName(name);
        }
    }
    SetParticulars(module, options);
    ChangeRows(module, options);
    SetMaterial(place, module, options);
}

void StoreMaterial(Workplace& place, const IProjectSettingMaterial& material) {
    CheckNameIsFree(CollectMaterials(place, WordOf(material)), material);
    tolm::EditTable(place.Dataset().GetMaterialData())->AddMaterialToDB(&material);
    place.FailUnlessStored(Stands(CollectMaterials(place, WordOf(material)), material.GetId()));
}

void StoreSizes(Workplace& place, const IProjectSettingSizeModule& module) {
    CheckNameIsFree(CollectSizes(place, WordOf(module)), module);
    tolm::EditTable(place.Dataset().GetSizeModuleData())->AddSizeModuleToDB(&module);
    place.FailUnlessStored(Stands(CollectSizes(place, WordOf(module)), module.GetId()));
}

template <class Record> void Report(Context& context, const char* done, const Record& record) {
    if (context.json)
        context.out << ToJson(record).dump(2) << '\n';
    else
        context.out << done << ' ' << StringUtil::ToString(record.GetName()) << "  ("
                    << StringUtil::ToString(record.GetId()) << ")\n";
}

void RefuseMembers(const Options& options) {
    if (!options.setMembers.empty())
        throw Failure("--set means nothing to a " + options.what + ": it has options of its own", Misused);
}

} // namespace

std::vector<std::string> EditableWords() {
    std::vector<std::string> words{"material", "size"};
    const auto exchanged = ExchangedWords(false, false);
    words.insert(words.end(), exchanged.begin(), exchanged.end());
    return words;
}

void RunAdd(const Options& options, Context& context) {
    if (AddExchanged(options, context))
        return;
    RefuseMembers(options);
    Workplace place(StringUtil::ToWString(options.dataset));
    if (options.kind.empty())
        throw Failure("a new " + options.what + " needs a --kind", Misused);
    const Kind& kind = KindOf(options.kind);
    if (!options.name)
        throw Failure("a new " + options.what + " needs a --name", Misused);
    if (options.what == "material") {
        if (!kind.materials)
            throw Failure("there are no materials of kind " + options.kind, Misused);
        const MaterialPtr material = tolm::ITolmDataSetFactory::Get()->CreateMaterial();
        material->SetMEPType(kind.type);
        material->SetDisciplineId(kind.discipline);
        material->SetCreateTime(Milliseconds());
        SetName(*material, *options.name);
        StoreMaterial(place, *material);
        Report(context, "Added", *material);
    } else {
        if (!kind.sizes)
            throw Failure("there are no size tables of kind " + options.kind, Misused);
        const SizeModulePtr module = tolm::ITolmDataSetFactory::Get()->CreateSizeModule();
        module->SetMEPType(kind.type);
        module->SetDisciplineId(kind.discipline);
        module->SetCreateTime(Milliseconds());
        FillFromOptions(place, *module, options);
        StoreSizes(place, *module);
        Report(context, "Added", *module);
    }
}

void RunEdit(const Options& options, Context& context) {
    if (EditExchanged(options, context))
        return;
    RefuseMembers(options);
    Workplace place(StringUtil::ToWString(options.dataset));
    if (options.what == "material") {
        const MaterialPtr material =
            EditableCopy(FindOne(CollectMaterials(place, options.kind), options.names.front(), "material"));
        if (!options.name)
            throw Failure("nothing to change: a material has a --name", Misused);
        SetName(*material, *options.name);
        StoreMaterial(place, *material);
        Report(context, "Changed", *material);
    } else {
        const SizeModulePtr module =
            EditableCopy(FindOne(CollectSizes(place, options.kind), options.names.front(), "size table"));
        FillFromOptions(place, *module, options);
        StoreSizes(place, *module);
        Report(context, "Changed", *module);
    }
}

} // namespace tolmcli
