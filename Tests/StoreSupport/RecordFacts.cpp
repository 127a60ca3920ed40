#include "StoreSupport/RecordFacts.h"

#include "Host/Components.h"
#include "Vorn/Text.h"

#include <type_traits>

namespace tolmtest {
namespace {

using tolm::wstring;

/// Facts that are gathered under one prefix.
class Sheet {
public:
    explicit Sheet(Facts& facts, std::string prefix = "") : m_facts(facts), m_prefix(std::move(prefix)) {}

    template <class Value> void Put(const std::string& field, const Value& value) {
        if constexpr (std::is_convertible_v<Value, wstring>)
            m_facts[m_prefix + field] = TextFact(vorn::StringUtil::ToString(value));
        else
            m_facts[m_prefix + field] = NumberFact(static_cast<double>(value));
    }
    Sheet Entry(const std::string& list, std::size_t index) const {
        return Sheet(m_facts, m_prefix + list + " " + std::to_string(index) + "/");
    }

private:
    Facts& m_facts;
    std::string m_prefix;
};

template <class Record> void PutHead(Sheet& sheet, const Record& record) {
    sheet.Put("id", record.GetId());
    sheet.Put("name", record.GetName());
    sheet.Put("type", record.GetMEPType());
    sheet.Put("discipline", record.GetDisciplineId());
    sheet.Put("created", record.GetCreateTime());
}

template <class Part> void PutLink(Sheet& sheet, const std::string& field, const Part* part) {
    if (part != nullptr)
        sheet.Put(field, part->GetId());
}

void PutLists(const Sheet& sheet, const tolm::IProjectSettingSizeModule& size) {
    std::size_t index = 0;
    for (const auto& row : size.GetPipeSizeList()) {
        Sheet entry = sheet.Entry("pipe", index++);
        entry.Put("nominal", row.nominalDiameter);
        entry.Put("outer", row.outerDiameter);
        entry.Put("inner", row.innerDiameter);
        entry.Put("thickness", row.thickness);
    }
    index = 0;
    for (const auto& row : size.GetDuctSizeList()) {
        Sheet entry = sheet.Entry("duct", index++);
        entry.Put("size", row.size);
        entry.Put("thickness", row.thickness);
    }
    index = 0;
    for (const auto& row : size.GetCableSpecificationList()) {
        Sheet entry = sheet.Entry("cable", index++);
        entry.Put("area", row.area);
        entry.Put("current", row.current);
        entry.Put("temperature", row.temperature);
    }
}

void PutFittings(const Sheet& sheet, const tolm::IProjectSettingConnectionSerie& connection) {
    std::size_t index = 0;
    for (const auto& fitting : connection.GetProducts()) {
        Sheet entry = sheet.Entry("fitting", index++);
        entry.Put("part", fitting.fittingPartType);
        entry.Put("rule", fitting.routingGroup);
        entry.Put("min", fitting.firstSizeBound);
        entry.Put("max", fitting.secondSizeBound);
        entry.Put("id", fitting.m_pComponent->GetId());
        entry.Put("category", fitting.m_pComponent->GetCategoryCode());
        entry.Put("version", fitting.m_pComponent->GetVersion());
        entry.Put("public id", fitting.m_pComponent->GetPublicComponentId());
    }
}

} // namespace

Facts FactsOf(const tolm::IProjectSettingMaterial& material) {
    Facts facts;
    Sheet sheet(facts);
    PutHead(sheet, material);
    return facts;
}

Facts FactsOf(const tolm::IProjectSettingMEPMaterialSerieGroup& group) {
    Facts facts;
    Sheet sheet(facts);
    PutHead(sheet, group);
    return facts;
}

Facts FactsOf(const tolm::IProjectSettingSizeModule& size) {
    Facts facts;
    Sheet sheet(facts);
    PutHead(sheet, size);
    PutLink(sheet, "material", size.GetMaterial());
    if (size.GetMaterial() != nullptr)
        sheet.Put("material's name", size.GetMaterial()->GetName());
    sheet.Put("roughness", size.GetRoughness());
    sheet.Put("duct shape", size.GetDuctShape());
    sheet.Put("pressure", size.GetPressureGrade());
    sheet.Put("tray shape", size.GetCableTrayShape());
    sheet.Put("cable type", size.GetCableSpecTypeName());
    sheet.Put("metal", size.GetCableMaterial());
    sheet.Put("temperature", size.GetCableEnvironmentTemperature());
    PutLists(sheet, size);
    return facts;
}

Facts FactsOf(const tolm::IProjectSettingMEPMaterialSerie& serie) {
    Facts facts;
    Sheet sheet(facts);
    PutHead(sheet, serie);
    sheet.Put("min", serie.GetMinSize());
    sheet.Put("max", serie.GetMaxSize());
    sheet.Put("junction", serie.GetJunctionType());
    sheet.Put("tray shape", serie.GetTrayShape());
    sheet.Put("duct shape", serie.GetDuctShape());
    PutLink(sheet, "size table", serie.GetSizeModule());
    PutLink(sheet, "group", serie.GetSerieGroup());
    if (const auto* connection = serie.GetConnectionSerie()) {
        sheet.Put("connection", connection->GetId());
        sheet.Put("connection's name", connection->GetName());
        sheet.Put("connection's type", connection->GetConnectionType());
        PutFittings(sheet, *connection);
    }
    return facts;
}

Facts FactsOf(const tolm::IProjectSettingSystemType& system) {
    Facts facts;
    Sheet sheet(facts);
    PutHead(sheet, system);
    sheet.Put("code", system.GetCode());
    sheet.Put("description", system.GetDescription());
    sheet.Put("classification", system.GetClassification());
    std::size_t index = 0;
    for (const auto* serie : system.GetSystemMaterialSerieList())
        sheet.Entry("series", index++).Put("id", serie->GetId());
    for (const auto& [name, cable] : system.GetCableSpecTypeList())
        sheet.Put("cable " + vorn::StringUtil::ToString(name), cable->GetId());
    return facts;
}

} // namespace tolmtest
