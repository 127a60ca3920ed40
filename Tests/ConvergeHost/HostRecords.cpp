#include "ConvergeHost/HostRecords.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <optional>
#include <set>

namespace tolmtest {
namespace {

using nlohmann::json;
using tolm::ITolmDataset;
using tolm::MEPDisciplineId;
using tolm::TolmProjectSettingMEPObjectType;
using Type = tolm::TolmProjectSettingMEPObjectType;
using SizesPtr = vorn::OwnerPtr<tolm::IProjectSettingSizeModule>;

tolm::ITolmDataSetFactory& Factory() {
    return *tolm::ITolmDataSetFactory::Get();
}

/// Name, id, time, type and discipline, which all records have.
template <class Record> void GiveBasics(Record& record, const Slice& slice, const json& edit) {
    auto id = WideAt(edit, "id");
    auto name = WideAt(edit, "name");
    record.SetId(id);
    record.SetName(name);
    record.SetMEPType(slice.type);
    record.SetDisciplineId(slice.discipline);
    record.SetCreateTime(edit.at("mark").get<std::int64_t>());
}

template <class Record> SeenRecord See(const Record& record) {
    return {record.GetId(), record.GetName(), record.GetCreateTime()};
}

template <class Record> std::vector<SeenRecord> SeeAll(const std::vector<const Record*>& list) {
    std::vector<SeenRecord> seen;
    for (const Record* record : list)
        seen.push_back(See(*record));
    return seen;
}

template <class Record> const Record* Find(const std::vector<const Record*>& list, const std::wstring& id) {
    const auto found = std::ranges::find(list, id, [](const Record* record) { return record->GetId(); });
    return found != list.end() ? *found : nullptr;
}

void Collect(ITolmDataset& dataset, const Slice& slice) {
    dataset.CollectData(false, {slice.tableId});
}

std::vector<std::wstring> Links(const json& edit) {
    std::vector<std::wstring> ids;
    for (const auto& id : edit.value("links", json::array()))
        ids.push_back(vorn::StringUtil::ToWString(id.get<std::string>()));
    return ids;
}

/// Takes the records that are linked out of what is available, in the order of the links.
template <class Record>
std::vector<vorn::OwnerPtr<Record>> TakeLinked(tolm::IdMap<Record> available, const json& edit) {
    std::vector<vorn::OwnerPtr<Record>> taken;
    for (const auto& id : Links(edit)) {
        const auto found = available.find(id);
        if (found != available.end() && found->second)
            taken.push_back(std::move(found->second));
    }
    return taken;
}

// --- materials and groups ------------------------------------------------------------------------------------------

void PutMaterial(ITolmDataset& dataset, const Slice& slice, const json& edit) {
    auto material = Factory().CreateMaterial();
    GiveBasics(*material, slice, edit);
    EditTable(dataset.GetMaterialData())->AddMaterial(std::move(material));
}

void PutGroup(ITolmDataset& dataset, const Slice& slice, const json& edit) {
    auto group = Factory().CreateMEPMaterialSerieGroup();
    GiveBasics(*group, slice, edit);
    EditTable(dataset.GetMEPMaterialSerieData())->AddSerieGroup(std::move(group));
}

// --- size tables ---------------------------------------------------------------------------------------------------

/// Numbers that neither the wire nor a float rounds.
void GiveSizes(tolm::IProjectSettingSizeModule& sizes, int n) {
    for (int row = 0; row < n % 4; ++row) {
        const auto size = static_cast<float>(10 + 5 * row + n % 90);
        if (sizes.GetMEPType() == Type::Wire)
            sizes.AddCableSpecification(
                {std::to_wstring(row) + L".5", 10 + n + row, static_cast<tolm::EnvironmentTemperature>((n + row) % 4)});
        else if (sizes.GetMEPType() == Type::Duct)
            sizes.AddDuctSize({size, 0.5F});
        else if (sizes.GetMEPType() == Type::CableTray)
            sizes.AddDuctSize({size, 0.0F});
        else
            sizes.AddPipeSize({size - 1.5F, size + 2.5F, size, sizes.GetMEPType() == Type::Pipe ? 0.5F : 0.0F});
    }
}

bool GivePipeValues(ITolmDataset& dataset, const Slice& slice, const json& edit,
                    tolm::IProjectSettingSizeModule& sizes) {
    auto materials = TakeLinked(dataset.GetAvailableMaterialList(slice.type, slice.discipline), edit);
    if (materials.empty())
        return false;
    sizes.SetMaterial(std::move(materials.front()));
    sizes.SetRoughness(edit.at("n").get<int>() % 8 / 2.0);
    return true;
}

void GiveDuctValues(const json& edit, tolm::IProjectSettingSizeModule& sizes) {
    const int n = edit.at("n");
    auto material = Factory().CreateMaterial();
    std::wstring id = sizes.GetId() + L" material";
    std::wstring name = L"plate " + std::to_wstring(n % 5);
    material->SetId(id);
    material->SetName(name);
    material->SetMEPType(Type::Duct);
    material->SetDisciplineId(MEPDisciplineId::HVAC);
    sizes.SetMaterial(std::move(material));
    sizes.SetDuctShape(static_cast<tolm::SectionType>(n % 3));
    sizes.SetPressureGrade(static_cast<tolm::PressureGrade>(n % 4));
}

void GiveWireValues(const json& edit, tolm::IProjectSettingSizeModule& sizes) {
    const int n = edit.at("n");
    auto name = WideAt(edit, "name");
    sizes.SetCableSpecTypeName(name);
    sizes.SetCableMaterial(static_cast<tolm::CableMaterial>(n % 2));
    sizes.SetCableEnvironmentTemperature(static_cast<tolm::EnvironmentTemperature>(n % 4));
}

/// A tray table keeps its shape.
void GiveTrayValues(ITolmDataset& dataset, tolm::IProjectSettingSizeModule& sizes) {
    const auto* before = Find(dataset.GetSizeModuleData()->GetSizeList(), sizes.GetId());
    if (before != nullptr)
        sizes.SetCableTrayShape(before->GetCableTrayShape());
}

bool PutSizes(ITolmDataset& dataset, const Slice& slice, const json& edit) {
    auto sizes = Factory().CreateSizeModule();
    GiveBasics(*sizes, slice, edit);
    if (slice.type == Type::Pipe && !GivePipeValues(dataset, slice, edit, *sizes))
        return false;
    if (slice.type == Type::Duct)
        GiveDuctValues(edit, *sizes);
    if (slice.type == Type::Wire)
        GiveWireValues(edit, *sizes);
    if (slice.type == Type::CableTray)
        GiveTrayValues(dataset, *sizes);
    GiveSizes(*sizes, edit.at("n"));
    EditTable(dataset.GetSizeModuleData())->AddSizeModule(std::move(sizes));
    return true;
}

// --- series --------------------------------------------------------------------------------------------------------

std::vector<tolm::FittingPartType> PartsOf(Type type) {
    using enum tolm::FittingPartType;
    if (type == Type::Conduit)
        return {Elbow, Tee, Cross, Transition, Union};
    return {Elbow, Tee, Cross, Transition, Union, Cap};
}

/// The fittings that `n` asks for, all of one category, in the order in which the service's rows list them. Their
/// bounds are those that every fitting gets when it is read.
void GiveFittings(ITolmDataset& dataset, int n, const Slice& slice, tolm::IProjectSettingConnectionSerie& connection) {
    std::map<std::wstring, std::wstring> none;
    auto products = dataset.GetProjectProductList(n % 2 == 0 ? L"16201010" : L"16201020", none, true);
    const auto parts = PartsOf(slice.type);
    std::size_t given = 0;
    for (const auto part : parts) {
        if ((n >> static_cast<int>(part)) % 2 == 0 || given == products.size())
            continue;
        connection.AddFitting(part, static_cast<tolm::RoutingPreferenceRuleGroupType>(part), products[given++], 1.0,
                              1'000'000.0);
    }
}

tolm::MEPConnectorType ConnectorOf(Type type) {
    switch (type) {
    case Type::Duct:
        return tolm::MEPConnectorType::Duct;
    case Type::CableTray:
        return tolm::MEPConnectorType::CableTray;
    case Type::Conduit:
        return tolm::MEPConnectorType::Conduit;
    default:
        return tolm::MEPConnectorType::PipeWelded;
    }
}

void GiveConnection(ITolmDataset& dataset, const Slice& slice, const json& edit,
                    tolm::IProjectSettingMEPMaterialSerie& serie) {
    auto connection = Factory().CreateConnectionSerie();
    std::wstring id = serie.GetId() + L" connection";
    connection->SetId(id);
    connection->SetConnectionType(ConnectorOf(slice.type));
    connection->SetObjectType(slice.type);
    GiveFittings(dataset, edit.at("n"), slice, *connection);
    serie.SetConnectionSerie(connection);
}

void GiveGroup(ITolmDataset& dataset, const json& edit, tolm::IProjectSettingMEPMaterialSerie& serie) {
    const auto groups = dataset.GetMEPMaterialSerieData()->GetSerieGroupList();
    for (auto id : Links(edit)) {
        if (const auto* group = Find(groups, id)) {
            auto copy = group->Clone();
            copy->SetId(id);
            return serie.SetSerieGroup(std::move(copy));
        }
    }
}

void PutSerie(ITolmDataset& dataset, const Slice& slice, const json& edit) {
    const int n = edit.at("n");
    auto serie = Factory().CreateMEPMaterialSerie();
    GiveBasics(*serie, slice, edit);
    serie->SetMinSize(n % 40 + 0.5);
    serie->SetMaxSize(n % 40 + 100);
    serie->SetJunctionType(static_cast<tolm::PreferredJunctionType>(n % 2));
    auto sizes = TakeLinked(dataset.GetAvailableSizeModuleList(slice.type, slice.discipline), edit);
    if (!sizes.empty())
        serie->SetSizeModule(sizes.front());
    GiveConnection(dataset, slice, edit, *serie);
    GiveGroup(dataset, edit, *serie);
    EditTable(dataset.GetMEPMaterialSerieData())->AddSerie(std::move(serie));
}

// --- system types --------------------------------------------------------------------------------------------------

void PutSystem(ITolmDataset& dataset, const Slice& slice, const json& edit) {
    const int n = edit.at("n");
    auto system = Factory().CreateSystemType();
    GiveBasics(*system, slice, edit);
    std::wstring code = L"J" + std::to_wstring(n % 9);
    std::wstring description = n % 3 == 0 ? L"" : L"说明 " + std::to_wstring(n);
    system->SetCode(code);
    system->SetDescription(description);
    system->SetClassification(static_cast<tolm::MEPSystemClassification>(1 + n % 40));
    if (slice.type == Type::ElectricalSystem) {
        for (auto& cable :
             TakeLinked(dataset.GetAvailableSizeModuleList(Type::Wire, MEPDisciplineId::Electrical), edit))
            system->AddCableSpecType(std::move(cable));
    } else {
        for (auto& serie : TakeLinked(dataset.GetAvailableMEPMaterialSerieList(slice.type, slice.discipline), edit))
            system->AddSystemMaterialSerie(serie);
    }
    EditTable(dataset.GetSystemTypeData())->AddSystemType(std::move(system));
}

} // namespace

std::wstring WideAt(const json& object, const char* key) {
    return vorn::StringUtil::ToWString(object.at(key).get<std::string>());
}

std::vector<SeenRecord> SeeRecords(ITolmDataset& dataset, const Slice& slice) {
    Collect(dataset, slice);
    switch (slice.kind) {
    case SettingKind::Material:
        return SeeAll(dataset.GetMaterialData()->GetMaterialList());
    case SettingKind::Sizes:
        return SeeAll(dataset.GetSizeModuleData()->GetSizeList());
    case SettingKind::Group:
        return SeeAll(dataset.GetMEPMaterialSerieData()->GetSerieGroupList());
    case SettingKind::Serie:
        return SeeAll(dataset.GetMEPMaterialSerieData()->GetSerieList());
    case SettingKind::System:
        return SeeAll(dataset.GetSystemTypeData()->GetSystemTypeList());
    }
    return {};
}

bool PutRecord(ITolmDataset& dataset, const Slice& slice, const json& edit) {
    Collect(dataset, slice);
    switch (slice.kind) {
    case SettingKind::Material:
        PutMaterial(dataset, slice, edit);
        return true;
    case SettingKind::Sizes:
        return PutSizes(dataset, slice, edit);
    case SettingKind::Group:
        PutGroup(dataset, slice, edit);
        return true;
    case SettingKind::Serie:
        PutSerie(dataset, slice, edit);
        return true;
    case SettingKind::System:
        PutSystem(dataset, slice, edit);
        return true;
    }
    return false;
}

void DeleteRecord(ITolmDataset& dataset, const Slice& slice, const std::wstring& id) {
    Collect(dataset, slice);
    switch (slice.kind) {
    case SettingKind::Material: {
        const auto* table = dataset.GetMaterialData();
        return EditTable(table)->DeleteMaterialList({Find(table->GetMaterialList(), id)});
    }
    case SettingKind::Sizes: {
        const auto* table = dataset.GetSizeModuleData();
        return EditTable(table)->DeleteSizeModuleList({Find(table->GetSizeList(), id)});
    }
    case SettingKind::Group: {
        const auto* table = dataset.GetMEPMaterialSerieData();
        return EditTable(table)->DeleteSerieGroupList({Find(table->GetSerieGroupList(), id)});
    }
    case SettingKind::Serie: {
        const auto* table = dataset.GetMEPMaterialSerieData();
        return EditTable(table)->DeleteSerieList({Find(table->GetSerieList(), id)});
    }
    case SettingKind::System: {
        const auto* table = dataset.GetSystemTypeData();
        return EditTable(table)->DeleteSystemTypeList({Find(table->GetSystemTypeList(), id)});
    }
    }
}

} // namespace tolmtest
