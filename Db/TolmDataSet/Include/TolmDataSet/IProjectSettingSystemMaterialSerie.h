#pragma once

#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"

namespace tolm {

/// The link between a system type and one of its material series. It owns its series. A record is used from one
/// thread at a time.
class TOLM_DATASET_API IProjectSettingSystemMaterialSerie {
public:
    virtual ~IProjectSettingSystemMaterialSerie();
    virtual wstring GetSerieId() const = 0;
    virtual void SetSerieId(wstring& id) = 0;
    /// Null when there is none; valid while the link lives and keeps it.
    virtual const IProjectSettingMEPMaterialSerie* GetMEPMaterialSerie() const = 0;
    /// Takes the series over and releases the one before.
    virtual void SetMEPMaterialSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> serie) = 0;

    /// A new link without a series, under a fresh identifier.
    static vorn::OwnerPtr<IProjectSettingSystemMaterialSerie> Create();
};

} // namespace tolm
