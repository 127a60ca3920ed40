#pragma once

#include "TolmDataSet/IProjectSettingConnectionSerie.h"
#include "TolmDataSet/IProjectSettingMEPMaterialSerieGroup.h"
#include "TolmDataSet/IProjectSettingSizeModule.h"

namespace tolm {

/// What a designer picks as a pipe, duct, tray or conduit type: a size table, a connection series, a range of sizes
/// and a group. The series owns its own copy of each part; what a getter lends is valid while the series lives and
/// keeps it. A record is used from one thread at a time.
class TOLM_DATASET_API IProjectSettingMEPMaterialSerie {
public:
    virtual ~IProjectSettingMEPMaterialSerie();
    /// A copy under a new identifier. Its group and size table keep their identifiers, its connection series gets a
    /// new one. An empty owner and a debug warning when the copy, its group or its size table could not be made; a
    /// copy whose connection series could not be made has none.
    virtual vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> Clone() const = 0;
    virtual wstring GetId() const = 0;
    virtual void SetId(wstring& id) = 0;
    virtual wstring GetName() const = 0;
    virtual void SetName(wstring& name) = 0;
    /// Null when there is none.
    virtual const IProjectSettingMEPMaterialSerieGroup* GetSerieGroup() const = 0;
    /// Takes the group over and releases the one before.
    virtual void SetSerieGroup(vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> group) = 0;
    /// Those of the size table; `None` without one.
    virtual CableTrayShape GetTrayShape() const = 0;
    virtual SectionType GetDuctShape() const = 0;
    virtual PreferredJunctionType GetJunctionType() const = 0;
    virtual void SetJunctionType(PreferredJunctionType type) = 0;
    virtual TolmProjectSettingMEPObjectType GetMEPType() const = 0;
    virtual void SetMEPType(TolmProjectSettingMEPObjectType type) = 0;
    virtual MEPDisciplineId GetDisciplineId() const = 0;
    virtual void SetDisciplineId(MEPDisciplineId discipline) = 0;
    /// Milliseconds since 1970, as the service counts them; 0 when unknown.
    virtual __int64 GetCreateTime() const = 0;
    virtual void SetCreateTime(__int64 time) = 0;
    /// Null when there is none.
    virtual const IProjectSettingSizeModule* GetSizeModule() const = 0;
    /// Takes the size table over, leaves the caller's owner empty and releases the table before.
    virtual void SetSizeModule(vorn::OwnerPtr<IProjectSettingSizeModule>& sizeModule) = 0;
    /// Bounds of the sizes that the series serves, in millimetres.
    virtual double GetMinSize() const = 0;
    virtual void SetMinSize(double size) = 0;
    virtual double GetMaxSize() const = 0;
    virtual void SetMaxSize(double size) = 0;
    /// Gives the held connection series another identifier; nothing without one.
    virtual void SetConnectionSerieId(wstring& id) = 0;
    /// A copy of the connection series under a new identifier; an empty owner without one.
    virtual vorn::OwnerPtr<IProjectSettingConnectionSerie> CloneConnectionSerie() const = 0;
    /// Null when there is none.
    virtual const IProjectSettingConnectionSerie* GetConnectionSerie() const = 0;
    /// Takes the connection series over, leaves the caller's owner empty and releases the one before.
    virtual void SetConnectionSerie(vorn::OwnerPtr<IProjectSettingConnectionSerie>& connectionSerie) = 0;

    /// A new plumbing pipe series under a fresh identifier, open to every size.
    static vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> Create();
};

} // namespace tolm
