#pragma once

#include "TolmDataSet/ITolmDataSetFactory.h"

namespace tolm {

/// A new record from the library's factory; empty when there is none or it makes nothing.
template <class Record> vorn::OwnerPtr<Record> MakeRecord(vorn::OwnerPtr<Record> (ITolmDataSetFactory::*create)()) {
    ITolmDataSetFactory* factory = ITolmDataSetFactory::Get();
    return factory != nullptr ? (factory->*create)() : vorn::OwnerPtr<Record>();
}

inline vorn::OwnerPtr<IProjectSettingMaterial> MakeMaterial() {
    return MakeRecord(&ITolmDataSetFactory::CreateMaterial);
}

inline vorn::OwnerPtr<IProjectSettingSizeModule> MakeSizeModule() {
    return MakeRecord(&ITolmDataSetFactory::CreateSizeModule);
}

inline vorn::OwnerPtr<IProjectSettingConnectionSerie> MakeConnectionSerie() {
    return MakeRecord(&ITolmDataSetFactory::CreateConnectionSerie);
}

inline vorn::OwnerPtr<IProjectSettingMEPMaterialSerie> MakeMaterialSerie() {
    return MakeRecord(&ITolmDataSetFactory::CreateMEPMaterialSerie);
}

inline vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup> MakeMaterialSerieGroup() {
    return MakeRecord(&ITolmDataSetFactory::CreateMEPMaterialSerieGroup);
}

inline vorn::OwnerPtr<IProjectSettingSystemType> MakeSystemType() {
    return MakeRecord(&ITolmDataSetFactory::CreateSystemType);
}

inline vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> MakeCircuitTemplate() {
    return MakeRecord(&ITolmDataSetFactory::CreateCircuitTemplate);
}

} // namespace tolm
