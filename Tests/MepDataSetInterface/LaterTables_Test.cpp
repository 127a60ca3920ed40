#include "MepDataSetInterface/TableTestSupport.h"

#include "MepDataSetInterface/AvailableLater.h"

namespace {

using namespace tolm;
using namespace tolmtest;

/// The warnings of operations that a later version brings.
Warnings Later(const std::vector<wstring>& functions) {
    Warnings warnings;
    for (const auto& function : functions)
        warnings.push_back(function + L": " + kAvailableLater);
    return warnings;
}

TEST(CircuitTemplateTable, LendsItsRecordsAndReportsAnEmptyEntry) {
    const auto table = CircuitTemplateData::Create();
    auto& list = TableTestAccess::List(dynamic_cast<CircuitTemplateData&>(*table));
    list.push_back(ITolmProjectSettingCircuitTemplate::Create());
    list.emplace_back();
    EXPECT_EQ(table->GetCircuitTemplateList(), (std::vector<const ITolmProjectSettingCircuitTemplate*>{list[0].get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"CircuitTemplateData::GetCircuitTemplateList: m_circuitTemplateList[i]为空"}));
    table->reset();
    EXPECT_TRUE(list.empty());
}

TEST(CircuitTemplateTable, EditsSayThatALaterVersionBringsThemAndDoNothing) {
    const auto table = CircuitTemplateData::Create();
    table->AddCircuitTemplate(ITolmProjectSettingCircuitTemplate::Create());
    table->AddCircuitTemplateListToDB({});
    table->DeleteCircuitTemplateList({});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              Later({L"CircuitTemplateData::AddCircuitTemplate", L"CircuitTemplateData::AddCircuitTemplateListToDB",
                     L"CircuitTemplateData::DeleteCircuitTemplateList"}));
    table->CollectDesignData(L"none.db", TableId::CircuitTemplates);
    EXPECT_TRUE(table->GetCircuitTemplateList().empty());
}

TEST(DesignMethods, AreBroughtByALaterVersion) {
    const auto table = MaterialData::Create();
    auto& base = dynamic_cast<TolmBaseDesignData&>(*table);
    std::vector<DataSetInsulationSerie> insulation;
    std::vector<DataSetSizingMethod> sizing;
    std::vector<DataSetBalancingMethod> balancing;
    EXPECT_FALSE(base.ReadInsulationSeries(L"", MEPDisciplineId::HVAC, TolmInsulationSerieType::Pipe, insulation));
    EXPECT_FALSE(base.ReadSizingMethods(L"", TolmSizingMethodType::Pipe, sizing));
    EXPECT_FALSE(base.ReadBalancingMethods(L"", MEPDisciplineId::HVAC, balancing));
    EXPECT_FALSE(base.AddInsulationSerie({}));
    EXPECT_FALSE(base.AddSizingMethod({}));
    EXPECT_FALSE(base.AddBalancingMethod({}));
    EXPECT_FALSE(base.DeleteInsulationSeries({}));
    EXPECT_FALSE(base.DeleteSizingMethods({}));
    EXPECT_FALSE(base.DeleteBalancingMethods({}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              Later({L"TolmBaseDesignData::ReadInsulationSeries", L"TolmBaseDesignData::ReadSizingMethods",
                     L"TolmBaseDesignData::ReadBalancingMethods", L"TolmBaseDesignData::AddInsulationSerie",
                     L"TolmBaseDesignData::AddSizingMethod", L"TolmBaseDesignData::AddBalancingMethod",
                     L"TolmBaseDesignData::DeleteInsulationSeries", L"TolmBaseDesignData::DeleteSizingMethods",
                     L"TolmBaseDesignData::DeleteBalancingMethods"}));
}

} // namespace
