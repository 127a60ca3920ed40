#pragma once

// The records come before the JSON library, which has a macro of the name __int64.
#include "TolmDataSet/IProjectSettingMEPMaterialSerie.h"
#include "TolmDataSet/IProjectSettingSystemType.h"

#include <cpprest/json.h>

#include <memory>
#include <vector>

namespace tolm {

class ITolmProjectSettingCircuitTemplate;

// The rows that go up to the settings service. Each encoder gives {"rows": [row, ...]} with one row for each record,
// in the order of the list; a row is wrapped as {"id": ..., "data": row} when `wrapEdited` is true and `isCreated` is
// not. A null record is reported, and the value is then a JSON null.

web::json::value
GetCreatedOrEditedSizeModelListJasonValue(bool wrapEdited, bool isCreated, wstring groupName, int kind,
                                          std::vector<std::shared_ptr<const IProjectSettingSizeModule>> list);
web::json::value
GetCreatedOrEditedMateriaListJasonValue(bool wrapEdited, bool isCreated, wstring groupName,
                                        std::vector<std::shared_ptr<const IProjectSettingMaterial>> list);
web::json::value GetCreatedOrEditedMaterieSerieGroupJasonValue(
    bool wrapEdited, bool isCreated, wstring groupName,
    std::vector<std::shared_ptr<const IProjectSettingMEPMaterialSerieGroup>> list);
web::json::value
GetCreatedOrEditedSystemTypeListJasonValue(bool wrapEdited, bool isCreated,
                                           std::vector<std::shared_ptr<const IProjectSettingSystemType>> list);
web::json::value
GetCreatedOrEditedMEPMaterialListJasonValue(bool wrapEdited, bool isCreated,
                                            std::vector<std::shared_ptr<const IProjectSettingMEPMaterialSerie>> list);
web::json::value GetFittingListJsonArray(std::vector<ITolmProjectSettingFittingComponentConst> fittings);

// Circuit templates and combined products have an encoder for each use: a created row goes out bare, an edited one
// wrapped. A null template is reported, and its row is a JSON null; so is each row of a category that is not among the
// four of combined products.

web::json::value GetCreatedCircuitTemplateListJasonValue(std::vector<const ITolmProjectSettingCircuitTemplate*> list);
web::json::value GetEditedCircuitTemplateListJasonValue(std::vector<const ITolmProjectSettingCircuitTemplate*> list);
web::json::value GetCreatedCombinationListJasonValue(wstring categoryCode, std::vector<TolmCombinedProduct> list);
web::json::value GetEditedCombinationListJasonValue(wstring categoryCode, std::vector<TolmCombinedProduct> list);

} // namespace tolm
