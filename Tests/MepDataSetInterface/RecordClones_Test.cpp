#include "MepDataSetInterface/RecordTrees.h"
#include "Support/DebugWarnings.h"
#include "TolmDataSet/DataSetMethods.h"

#include <rapidcheck.h>

#include <algorithm>

namespace {

using namespace tolm;
using namespace tolmtest;

wstring AnyText() {
    return *rc::gen::container<wstring>(rc::gen::inRange<wchar_t>(1, 0xD800));
}

double AnyDouble() {
    return *rc::gen::arbitrary<double>();
}

float AnyFloat() {
    return *rc::gen::arbitrary<float>();
}

/// Any number of the enumeration's type, named or not.
template <class Enum> Enum AnyOf() {
    return static_cast<Enum>(*rc::gen::arbitrary<std::int32_t>());
}

template <class Make> auto Perhaps(Make make) -> std::optional<decltype(make())> {
    if (*rc::gen::arbitrary<bool>())
        return make();
    return std::nullopt;
}

template <class Make> auto AFew(Make make) {
    std::vector<decltype(make())> list;
    for (int left = *rc::gen::inRange(0, 6); left > 0; --left)
        list.push_back(make());
    return list;
}

/// Every object type that a size module sets the discipline for, and others.
NamedTree AnyNamed() {
    return {AnyText(), AnyText(), static_cast<TolmProjectSettingMEPObjectType>(*rc::gen::inRange(0, 8)),
            static_cast<MEPDisciplineId>(*rc::gen::inRange(0, 5)), *rc::gen::arbitrary<__int64>()};
}

SizeTree AnySizes() {
    return {AnyNamed(),
            AnyDouble(),
            AnyOf<SectionType>(),
            AnyOf<CableTrayShape>(),
            AnyOf<PressureGrade>(),
            AnyText(),
            AnyOf<CableMaterial>(),
            AnyOf<EnvironmentTemperature>(),
            Perhaps(AnyNamed),
            AFew([] {
                return ProjectSettingPipeSize{AnyFloat(), AnyFloat(), AnyFloat(), AnyFloat()};
            }),
            AFew([] {
                return ProjectSettingDuctSize{AnyFloat(), AnyFloat()};
            }),
            AFew([] {
                return ProjectSettingCableSpec{AnyText(), *rc::gen::arbitrary<std::int32_t>(),
                                               AnyOf<EnvironmentTemperature>()};
            })};
}

FittingTree AnyFitting() {
    return {AnyOf<FittingPartType>(), AnyOf<RoutingPreferenceRuleGroupType>(), AnyDouble(), AnyDouble(),
            Perhaps(AnyText)};
}

ConnectionTree AnyConnection() {
    return {AnyText(), AnyText(), AnyOf<MEPConnectorType>(), AnyOf<TolmProjectSettingMEPObjectType>(),
            AFew(AnyFitting)};
}

SerieTree AnySerie() {
    return {AnyNamed(),        AnyOf<PreferredJunctionType>(), AnyDouble(), AnyDouble(), Perhaps(AnyNamed),
            Perhaps(AnySizes), Perhaps(AnyConnection)};
}

/// What a clone of the size module has: the material keeps identifier, name and type, the cable temperature is lost.
void LoseAsAClone(SizeTree& tree) {
    tree.temperature = EnvironmentTemperature::Celsius35;
    if (tree.material) {
        tree.material->discipline = MEPDisciplineId::Plumbing;
        tree.material->createTime = 0;
    }
}

/// What a clone of the connection series has: no fitting without a component. The number of those that it lost.
std::size_t LoseAsAClone(ConnectionTree& tree) {
    return std::erase_if(tree.fittings, [](const FittingTree& fitting) { return !fitting.componentId; });
}

std::size_t LoseAsAClone(SerieTree& tree) {
    if (tree.sizes)
        LoseAsAClone(*tree.sizes);
    return tree.connection ? LoseAsAClone(*tree.connection) : 0;
}

/// Checks that the clone's identifier is a new one and puts the source's in its place.
void TakeNewId(wstring& cloned, const wstring& source) {
    RC_ASSERT(IsPlainGuid(cloned));
    RC_ASSERT(cloned != source);
    cloned = source;
}

void CheckSkippedFittings(std::size_t count) {
    RC_ASSERT(TakeDebugWarningsWithFunction() ==
              Warnings(count, L"ProjectSettingConnectionSerie::Clone: product.m_opComponent为空"));
}

TEST(RecordClones, OfAnyMaterialSerieEqualItsSourceAfterTheKnownLosses) {
    EXPECT_TRUE(rc::check([] {
        const auto source = AnySerie();
        const auto serie = Build(source);
        auto cloned = Read(*serie->Clone());
        auto expected = source;
        CheckSkippedFittings(LoseAsAClone(expected));
        TakeNewId(cloned.named.id, source.named.id);
        if (cloned.connection && source.connection)
            TakeNewId(cloned.connection->id, source.connection->id);
        RC_ASSERT(cloned == expected);
        RC_ASSERT(Read(*serie) == source);
    }));
}

TEST(RecordClones, OfAnySizeModuleEqualItsSourceAfterTheKnownLosses) {
    EXPECT_TRUE(rc::check([] {
        const auto source = AnySizes();
        auto cloned = Read(*Build(source)->Clone());
        auto expected = source;
        LoseAsAClone(expected);
        TakeNewId(cloned.named.id, source.named.id);
        RC_ASSERT(cloned == expected);
    }));
}

TEST(RecordClones, OfAnyConnectionSerieEqualItsSourceAfterTheKnownLosses) {
    EXPECT_TRUE(rc::check([] {
        const auto source = AnyConnection();
        auto cloned = Read(*Build(source)->Clone());
        auto expected = source;
        CheckSkippedFittings(LoseAsAClone(expected));
        TakeNewId(cloned.id, source.id);
        RC_ASSERT(cloned == expected);
    }));
}

TEST(RecordClones, OfAnyGroupOrMaterialEqualItsSource) {
    EXPECT_TRUE(rc::check([] {
        const auto source = AnyNamed();
        auto group = ReadNamed(*BuildNamed<IProjectSettingMEPMaterialSerieGroup>(source)->Clone());
        auto material = ReadNamed(*BuildNamed<IProjectSettingMaterial>(source)->Clone());
        TakeNewId(group.id, source.id);
        TakeNewId(material.id, source.id);
        RC_ASSERT(group == source);
        RC_ASSERT(material == source);
    }));
}

TEST(RecordClones, OfACloneEqualTheFirstCloneButForNewIdentifiers) {
    EXPECT_TRUE(rc::check([] {
        const auto first = Build(AnySerie())->Clone();
        TakeDebugWarnings();
        const auto expected = Read(*first);
        auto second = Read(*first->Clone());
        TakeNewId(second.named.id, expected.named.id);
        if (second.connection && expected.connection)
            TakeNewId(second.connection->id, expected.connection->id);
        RC_ASSERT(second == expected);
    }));
}

TEST(RecordClones, OutliveTheirSource) {
    EXPECT_TRUE(rc::check([] {
        auto serie = Build(AnySerie());
        const auto clone = serie->Clone();
        const auto before = Read(*clone);
        serie.reset();
        RC_ASSERT(Read(*clone) == before);
        TakeDebugWarnings();
    }));
}

/// The records that a clone of the series is made of, in the order in which they are made.
int RecordsUpToTheConnectionSerie(const SerieTree& tree) {
    return 1 + (tree.group ? 1 : 0) + (tree.sizes ? (tree.sizes->material ? 2 : 1) : 0);
}

TEST(RecordClones, ThatRunOutOfMemoryLeaveNothingBehind) {
    EXPECT_TRUE(rc::check([] {
        const auto source = AnySerie();
        const auto serie = Build(source);
        const int living = CountedComponent::Living();
        const int needed = RecordsUpToTheConnectionSerie(source);
        for (int records = 0; records <= needed; ++records) {
            const MemoryForRecords memory(records);
            const auto clone = serie->Clone();
            RC_ASSERT(static_cast<bool>(clone) == (records == needed));
            RC_ASSERT(CountedComponent::Living() == living);
            RC_ASSERT(TakeDebugWarnings().empty() == (records == needed && !source.connection));
            if (clone)
                RC_ASSERT(clone->GetConnectionSerie() == nullptr);
        }
        RC_ASSERT(Read(*serie) == source);
    }));
}

TEST(RecordClones, OfAnyInsulationSerieEqualItsSource) {
    EXPECT_TRUE(rc::check([] {
        const auto size = [] {
            return DataSetInsulationMaxSize{*rc::gen::arbitrary<std::int16_t>(), *rc::gen::arbitrary<std::int16_t>(),
                                            *rc::gen::arbitrary<std::int16_t>()};
        };
        DataSetInsulationSerie serie;
        serie.SetCode(AnyText());
        serie.SetDescription(AnyText());
        serie.SetThermalConductivity(AnyFloat());
        serie.SetInsulationType(AnyOf<TolmInsulationSerieType>());
        serie.SetDisciplineType(AnyOf<MEPDisciplineId>());
        for (const auto& entry : AFew(size))
            serie.AddCircularSize(entry);
        for (const auto& entry : AFew(size))
            serie.AddRectSize(entry);
        const auto clone = serie.Clone();
        RC_ASSERT(IsPlainGuid(clone.GetId()));
        RC_ASSERT(clone.GetId() != serie.GetId());
        RC_ASSERT(clone.GetCode() == serie.GetCode());
        RC_ASSERT(clone.GetDescription() == serie.GetDescription());
        RC_ASSERT(clone.GetThermalConductivity() == serie.GetThermalConductivity());
        RC_ASSERT(clone.GetInsulationType() == serie.GetInsulationType());
        RC_ASSERT(clone.GetDisciplineId() == serie.GetDisciplineId());
        RC_ASSERT(clone.GetCircularMaxSizes() == serie.GetCircularMaxSizes());
        RC_ASSERT(clone.GetRectMaxSizes() == serie.GetRectMaxSizes());
    }));
}

} // namespace
