#pragma once

#include "Qbase/Qbase.h"
#include "TolmDataSet/IProjectSettingSizeModule.h"
#include "Vorn/OwnerPtr.h"

#include <unordered_map>

namespace tolm {

/// The materials that one operation has read already, since many size modules share few of them. It lives no longer
/// than one open of the store, and only while that operation changes no material.
class MaterialCache {
public:
    /// Gives `module`, the current record of its class, a copy of the material under the same identifier. A material
    /// that the store does not have gives none. False when the factory made none. The current record stays.
    bool GiveTo(CQbase& qb, const wstring& materialId, IProjectSettingSizeModule& module);

private:
    /// What the store holds of a material.
    struct Known {
        bool exists = false; ///< the store has it
        wstring id;
        wstring name;
        TolmProjectSettingMEPObjectType mepType{};
        MEPDisciplineId disciplineId{};
        __int64 createTime = 0;
    };

    static Known KnownOf(const IProjectSettingMaterial& material);
    /// A setter takes no constant text, and leaves it as it is.
    static vorn::OwnerPtr<IProjectSettingMaterial> MadeOf(Known& known);
    bool GiveNew(CQbase& qb, const wstring& materialId, IProjectSettingSizeModule& module);

    std::unordered_map<wstring, Known> m_materials;
};

} // namespace tolm
