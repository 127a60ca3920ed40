#include "TolmDataSet/DataSetMethods.h"

#include "MepDataSetInterface/RecordTestSupport.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace {

using namespace tolm;
using namespace tolmtest;

DataSetInsulationSerie FullInsulation() {
    DataSetInsulationSerie serie;
    serie.SetCode(L"B1");
    serie.SetDescription(L"rubber");
    serie.SetThermalConductivity(0.034F);
    serie.SetInsulationType(TolmInsulationSerieType::Duct);
    serie.SetDisciplineType(MEPDisciplineId::HVAC);
    serie.AddCircularSize({1, 2, 0});
    serie.AddCircularSize({3, 4, 0});
    serie.AddCircularSize({5, 6, 0});
    serie.AddRectSize({7, 8, 9});
    serie.AddRectSize({10, 11, 12});
    return serie;
}

TEST(InsulationSerie, ANewOneIsAPlumbingSerieOfTypeOne) {
    const DataSetInsulationSerie serie;
    EXPECT_TRUE(IsPlainGuid(serie.GetId()));
    EXPECT_EQ(serie.GetCode(), L"");
    EXPECT_EQ(serie.GetDescription(), L"");
    EXPECT_EQ(serie.GetThermalConductivity(), 0.0F);
    EXPECT_EQ(static_cast<int>(serie.GetInsulationType()), 1);
    EXPECT_EQ(static_cast<int>(serie.GetDisciplineId()), 2);
    EXPECT_TRUE(serie.GetCircularMaxSizes().empty());
    EXPECT_TRUE(serie.GetRectMaxSizes().empty());
}

TEST(InsulationSerie, DeletingASizeKeepsTheOrderOfTheOthers) {
    auto serie = FullInsulation();
    serie.DeleteCircularSize(1);
    serie.DeleteRectSize(0);
    EXPECT_EQ(serie.GetCircularMaxSizes(), (std::vector<DataSetInsulationMaxSize>{{1, 2, 0}, {5, 6, 0}}));
    EXPECT_EQ(serie.GetRectMaxSizes(), (std::vector<DataSetInsulationMaxSize>{{10, 11, 12}}));
    serie.DeleteAllCircularSize();
    EXPECT_TRUE(serie.GetCircularMaxSizes().empty());
    EXPECT_EQ(serie.GetRectMaxSizes().size(), 1U);
}

TEST(InsulationSerie, ACloneDiffersInItsIdentifierOnly) {
    const auto serie = FullInsulation();
    const auto clone = serie.Clone();
    EXPECT_NE(clone.GetId(), serie.GetId());
    EXPECT_TRUE(IsPlainGuid(clone.GetId()));
    EXPECT_EQ(clone.GetCode(), L"B1");
    EXPECT_EQ(clone.GetDescription(), L"rubber");
    EXPECT_EQ(clone.GetThermalConductivity(), 0.034F);
    EXPECT_EQ(clone.GetInsulationType(), TolmInsulationSerieType::Duct);
    EXPECT_EQ(clone.GetDisciplineId(), MEPDisciplineId::HVAC);
    EXPECT_EQ(clone.GetCircularMaxSizes(), serie.GetCircularMaxSizes());
    EXPECT_EQ(clone.GetRectMaxSizes(), serie.GetRectMaxSizes());
}

TEST(InsulationSerie, ACopyHasTheSameIdentifier) {
    const auto serie = FullInsulation();
    const auto copy = serie;
    EXPECT_EQ(copy.GetId(), serie.GetId());
}

TEST(SizingMethod, ANewOnesIdentifierStandsInBraces) {
    const wstring id = DataSetSizingMethod().GetId();
    ASSERT_EQ(id.size(), 38U);
    EXPECT_EQ(id.front(), L'{');
    EXPECT_EQ(id.back(), L'}');
    EXPECT_TRUE(IsPlainGuid(id.substr(1, 36)));
}

TEST(SizingMethod, ANewOneHasItsDefaults) {
    const DataSetSizingMethod method;
    EXPECT_EQ(method.GetCode(), L"");
    EXPECT_EQ(method.GetDesc(), L"");
    EXPECT_TRUE(method.GetDimensionMethods().empty());
    EXPECT_FALSE(method.GetKeepConnectTerminalSize());
    EXPECT_FALSE(method.GetUseStaticRegain());
    EXPECT_EQ(method.GetMinWPerHRatio(), 0.0F);
    EXPECT_EQ(static_cast<int>(method.GetMethodType()), 1);
}

