#include "ServiceTesting.h"

namespace tolmtest {
namespace {

TEST(Increment, FullLoadHasEveryRowInTheOrderOfItsComing) {
    StoreOnly store;
    const json tables{{"ConfigTree", {Material("m2", "B"), Material("m1", "A")}}, {"PipeType", {Series("s", "S")}}};
    store.Fill("p", tables);
    EXPECT_EQ(store.Increment("p", 0)["add"], tables);
}

TEST(Increment, AnyVersionBelowOneMeansEverything) {
    StoreOnly store;
    store.Fill("p", {{"ConfigTree", {Material("m1", "A")}}});
    store.Apply("p", {{"add", {{"ConfigTree", {Material("m2", "B")}}}}});
    const auto everything = store.Increment("p", 0);
    EXPECT_EQ(everything["add"]["ConfigTree"].size(), 2U);
    EXPECT_EQ(store.Increment("p", -1), everything);
    EXPECT_EQ(store.Increment("p", std::numeric_limits<std::int64_t>::min()), everything);
}

TEST(Increment, DelAlwaysHasConfigTreeAndNoOtherEmptyTable) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("s", "S")}}});
    const json nothing{{"add", json::object()}, {"del", {{"ConfigTree", json::array()}}}};
    EXPECT_EQ(store.Increment("p", 1), nothing);
    EXPECT_EQ(store.Increment("p", 0)["del"], nothing["del"]);
    store.Apply("p", {{"edit", {{"PipeType", {Series("s", "T")}}}}});
    EXPECT_EQ(store.Increment("p", 1)["del"], (json{{"ConfigTree", json::array()}, {"PipeType", {Series("s", "S")}}}));
}

TEST(Increment, ARemovedRowStandsWholeInDelWithTheVersionInWhichItWent) {
    StoreOnly store;
    store.Fill("p", {{"PipeSystemType", {With(SystemType("t", "Cold"), "code", "J")}}});
    store.Apply("p", {{"remove", {{"PipeSystemType", {"t"}}}}});
    EXPECT_EQ(store.Increment("p", 1)["del"]["PipeSystemType"],
              json::array({With(With(SystemType("t", "Cold"), "code", "J"), "version", 2)}));
    EXPECT_EQ(store.Increment("p", 1)["add"], json::object());
    EXPECT_EQ(store.Increment("p", 2)["del"], (json{{"ConfigTree", json::array()}}));
}

TEST(Increment, AnEditedRowStandsInDelAsItStoodAtTheClientsVersionWithoutVersion) {
    StoreOnly store;
    store.Fill("p", {{"DuctType", {Series("s", "1")}}});
    store.Apply("p", {{"edit", {{"DuctType", {Series("s", "2")}}}}});
    store.Apply("p", {{"edit", {{"DuctType", {Series("s", "3")}}}}});
    const auto increment = store.Increment("p", 1);
    EXPECT_EQ(increment["del"]["DuctType"], json::array({Series("s", "1")}));
    EXPECT_EQ(increment["add"]["DuctType"], json::array({Series("s", "3")}));
    EXPECT_EQ(store.Increment("p", 2)["del"]["DuctType"], json::array({Series("s", "2")}));
}

TEST(Increment, ARowThatCameAndWentSinceStandsInDelInItsLastState) {
    StoreOnly store;
    store.Fill("p", {});
    store.Apply("p", {{"add", {{"PipeType", {Series("s", "1")}}}}});
    store.Apply("p", {{"edit", {{"PipeType", {Series("s", "2")}}}}});
    store.Apply("p", {{"remove", {{"PipeType", {"s"}}}}});
    const auto increment = store.Increment("p", 1);
    EXPECT_EQ(increment["add"], json::object());
    EXPECT_EQ(increment["del"]["PipeType"], json::array({With(Series("s", "2"), "version", 4)}));
}

TEST(Increment, ARowEditedAndThenRemovedStandsOnceInDelWithTheVersionOfItsRemoval) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("s", "1")}}});
    store.Apply("p", {{"edit", {{"PipeType", {Series("s", "2")}}}}});
    store.Apply("p", {{"remove", {{"PipeType", {"s"}}}}});
    EXPECT_EQ(store.Increment("p", 1)["del"]["PipeType"], json::array({With(Series("s", "1"), "version", 3)}));
    EXPECT_EQ(store.Increment("p", 2)["del"]["PipeType"], json::array({With(Series("s", "2"), "version", 3)}));
}

