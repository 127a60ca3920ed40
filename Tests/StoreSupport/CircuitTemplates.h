#pragma once

#include "TolmDataSet/ITolmProjectSettingCircuitTemplate.h"

#include <string>
#include <vector>

namespace tolmtest {

using tolm::wstring;
using TemplatePtr = vorn::OwnerPtr<tolm::ITolmProjectSettingCircuitTemplate>;
using TemplateList = std::vector<const tolm::ITolmProjectSettingCircuitTemplate*>;

/// A template with this id and wire spec, and defaults for the rest.
inline TemplatePtr CircuitTemplate(wstring id, wstring wireSpec = L"2.5") {
    auto circuit = tolm::ITolmProjectSettingCircuitTemplate::Create();
    circuit->SetId(id);
    circuit->SetWireSpec(wireSpec);
    return circuit;
}

/// A template that fills every field with something that no other field has.
inline TemplatePtr FullCircuitTemplate(wstring id) {
    auto circuit = CircuitTemplate(std::move(id), L"4x16+1x10");
    const auto set = [&](auto setter, wstring text) { ((*circuit).*setter)(text); };
    using Template = tolm::ITolmProjectSettingCircuitTemplate;
    set(&Template::SetSystemTypeId, L"system-1");
    set(&Template::SetSystemTypeName, L"照明系统");
    set(&Template::SetFireProtectionnMaterial, L"NH");
    set(&Template::SetWireTypeId, L"wire-1");
    set(&Template::SetWireTypeName, L"WDZ-BYJ");
    set(&Template::SetConduitTypeId, L"conduit-1");
    set(&Template::SetConduitTypeName, L"JDG");
    set(&Template::SetLayingMode, L"CC");
    circuit->SetWireCount(L"3+1");
    circuit->SetIsApply(1);
    circuit->SetPhase(tolm::Phase::Three);
    circuit->SetSystemClassification(tolm::MEPSystemClassification{43});
    short conduit = 25;
    circuit->SetConduitSizeDn(conduit);
    for (int position = 0; position < 3; ++position) {
        const wstring number = std::to_wstring(position + 1);
        circuit->SetSwitchComponentTypeId(position, L"switch-type-id-" + number);
        circuit->SetSwitchComponentId(position, L"switch-" + number);
        circuit->SetSwitchComponentTypeName(position, L"断路器 " + number);
    }
    return circuit;
}

inline TemplateList Pointers(const std::vector<TemplatePtr>& owners) {
    TemplateList pointers;
    for (const auto& owner : owners)
        pointers.push_back(owner.get());
    return pointers;
}

} // namespace tolmtest