TEST(SizingMethod, ACloneHasTheSameStepsAndANewIdentifierInBraces) {
    DataSetSizingMethod method;
    method.SetCode(L"A");
    method.SetDesc(L"velocity");
    method.SetKeepConnectTerminalSize(true);
    method.SetUseStaticRegain(true);
    method.SetMinWPerHRatio(0.25F);
    method.SetMethodType(TolmSizingMethodType::Duct);
    method.AddDimensionMethod({1, 2.0F, 3.0F});
    method.AddDimensionMethod({4, 5.0F, 6.0F});
    const auto clone = method.Clone();
    EXPECT_NE(clone.GetId(), method.GetId());
    EXPECT_EQ(clone.GetId().front(), L'{');
    EXPECT_EQ(clone.GetCode(), L"A");
    EXPECT_EQ(clone.GetDesc(), L"velocity");
    EXPECT_TRUE(clone.GetKeepConnectTerminalSize());
    EXPECT_TRUE(clone.GetUseStaticRegain());
    EXPECT_EQ(clone.GetMinWPerHRatio(), 0.25F);
    EXPECT_EQ(clone.GetMethodType(), TolmSizingMethodType::Duct);
    EXPECT_EQ(clone.GetDimensionMethods(), method.GetDimensionMethods());
}

TEST(SizingMethod, DeletingAStepKeepsTheOrderOfTheOthers) {
    DataSetSizingMethod method;
    for (const int kind : {1, 2, 3})
        method.AddDimensionMethod({kind, 0.0F, 0.0F});
    method.DeleteDimensionMethod(1);
    EXPECT_EQ(method.GetDimensionMethods(),
              (std::vector<DataSetDimensionMethodItem>{{1, 0.0F, 0.0F}, {3, 0.0F, 0.0F}}));
    method.DeleteAllDimensionMethod();
    EXPECT_TRUE(method.GetDimensionMethods().empty());
}

TEST(BalancingMethod, ANewOneHasItsRanges) {
    const DataSetBalancingMethod method;
    EXPECT_TRUE(IsPlainGuid(method.GetId()));
    EXPECT_EQ(method.GetName(), L"");
    EXPECT_EQ(method.GetDesc(), L"");
    EXPECT_EQ(method.GetDev1DpMin(), 2000.0F);
    EXPECT_EQ(method.GetDev1DpMax(), 9999999.0F);
    EXPECT_EQ(method.GetDev2DpMin(), 2000.0F);
    EXPECT_EQ(method.GetDev2DpMax(), 9999999.0F);
    EXPECT_EQ(method.GetThrottlingLimit1Min(), 0);
    EXPECT_EQ(method.GetThrottlingLimit1Max(), 100);
    EXPECT_EQ(method.GetThrottlingLimit2Min(), 0);
    EXPECT_EQ(method.GetThrottlingLimit2Max(), 100);
    EXPECT_FALSE(method.GetIsWarningNearRoot());
    EXPECT_EQ(static_cast<int>(method.disciplineId()), 2);
}

DataSetBalancingMethod FullBalancing() {
    DataSetBalancingMethod method;
    method.SetId(L"b-1");
    method.SetName(L"n");
    method.SetDesc(L"d");
    method.SetDev1Min(1.0F);
    method.SetDev1Max(2.0F);
    method.SetDev2Min(3.0F);
    method.SetDev2Max(4.0F);
    method.SetThrottlingLimit1Min(5);
    method.SetThrottlingLimit1Max(6);
    method.SetThrottlingLimit2Min(7);
    method.SetThrottlingLimit2Max(8);
    method.SetIsWarningNearRoot(true);
    method.setDisciplineType(MEPDisciplineId::HVAC);
    return method;
}

