#include "MepDataSetInterface/ProjectSettingConnectionSerie.h"

#include "MepDataSetInterface/RecordTestSupport.h"
#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace tolm;
using namespace tolmtest;
using Serie = IProjectSettingConnectionSerie;
using Group = RoutingPreferenceRuleGroupType;

void Add(Serie& serie, FittingPartType part, Group group, const wstring& id, double first, double second) {
    auto component = CountedComponent::Make(id);
    serie.AddFitting(part, group, component, first, second);
    EXPECT_FALSE(component) << "the series took the component over";
}

vorn::OwnerPtr<Serie> TwoFittings() {
    auto serie = Serie::Create();
    SetText(*serie, &Serie::SetName, L"flanged");
    serie->SetConnectionType(MEPConnectorType::PipeFlanged);
    serie->SetObjectType(TolmProjectSettingMEPObjectType::Pipe);
    Add(*serie, FittingPartType::Elbow, Group::Elbows, L"a", 15.0, 50.0);
    Add(*serie, FittingPartType::Tee, Group::Tees, L"b", 65.0, 100.0);
    return serie;
}

std::vector<wstring> Ids(const std::vector<const ITolmProjectSettingComponent*>& components) {
    std::vector<wstring> ids;
    for (const auto* component : components)
        ids.push_back(component->GetId());
    return ids;
}

TEST(ConnectionSerieRecord, ANewOneIsEmptyUnderAPlainGuid) {
    const auto serie = Serie::Create();
    EXPECT_TRUE(IsPlainGuid(serie->GetId()));
    EXPECT_EQ(serie->GetName(), L"");
    EXPECT_TRUE(serie->GetProducts().empty());
}

TEST(ConnectionSerieRecord, GivesItsFittingsBackInOrder) {
    const auto serie = TwoFittings();
    Add(*serie, FittingPartType::Elbow, Group::Tees, L"c", 1.0, 2.0);
    const auto products = serie->GetProducts();
    ASSERT_EQ(products.size(), 3U);
    EXPECT_EQ(products[0].fittingPartType, FittingPartType::Elbow);
    EXPECT_EQ(products[0].routingGroup, Group::Elbows);
    EXPECT_EQ(products[0].firstSizeBound, 15.0);
    EXPECT_EQ(products[0].secondSizeBound, 50.0);
    EXPECT_EQ(products[0].m_pComponent->GetId(), L"a");
    EXPECT_EQ(products[2].m_pComponent->GetId(), L"c");
}

TEST(ConnectionSerieRecord, FiltersByPartTypeAndByRoutingGroup) {
    const auto serie = TwoFittings();
    Add(*serie, FittingPartType::Elbow, Group::Tees, L"c", 1.0, 2.0);
    EXPECT_EQ(Ids(serie->GetFittingProducts(FittingPartType::Elbow)), (std::vector<wstring>{L"a", L"c"}));
    EXPECT_EQ(Ids(serie->GetFittingProductsByRoutingGroupType(Group::Tees)), (std::vector<wstring>{L"b", L"c"}));
    EXPECT_TRUE(serie->GetFittingProducts(FittingPartType::Cap).empty());
    EXPECT_TRUE(serie->GetFittingProductsByRoutingGroupType(Group::Caps).empty());
}

TEST(ConnectionSerieRecord, DeletingAFittingKeepsTheOrderOfTheOthers) {
    const auto serie = TwoFittings();
    Add(*serie, FittingPartType::Cap, Group::Caps, L"c", 1.0, 2.0);
    serie->DeleteFitting(1);
    const auto products = serie->GetProducts();
    ASSERT_EQ(products.size(), 2U);
    EXPECT_EQ(products[0].m_pComponent->GetId(), L"a");
    EXPECT_EQ(products[1].m_pComponent->GetId(), L"c");
}

TEST(ConnectionSerieRecord, ClearingReleasesAllComponents) {
    const int before = CountedComponent::Living();
    const auto serie = TwoFittings();
    EXPECT_EQ(CountedComponent::Living(), before + 2);
    serie->ClearFitting();
    EXPECT_EQ(CountedComponent::Living(), before);
    EXPECT_TRUE(serie->GetProducts().empty());
}

TEST(ConnectionSerieRecord, ACloneHoldsNewComponentsAndANewIdentifier) {
    const auto serie = TwoFittings();
    const auto clone = serie->Clone();
    EXPECT_NE(clone->GetId(), serie->GetId());
    EXPECT_EQ(clone->GetName(), L"flanged");
    EXPECT_EQ(clone->GetConnectionType(), MEPConnectorType::PipeFlanged);
    EXPECT_EQ(clone->GetObjectType(), TolmProjectSettingMEPObjectType::Pipe);
    const auto products = serie->GetProducts();
    const auto cloned = clone->GetProducts();
    ASSERT_EQ(cloned.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(cloned[i].fittingPartType, products[i].fittingPartType);
        EXPECT_EQ(cloned[i].routingGroup, products[i].routingGroup);
        EXPECT_EQ(cloned[i].firstSizeBound, products[i].firstSizeBound);
        EXPECT_EQ(cloned[i].secondSizeBound, products[i].secondSizeBound);
        EXPECT_NE(cloned[i].m_pComponent, products[i].m_pComponent);
        EXPECT_EQ(cloned[i].m_pComponent->GetId(), products[i].m_pComponent->GetId());
    }
}