TEST(Increment, ARowThatWentAndCameBackBearsNoVersion) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("s", "1")}}});
    store.Apply("p", {{"remove", {{"PipeType", {"s"}}}}});
    store.Apply("p", {{"add", {{"PipeType", {Series("s", "2")}}}}});
    EXPECT_EQ(store.Increment("p", 1)["del"]["PipeType"], json::array({Series("s", "1")}));
    EXPECT_EQ(store.Increment("p", 1)["add"]["PipeType"], json::array({Series("s", "2")}));
    EXPECT_EQ(store.Increment("p", 2)["del"]["PipeType"], json::array({json{{"ID", "s"}}}));
}

TEST(Increment, RemovedOtherContentStandsWholeInDelToo) {
    StoreOnly store;
    store.Fill("p", {{"BinaryTable", {Binary("a.bin", "AAEC", 3)}}, {"CircuitTemplate", {Circuit("c", 1)}}});
    store.Apply("p", {{"remove", {{"BinaryTable", {"a.bin"}}, {"CircuitTemplate", {"c"}}}}});
    const auto del = store.Increment("p", 1)["del"];
    EXPECT_EQ(del["BinaryTable"], json::array({With(Binary("a.bin", "AAEC", 3), "version", 2)}));
    EXPECT_EQ(del["CircuitTemplate"], json::array({With(Circuit("c", 1), "version", 2)}));
}

TEST(Increment, EachTrackedRowInAddStandsInDelSoThatNobodyMeetsItAsNew) {
    StoreOnly store;
    store.Fill("p", {{"ConfigTree", {Material("m", "M")}}});
    store.Apply("p", {{"add",
                       {{"ConfigTree", {PipeSize("z", "Z", "m")}},
                        {"PipeType", {Series("s", "S")}},
                        {"DuctSystemType", {SystemType("t", "T")}}}}});
    const json stub{{"ID", "z"}, {"groupName", "MaterialSeries"}, {"parentID", "m"}};
    EXPECT_EQ(
        store.Increment("p", 1)["del"],
        (json{{"ConfigTree", {stub}}, {"PipeType", {json{{"ID", "s"}}}}, {"DuctSystemType", {json{{"ID", "t"}}}}}));
}

TEST(Increment, OtherContentInAddHasNoRowInDel) {
    StoreOnly store;
    store.Fill("p", {});
    store.Apply("p", {{"add", {{"CircuitTemplate", {Circuit("c", 1)}}}}});
    EXPECT_EQ(store.Increment("p", 1)["del"], (json{{"ConfigTree", json::array()}}));
}

TEST(Increment, AFullLoadHasNoRowsInDelForThoseInAdd) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("s", "1")}}});
    store.Apply("p", {{"edit", {{"PipeType", {Series("s", "2")}}}}});
    EXPECT_EQ(store.Increment("p", 0)["del"], (json{{"ConfigTree", json::array()}}));
}

TEST(Increment, AFullLoadTellsOfRowsThatAreGone) {
    StoreOnly store;
    store.Fill("p", {{"PipeSystemType", {SystemType("t", "T")}}});
    store.Apply("p", {{"remove", {{"PipeSystemType", {"t"}}}}});
    EXPECT_EQ(store.Increment("p", 0)["del"]["PipeSystemType"],
              json::array({With(SystemType("t", "T"), "version", 2)}));
}

/// Groups of the "ConfigTree" rows in "add".
std::vector<std::string> AddedGroups(const json& increment) {
    std::vector<std::string> groups;
    for (const auto& row : increment["add"].value("ConfigTree", json::array()))
        groups.push_back(row["groupName"]);
    return groups;
}

class OtherContentAlone : public testing::TestWithParam<const char*> {};

json RowFor(const std::string& table) {
    if (table == "BinaryTable")
        return Binary("x", "AAEC", 3);
    return table == "CircuitTemplate" ? Circuit("x", 1) : Combination("x", "X");
}

