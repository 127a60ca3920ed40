#include "MepDataSetInterface/TolmDataSetFactory.h"

#include "MepDataSetInterface/ProjectSettingConnectionSerie.h"
#include "MepDataSetInterface/ProjectSettingMEPMaterialSerie.h"
#include "MepDataSetInterface/ProjectSettingSystemType.h"
#include "MepDataSetInterface/RecordTestSupport.h"
#include "MepDataSetInterface/TolmProjectSettingCircuitTemplate.h"
#include "MepDataSetInterface/TolmProjectSettingMaterial.h"
#include "MepDataSetInterface/TolmProjectSettingSizeModule.h"

#include <gtest/gtest.h>

namespace {

using namespace tolm;
using namespace tolmtest;

template <class Interface> using Slot = vorn::OwnerPtr<Interface> (ITolmDataSetFactory::*)();

/// True when the slot makes the class `Record`, and an empty owner once there is no memory.
template <class Record, class Interface> testing::AssertionResult Makes(Slot<Interface> slot) {
    auto* const factory = ITolmDataSetFactory::Get();
    if (dynamic_cast<Record*>((factory->*slot)().get()) == nullptr)
        return testing::AssertionFailure() << "another class, or nothing";
    const MemoryForRecords memory(0);
    if ((factory->*slot)())
        return testing::AssertionFailure() << "a record without memory";
    return testing::AssertionSuccess();
}

TEST(RecordFactory, EachSlotMakesItsOwnClassAndAnEmptyOwnerWithoutMemory) {
    using Factory = ITolmDataSetFactory;
    EXPECT_TRUE((Makes<ProjectSettingSizeModule>(&Factory::CreateSizeModule)));
    EXPECT_TRUE((Makes<ProjectSettingMaterial>(&Factory::CreateMaterial)));
    EXPECT_TRUE((Makes<ProjectSettingConnectionSerie>(&Factory::CreateConnectionSerie)));
    EXPECT_TRUE((Makes<ProjectSettingSystemMaterialSerie>(&Factory::CreateSystemMaterialSerie)));
    EXPECT_TRUE((Makes<ProjectSettingSystemType>(&Factory::CreateSystemType)));
    EXPECT_TRUE((Makes<ProjectSettingMEPMaterialSerie>(&Factory::CreateMEPMaterialSerie)));
    EXPECT_TRUE((Makes<TolmProjectSettingCircuitTemplate>(&Factory::CreateCircuitTemplate)));
    EXPECT_TRUE((Makes<ProjectSettingMEPMaterialSerieGroup>(&Factory::CreateMEPMaterialSerieGroup)));
}

} // namespace
