#pragma once

#include "TolmDataSet/ITolmDataSetFactory.h"

namespace tolmtest {

using tolm::wstring;
using Type = tolm::TolmProjectSettingMEPObjectType;
using Discipline = tolm::MEPDisciplineId;
using MaterialPtr = vorn::OwnerPtr<tolm::IProjectSettingMaterial>;
using SizeModulePtr = vorn::OwnerPtr<tolm::IProjectSettingSizeModule>;

/// Records for tests, with these values and defaults for the rest.
inline MaterialPtr Material(wstring id, wstring name, Type type = Type::Pipe,
                            Discipline discipline = Discipline::Plumbing, __int64 createTime = 0) {
    auto material = tolm::ITolmDataSetFactory::Get()->CreateMaterial();
    material->SetId(id);
    material->SetName(name);
    material->SetMEPType(type);
    material->SetDisciplineId(discipline);
    material->SetCreateTime(createTime);
    return material;
}

inline SizeModulePtr SizeModule(wstring id, wstring name, Type type = Type::Pipe,
                                Discipline discipline = Discipline::Plumbing, __int64 createTime = 0) {
    auto module = tolm::ITolmDataSetFactory::Get()->CreateSizeModule();
    module->SetId(id);
    module->SetName(name);
    module->SetMEPType(type);
    module->SetDisciplineId(discipline);
    module->SetCreateTime(createTime);
    return module;
}

} // namespace tolmtest
