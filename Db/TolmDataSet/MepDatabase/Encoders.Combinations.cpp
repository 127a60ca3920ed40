#include "MepDatabase/Encoders.h"

#include "MepDatabase/CombinedProductIngest.h"
#include "MepDatabase/JsonRows.h"
#include "TolmDataSet/ITolmProjectSettingCircuitTemplate.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tolm {
namespace {

using web::json::value;
using Template = ITolmProjectSettingCircuitTemplate;
using Product = TolmCombinedProduct;
using Component = TolmComponentReference;

// --- circuit templates

/// The wire's size on the wire, whatever the template holds: what counts is "WireSpec".
constexpr double kWireSize = 2.5;

template <int Position> value SwitchId(const Template& circuit) {
    return JsonText(circuit.GetSwitchComponentId(Position));
}

template <int Position> value SwitchType(const Template& circuit) {
    return JsonText(circuit.GetSwitchComponentTypeName(Position));
}

constexpr JsonCell<Template> kCircuitTemplate[] = {
    {"ID", [](const Template& circuit) { return JsonText(circuit.GetId()); }},
    {"SystemClassification", [](const Template& circuit) { return JsonInteger(circuit.GetSystemClassification()); }},
    {"SystemTypeId", [](const Template& circuit) { return JsonText(circuit.GetSystemTypeId()); }},
    {"SwitchComponentId1", &SwitchId<0>},
    {"SwitchComponentId2", &SwitchId<1>},
    {"SwitchComponentId3", &SwitchId<2>},
    {"SwitchComponentType1", &SwitchType<0>},
    {"SwitchComponentType2", &SwitchType<1>},
    {"SwitchComponentType3", &SwitchType<2>},
    {"Phase", [](const Template& circuit) { return JsonInteger(circuit.GetPhase()); }},
    {"ProtectionMaterial", [](const Template& circuit) { return JsonText(circuit.GetFireProtectionMaterial()); }},
    {"WireType", [](const Template& circuit) { return JsonText(circuit.GetWireTypeId()); }},
    {"WireSize", [](const Template&) { return value::number(kWireSize); }},
    {"WireSpec", [](const Template& circuit) { return JsonText(circuit.GetWireSpec()); }},
    {"WireCountStr", [](const Template& circuit) { return JsonText(circuit.GetWireCount()); }},
    {"ConduitType", [](const Template& circuit) { return JsonText(circuit.GetConduitTypeId()); }},
    {"ConduitSizeDN", [](const Template& circuit) { return JsonInteger(circuit.GetConduitSizeDn()); }},
    {"IsApply", [](const Template& circuit) { return JsonInteger(circuit.GetIsApply()); }},
    {"LayingMode", [](const Template& circuit) { return JsonText(circuit.GetLayingMode()); }},
    {"DescriptionCHN", [](const Template& circuit) { return JsonText(circuit.GetSystemTypeName()); }},
};

// --- combined products

constexpr JsonCell<Component> kComponent[] = {
    {"CategoryStandardCode", [](const Component& component) { return JsonText(component.categoryStandardCode); }},
    {"ComponentId", [](const Component& component) { return JsonText(component.componentId); }},
    {"ComponentTypeId", [](const Component& component) { return JsonText(component.componentTypeId); }},
};

value Components(const Product& product) {
    return JsonObjects(kComponent, product.components);
}

value Name(const Product& product) {
    return JsonText(product.Name);
}

template <wstring Product::*Field> value TextOf(const Product& product) {
    return JsonText(product.*Field);
}

template <double Product::*Field> value LengthOf(const Product& product) {
    return value::number(FiniteNumber(product.*Field));
}

template <Component Product::*Part, wstring Component::*Field> value PartOf(const Product& product) {
    return JsonText(product.*Part.*Field);
}

constexpr JsonCell<Product> kListForm[] = {
    {"ID", &TextOf<&Product::Id>},
    {"Name", &Name},
    {"Spacing", [](const Product& product) { return JsonInteger(product.spacing); }},
    {"List", &Components},
};

// The service knows the parts of a created product by its name until they are edited.
constexpr JsonCell<Product> kCreatedTerminal[] = {
    {"ID", &TextOf<&Product::Id>}, {"Name", &Name},         {"EquipmentId", &Name},
    {"AirTerminal1", &Name},       {"AirTerminal2", &Name}, {"List", &Components},
};

// "SupplyAirTerminalComponentTypeId" repeats the component's id.
constexpr JsonCell<Product> kEditedTerminal[] = {
    {"ID", &TextOf<&Product::Id>},
    {"Name", &Name},
    {"EquipmentComponentId", &PartOf<&Product::equipment, &Component::componentId>},
    {"EquipmentComponentTypeId", &PartOf<&Product::equipment, &Component::componentTypeId>},
    {"EquipmentCategoryStandardCode", &PartOf<&Product::equipment, &Component::categoryStandardCode>},
    {"SupplyAirTerminalComponentId", &PartOf<&Product::supplyAirTerminal, &Component::componentId>},
    {"SupplyAirTerminalComponentTypeId", &PartOf<&Product::supplyAirTerminal, &Component::componentId>},
    {"AirTerminalCategoryStandardCode", &PartOf<&Product::supplyAirTerminal, &Component::categoryStandardCode>},
    {"ReturnAirTerminalComponentId", &PartOf<&Product::returnAirTerminal, &Component::componentId>},
    {"ReturnAirTerminalComponentTypeId", &PartOf<&Product::returnAirTerminal, &Component::componentTypeId>},
    {"SupplySystemTypeId", &TextOf<&Product::supplySystemTypeId>},
    {"SupplyAirTerminalDist1", &LengthOf<&Product::supplyAirTerminalDist1>},
    {"SupplyAirTerminalDist2", &LengthOf<&Product::supplyAirTerminalDist2>},
    {"SupplyAirTerminalNumber", [](const Product& product) { return JsonInteger(product.supplyAirTerminalNumber); }},
    {"SupplyDuctTypeId", &TextOf<&Product::supplyDuctTypeId>},
    {"SupplyHoseLength", &LengthOf<&Product::supplyHoseLength>},
    {"ReturnSystemTypeId", &TextOf<&Product::returnSystemTypeId>},
    {"ReturnDuctTypeId", &TextOf<&Product::returnDuctTypeId>},
    {"ReturnHoseLength", &LengthOf<&Product::returnHoseLength>},
};

enum class Use { Created, Edited };

struct FormCells {
    CombinedProductForm form;
    JsonCells<Product> created;
    JsonCells<Product> edited;
};

constexpr FormCells kForms[] = {
    {CombinedProductForm::List, kListForm, kListForm},
    {CombinedProductForm::Equipment, kCreatedTerminal, kEditedTerminal},
};

/// What a row of the category says; nothing for a category that combined products do not have.
JsonCells<Product> CellsOf(const wstring& categoryCode, Use use) {
    const auto form = FormOf(categoryCode);
    const auto* const found =
        std::find_if(std::begin(kForms), std::end(kForms), [form](const FormCells& each) { return each.form == form; });
    if (found == std::end(kForms))
        return {};
    return use == Use::Created ? found->created : found->edited;
}

// --- rows

value Wrapped(const wstring& id, value row, Use use) {
    if (use == Use::Created)
        return row;
    return value::object({{"id", JsonText(id)}, {"data", std::move(row)}});
}

value RowsObject(std::vector<value> rows) {
    return value::object({{"rows", value::array(std::move(rows))}});
}

/// A null template is reported for the caller and leaves its row null.
value CircuitTemplateRows(const std::vector<const Template*>& list, Use use, const CallSite& caller) {
    std::vector<value> rows(list.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i] == nullptr)
            caller.Warn(L"pTemplate为空");
        else
            rows[i] = Wrapped(list[i]->GetId(), JsonObject<Template>(kCircuitTemplate, *list[i]), use);
    }
    return RowsObject(std::move(rows));
}

value CombinationRows(const wstring& categoryCode, const std::vector<Product>& list, Use use) {
    const auto cells = CellsOf(categoryCode, use);
    std::vector<value> rows(list.size());
    if (!cells.empty())
        std::transform(list.begin(), list.end(), rows.begin(),
                       [&](const Product& product) { return Wrapped(product.Id, JsonObject(cells, product), use); });
    return RowsObject(std::move(rows));
}

} // namespace

value GetCreatedCircuitTemplateListJasonValue(std::vector<const Template*> list) {
    return CircuitTemplateRows(list, Use::Created, TOLM_CALL_SITE);
}

value GetEditedCircuitTemplateListJasonValue(std::vector<const Template*> list) {
    return CircuitTemplateRows(list, Use::Edited, TOLM_CALL_SITE);
}

value GetCreatedCombinationListJasonValue(wstring categoryCode, std::vector<Product> list) {
    return CombinationRows(categoryCode, list, Use::Created);
}

value GetEditedCombinationListJasonValue(wstring categoryCode, std::vector<Product> list) {
    return CombinationRows(categoryCode, list, Use::Edited);
}

} // namespace tolm
