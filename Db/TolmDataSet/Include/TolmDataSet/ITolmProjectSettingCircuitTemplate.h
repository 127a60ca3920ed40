#pragma once

#include "TolmDataSet/MepEnums.h"
#include "TolmDataSet/TolmDataSetExport.h"
#include "Vorn/OwnerPtr.h"

namespace tolm {

/// The default wiring of the circuits of one electrical system type: phase, wire, conduit, way of laying, and the
/// switch components of three positions. It names other records by identifier and owns none. There is no copy of a
/// template. A record is used from one thread at a time.
class TOLM_DATASET_API ITolmProjectSettingCircuitTemplate {
public:
    virtual ~ITolmProjectSettingCircuitTemplate();
    virtual wstring GetId() const = 0;
    virtual void SetId(wstring& id) = 0;
    /// Not 0 when the template is in use.
    virtual int GetIsApply() const = 0;
    virtual void SetIsApply(int isApply) = 0;
    virtual wstring GetSystemTypeId() const = 0;
    virtual void SetSystemTypeId(wstring& id) = 0;
    virtual wstring GetSystemTypeName() const = 0;
    virtual void SetSystemTypeName(wstring& name) = 0;
    virtual MEPSystemClassification GetSystemClassification() const = 0;
    virtual void SetSystemClassification(MEPSystemClassification classification) = 0;
    /// The switch of a position, 0 to 2. For any other position a getter gives an empty text and a setter does
    /// nothing.
    virtual wstring GetSwitchComponentTypeId(int position) const = 0;
    virtual void SetSwitchComponentTypeId(int position, wstring id) = 0;
    virtual wstring GetSwitchComponentId(int position) const = 0;
    virtual void SetSwitchComponentId(int position, wstring id) = 0;
    virtual wstring GetSwitchComponentTypeName(int position) const = 0;
    virtual void SetSwitchComponentTypeName(int position, wstring name) = 0;
    virtual Phase GetPhase() const = 0;
    virtual void SetPhase(Phase phase) = 0;
    virtual wstring GetFireProtectionMaterial() const = 0;
    /// The spelling is kept for the hosts that call it.
    virtual void SetFireProtectionnMaterial(wstring& material) = 0;
    virtual wstring GetWireTypeName() const = 0;
    virtual void SetWireTypeName(wstring& name) = 0;
    virtual wstring GetWireTypeId() const = 0;
    virtual void SetWireTypeId(wstring& id) = 0;
    /// Cross-section in square millimetres, as text.
    virtual wstring GetWireSpec() const = 0;
    virtual void SetWireSpec(wstring& spec) = 0;
    virtual wstring GetWireCount() const = 0;
    virtual void SetWireCount(wstring count) = 0;
    virtual wstring GetConduitTypeId() const = 0;
    virtual void SetConduitTypeId(wstring& id) = 0;
    virtual wstring GetConduitTypeName() const = 0;
    virtual void SetConduitTypeName(wstring& name) = 0;
    /// Nominal diameter in millimetres; 0 when none was chosen.
    virtual short GetConduitSizeDn() const = 0;
    virtual void SetConduitSizeDn(short& dn) = 0;
    virtual wstring GetLayingMode() const = 0;
    virtual void SetLayingMode(wstring& mode) = 0;

    /// A new template of classification 41 under a fresh identifier.
    static vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> Create();
};

} // namespace tolm
