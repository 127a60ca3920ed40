#pragma once

#include "MepDatabase/AttributeTable.h"
#include "TolmDataSet/DataSetMethods.h"
#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"
#include "TolmDataSet/IProjectSettingMaterial.h"
#include "TolmDataSet/IProjectSettingSizeModule.h"
#include "TolmDataSet/IProjectSettingSystemType.h"
#include "TolmDataSet/ITolmProjectSettingCircuitTemplate.h"

#include <cstddef>

namespace tolm {

/// All attributes of a material.
AttributeTable<IProjectSettingMaterial> MaterialAttributes();
/// What a size module's writer sets of its material: all but the time of creation.
AttributeTable<IProjectSettingMaterial> NestedMaterialAttributes();

/// The attributes that every size module has. The discipline is only read here: what is stored follows from the type.
AttributeTable<IProjectSettingSizeModule> SizeModuleAttributes();

/// What a size module keeps by its object type.
struct SizeModuleKind {
    TolmProjectSettingMEPObjectType type;
    AttributeTable<IProjectSettingSizeModule> attributes;
    bool storesMaterial;
    const wchar_t* listName; ///< name of its packed list
    std::size_t (*listLength)(const IProjectSettingSizeModule& module);
};

/// Null for a type that has no size tables.
const SizeModuleKind* SizeModuleKindOf(TolmProjectSettingMEPObjectType type);

/// What a connection series keeps beside its fittings.
AttributeTable<IProjectSettingConnectionSerie> ConnectionSerieAttributes();
/// What a material series keeps beside its references.
AttributeTable<IProjectSettingMEPMaterialSerie> MaterialSerieAttributes();
/// All attributes of a group of material series.
AttributeTable<IProjectSettingMEPMaterialSerieGroup> MaterialSerieGroupAttributes();
/// What a material series writes and reads of its group: all but the time of creation.
AttributeTable<IProjectSettingMEPMaterialSerieGroup> NestedMaterialSerieGroupAttributes();
/// What a system type keeps beside its references.
AttributeTable<IProjectSettingSystemType> SystemTypeAttributes();
/// What a circuit template keeps; the names of what it refers to are not among it.
AttributeTable<ITolmProjectSettingCircuitTemplate> CircuitTemplateAttributes();
/// All that a balancing method keeps. Its discipline is not written: a list is filtered by it all the same.
AttributeTable<DataSetBalancingMethod> BalancingMethodAttributes();
/// What an insulation series keeps. Type and discipline are only written, since a list is read by them; the thermal
/// conductivity is only read. The rectangular sizes come back behind the circular ones, in their list.
AttributeTable<DataSetInsulationSerie> InsulationSerieAttributes();
/// All that a sizing method keeps.
AttributeTable<DataSetSizingMethod> SizingMethodAttributes();

} // namespace tolm
