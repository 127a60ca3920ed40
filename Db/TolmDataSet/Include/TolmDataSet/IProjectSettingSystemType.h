#pragma once

#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"

#include <map>
#include <vector>

namespace tolm {

/// One system: supply water, exhaust air, a power circuit. It owns the material series that may be used in it, and
/// for an electrical system the cable tables; what a getter lends is valid while the system type lives and keeps
/// it. There is no copy of a system type. A record is used from one thread at a time.
class TOLM_DATASET_API IProjectSettingSystemType {
public:
    virtual ~IProjectSettingSystemType();
    virtual wstring GetId() const = 0;
    virtual void SetId(wstring& id) = 0;
    virtual wstring GetName() const = 0;
    virtual void SetName(wstring& name) = 0;
    virtual wstring GetDescription() const = 0;
    virtual void SetDescription(wstring& description) = 0;
    virtual wstring GetCode() const = 0;
    virtual void SetCode(wstring& code) = 0;
    /// Milliseconds since 1970, as the service counts them; 0 when unknown.
    virtual __int64 GetCreateTime() const = 0;
    virtual void SetCreateTime(__int64 time) = 0;
    virtual MEPDisciplineId GetDisciplineId() const = 0;
    virtual void SetDisciplineId(MEPDisciplineId discipline) = 0;
    virtual TolmProjectSettingMEPObjectType GetMEPType() const = 0;
    virtual void SetMEPType(TolmProjectSettingMEPObjectType type) = 0;
    virtual MEPSystemClassification GetClassification() const = 0;
    virtual void SetClassification(MEPSystemClassification classification) = 0;
    /// Takes the series over and appends it; the caller's owner is empty afterwards.
    virtual void AddSystemMaterialSerie(vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>& serie) = 0;
    /// A debug warning and no change for an index outside the list.
    virtual void DeleteSystemMaterialSerie(int index) = 0;
    virtual void ClearMaterialSerie() = 0;
    /// In order; an empty entry is left out with a debug warning.
    virtual std::vector<const IProjectSettingMEPMaterialSerie*> GetSystemMaterialSerieList() const = 0;
    /// Takes a cable table over under its cable specification type name. A name that is known keeps its table and
    /// the new one is released; an empty owner is a debug warning and no change.
    virtual void AddCableSpecType(vorn::OwnerPtr<IProjectSettingSizeModule> cableSizeModule) = 0;
    /// Removes the cable table of this type name, if there is one.
    virtual void DeleteCableSpecType(wstring name) = 0;
    virtual void ClearCableSpecTypeList() = 0;
    /// By type name; an empty entry is left out with a debug warning.
    virtual std::map<wstring, const IProjectSettingSizeModule*> GetCableSpecTypeList() const = 0;

    /// A new plumbing pipe system type of classification 21 under a fresh identifier.
    static vorn::OwnerPtr<IProjectSettingSystemType> Create();
};

} // namespace tolm
