#include "TolmDataSet/MepEnums.h"

#include "TolmDataSet/SmallRecords.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace tolm;

template <class... Enums> constexpr bool Are32BitIntegers() {
    return (std::is_same_v<std::underlying_type_t<Enums>, std::int32_t> && ...);
}

TEST(Enumerations, AreAllPlain32BitIntegers) {
    EXPECT_TRUE(
        (Are32BitIntegers<TolmProjectSettingMEPObjectType, MEPDisciplineId, TolmProjectSettingTableId, MEPConnectorType,
                          MEPSystemClassification, CompareVersionResult, SectionType, CableTrayShape, CableMaterial,
                          EnvironmentTemperature, PressureGrade, Phase, PreferredJunctionType, FittingPartType,
                          RoutingPreferenceRuleGroupType, TolmSizingMethodType, TolmInsulationSerieType>()));
}

TEST(Enumerations, KeepTheNumbersThatAreStored) {
    EXPECT_EQ(static_cast<int>(TolmProjectSettingMEPObjectType::Pipe), 1);
    EXPECT_EQ(static_cast<int>(TolmProjectSettingMEPObjectType::Duct), 2);
    EXPECT_EQ(static_cast<int>(TolmProjectSettingMEPObjectType::CableTray), 3);
    EXPECT_EQ(static_cast<int>(TolmProjectSettingMEPObjectType::Conduit), 4);
    EXPECT_EQ(static_cast<int>(TolmProjectSettingMEPObjectType::Wire), 5);
    EXPECT_EQ(static_cast<int>(TolmProjectSettingMEPObjectType::ElectricalSystem), 6);
    EXPECT_EQ(static_cast<int>(MEPDisciplineId::HVAC), 1);
    EXPECT_EQ(static_cast<int>(MEPDisciplineId::Plumbing), 2);
    EXPECT_EQ(static_cast<int>(MEPDisciplineId::Electrical), 3);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::PipeThreaded), 1);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::PipeWelded), 2);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::PipeFlanged), 3);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::PipeGrooved), 4);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::PipeSocket), 5);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::Duct), 11);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::CableTray), 21);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::CableTrayAlternative), 22);
    EXPECT_EQ(static_cast<int>(MEPConnectorType::Conduit), 31);
    EXPECT_EQ(static_cast<int>(CompareVersionResult::NotComparable), -1);
    EXPECT_EQ(static_cast<int>(CompareVersionResult::Same), 0);
    EXPECT_EQ(static_cast<int>(CompareVersionResult::CloudAhead), 1);
    EXPECT_EQ(static_cast<int>(CompareVersionResult::LocalChanges), 2);
    EXPECT_EQ(static_cast<int>(CompareVersionResult::BothChanged), 3);
    EXPECT_EQ(static_cast<int>(CompareVersionResult::CloudNotInitialised), 4);
}

TEST(Enumerations, KnowTheClassificationsOfNewRecords) {
    EXPECT_EQ(static_cast<int>(MEPSystemClassification::DefaultPipeSystem), 21);
    EXPECT_EQ(static_cast<int>(MEPSystemClassification::DefaultCircuit), 41);
}

TEST(Enumerations, NoSectionComparesAsTheLargestUnsignedValue) {
    EXPECT_EQ(static_cast<std::uint32_t>(SectionType::None), 0xFFFFFFFFU);
}

TEST(SmallRecords, SizesAreTheirFloatsAndNothingElse) {
    EXPECT_EQ(sizeof(ProjectSettingPipeSize), 16U);
    EXPECT_EQ(sizeof(ProjectSettingDuctSize), 8U);
    EXPECT_EQ(sizeof(DataSetInsulationMaxSize), 6U);
    EXPECT_EQ(sizeof(DataSetDimensionMethodItem), 12U);
}

template <class Record, class Field> std::size_t OffsetOf(Field Record::*field) {
    static const Record record{};
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&(record.*field)) -
                                    reinterpret_cast<const char*>(&record));
}

TEST(SmallRecords, FieldsKeepTheirOrder) {
    EXPECT_EQ(OffsetOf(&ProjectSettingPipeSize::innerDiameter), 0U);
    EXPECT_EQ(OffsetOf(&ProjectSettingPipeSize::outerDiameter), 4U);
    EXPECT_EQ(OffsetOf(&ProjectSettingPipeSize::nominalDiameter), 8U);
    EXPECT_EQ(OffsetOf(&ProjectSettingPipeSize::thickness), 12U);
    EXPECT_EQ(OffsetOf(&ProjectSettingDuctSize::size), 0U);
    EXPECT_EQ(OffsetOf(&ProjectSettingDuctSize::thickness), 4U);
    EXPECT_LT(OffsetOf(&ProjectSettingCableSpec::area), OffsetOf(&ProjectSettingCableSpec::current));
    EXPECT_LT(OffsetOf(&ProjectSettingCableSpec::current), OffsetOf(&ProjectSettingCableSpec::temperature));
    EXPECT_EQ(OffsetOf(&DataSetInsulationMaxSize::secondSize), 2U);
    EXPECT_EQ(OffsetOf(&DataSetInsulationMaxSize::thirdSize), 4U);
    EXPECT_EQ(OffsetOf(&DataSetDimensionMethodItem::firstValue), 4U);
    EXPECT_EQ(OffsetOf(&DataSetDimensionMethodItem::secondValue), 8U);
    EXPECT_EQ(OffsetOf(&RecoverDataInfo::recovered), 0U);
    EXPECT_GT(OffsetOf(&RecoverDataInfo::idMap), 0U);
}

TEST(SmallRecords, NothingIsRecoveredToBeginWith) {
    const RecoverDataInfo info;
    EXPECT_FALSE(info.recovered);
    EXPECT_TRUE(info.idMap.empty());
}

} // namespace
