#pragma once

#include "TolmDataSet/MepEnums.h"
#include "TolmDataSet/SmallRecords.h"
#include "TolmDataSet/TolmDataSetExport.h"

#include <vector>

namespace tolm {

/// An insulation product with the largest sizes that each thickness serves. A record is used from one thread at a
/// time.
class TOLM_DATASET_API IDataSetInsulationSerie {
public:
    virtual ~IDataSetInsulationSerie();
    virtual wstring GetId() const = 0;
    virtual void SetId(const wstring& id) = 0;
    virtual wstring GetCode() const = 0;
    virtual void SetCode(const wstring& code) = 0;
    virtual wstring GetDescription() const = 0;
    virtual void SetDescription(const wstring& description) = 0;
    /// In W/(m K).
    virtual float GetThermalConductivity() const = 0;
    virtual void SetThermalConductivity(float conductivity) = 0;
    virtual TolmInsulationSerieType GetInsulationType() const = 0;
    virtual void SetInsulationType(TolmInsulationSerieType type) = 0;
    virtual MEPDisciplineId GetDisciplineId() const = 0;
    virtual void SetDisciplineType(MEPDisciplineId discipline) = 0;
    /// Entries use the first two sizes; a store keeps the first and the third.
    virtual const std::vector<DataSetInsulationMaxSize>& GetCircularMaxSizes() const = 0;
    virtual void AddCircularSize(const DataSetInsulationMaxSize& size) = 0;
    /// `index` must be that of an entry: it is not tested. The same holds for the rectangular list.
    virtual void DeleteCircularSize(int index) = 0;
    virtual void DeleteAllCircularSize() = 0;
    /// Entries use all three sizes. There is no operation that clears this list.
    virtual const std::vector<DataSetInsulationMaxSize>& GetRectMaxSizes() const = 0;
    virtual void AddRectSize(const DataSetInsulationMaxSize& size) = 0;
    virtual void DeleteRectSize(int index) = 0;

protected:
    IDataSetInsulationSerie() = default;
    IDataSetInsulationSerie(const IDataSetInsulationSerie&) = default;
    IDataSetInsulationSerie& operator=(const IDataSetInsulationSerie&) = default;
};

} // namespace tolm