TEST_P(OtherContentAlone, ComesWithAConfigTreeRowOfAGroupThatNoClientKnows) {
    StoreOnly store;
    store.Fill("p", {{"ConfigTree", {Material("m", "M")}}});
    const std::vector<std::string> unknown{std::string(service::kUnknownGroup)};
    store.Apply("p", {{"add", {{GetParam(), {RowFor(GetParam())}}}}});
    EXPECT_EQ(AddedGroups(store.Increment("p", 1)), unknown);
    EXPECT_TRUE(store.Increment("p", 1)["add"]["ConfigTree"][0]["ID"].is_string());
    store.Apply("p", {{"remove", {{GetParam(), {"x"}}}}});
    EXPECT_EQ(AddedGroups(store.Increment("p", 2)), unknown);
}

TEST_P(OtherContentAlone, NeedsNoSuchRowBesideAConfigTreeRow) {
    StoreOnly store;
    store.Fill("p", {{"ConfigTree", {Material("m", "M")}}});
    store.Apply("p", {{"add", {{GetParam(), {RowFor(GetParam())}}}}, {"remove", {{"ConfigTree", {"m"}}}}});
    EXPECT_EQ(AddedGroups(store.Increment("p", 1)), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Increment, OtherContentAlone,
                         testing::Values("CircuitTemplate", "Combination_16353515", "Combination_16302510",
                                         "Combination_16352020", "Combination_16352030", "BinaryTable"));

TEST(Increment, TheUnknownGroupIsNoGroupOfARow) {
    EXPECT_EQ(service::FindConfigGroup(service::kUnknownGroup), nullptr);
    StoreOnly store;
    store.Fill("p", {});
    store.Apply("p", {{"add", {{"PipeType", {Series("s", "S")}}}}});
    EXPECT_EQ(AddedGroups(store.Increment("p", 1)), std::vector<std::string>{}) << "no other content, no such row";
}

TEST(Increment, AWholeNumberRoughnessGoesOutWithAPoint) {
    StoreOnly store;
    store.Projects().Create("p", "p");
    const std::string tables =
        R"({"ConfigTree":[{"ID":"m","text":"M","groupName":"MaterialSeries","parentID":""},
            {"ID":"z","text":"Z","groupName":"MaterialSeries","parentID":"m","content":{"roughness":1}},
            {"ID":"y","text":"Y","groupName":"MaterialSeries","parentID":"m","content":{"roughness":0.25}}]})";
    const auto file =
        service::ReadProjectFile(R"({"format":"tolm-project","formatVersion":1,"tables":)" + tables + "}", "");
    store.Projects().Fill("p", file.rows, false);
    const auto text = store.Projects().Increment("p", 0);
    EXPECT_NE(text.find(R"("roughness":1.0})"), std::string::npos) << text;
    EXPECT_NE(text.find(R"("roughness":0.25})"), std::string::npos) << text;
}

TEST(Increment, KeysThatNobodyKnowsPassThrough) {
    StoreOnly store;
    const auto row = With(Series("s", "S"), "later", json{{"a", {1, 2.5, nullptr}}});
    store.Fill("p", {{"PipeType", {row}}});
    EXPECT_EQ(store.Increment("p", 0)["add"]["PipeType"], json::array({row}));
}

TEST(Increment, AVersionThatTheProjectHasNotReachedIsRefused) {
    StoreOnly store;
    store.Fill("p", {});
    RefusalOf(service::Answer::VersionAhead, [&] { store.Increment("p", 2); });
}

TEST(Increment, AProjectThatWasNeverFilledHasNone) {
    StoreOnly store;
    store.Projects().Create("p", "p");
    RefusalOf(service::Answer::NeverFilled, [&] { store.Increment("p", 0); });
    RefusalOf(service::Answer::UnknownProject, [&] { store.Increment("q", 0); });
}

TEST(Increment, ProjectsDoNotMix) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("s", "P")}}});
    store.Fill("q", {{"PipeType", {Series("s", "Q")}}});
    store.Apply("q", {{"remove", {{"PipeType", {"s"}}}}});
    EXPECT_EQ(store.Increment("p", 0)["add"]["PipeType"], json::array({Series("s", "P")}));
    EXPECT_EQ(store.Increment("p", 1)["del"], (json{{"ConfigTree", json::array()}}));
}

} // namespace
} // namespace tolmtest
