#pragma once

#include "TolmDataSet/IDataSetInsulationSerie.h"
#include "TolmDataSet/IDataSetSizingMethod.h"

#include <cstdint>
#include <vector>

/// The records that tell how a design is calculated. They are plain values: a copy has the same identifier, a clone
/// a new one. A record is used from one thread at a time.
namespace tolm {

/// An insulation product: circular and rectangular largest sizes, and what the product is.
class TOLM_DATASET_API DataSetInsulationSerie : public IDataSetInsulationSerie {
public:
    DataSetInsulationSerie();
    /// A copy under a new identifier.
    DataSetInsulationSerie Clone() const;

    wstring GetId() const override { return m_id; }
    void SetId(const wstring& id) override { m_id = id; }
    wstring GetCode() const override { return m_code; }
    void SetCode(const wstring& code) override { m_code = code; }
    wstring GetDescription() const override { return m_description; }
    void SetDescription(const wstring& description) override { m_description = description; }
    float GetThermalConductivity() const override { return m_thermalConductivity; }
    void SetThermalConductivity(float conductivity) override { m_thermalConductivity = conductivity; }
    TolmInsulationSerieType GetInsulationType() const override { return m_insulationType; }
    void SetInsulationType(TolmInsulationSerieType type) override { m_insulationType = type; }
    MEPDisciplineId GetDisciplineId() const override { return m_disciplineId; }
    void SetDisciplineType(MEPDisciplineId discipline) override { m_disciplineId = discipline; }
    const std::vector<DataSetInsulationMaxSize>& GetCircularMaxSizes() const override { return m_circularMaxSizes; }
    void AddCircularSize(const DataSetInsulationMaxSize& size) override { m_circularMaxSizes.push_back(size); }
    void DeleteCircularSize(int index) override { m_circularMaxSizes.erase(m_circularMaxSizes.begin() + index); }
    void DeleteAllCircularSize() override { m_circularMaxSizes.clear(); }
    const std::vector<DataSetInsulationMaxSize>& GetRectMaxSizes() const override { return m_rectMaxSizes; }
    void AddRectSize(const DataSetInsulationMaxSize& size) override { m_rectMaxSizes.push_back(size); }
    void DeleteRectSize(int index) override { m_rectMaxSizes.erase(m_rectMaxSizes.begin() + index); }

private:
    wstring m_id;
    wstring m_code;
    wstring m_description;
    float m_thermalConductivity = 0.0F;
    TolmInsulationSerieType m_insulationType = TolmInsulationSerieType::Pipe;
    MEPDisciplineId m_disciplineId = MEPDisciplineId::Plumbing;
    std::vector<DataSetInsulationMaxSize> m_circularMaxSizes;
    std::vector<DataSetInsulationMaxSize> m_rectMaxSizes;
};

/// How pipes and ducts are sized: the steps of the method and its switches.
class TOLM_DATASET_API DataSetSizingMethod : public IDataSetSizingMethod {
public:
    /// The identifier of a sizing method, and of no other record, stands in braces.
    DataSetSizingMethod();
    /// A copy under a new identifier.
    DataSetSizingMethod Clone() const;

