#include "Tolm/Trees.h"

#include "Tolm/Kinds.h"
#include "Tolm/Records.h"
#include "Tolm/TextTable.h"

#include "Host/Components.h"
#include "Host/Definitions.h"
#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <array>
#include <ostream>

namespace tolmcli {
namespace {

using Json = nlohmann::ordered_json;
using tolm::RoutingPreferenceRuleGroupType;
using vorn::StringUtil;

std::string Utf8(const std::wstring& text) {
    return StringUtil::ToString(WithoutControls(text));
}

template <class Record> Json Head(const Record& record) {
    return {{"id", StringUtil::ToString(record.GetId())}, {"name", StringUtil::ToString(record.GetName())}};
}

std::string KindText(const auto& record) {
    return Utf8(KindWord(static_cast<int>(record.GetMEPType()), static_cast<int>(record.GetDisciplineId())));
}

struct RuleWord {
    RoutingPreferenceRuleGroupType rule;
    const char* word;
};

constexpr std::array kRules{
    RuleWord{RoutingPreferenceRuleGroupType::Elbows, "elbow"},
    RuleWord{RoutingPreferenceRuleGroupType::Tees, "tee"},
    RuleWord{RoutingPreferenceRuleGroupType::Crosses, "cross"},
    RuleWord{RoutingPreferenceRuleGroupType::Transitions, "transition"},
    RuleWord{RoutingPreferenceRuleGroupType::Unions, "union"},
    RuleWord{RoutingPreferenceRuleGroupType::Caps, "cap"},
    RuleWord{RoutingPreferenceRuleGroupType::RoundTransitions, "round transition"},
    RuleWord{RoutingPreferenceRuleGroupType::VerticalInsideBends, "vertical inside bend"},
    RuleWord{RoutingPreferenceRuleGroupType::VerticalOutsideBends, "vertical outside bend"},
    RuleWord{RoutingPreferenceRuleGroupType::VerticalLateralTees, "vertical lateral tee"},
    RuleWord{RoutingPreferenceRuleGroupType::VerticalLateralElbows, "vertical lateral elbow"},
    RuleWord{RoutingPreferenceRuleGroupType::VerticalLeftLateralElbows, "vertical left lateral elbow"},
    RuleWord{RoutingPreferenceRuleGroupType::VerticalRightLateralElbows, "vertical right lateral elbow"},
    RuleWord{RoutingPreferenceRuleGroupType::VerticalDownwardTees, "vertical downward tee"},
    RuleWord{RoutingPreferenceRuleGroupType::VerticalUpwardTees, "vertical upward tee"},
};

std::string WordOf(RoutingPreferenceRuleGroupType rule) {
    for (const RuleWord& row : kRules) {
        if (row.rule == rule)
            return row.word;
    }
    return "rule " + std::to_string(static_cast<int>(rule));
}

Json FittingJson(const tolm::ITolmProjectSettingFittingComponentConst& fitting) {
    Json json{{"partType", static_cast<int>(fitting.fittingPartType)}, {"rule", WordOf(fitting.routingGroup)}};
    if (const auto* component = fitting.m_pComponent) {
        json["component"] = StringUtil::ToString(component->GetId());
        json["name"] = StringUtil::ToString(component->GetName());
        json["category"] = StringUtil::ToString(component->GetCategoryCode());
    }
    return json;
}

constexpr const char* kBranch = "├─ ";
constexpr const char* kLastBranch = "└─ ";

void PrintFittings(std::ostream& out, const tolm::IProjectSettingConnectionSerie& connection,
                   const std::string& indent) {
    const auto fittings = connection.GetProducts();
    for (std::size_t i = 0; i < fittings.size(); ++i) {
        const auto* component = fittings[i].m_pComponent;
        out << indent << (i + 1 == fittings.size() ? kLastBranch : kBranch) << WordOf(fittings[i].routingGroup) << ": "
            << (component != nullptr ? Utf8(component->GetName()) : "no component") << '\n';
    }
}

void PrintParts(std::ostream& out, const tolm::IProjectSettingMEPMaterialSerie& serie) {
    if (const auto* group = serie.GetSerieGroup())
        out << kBranch << "group: " << Utf8(group->GetName()) << '\n';
    if (const auto* module = serie.GetSizeModule()) {
        out << kBranch << "sizes: " << Utf8(module->GetName()) << " (" << RowCount(*module) << " rows";
        if (module->GetMaterial() != nullptr)
            out << ", " << Utf8(module->GetMaterial()->GetName());
        out << ")\n";
    }
    if (const auto* connection = serie.GetConnectionSerie()) {
        out << kLastBranch << "connection: " << Utf8(ConnectorWord(connection->GetConnectionType())) << '\n';
        PrintFittings(out, *connection, "   ");
    }
}

void PrintHead(std::ostream& out, const std::wstring& name, const std::wstring& id, const std::string& kind) {
    out << Utf8(name) << "\n  id    " << Utf8(id) << "\n  kind  " << kind << '\n';
}

} // namespace

std::wstring ConnectorWord(tolm::MEPConnectorType type) {
    const auto& names = tolm::MEPConnectorTypeDefinition::ConnectorTypeNameList;
    const auto found = names.find(type);
    return found != names.end() ? found->second : std::to_wstring(static_cast<int>(type));
}

Json ToJson(const tolm::IProjectSettingMEPMaterialSerieGroup& group) {
    Json json = Head(group);
    json["kind"] = KindText(group);
    json["createTime"] = group.GetCreateTime();
    return json;
}

Json ToJson(const tolm::IProjectSettingConnectionSerie& connection) {
    Json json = Head(connection);
    json["connector"] = StringUtil::ToString(ConnectorWord(connection.GetConnectionType()));
    json["objectType"] = static_cast<int>(connection.GetObjectType());
    json["fittings"] = Json::array();
    for (const auto& fitting : connection.GetProducts())
        json["fittings"].push_back(FittingJson(fitting));
    return json;
}

Json ToJson(const tolm::IProjectSettingMEPMaterialSerie& serie) {
    Json json = Head(serie);
    json["kind"] = KindText(serie);
    json["createTime"] = serie.GetCreateTime();
    json["minSize"] = serie.GetMinSize();
    json["maxSize"] = serie.GetMaxSize();
    if (serie.GetSerieGroup() != nullptr)
        json["group"] = Head(*serie.GetSerieGroup());
    if (serie.GetSizeModule() != nullptr)
        json["sizes"] = Head(*serie.GetSizeModule());
    if (serie.GetConnectionSerie() != nullptr)
        json["connection"] = ToJson(*serie.GetConnectionSerie());
    return json;
}

Json ToJson(const tolm::IProjectSettingSystemType& system) {
    Json json = Head(system);
    json["kind"] = KindText(system);
    json["code"] = StringUtil::ToString(system.GetCode());
    json["description"] = StringUtil::ToString(system.GetDescription());
    json["classification"] = static_cast<int>(system.GetClassification());
    json["createTime"] = system.GetCreateTime();
    json["series"] = Json::array();
    for (const auto* serie : system.GetSystemMaterialSerieList())
        json["series"].push_back(Head(*serie));
    json["cables"] = Json::array();
    for (const auto& [name, module] : system.GetCableSpecTypeList())
        json["cables"].push_back(Head(*module));
    return json;
}

void Print(std::ostream& out, const tolm::IProjectSettingMEPMaterialSerieGroup& group) {
    PrintHead(out, group.GetName(), group.GetId(), KindText(group));
}

void Print(std::ostream& out, const tolm::IProjectSettingConnectionSerie& connection) {
    PrintHead(out, connection.GetName(), connection.GetId(), Utf8(ConnectorWord(connection.GetConnectionType())));
    PrintFittings(out, connection, "");
}

void Print(std::ostream& out, const tolm::IProjectSettingMEPMaterialSerie& serie) {
    PrintHead(out, serie.GetName(), serie.GetId(), KindText(serie));
    out << "  from  " << StringUtil::ToString(Number(serie.GetMinSize())) << " to "
        << StringUtil::ToString(Number(serie.GetMaxSize())) << '\n';
    PrintParts(out, serie);
}

void Print(std::ostream& out, const tolm::IProjectSettingSystemType& system) {
    PrintHead(out, system.GetName(), system.GetId(), KindText(system));
    out << "  code  " << Utf8(system.GetCode()) << "\n  text  " << Utf8(system.GetDescription()) << '\n';
    for (const auto* serie : system.GetSystemMaterialSerieList())
        out << kBranch << "series: " << Utf8(serie->GetName()) << '\n';
    for (const auto& [name, module] : system.GetCableSpecTypeList())
        out << kBranch << "cable: " << Utf8(name) << '\n';
}

} // namespace tolmcli
