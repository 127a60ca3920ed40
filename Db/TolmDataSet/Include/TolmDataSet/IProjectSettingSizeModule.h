#pragma once

#include "TolmDataSet/IProjectSettingMaterial.h"
#include "TolmDataSet/SmallRecords.h"

#include <map>
#include <vector>

namespace tolm {

/// One size table. Which lists and fields are in use follows from the object type; the record owns its material.
/// A record is used from one thread at a time.
class TOLM_DATASET_API IProjectSettingSizeModule {
public:
    virtual ~IProjectSettingSizeModule();
    /// A copy under a new identifier, its material under the same. The cable environment temperature is not
    /// copied. An empty owner and a debug warning when none could be made.
    virtual vorn::OwnerPtr<IProjectSettingSizeModule> Clone() const = 0;
    virtual wstring GetId() const = 0;
    virtual void SetId(wstring& id) = 0;
    virtual wstring GetName() const = 0;
    virtual void SetName(wstring& name) = 0;
    virtual TolmProjectSettingMEPObjectType GetMEPType() const = 0;
    /// Sets the discipline too: trays, conduits and wires are electrical, ducts HVAC; a pipe keeps what it has.
    virtual void SetMEPType(TolmProjectSettingMEPObjectType type) = 0;
    virtual MEPDisciplineId GetDisciplineId() const = 0;
    virtual void SetDisciplineId(MEPDisciplineId discipline) = 0;
    virtual __int64 GetCreateTime() const = 0;
    virtual void SetCreateTime(__int64 time) = 0;
    virtual SectionType GetDuctShape() const = 0;
    virtual void SetDuctShape(SectionType shape) = 0;
    /// Null when there is none; valid while the record lives and keeps it.
    virtual const IProjectSettingMaterial* GetMaterial() const = 0;
    /// Takes the material over and releases the one before.
    virtual void SetMaterial(vorn::OwnerPtr<IProjectSettingMaterial> material) = 0;
    /// Absolute roughness in millimetres.
    virtual double GetRoughness() const = 0;
    virtual void SetRoughness(double roughness) = 0;
    virtual void AddPipeSize(const ProjectSettingPipeSize& size) = 0;
    virtual const std::vector<ProjectSettingPipeSize>& GetPipeSizeList() const = 0;
    /// A debug warning and no change for an index outside the list; the same holds for the other two lists.
    virtual void DeletePipeSize(int row) = 0;
    virtual void ClearPipeSizes() = 0;
    virtual void AddDuctSize(const ProjectSettingDuctSize& size) = 0;
    virtual const std::vector<ProjectSettingDuctSize>& GetDuctSizeList() const = 0;
    virtual void DeleteDuctSize(int row) = 0;
    virtual void ClearDuctSize() = 0;
    virtual wstring GetCableSpecTypeName() const = 0;
    virtual void SetCableSpecTypeName(wstring& name) = 0;
    virtual void AddCableSpecification(const ProjectSettingCableSpec& spec) = 0;
    virtual const std::vector<ProjectSettingCableSpec>& GetCableSpecificationList() const = 0;
    /// Cross-section to rated current, of the rows for the record's environment temperature; the first row of a
    /// cross-section counts.
    virtual std::map<wstring, int> GetCableSpecificationListOfCurrentTemperature() const = 0;
    virtual void DeleteCableSpecification(int row) = 0;
    virtual void ClearCableSpecifications() = 0;
    virtual CableMaterial GetCableMaterial() const = 0;
    virtual void SetCableMaterial(CableMaterial material) = 0;
    virtual EnvironmentTemperature GetCableEnvironmentTemperature() const = 0;
    virtual void SetCableEnvironmentTemperature(EnvironmentTemperature temperature) = 0;
    virtual PressureGrade GetPressureGrade() const = 0;
    virtual void SetPressureGrade(PressureGrade grade) = 0;
    virtual CableTrayShape GetCableTrayShape() const = 0;
    virtual void SetCableTrayShape(CableTrayShape shape) = 0;

    /// A new, empty pipe table under a fresh identifier.
    static vorn::OwnerPtr<IProjectSettingSizeModule> Create();
};

} // namespace tolm
