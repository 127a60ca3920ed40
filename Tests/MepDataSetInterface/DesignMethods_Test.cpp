#include "MepDataSetInterface/TableTestSupport.h"

namespace {

using namespace tolm;
using namespace tolmtest;

/// The forwards of a table, whose own path is `path`.
class DesignMethods : public StoreFixture {
protected:
    DesignMethods() { table->CollectDesignData(path, L"", static_cast<TableId>(4)); }
    TolmBaseDesignData& Base() { return dynamic_cast<TolmBaseDesignData&>(*table); }

    const wstring other = folder.File(L"other.db");
    vorn::OwnerPtr<IMaterialData> table = MaterialData::Create();
};

template <class Record> Record Named(const wstring& id) {
    Record record;
    record.SetId(id);
    return record;
}

TEST_F(DesignMethods, OfInsulationAreAddedToTheTablesFileReadFromTheGivenOneAndDeleted) {
    auto duct = Named<DataSetInsulationSerie>(L"i1");
    duct.SetDisciplineType(MEPDisciplineId::HVAC);
    duct.SetInsulationType(TolmInsulationSerieType::Duct);
    EXPECT_TRUE(Base().AddInsulationSerie(duct));
    std::vector<DataSetInsulationSerie> list;
    EXPECT_FALSE(Base().ReadInsulationSeries(other, MEPDisciplineId::HVAC, TolmInsulationSerieType::Duct, list));
    EXPECT_FALSE(Base().ReadInsulationSeries(path, MEPDisciplineId::HVAC, TolmInsulationSerieType::Pipe, list));
    EXPECT_TRUE(Base().ReadInsulationSeries(path, MEPDisciplineId::HVAC, TolmInsulationSerieType::Duct, list));
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].GetId(), L"i1");
    EXPECT_TRUE(Base().DeleteInsulationSeries(list)) << "the reads left the table's path alone";
    EXPECT_FALSE(Base().ReadInsulationSeries(path, MEPDisciplineId::HVAC, TolmInsulationSerieType::Duct, list));
    EXPECT_TRUE(list.empty());
}

TEST_F(DesignMethods, OfSizingAreAddedReadAndDeleted) {
    auto duct = Named<DataSetSizingMethod>(L"s1");
    duct.SetMethodType(TolmSizingMethodType::Duct);
    EXPECT_TRUE(Base().AddSizingMethod(duct));
    std::vector<DataSetSizingMethod> list;
    EXPECT_FALSE(Base().ReadSizingMethods(other, TolmSizingMethodType::Duct, list));
    EXPECT_FALSE(Base().ReadSizingMethods(path, TolmSizingMethodType::Pipe, list));
    EXPECT_TRUE(Base().ReadSizingMethods(path, TolmSizingMethodType::Duct, list));
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].GetId(), L"s1");
    EXPECT_TRUE(Base().DeleteSizingMethods(list));
    EXPECT_FALSE(Base().ReadSizingMethods(path, TolmSizingMethodType::Duct, list));
}

TEST_F(DesignMethods, OfBalancingAreAddedReadAndDeleted) {
    EXPECT_TRUE(Base().AddBalancingMethod(Named<DataSetBalancingMethod>(L"b1")));
    Sql(path, "update BMD set DisciplineId = 1");
    std::vector<DataSetBalancingMethod> list;
    EXPECT_FALSE(Base().ReadBalancingMethods(other, MEPDisciplineId::HVAC, list));
    EXPECT_FALSE(Base().ReadBalancingMethods(path, MEPDisciplineId::Plumbing, list));
    EXPECT_TRUE(Base().ReadBalancingMethods(path, MEPDisciplineId::HVAC, list));
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].GetId(), L"b1");
    EXPECT_TRUE(Base().DeleteBalancingMethods(list));
    EXPECT_EQ(SqlValue(path, "select count(*) from BMD"), "0");
}

TEST_F(DesignMethods, NeverStandInTheListOfATable) {
    EXPECT_TRUE(Base().AddSizingMethod(Named<DataSetSizingMethod>(L"s1")));
    EXPECT_TRUE(table->GetMaterialList().empty());
}

TEST_F(DesignMethods, WithoutAPathAreRefused) {
    const auto fresh = MaterialData::Create();
    auto& base = dynamic_cast<TolmBaseDesignData&>(*fresh);
    EXPECT_FALSE(base.AddInsulationSerie({}));
    EXPECT_FALSE(base.AddSizingMethod({}));
    EXPECT_FALSE(base.AddBalancingMethod({}));
    EXPECT_FALSE(base.DeleteInsulationSeries({}));
    EXPECT_FALSE(base.DeleteSizingMethods({}));
    EXPECT_FALSE(base.DeleteBalancingMethods({}));
}

} // namespace