    wstring GetId() const override { return m_id; }
    void SetId(const wstring& id) override { m_id = id; }
    wstring GetCode() const override { return m_code; }
    void SetCode(const wstring& code) override { m_code = code; }
    wstring GetDesc() const override { return m_description; }
    void SetDesc(const wstring& description) override { m_description = description; }
    bool GetKeepConnectTerminalSize() const override { return m_keepConnectTerminalSize; }
    void SetKeepConnectTerminalSize(bool keep) override { m_keepConnectTerminalSize = keep; }
    bool GetUseStaticRegain() const override { return m_useStaticRegain; }
    void SetUseStaticRegain(bool use) override { m_useStaticRegain = use; }
    float GetMinWPerHRatio() const override { return m_minWPerHRatio; }
    void SetMinWPerHRatio(float ratio) override { m_minWPerHRatio = ratio; }
    TolmSizingMethodType GetMethodType() const override { return m_methodType; }
    void SetMethodType(TolmSizingMethodType type) override { m_methodType = type; }
    const std::vector<DataSetDimensionMethodItem>& GetDimensionMethods() const override { return m_dimensionMethods; }
    void DeleteAllDimensionMethod() override { m_dimensionMethods.clear(); }
    void AddDimensionMethod(const DataSetDimensionMethodItem& item) override { m_dimensionMethods.push_back(item); }
    void DeleteDimensionMethod(int index) override { m_dimensionMethods.erase(m_dimensionMethods.begin() + index); }

private:
    wstring m_id;
    wstring m_code;
    wstring m_description;
    std::vector<DataSetDimensionMethodItem> m_dimensionMethods;
    bool m_keepConnectTerminalSize = false;
    bool m_useStaticRegain = false;
    float m_minWPerHRatio = 0.0F;
    TolmSizingMethodType m_methodType = TolmSizingMethodType::Pipe;
};

/// Limits for balancing a network. Pressure drops are in pascal, throttling limits in per cent.
class TOLM_DATASET_API DataSetBalancingMethod {
public:
    DataSetBalancingMethod();

    wstring GetId() const { return m_id; }
    void SetId(const wstring& id) { m_id = id; }
    wstring GetName() const { return m_name; }
    void SetName(const wstring& name) { m_name = name; }
    wstring GetDesc() const { return m_description; }
    void SetDesc(const wstring& description) { m_description = description; }
    /// Pressure drop over the first device.
    float GetDev1DpMin() const { return m_dev1DpMin; }
    void SetDev1Min(float pressure) { m_dev1DpMin = pressure; }
    float GetDev1DpMax() const { return m_dev1DpMax; }
    void SetDev1Max(float pressure) { m_dev1DpMax = pressure; }
    /// Pressure drop over the second device.
    float GetDev2DpMin() const { return m_dev2DpMin; }
    void SetDev2Min(float pressure) { m_dev2DpMin = pressure; }
    float GetDev2DpMax() const { return m_dev2DpMax; }
    void SetDev2Max(float pressure) { m_dev2DpMax = pressure; }
    std::int32_t GetThrottlingLimit1Min() const { return m_throttlingLimit1Min; }
    void SetThrottlingLimit1Min(std::int32_t limit) { m_throttlingLimit1Min = limit; }
    std::int32_t GetThrottlingLimit1Max() const { return m_throttlingLimit1Max; }
    void SetThrottlingLimit1Max(std::int32_t limit) { m_throttlingLimit1Max = limit; }
    std::int32_t GetThrottlingLimit2Min() const { return m_throttlingLimit2Min; }
    void SetThrottlingLimit2Min(std::int32_t limit) { m_throttlingLimit2Min = limit; }
    std::int32_t GetThrottlingLimit2Max() const { return m_throttlingLimit2Max; }
    void SetThrottlingLimit2Max(std::int32_t limit) { m_throttlingLimit2Max = limit; }
    bool GetIsWarningNearRoot() const { return m_isWarningNearRoot; }
    void SetIsWarningNearRoot(bool warning) { m_isWarningNearRoot = warning; }
    MEPDisciplineId disciplineId() const { return m_disciplineId; }
    void setDisciplineType(MEPDisciplineId discipline) { m_disciplineId = discipline; }

private:
    wstring m_id;
    wstring m_name;
    wstring m_description;
    float m_dev1DpMin = 2000.0F;
    float m_dev1DpMax = 9999999.0F;
    float m_dev2DpMin = 2000.0F;
    float m_dev2DpMax = 9999999.0F;
    std::int32_t m_throttlingLimit1Min = 0;
    std::int32_t m_throttlingLimit1Max = 100;
    std::int32_t m_throttlingLimit2Min = 0;
    std::int32_t m_throttlingLimit2Max = 100;
    bool m_isWarningNearRoot = false;
    MEPDisciplineId m_disciplineId = MEPDisciplineId::Plumbing;
};

} // namespace tolm