void ExpectFullBalancing(const DataSetBalancingMethod& method) {
    EXPECT_EQ(method.GetId(), L"b-1");
    EXPECT_EQ(method.GetName(), L"n");
    EXPECT_EQ(method.GetDesc(), L"d");
    EXPECT_EQ(method.GetDev1DpMin(), 1.0F);
    EXPECT_EQ(method.GetDev1DpMax(), 2.0F);
    EXPECT_EQ(method.GetDev2DpMin(), 3.0F);
    EXPECT_EQ(method.GetDev2DpMax(), 4.0F);
    EXPECT_EQ(method.GetThrottlingLimit1Min(), 5);
    EXPECT_EQ(method.GetThrottlingLimit1Max(), 6);
    EXPECT_EQ(method.GetThrottlingLimit2Min(), 7);
    EXPECT_EQ(method.GetThrottlingLimit2Max(), 8);
    EXPECT_TRUE(method.GetIsWarningNearRoot());
    EXPECT_EQ(method.disciplineId(), MEPDisciplineId::HVAC);
}

TEST(BalancingMethod, CopyAndMoveCarryEveryFieldTheIdentifierIncluded) {
    auto source = FullBalancing();
    const DataSetBalancingMethod copy(source);
    ExpectFullBalancing(copy);
    DataSetBalancingMethod assigned;
    assigned = source;
    ExpectFullBalancing(assigned);
    DataSetBalancingMethod moved(std::move(source));
    ExpectFullBalancing(moved);
    DataSetBalancingMethod moveAssigned;
    moveAssigned = std::move(moved);
    ExpectFullBalancing(moveAssigned);
}

TEST(BalancingMethod, HasNoVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic_v<DataSetBalancingMethod>);
}

template <class Record>
concept ClearsRectangularSizes = requires(Record record) {
    record.DeleteAllRectSize();
};
template <class Record>
concept ClearsCircularSizes = requires(Record record) {
    record.DeleteAllCircularSize();
};

TEST(InsulationSerie, HasNoOperationThatClearsTheRectangularSizes) {
    EXPECT_TRUE(ClearsCircularSizes<DataSetInsulationSerie>);
    EXPECT_FALSE(ClearsRectangularSizes<DataSetInsulationSerie>);
}

TEST(InsulationSerie, DeletesTheFirstAndTheLastSize) {
    auto serie = FullInsulation();
    serie.DeleteCircularSize(2);
    serie.DeleteCircularSize(0);
    EXPECT_EQ(serie.GetCircularMaxSizes(), (std::vector<DataSetInsulationMaxSize>{{3, 4, 0}}));
    serie.DeleteRectSize(1);
    serie.DeleteRectSize(0);
    EXPECT_TRUE(serie.GetRectMaxSizes().empty());
}

TEST(InsulationSerie, ACloneIsIndependentOfItsSource) {
    auto serie = FullInsulation();
    const auto clone = serie.Clone();
    EXPECT_NE(serie.Clone().GetId(), clone.GetId());
    serie.DeleteAllCircularSize();
    serie.SetCode(L"B2");
    EXPECT_EQ(clone.GetCircularMaxSizes().size(), 3U);
    EXPECT_EQ(clone.GetCode(), L"B1");
}

TEST(InsulationSerie, IsUsedThroughItsInterface) {
    DataSetInsulationSerie serie;
    IDataSetInsulationSerie& record = serie;
    record.SetId(L"i-1");
    record.SetInsulationType(static_cast<TolmInsulationSerieType>(7));
    EXPECT_EQ(serie.GetId(), L"i-1");
    EXPECT_EQ(static_cast<int>(serie.GetInsulationType()), 7);
}

TEST(SizingMethod, ACopyHasTheSameIdentifierAndAnAssignedOneToo) {
    DataSetSizingMethod method;
    method.SetId(L"z-1");
    method.AddDimensionMethod({1, 2.0F, 3.0F});
    const DataSetSizingMethod copy(method);
    DataSetSizingMethod assigned;
    assigned = method;
    for (const auto* record : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(record->GetId(), L"z-1");
        EXPECT_EQ(record->GetDimensionMethods(), method.GetDimensionMethods());
    }
}

TEST(SizingMethod, TwoClonesDifferInTheirIdentifiers) {
    const DataSetSizingMethod method;
    EXPECT_NE(method.Clone().GetId(), method.Clone().GetId());
}

} // namespace
