#pragma once

#include "TolmDataSet/IProjectSettingConnectionSerie.h"

namespace tolm {

/// A connection series. It owns its components and is not copied, only cloned.
class TOLM_DATASET_API ProjectSettingConnectionSerie : public IProjectSettingConnectionSerie {
public:
    static vorn::OwnerPtr<IProjectSettingConnectionSerie> Create();
    ProjectSettingConnectionSerie(const ProjectSettingConnectionSerie&) = delete;
    ProjectSettingConnectionSerie& operator=(const ProjectSettingConnectionSerie&) = delete;
    ~ProjectSettingConnectionSerie() override;

    vorn::OwnerPtr<IProjectSettingConnectionSerie> Clone() const override;
    wstring GetId() const override { return m_id; }
    void SetId(wstring& id) override { m_id = id; }
    wstring GetName() const override { return m_name; }
    void SetName(wstring& name) override { m_name = name; }
    MEPConnectorType GetConnectionType() const override { return m_connectionType; }
    void SetConnectionType(MEPConnectorType type) override { m_connectionType = type; }
    TolmProjectSettingMEPObjectType GetObjectType() const override { return m_objectType; }
    void SetObjectType(TolmProjectSettingMEPObjectType type) override { m_objectType = type; }
    void AddFitting(FittingPartType partType, RoutingPreferenceRuleGroupType routingGroup,
                    vorn::OwnerPtr<ITolmProjectSettingComponent>& component, double firstSizeBound,
                    double secondSizeBound) override;
    void DeleteFitting(int index) override { m_fittings.erase(m_fittings.begin() + index); }
    void ClearFitting() override { m_fittings.clear(); }
    std::vector<ITolmProjectSettingFittingComponentConst> GetProducts() const override;
    std::vector<const ITolmProjectSettingComponent*> GetFittingProducts(FittingPartType partType) const override;
    std::vector<const ITolmProjectSettingComponent*>
    GetFittingProductsByRoutingGroupType(RoutingPreferenceRuleGroupType routingGroup) const override;

private:
    struct Fitting {
        FittingPartType partType;
        RoutingPreferenceRuleGroupType routingGroup;
        double firstSizeBound;
        double secondSizeBound;
        vorn::OwnerPtr<ITolmProjectSettingComponent> m_opComponent;
    };

    ProjectSettingConnectionSerie();
    friend struct ObjectMaker;

    template <class Field>
    std::vector<const ITolmProjectSettingComponent*> ComponentsWith(Field Fitting::*field, Field value) const;

    wstring m_id;
    wstring m_name;
    MEPConnectorType m_connectionType{};
    TolmProjectSettingMEPObjectType m_objectType{};
    std::vector<Fitting> m_fittings;
};

} // namespace tolm
