#pragma once

#include "StoreSupport/StoreContent.h"
#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"
#include "TolmDataSet/IProjectSettingSystemType.h"

namespace tolmtest {

// All that a host reads of a record, by field: "name", "pipe 1/inner", "fitting 3/id". Records that it is linked with
// are told by their ids; a part that it does not have has no facts.

Facts FactsOf(const tolm::IProjectSettingMaterial& material);
Facts FactsOf(const tolm::IProjectSettingMEPMaterialSerieGroup& group);
/// With the name of its material beside the id.
Facts FactsOf(const tolm::IProjectSettingSizeModule& size);
/// With its connection series and the fittings of this.
Facts FactsOf(const tolm::IProjectSettingMEPMaterialSerie& serie);
Facts FactsOf(const tolm::IProjectSettingSystemType& system);

} // namespace tolmtest
