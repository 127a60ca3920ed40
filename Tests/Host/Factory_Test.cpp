#include "TolmDataSet/TolmDataSet.h"

#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace {

using namespace tolm;
using tolmtest::TakeDebugWarnings;

/// Taken while this program's own statics come into being.
const ITolmDataSetFactory* const g_factoryAtStart = ITolmDataSetFactory::Get();

ITolmDataSetFactory& Factory() {
    return *ITolmDataSetFactory::Get();
}

TEST(Factory, StandsFromTheMomentTheLibraryIsLoaded) {
    EXPECT_NE(g_factoryAtStart, nullptr);
    EXPECT_EQ(ITolmDataSetFactory::Get(), g_factoryAtStart);
}

TEST(Factory, IsNotTouchedByTheEntryPoints) {
    InitializeAddin();
    EXPECT_EQ(ITolmDataSetFactory::Get(), g_factoryAtStart);
    UnInitializeAddin();
    EXPECT_EQ(ITolmDataSetFactory::Get(), g_factoryAtStart);
}

TEST(Factory, MakesEachKindOfRecordWithAnIdentifierOfItsOwn) {
    EXPECT_NE(Factory().CreateSizeModule()->GetId(), Factory().CreateSizeModule()->GetId());
    EXPECT_NE(Factory().CreateMaterial()->GetId(), Factory().CreateMaterial()->GetId());
    EXPECT_NE(Factory().CreateConnectionSerie()->GetId(), Factory().CreateConnectionSerie()->GetId());
    EXPECT_NE(Factory().CreateSystemMaterialSerie()->GetSerieId(), Factory().CreateSystemMaterialSerie()->GetSerieId());
    EXPECT_NE(Factory().CreateSystemType()->GetId(), Factory().CreateSystemType()->GetId());
    EXPECT_NE(Factory().CreateMEPMaterialSerie()->GetId(), Factory().CreateMEPMaterialSerie()->GetId());
    EXPECT_NE(Factory().CreateCircuitTemplate()->GetId(), Factory().CreateCircuitTemplate()->GetId());
    EXPECT_NE(Factory().CreateMEPMaterialSerieGroup()->GetId(), Factory().CreateMEPMaterialSerieGroup()->GetId());
}

TEST(Factory, MakesADatasetOfFourCopiedPaths) {
    wstring path = L"a.db";
    const auto dataset = Factory().CreateDataset(path, L"b", L"c", L"d");
    path = L"changed";
    EXPECT_EQ(dataset->GetDatasetFilePath(), L"a.db");
}

TEST(Factory, RecordsOfTheInterfacesOwnCreateAreTheSameKind) {
    const auto made = Factory().CreateMaterial();
    const auto created = IProjectSettingMaterial::Create();
    const auto& a = *made;
    const auto& b = *created;
    EXPECT_EQ(typeid(a), typeid(b));
}

TEST(Host, ReachesTheBaseOfATableByItsType) {
    const auto dataset = Factory().CreateDataset(L"", L"", L"", L"");
    EXPECT_NE(dynamic_cast<const TolmBaseDesignData*>(dataset->GetMaterialData()), nullptr);
    EXPECT_NE(dynamic_cast<const TolmBaseDesignData*>(dataset->GetSystemTypeData()), nullptr);
}

TEST(Host, UsesTheDesignMethodsAsValues) {
    std::vector<DataSetSizingMethod> methods(2);
    methods[0].AddDimensionMethod({1, 2.0F, 3.0F});
    methods.push_back(methods[0].Clone());
    EXPECT_EQ(methods[2].GetDimensionMethods(), methods[0].GetDimensionMethods());
    const DataSetInsulationSerie serie;
    const DataSetBalancingMethod balancing;
    EXPECT_NE(serie.GetId(), balancing.GetId());
}

TEST(Host, UsesBase64) {
    const std::string text = "any bytes";
    const auto encoded =
        base64_encode(reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned int>(text.size()));
    EXPECT_EQ(encoded, "YW55IGJ5dGVz");
    EXPECT_EQ(base64_decode(encoded), text);
}

} // namespace
