#include "ServiceTesting.h"

namespace tolmtest {
namespace {

using service::Answer;

void ExpectClash(const json& tables, const std::string& words) {
    StoreOnly store;
    store.Projects().Create("p", "P");
    const auto refused = RefusalOf(Answer::NameClash, [&] { store.Refill("p", tables); });
    EXPECT_EQ(refused, words);
    EXPECT_EQ(store.Projects().Version("p"), -1);
}

void ExpectNoClash(const json& tables) {
    StoreOnly store;
    EXPECT_EQ(store.Fill("p", tables), 1);
}

TEST(RowNames, ClashInOneSeriesTable) {
    ExpectClash({{"DuctType", {Series("a", "N"), Series("b", "N")}}},
                "DuctType: the rows \"a\" and \"b\" both bear the name \"N\"");
}

TEST(RowNames, ClashInOneSystemTypeTable) {
    ExpectClash({{"ElectricalSystemType", {SystemType("a", "N"), SystemType("b", "N")}}},
                "ElectricalSystemType: the rows \"a\" and \"b\" both bear the name \"N\"");
}

TEST(RowNames, DoNotClashAcrossTables) {
    ExpectNoClash({{"PipeType", {Series("a", "N")}}, {"HVACPipeType", {Series("b", "N")}}});
}

TEST(RowNames, ClashInOneGroupOfConfigTree) {
    ExpectClash({{"ConfigTree", {Node("cableTray", "a", "N"), Node("cableTray", "b", "N")}}},
                "ConfigTree/cableTray: the rows \"a\" and \"b\" both bear the name \"N\"");
}

TEST(RowNames, DoNotClashAcrossGroups) {
    ExpectNoClash({{"ConfigTree", {Node("cableTray", "a", "N"), Node("electricLinePipe", "b", "N")}}});
}

TEST(RowNames, ClashAmongMaterialsAndAmongTheirSizeTables) {
    ExpectClash({{"ConfigTree", {Material("a", "N"), Material("b", "N")}}},
                "ConfigTree/MaterialSeries/materials: the rows \"a\" and \"b\" both bear the name \"N\"");
    ExpectClash({{"ConfigTree", {PipeSize("a", "N", "m"), PipeSize("b", "N", "n")}}},
                "ConfigTree/MaterialSeries/sizes: the rows \"a\" and \"b\" both bear the name \"N\"");
}

TEST(RowNames, DoNotClashBetweenAMaterialAndASizeTable) {
    ExpectNoClash({{"ConfigTree", {Material("a", "N"), PipeSize("b", "N", "a")}}});
}

TEST(RowNames, ClashWhateverTheParentOutsideThePipeGroups) {
    ExpectClash(
        {{"ConfigTree", {Node("ductSeriesType", "a", "N"), With(Node("ductSeriesType", "b", "N"), "parentID", "m")}}},
        "ConfigTree/ductSeriesType: the rows \"a\" and \"b\" both bear the name \"N\"");
}

TEST(RowNames, AreFreeInElectricWireType) {
    ExpectNoClash({{"ConfigTree", {Node("electricWireType", "a", "N"), Node("electricWireType", "b", "N")}}});
}

TEST(RowNames, AreFreeInOtherContent) {
    ExpectNoClash({{"Combination_16353515", {Combination("a", "N"), Combination("b", "N")}}});
}

TEST(RowNames, AreComparedExactly) {
    ExpectNoClash({{"PipeType", {Series("a", "N"), Series("b", "n"), Series("c", "N "), Series("d", "Ｎ")}}});
}

TEST(RowNames, WithAZeroCharacterAreComparedToTheirEnd) {
    ExpectNoClash({{"PipeType", {Series("a", std::string("N\0a", 3)), Series("b", std::string("N\0b", 3))}}});
}

TEST(RowNames, CanChangePlacesInOneChange) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A"), Series("b", "B")}}});
    EXPECT_EQ(store.Apply("p", {{"edit", {{"PipeType", {Series("a", "B"), Series("b", "A")}}}}}), 2);
}

TEST(RowNames, OfARemovedRowIsFree) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A")}}});
    EXPECT_EQ(store.Apply("p", {{"add", {{"PipeType", {Series("b", "A")}}}}, {"remove", {{"PipeType", {"a"}}}}}), 2);
}

TEST(RowNames, ClashWithARowThatStoodBefore) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A"), Series("b", "B")}}});
    RefusalOf(Answer::NameClash, [&] { store.Apply("p", {{"edit", {{"PipeType", {Series("b", "A")}}}}}); });
}

TEST(RowNames, OfAnotherProjectDoNotClash) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A")}}});
    EXPECT_EQ(store.Fill("q", {{"PipeType", {Series("b", "A")}}}), 1);
}

} // namespace
} // namespace tolmtest