TEST(ConnectionSerieRecord, ACloneLeavesAnEntryWithoutComponentOut) {
    const auto serie = Serie::Create();
    vorn::OwnerPtr<ITolmProjectSettingComponent> none;
    serie->AddFitting(FittingPartType::Cap, Group::Caps, none, 0.0, 1.0);
    Add(*serie, FittingPartType::Elbow, Group::Elbows, L"a", 0.0, 1.0);
    const auto clone = serie->Clone();
    EXPECT_EQ(clone->GetProducts().size(), 1U);
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"ProjectSettingConnectionSerie::Clone: product.m_opComponent为空"}));
}

TEST(ConnectionSerieRecord, ACloneThatCannotBeMadeIsReported) {
    const auto serie = TwoFittings();
    const MemoryForRecords memory(0);
    EXPECT_FALSE(serie->Clone());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"ProjectSettingConnectionSerie::Clone: retSerie为空"}));
}

/// A component of which no copy can be made.
class UniqueComponent : public CountedComponent {
public:
    using CountedComponent::CountedComponent;
    vorn::OwnerPtr<ITolmProjectSettingComponent> Clone() const override { return {}; }
};

TEST(ConnectionSerieRecord, GivesBackWhatWasSet) {
    const auto serie = Serie::Create();
    SetText(*serie, &Serie::SetId, L"c-1");
    SetText(*serie, &Serie::SetName, L"螺纹连接");
    serie->SetConnectionType(MEPConnectorType::Conduit);
    serie->SetObjectType(TolmProjectSettingMEPObjectType::Conduit);
    EXPECT_EQ(serie->GetId(), L"c-1");
    EXPECT_EQ(serie->GetName(), L"螺纹连接");
    EXPECT_EQ(static_cast<int>(serie->GetConnectionType()), 31);
    EXPECT_EQ(static_cast<int>(serie->GetObjectType()), 4);
}

TEST(ConnectionSerieRecord, SettingTheConnectionTypeLeavesTheObjectType) {
    const auto serie = TwoFittings();
    serie->SetConnectionType(MEPConnectorType::Duct);
    EXPECT_EQ(serie->GetObjectType(), TolmProjectSettingMEPObjectType::Pipe);
}

TEST(ConnectionSerieRecord, LendsANullPointerForAFittingWithoutComponent) {
    const auto serie = Serie::Create();
    vorn::OwnerPtr<ITolmProjectSettingComponent> none;
    serie->AddFitting(FittingPartType::Cap, Group::Caps, none, 3.0, 4.0);
    ASSERT_EQ(serie->GetProducts().size(), 1U);
    EXPECT_EQ(serie->GetProducts()[0].m_pComponent, nullptr);
    EXPECT_EQ(serie->GetProducts()[0].secondSizeBound, 4.0);
    const std::vector<const ITolmProjectSettingComponent*> one{nullptr};
    EXPECT_EQ(serie->GetFittingProducts(FittingPartType::Cap), one);
    EXPECT_EQ(serie->GetFittingProductsByRoutingGroupType(Group::Caps), one);
}

TEST(ConnectionSerieRecord, TheGettersLendTheSameComponents) {
    const auto serie = TwoFittings();
    const auto products = serie->GetProducts();
    EXPECT_EQ(serie->GetFittingProducts(FittingPartType::Tee)[0], products[1].m_pComponent);
    EXPECT_EQ(serie->GetFittingProductsByRoutingGroupType(Group::Elbows)[0], products[0].m_pComponent);
}

TEST(ConnectionSerieRecord, ReleasesAComponentWithItsFittingAndTheOthersWithItself) {
    const int before = CountedComponent::Living();
    {
        const auto serie = TwoFittings();
        serie->DeleteFitting(0);
        EXPECT_EQ(CountedComponent::Living(), before + 1);
        EXPECT_EQ(serie->GetProducts()[0].m_pComponent->GetId(), L"b");
    }
    EXPECT_EQ(CountedComponent::Living(), before);
}

TEST(ConnectionSerieRecord, ACloneOutlivesItsSource) {
    const int before = CountedComponent::Living();
    auto serie = TwoFittings();
    const auto clone = serie->Clone();
    EXPECT_EQ(CountedComponent::Living(), before + 4);
    serie.reset();
    EXPECT_EQ(CountedComponent::Living(), before + 2);
    EXPECT_EQ(Ids(clone->GetFittingProducts(FittingPartType::Elbow)), (std::vector<wstring>{L"a"}));
}

TEST(ConnectionSerieRecord, ACloneKeepsAFittingWhoseComponentGaveNoCopy) {
    const auto serie = Serie::Create();
    vorn::OwnerPtr<ITolmProjectSettingComponent> unique = vorn::MakeOwner<UniqueComponent>(L"a");
    serie->AddFitting(FittingPartType::Cap, Group::Caps, unique, 0.0, 1.0);
    const auto products = serie->Clone()->GetProducts();
    ASSERT_EQ(products.size(), 1U);
    EXPECT_EQ(products[0].m_pComponent, nullptr);
}

TEST(ConnectionSerieRecord, ThatCannotBeMadeIsAnEmptyOwner) {
    const MemoryForRecords memory(0);
    EXPECT_FALSE(ProjectSettingConnectionSerie::Create());
    EXPECT_FALSE(Serie::Create());
}

TEST(ConnectionSerieRecord, IsNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<ProjectSettingConnectionSerie>);
    EXPECT_FALSE(std::is_copy_assignable_v<ProjectSettingConnectionSerie>);
}

} // namespace
