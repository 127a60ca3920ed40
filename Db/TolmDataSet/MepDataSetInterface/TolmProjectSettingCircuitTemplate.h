#pragma once

#include "TolmDataSet/ITolmProjectSettingCircuitTemplate.h"

#include <cstdint>
#include <vector>

namespace tolm {

/// A circuit template; there is no copy of one.
class TOLM_DATASET_API TolmProjectSettingCircuitTemplate : public ITolmProjectSettingCircuitTemplate {
public:
    static vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> Create();
    TolmProjectSettingCircuitTemplate(const TolmProjectSettingCircuitTemplate&) = delete;
    TolmProjectSettingCircuitTemplate& operator=(const TolmProjectSettingCircuitTemplate&) = delete;
    ~TolmProjectSettingCircuitTemplate() override;

    wstring GetId() const override { return m_id; }
    void SetId(wstring& id) override { m_id = id; }
    int GetIsApply() const override { return m_isApply; }
    void SetIsApply(int isApply) override { m_isApply = isApply; }
    wstring GetSystemTypeId() const override { return m_systemTypeId; }
    void SetSystemTypeId(wstring& id) override { m_systemTypeId = id; }
    wstring GetSystemTypeName() const override { return m_systemTypeName; }
    void SetSystemTypeName(wstring& name) override { m_systemTypeName = name; }
    MEPSystemClassification GetSystemClassification() const override { return m_systemClassification; }
    void SetSystemClassification(MEPSystemClassification classification) override {
        m_systemClassification = classification;
    }
    wstring GetSwitchComponentTypeId(int position) const override;
    void SetSwitchComponentTypeId(int position, wstring id) override;
    wstring GetSwitchComponentId(int position) const override;
    void SetSwitchComponentId(int position, wstring id) override;
    wstring GetSwitchComponentTypeName(int position) const override;
    void SetSwitchComponentTypeName(int position, wstring name) override;
    Phase GetPhase() const override { return m_phase; }
    void SetPhase(Phase phase) override { m_phase = phase; }
    wstring GetFireProtectionMaterial() const override { return m_fireProtectionMaterial; }
    void SetFireProtectionnMaterial(wstring& material) override { m_fireProtectionMaterial = material; }
    wstring GetWireTypeName() const override { return m_wireTypeName; }
    void SetWireTypeName(wstring& name) override { m_wireTypeName = name; }
    wstring GetWireTypeId() const override { return m_wireTypeId; }
    void SetWireTypeId(wstring& id) override { m_wireTypeId = id; }
    wstring GetWireSpec() const override { return m_wireSpec; }
    void SetWireSpec(wstring& spec) override { m_wireSpec = spec; }
    wstring GetWireCount() const override { return m_wireCount; }
    void SetWireCount(wstring count) override { m_wireCount = std::move(count); }
    wstring GetConduitTypeId() const override { return m_conduitTypeId; }
    void SetConduitTypeId(wstring& id) override { m_conduitTypeId = id; }
    wstring GetConduitTypeName() const override { return m_conduitTypeName; }
    void SetConduitTypeName(wstring& name) override { m_conduitTypeName = name; }
    short GetConduitSizeDn() const override { return m_conduitSizeDn; }
    void SetConduitSizeDn(short& dn) override { m_conduitSizeDn = dn; }
    wstring GetLayingMode() const override { return m_layingMode; }
    void SetLayingMode(wstring& mode) override { m_layingMode = mode; }

private:
    TolmProjectSettingCircuitTemplate();
    friend struct ObjectMaker;

    wstring m_id;
    std::int32_t m_isApply = 0;
    wstring m_systemTypeId;
    wstring m_systemTypeName;
    MEPSystemClassification m_systemClassification = MEPSystemClassification::DefaultCircuit;
    std::vector<wstring> m_switchComponentTypeIds;
    std::vector<wstring> m_switchComponentIds;
    std::vector<wstring> m_switchComponentTypeNames;
    Phase m_phase = Phase::Single;
    wstring m_fireProtectionMaterial = L"ZR";
    wstring m_wireTypeId;
    wstring m_wireTypeName = L"BV";
    wstring m_wireSpec = L"2.5";
    wstring m_wireCount;
    wstring m_conduitTypeId;
    wstring m_conduitTypeName = L"SC";
    std::int16_t m_conduitSizeDn = 0;
    wstring m_layingMode = L"SR";
};

} // namespace tolm
