#pragma once

#include "TolmDataSet/DataSetMethods.h"
#include "TolmDataSet/IProjectSettingMaterial.h"
#include "TolmDataSet/IProjectSettingSizeModule.h"

#include <vector>

namespace tolm {

class ITolmCategoryInfo;

/// What all tables share: the two paths of the last collection, and reads and writes that go straight to the store.
/// A host reaches it from a table by `dynamic_cast<const TolmBaseDesignData*>`. Reads take the path of the dataset
/// file as their first argument and leave the table's alone; additions and deletions use the table's. All return
/// false when the store could not do what was asked. Used from one thread at a time.
class TOLM_DATASET_API TolmBaseDesignData {
public:
    /// Appends the materials of an object type and a discipline.
    bool ReadMaterialList(wstring datasetFilePath, TolmProjectSettingMEPObjectType mepType,
                          MEPDisciplineId disciplineId, std::vector<vorn::OwnerPtr<IProjectSettingMaterial>>& list);
    /// Reads the material of this identifier; `material` stays empty when there is none, and the result is true.
    bool ReadSingleMaterial(wstring datasetFilePath, wstring id, vorn::OwnerPtr<IProjectSettingMaterial>& material);
    /// Appends the size modules of an object type and a discipline.
    bool ReadSizeModuleList(wstring datasetFilePath, TolmProjectSettingMEPObjectType mepType,
                            MEPDisciplineId disciplineId, std::vector<vorn::OwnerPtr<IProjectSettingSizeModule>>& list);

    bool ReadInsulationSeries(wstring datasetFilePath, MEPDisciplineId disciplineId, TolmInsulationSerieType type,
                              std::vector<DataSetInsulationSerie>& list);
    bool ReadSizingMethods(wstring datasetFilePath, TolmSizingMethodType type, std::vector<DataSetSizingMethod>& list);
    bool ReadBalancingMethods(wstring datasetFilePath, MEPDisciplineId disciplineId,
                              std::vector<DataSetBalancingMethod>& list);
    bool AddInsulationSerie(const DataSetInsulationSerie& serie);
    bool AddSizingMethod(const DataSetSizingMethod& method);
    bool AddBalancingMethod(const DataSetBalancingMethod& method);
    bool DeleteInsulationSeries(const std::vector<DataSetInsulationSerie>& list);
    bool DeleteSizingMethods(const std::vector<DataSetSizingMethod>& list);
    bool DeleteBalancingMethods(const std::vector<DataSetBalancingMethod>& list);

protected:
    TolmBaseDesignData() = default;
    ~TolmBaseDesignData() = default;

    /// The categories without children at or below `category`, depth first and in order; none for a null pointer.
    std::vector<const ITolmCategoryInfo*> getEndCategoryList(const ITolmCategoryInfo* category) const;

    wstring m_datasetFilePath;
    wstring m_componentFilePath;
};

} // namespace tolm
