#include "MepDataSetInterface/ProjectSettingConnectionSerie.h"

#include "MepDataSetInterface/RecordBasics.h"
#include "Vorn/DebugMessage.h"

namespace tolm {

IProjectSettingConnectionSerie::~IProjectSettingConnectionSerie() = default;

vorn::OwnerPtr<IProjectSettingConnectionSerie> IProjectSettingConnectionSerie::Create() {
    return ProjectSettingConnectionSerie::Create();
}

vorn::OwnerPtr<IProjectSettingConnectionSerie> ProjectSettingConnectionSerie::Create() {
    return ObjectMaker::Create<IProjectSettingConnectionSerie, ProjectSettingConnectionSerie>();
}

ProjectSettingConnectionSerie::ProjectSettingConnectionSerie() : m_id(NewRecordId()) {}

ProjectSettingConnectionSerie::~ProjectSettingConnectionSerie() = default;

vorn::OwnerPtr<IProjectSettingConnectionSerie> ProjectSettingConnectionSerie::Clone() const {
    auto retSerie = IProjectSettingConnectionSerie::Create();
    if (!retSerie) {
        VORN_DEBUG_WARN(L"retSerie为空");
        return {};
    }
    wstring name = m_name;
    retSerie->SetName(name);
    retSerie->SetConnectionType(m_connectionType);
    retSerie->SetObjectType(m_objectType);
    for (const auto& product : m_fittings) {
        if (!product.m_opComponent) {
            VORN_DEBUG_WARN(L"product.m_opComponent为空");
            continue;
        }
        auto component = product.m_opComponent->Clone();
        retSerie->AddFitting(product.partType, product.routingGroup, component, product.firstSizeBound,
                             product.secondSizeBound);
    }
    return retSerie;
}

void ProjectSettingConnectionSerie::AddFitting(FittingPartType partType, RoutingPreferenceRuleGroupType routingGroup,
                                               vorn::OwnerPtr<ITolmProjectSettingComponent>& component,
                                               double firstSizeBound, double secondSizeBound) {
    if (m_fittings.empty())
        m_fittings.reserve(16); // rarely fewer
    m_fittings.push_back({partType, routingGroup, firstSizeBound, secondSizeBound, std::move(component)});
}

std::vector<ITolmProjectSettingFittingComponentConst> ProjectSettingConnectionSerie::GetProducts() const {
    std::vector<ITolmProjectSettingFittingComponentConst> products;
    products.reserve(m_fittings.size());
    for (const auto& fitting : m_fittings) {
        products.push_back({fitting.partType, fitting.routingGroup, fitting.firstSizeBound, fitting.secondSizeBound,
                            fitting.m_opComponent.get()});
    }
    return products;
}

template <class Field>
std::vector<const ITolmProjectSettingComponent*> ProjectSettingConnectionSerie::ComponentsWith(Field Fitting::*field,
                                                                                               Field value) const {
    std::vector<const ITolmProjectSettingComponent*> components;
    for (const auto& fitting : m_fittings) {
        if (fitting.*field == value)
            components.push_back(fitting.m_opComponent.get());
    }
    return components;
}

std::vector<const ITolmProjectSettingComponent*>
ProjectSettingConnectionSerie::GetFittingProducts(FittingPartType partType) const {
    return ComponentsWith(&Fitting::partType, partType);
}

std::vector<const ITolmProjectSettingComponent*>
ProjectSettingConnectionSerie::GetFittingProductsByRoutingGroupType(RoutingPreferenceRuleGroupType routingGroup) const {
    return ComponentsWith(&Fitting::routingGroup, routingGroup);
}

} // namespace tolm
