#include "ConvergeHost/DirectRecords.h"

#include "ConvergeHost/HostRecords.h"

#include <string>

namespace tolmtest {
namespace {

using nlohmann::json;

vorn::OwnerPtr<tolm::ITolmProjectSettingCircuitTemplate> TemplateOf(const json& edit) {
    auto circuit = tolm::ITolmDataSetFactory::Get()->CreateCircuitTemplate();
    auto id = WideAt(edit, "id");
    auto spec = std::to_wstring(edit.value("mark", 0));
    circuit->SetId(id);
    circuit->SetWireSpec(spec);
    circuit->SetPhase(static_cast<tolm::Phase>(edit.value("mark", 0) % 5));
    return circuit;
}

tolm::TolmCombinedProduct ProductOf(const json& edit) {
    tolm::TolmCombinedProduct product;
    product.categoryCode = WideAt(edit, "category");
    product.Id = WideAt(edit, "id");
    product.spacing = edit.at("mark");
    product.Name = L"product " + std::to_wstring(product.spacing);
    for (int part = 0; part <= product.spacing % 3; ++part)
        product.components.push_back({L"16201010", L"component " + std::to_wstring(part), L"type", L"", L""});
    return product;
}

} // namespace

void DoTemplate(tolm::ITolmDataset& dataset, const json& edit) {
    dataset.CollectData(false, {tolm::TolmProjectSettingTableId::CircuitTemplates});
    auto* const table = EditTable(dataset.GetCircuitTemplateData());
    auto circuit = TemplateOf(edit);
    if (edit.value("remove", false))
        table->DeleteCircuitTemplateList({circuit.get()});
    else
        table->AddCircuitTemplate(std::move(circuit));
}

bool DoProduct(tolm::ITolmDataset& dataset, const json& edit) {
    const auto category = WideAt(edit, "category");
    if (edit.value("remove", false))
        return dataset.RemoveCombinedComponents(category, category, {WideAt(edit, "id")});
    return dataset.AddCombinedComponents(category, {ProductOf(edit)});
}

} // namespace tolmtest
