#include "StoreSupport/UploadRecords.h"

namespace tolmtest {
namespace {

class EntryComponent final : public tolm::ITolmProjectSettingComponent {
public:
    explicit EntryComponent(CatalogueEntry entry) : m_entry(std::move(entry)) {}
    ComponentPtr Clone() const override { return CatalogueComponent(m_entry); }
    wstring GetId() const override { return m_entry.id; }
    wstring GetCategoryCode() const override { return m_entry.category; }
    int GetVersion() const override { return m_entry.version; }
    std::int64_t GetPublicComponentId() const override { return m_entry.publicId; }
    wstring GetComponentTypeId() const override { return {}; }
    wstring GetName() const override { return {}; }
    std::map<wstring, wstring> GetAttributes() const override { return {}; }

private:
    CatalogueEntry m_entry;
};

void FillSizes(tolm::IProjectSettingSizeModule& size) {
    size.AddPipeSize({16.1F, 21.3F, 15.0F, 2.6F});
    size.AddPipeSize({12.3456F, -0.0004F, 20.75F, 0.1F});
    size.AddDuctSize({0.1F, 0.75F});
    size.AddDuctSize({1250.0F, 1.2F});
    size.AddCableSpecification({L"2.5", 24, tolm::EnvironmentTemperature::Celsius25});
    size.AddCableSpecification({L"4²", 31, tolm::EnvironmentTemperature::Celsius40});
}

std::vector<int> PartTypesOf(Type type) {
    if (type == Type::CableTray)
        return {1, 2, 3, 4, 5, 6, 21, 22, 23, 24, 26, 27, 28, 29};
    return {1, 2, 3, 4, 5, 6, 11, 25};
}

ConnectionPtr FullConnection(Type type) {
    auto connection = Connection(L"cos-1", L"螺纹", Connector::PipeGrooved, type);
    int count = 0;
    for (const int part : PartTypesOf(type)) {
        const CatalogueEntry entry{L"c" + std::to_wstring(++count), L"30.10", count, 9'007'199'254'740'993 + count};
        AddComponent(*connection, part, &entry, 15.5, 300.25);
    }
    return connection;
}

} // namespace

ComponentPtr CatalogueComponent(const CatalogueEntry& entry) {
    return vorn::MakeOwner<EntryComponent>(entry);
}

void AddComponent(tolm::IProjectSettingConnectionSerie& serie, int partType, const CatalogueEntry* entry, double min,
                  double max) {
    auto component = entry != nullptr ? CatalogueComponent(*entry) : ComponentPtr();
    serie.AddFitting(Part{partType}, Rule{partType}, component, min, max);
}

SizeModulePtr FullSize(Type type, Discipline discipline) {
    auto size = SizeModule(L"psi-1", L"镀锌钢管 PN16", type, discipline, 1'700'000'000'123);
    size->SetMaterial(Material(L"mts-1", L"Steel", type, discipline));
    size->SetRoughness(0.12345);
    FillSizes(*size);
    size->SetDuctShape(tolm::SectionType::Round);
    size->SetPressureGrade(tolm::PressureGrade::Medium);
    size->SetCableTrayShape(tolm::CableTrayShape::Perforated);
    wstring typeName = L"BV-500";
    size->SetCableSpecTypeName(typeName);
    size->SetCableMaterial(tolm::CableMaterial::Aluminium);
    size->SetCableEnvironmentTemperature(tolm::EnvironmentTemperature::Celsius35);
    return size;
}

SeriePtr FullSerie(Type type, Discipline discipline) {
    auto serie = Serie(L"sms-1", L"系列", type, discipline);
    serie->SetCreateTime(1'700'000'000'456);
    serie->SetMinSize(15.0625);
    serie->SetMaxSize(300.0);
    serie->SetJunctionType(tolm::PreferredJunctionType::Tap);
    auto size = FullSize(type, discipline);
    serie->SetSizeModule(size);
    serie->SetSerieGroup(Group(L"msg-1", L"group", type, discipline));
    auto connection = FullConnection(type);
    serie->SetConnectionSerie(connection);
    return serie;
}

SystemTypePtr FullSystemType(Type type, Discipline discipline) {
    auto system = SystemType(L"sys-1", L"冷水", type, discipline);
    wstring code = L"CW";
    system->SetCode(code);
    wstring description = L"to \"all\" floors";
    system->SetDescription(description);
    system->SetClassification(tolm::MEPSystemClassification{22});
    system->SetCreateTime(1'700'000'000'789);
    for (const wchar_t* id : {L"sms-2", L"sms-1"}) {
        auto serie = Serie(id, id, type, discipline);
        system->AddSystemMaterialSerie(serie);
    }
    for (const wchar_t* name : {L"YJV", L"BV"}) {
        auto cable = SizeModule(wstring(L"psi-") + name, L"cable", Type::Wire, Discipline::Electrical);
        wstring typeName = name;
        cable->SetCableSpecTypeName(typeName);
        system->AddCableSpecType(std::move(cable));
    }
    return system;
}

web::json::value OnlyRow(const web::json::value& encoded) {
    const auto& rows = encoded.at("rows").as_array();
    EXPECT_EQ(rows.size(), 1U);
    return rows.size() == 1 ? rows.at(0) : web::json::value();
}

std::vector<std::string> RowIds(const web::json::value& rows) {
    std::vector<std::string> ids;
    for (const auto& row : rows.as_array())
        ids.push_back((row.has_field("data") ? row.at("data") : row).at("ID").as_string());
    return ids;
}

} // namespace tolmtest
