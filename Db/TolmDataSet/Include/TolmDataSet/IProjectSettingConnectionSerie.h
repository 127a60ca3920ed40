#pragma once

#include "Host/Components.h"
#include "TolmDataSet/MepEnums.h"
#include "TolmDataSet/SmallRecords.h"
#include "TolmDataSet/TolmDataSetExport.h"
#include "Vorn/OwnerPtr.h"

#include <vector>

namespace tolm {

/// A set of fittings: for one connector type and object type the components used as elbows, tees and so on, each
/// within a range of sizes. The series owns its components. A record is used from one thread at a time.
class TOLM_DATASET_API IProjectSettingConnectionSerie {
public:
    virtual ~IProjectSettingConnectionSerie();
    /// A copy under a new identifier, with copies of the components; an entry without a component is left out with
    /// a debug warning. An empty owner and a debug warning when none could be made.
    virtual vorn::OwnerPtr<IProjectSettingConnectionSerie> Clone() const = 0;
    virtual wstring GetId() const = 0;
    virtual void SetId(wstring& id) = 0;
    virtual wstring GetName() const = 0;
    virtual void SetName(wstring& name) = 0;
    /// A new series has no connector type and no object type yet: whoever makes one sets both before reading them.
    virtual MEPConnectorType GetConnectionType() const = 0;
    virtual void SetConnectionType(MEPConnectorType type) = 0;
    virtual TolmProjectSettingMEPObjectType GetObjectType() const = 0;
    virtual void SetObjectType(TolmProjectSettingMEPObjectType type) = 0;
    /// Appends a fitting for the sizes from `firstSizeBound` to `secondSizeBound`, in millimetres. Takes the
    /// component over; the caller's owner is empty afterwards.
    virtual void AddFitting(FittingPartType partType, RoutingPreferenceRuleGroupType routingGroup,
                            vorn::OwnerPtr<ITolmProjectSettingComponent>& component, double firstSizeBound,
                            double secondSizeBound) = 0;
    /// Removes one fitting. `index` must be that of a fitting: it is not tested.
    virtual void DeleteFitting(int index) = 0;
    virtual void ClearFitting() = 0;
    /// All fittings in order. Their components are lent and valid while the series lives and keeps them; so are
    /// those of the two getters below. A fitting that came without a component has a null pointer in its place.
    virtual std::vector<ITolmProjectSettingFittingComponentConst> GetProducts() const = 0;
    virtual std::vector<const ITolmProjectSettingComponent*> GetFittingProducts(FittingPartType partType) const = 0;
    virtual std::vector<const ITolmProjectSettingComponent*>
    GetFittingProductsByRoutingGroupType(RoutingPreferenceRuleGroupType routingGroup) const = 0;

    /// A new, empty series under a fresh identifier.
    static vorn::OwnerPtr<IProjectSettingConnectionSerie> Create();
};

} // namespace tolm
