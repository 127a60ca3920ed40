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

TEST(ConnectorTable, LendsItsRecordsAndReportsAnEmptyEntry) {
    const auto table = ConnectorData::Create();
    auto& list = TableTestAccess::List(dynamic_cast<ConnectorData&>(*table));
    list.push_back(IProjectSettingConnectionSerie::Create());
    list.emplace_back();
    EXPECT_EQ(table->GetConnectionSerieList(), (std::vector<const IProjectSettingConnectionSerie*>{list[0].get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"ConnectorData::GetConnectionSerieList: m_connectionSerieList[i]为空"}));
    table->reset();
    EXPECT_TRUE(list.empty());
}

TEST(ConnectorTable, CollectionReadsNothingYet) {
    const auto table = ConnectorData::Create();
    table->CollectDesignData(L"none.db", L"", TableId::DuctConnections);
    EXPECT_TRUE(table->GetConnectionSerieList().empty());
}

TEST(SystemTypeTable, LendsItsRecordsAndReportsAnEmptyEntry) {
    const auto table = SystemTypeData::Create();
    auto& list = TableTestAccess::List(dynamic_cast<SystemTypeData&>(*table));
    list.push_back(IProjectSettingSystemType::Create());
    list.emplace_back();
    EXPECT_EQ(table->GetSystemTypeList(), (std::vector<const IProjectSettingSystemType*>{list[0].get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"SystemTypeData::GetSystemTypeList: m_SystemTypeList[i]为空"}));
    table->reset();
    EXPECT_TRUE(list.empty());
}

TEST(SystemTypeTable, EditsSayThatALaterVersionBringsThemAndDoNothing) {
    const auto table = SystemTypeData::Create();
    table->AddSystemType(IProjectSettingSystemType::Create());
    table->GetAndAddSystemTypeById(L"y-1");
    table->AddSystemTypeToDB(nullptr);
    table->DeleteSystemTypeList({});
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              Later({L"SystemTypeData::AddSystemType", L"SystemTypeData::GetAndAddSystemTypeById",
                     L"SystemTypeData::AddSystemTypeToDB", L"SystemTypeData::DeleteSystemTypeList"}));
    EXPECT_TRUE(table->GetSystemTypeList().empty());
}

TEST(MaterialSerieTable, LendsSeriesAndGroupsAndReportsEmptyEntries) {
    const auto table = MEPMaterialSerieData::Create();
    auto& series = TableTestAccess::List(dynamic_cast<MEPMaterialSerieData&>(*table));
    auto& groups = TableTestAccess::Groups(dynamic_cast<MEPMaterialSerieData&>(*table));
    series.emplace_back();
    series.push_back(IProjectSettingMEPMaterialSerie::Create());
    groups.emplace_back();
    groups.push_back(IProjectSettingMEPMaterialSerieGroup::Create());
    EXPECT_EQ(table->GetSerieList(), (std::vector<const IProjectSettingMEPMaterialSerie*>{series[1].get()}));
    EXPECT_EQ(table->GetSerieGroupList(), (std::vector<const IProjectSettingMEPMaterialSerieGroup*>{groups[1].get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MEPMaterialSerieData::GetSerieList: m_serieList[i]为空",
                        L"MEPMaterialSerieData::GetSerieGroupList: m_serieGroupList[i]为空"}));
    table->reset();
    EXPECT_TRUE(series.empty());
    EXPECT_TRUE(groups.empty());
}

TEST(MaterialSerieTable, EditsSayThatALaterVersionBringsThemAndDoNothing) {
    const auto table = MEPMaterialSerieData::Create();
    wstring name;
    table->GetAndAddSerieById(L"p-1");
    table->AddSerie(IProjectSettingMEPMaterialSerie::Create());
    table->AddSerieToDB(nullptr);
    table->DeleteSerieList({});
    table->AddSerieGroup(IProjectSettingMEPMaterialSerieGroup::Create());
    table->DeleteSerieGroupList({});
    EXPECT_FALSE(table->IsTheMEPMaterialSeireReferred(nullptr, name));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              Later({L"MEPMaterialSerieData::GetAndAddSerieById", L"MEPMaterialSerieData::AddSerie",
                     L"MEPMaterialSerieData::AddSerieToDB", L"MEPMaterialSerieData::DeleteSerieList",
                     L"MEPMaterialSerieData::AddSerieGroup", L"MEPMaterialSerieData::DeleteSerieGroupList",
                     L"MEPMaterialSerieData::IsTheMEPMaterialSeireReferred"}));
    EXPECT_TRUE(table->GetSerieList().empty());
    EXPECT_TRUE(table->GetSerieGroupList().empty());
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
