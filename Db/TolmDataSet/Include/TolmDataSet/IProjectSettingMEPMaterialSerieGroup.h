#pragma once

#include "TolmDataSet/MepEnums.h"
#include "TolmDataSet/TolmDataSetExport.h"
#include "Vorn/OwnerPtr.h"

namespace tolm {

/// The group that material series are filed under. A record is used from one thread at a time.
class TOLM_DATASET_API IProjectSettingMEPMaterialSerieGroup {
public:
    virtual ~IProjectSettingMEPMaterialSerieGroup();
    /// A copy under a new identifier. An empty owner and a debug warning when none could be made.
    virtual vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> Clone() const = 0;
    virtual wstring GetId() const = 0;
    virtual void SetId(wstring& id) = 0;
    virtual wstring GetName() const = 0;
    virtual void SetName(wstring& name) = 0;
    virtual TolmProjectSettingMEPObjectType GetMEPType() const = 0;
    virtual void SetMEPType(TolmProjectSettingMEPObjectType type) = 0;
    virtual MEPDisciplineId GetDisciplineId() const = 0;
    virtual void SetDisciplineId(MEPDisciplineId discipline) = 0;
    /// Milliseconds since 1970, as the service counts them; 0 when unknown.
    virtual __int64 GetCreateTime() const = 0;
    virtual void SetCreateTime(__int64 time) = 0;

    /// A new plumbing pipe group under a fresh identifier.
    static vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> Create();
};

} // namespace tolm
