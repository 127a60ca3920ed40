#include "ServiceTesting.h"

namespace tolmtest {
namespace {

using service::Answer;

TEST(ProjectStore, AProjectThatWasNeverFilledHasVersionMinusOne) {
    StoreOnly store;
    store.Projects().Create("p", "House");
    EXPECT_EQ(store.Projects().Version("p"), -1);
    EXPECT_EQ(store.Projects().Info("p").name, "House");
}

TEST(ProjectStore, AnUnknownProjectIsRefusedByEachCall) {
    StoreOnly store;
    const std::vector<std::function<void()>> calls{
        [&] { store.Projects().Version("q"); },
        [&] { store.Projects().Info("q"); },
        [&] { store.Projects().RowCounts("q"); },
        [&] { store.Projects().Fill("q", {}, false); },
        [&] { store.Projects().Apply("q", {}); },
        [&] { store.Projects().Increment("q", 0); },
        [&] { store.Projects().StandingRows("q"); },
        [&] { store.Projects().SetTemplate("t", "q"); },
        [&] { store.Projects().FillFromTemplate("q", "t"); },
        [&] {
            store.Projects().PutWorkunitData("q", {{"w", "d", 1}});
        },
    };
    for (const auto& call : calls)
        RefusalOf(Answer::UnknownProject, call);
    EXPECT_TRUE(store.Projects().WorkunitData("w").empty());
}

TEST(ProjectStore, AProjectIsMadeOnce) {
    StoreOnly store;
    store.Projects().Create("p", "P");
    RefusalOf(Answer::BadRequest, [&] { store.Projects().Create("p", "again"); });
    EXPECT_EQ(store.Projects().Info("p").name, "P");
}

TEST(ProjectStore, TheFirstFillIsVersionOneEvenWithoutRows) {
    StoreOnly store;
    EXPECT_EQ(store.Fill("p", {}), 1);
    EXPECT_EQ(store.Projects().Version("p"), 1);
}

TEST(ProjectStore, ASecondFillIsRefusedAndChangesNothing) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("s", "S")}}});
    RefusalOf(Answer::AlreadyFilled, [&] { store.Projects().Fill("p", {}, false); });
    EXPECT_EQ(store.Projects().Version("p"), 1);
    EXPECT_EQ(store.Tables("p"), (json{{"PipeType", {Series("s", "S")}}}));
}

TEST(ProjectStore, ARefillMakesOneVersionOfTheDifference) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A"), Series("b", "B"), Series("c", "C")}}});
    EXPECT_EQ(store.Refill("p", {{"PipeType", {Series("a", "A"), Series("b", "BB"), Series("d", "D")}}}), 2);
    const auto increment = store.Increment("p", 1);
    EXPECT_EQ(increment["add"]["PipeType"], json::array({Series("b", "BB"), Series("d", "D")}));
    EXPECT_EQ(increment["del"]["PipeType"],
              json::array({Series("b", "B"), With(Series("c", "C"), "version", 2), json{{"ID", "d"}}}));
}

TEST(ProjectStore, ARefillWithTheSameRowsMakesNoVersion) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A")}}});
    EXPECT_EQ(store.Refill("p", {{"PipeType", {Series("a", "A")}}}), 1);
}

TEST(ProjectStore, AChangeIsOneVersion) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A"), Series("b", "B")}}});
    EXPECT_EQ(store.Apply("p", {{"add", {{"DuctType", {Series("c", "C")}}}},
                                {"edit", {{"PipeType", {Series("a", "AA")}}}},
                                {"remove", {{"PipeType", {"b"}}}}}),
              2);
    EXPECT_EQ(store.Tables("p"), (json{{"PipeType", {Series("a", "AA")}}, {"DuctType", {Series("c", "C")}}}));
}

TEST(ProjectStore, AChangeNeedsAFilledProject) {
    StoreOnly store;
    store.Projects().Create("p", "P");
    RefusalOf(Answer::NeverFilled, [&] { store.Apply("p", {{"add", {{"PipeType", {Series("s", "S")}}}}}); });
    EXPECT_EQ(store.Projects().Version("p"), -1);
}

TEST(ProjectStore, AChangeThatAltersNothingMakesNoVersion) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A")}}});
    EXPECT_EQ(store.Apply("p", {{"edit", {{"PipeType", {Series("a", "A")}}}}, {"remove", {{"PipeType", {"gone"}}}}}),
              1);
}

TEST(ProjectStore, AppliedTwiceAChangeIsAppliedOnce) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A"), Series("b", "B")}}});
    const json change{{"add", {{"DuctType", {Series("c", "C")}}}},
                      {"edit", {{"PipeType", {Series("a", "AA")}}}},
                      {"remove", {{"PipeType", {"b"}}}}};
    store.Apply("p", change);
    const auto tables = store.Tables("p");
    EXPECT_EQ(store.Apply("p", change), 2);
    EXPECT_EQ(store.Tables("p"), tables);
}

TEST(ProjectStore, AnAdditionOfAStandingIdReplacesAndAnEditOfAMissingOneCreates) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A")}}});
    store.Apply("p", {{"add", {{"PipeType", {Series("a", "AA")}}}}, {"edit", {{"PipeType", {Series("n", "N")}}}}});
    EXPECT_EQ(store.Tables("p")["PipeType"], json::array({Series("a", "AA"), Series("n", "N")}));
}

TEST(ProjectStore, AnEditedRowKeepsItsPlace) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A"), Series("b", "B"), Series("c", "C")}}});
    store.Apply("p", {{"edit", {{"PipeType", {Series("a", "AA")}}}}});
    EXPECT_EQ(store.Tables("p")["PipeType"], json::array({Series("a", "AA"), Series("b", "B"), Series("c", "C")}));
}

TEST(ProjectStore, ARemovalInAnotherTableIsNothing) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A")}}});
    EXPECT_EQ(store.Apply("p", {{"remove", {{"DuctType", {"a"}}}}}), 1);
}

TEST(ProjectStore, AnIdKeepsItsTable) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A")}}});
    const auto words = RefusalOf(Answer::BadRow, [&] {
        store.Apply("p", {{"add", {{"DuctType", {Series("a", "A")}}}}});
    });
    EXPECT_EQ(words, "DuctType, row \"a\": the id belongs to PipeType");
    store.Apply("p", {{"remove", {{"PipeType", {"a"}}}}});
    RefusalOf(Answer::BadRow, [&] { store.Apply("p", {{"add", {{"DuctType", {Series("a", "A")}}}}}); });
    EXPECT_EQ(store.Projects().Version("p"), 2);
}

TEST(ProjectStore, AnIdKeepsItsGroup) {
    StoreOnly store;
    store.Fill("p", {{"ConfigTree", {Node("cableTray", "a", "A")}}});
    const auto words = RefusalOf(Answer::BadRow, [&] {
        store.Apply("p", {{"edit", {{"ConfigTree", {Node("electricLinePipe", "a", "A")}}}}});
    });
    EXPECT_EQ(words, "ConfigTree, row \"a\": the id belongs to the group \"cableTray\"");
}

TEST(ProjectStore, ManyIdsInOneChangeAreAllFound) {
    StoreOnly store;
    json rows = json::array();
    json edits = json::array();
    json removals = json::array();
    for (int i = 0; i < 1500; ++i) {
        const auto id = std::to_string(i);
        rows.push_back(Series(id, "name " + id));
        if (i % 2 == 0)
            edits.push_back(Series(id, "edited " + id));
        else
            removals.push_back(id);
    }
    store.Fill("p", {{"PipeType", rows}});
    EXPECT_EQ(store.Apply("p", {{"edit", {{"PipeType", edits}}}, {"remove", {{"PipeType", removals}}}}), 2);
    EXPECT_EQ(store.Tables("p")["PipeType"], edits);
}

TEST(ProjectStore, ARefusedChangeLeavesEverythingAsItWas) {
    StoreOnly store;
    store.Fill("p", {{"PipeType", {Series("a", "A"), Series("b", "B")}}});
    const auto before = store.Tables("p");
    RefusalOf(Answer::NameClash, [&] {
        store.Apply("p", {{"add", {{"PipeType", {Series("c", "A")}}}},
                          {"remove", {{"PipeType", {"b"}}}},
                          {"workunits", {{"w", {{{"dataId", "d"}, {"dataStatus", 1}}}}}}});
    });
    EXPECT_EQ(store.Tables("p"), before);
    EXPECT_EQ(store.Projects().Version("p"), 1);
    EXPECT_TRUE(store.Projects().WorkunitData("w").empty());
    EXPECT_EQ(store.Increment("p", 1)["add"], json::object());
}

TEST(ProjectStore, CountsTheRowsOfEachTable) {
    StoreOnly store;
    store.Fill("p", {{"ConfigTree", {Material("m", "M"), Material("n", "N")}}, {"BinaryTable", {Binary("f", "", 0)}}});
    store.Apply("p", {{"remove", {{"ConfigTree", {"n"}}}}});
    const auto counts = store.Projects().RowCounts("p");
    EXPECT_EQ(counts[service::kConfigTree], 1);
    EXPECT_EQ(counts.back(), 1);
    EXPECT_EQ(counts[1], 0);
}

TEST(ProjectStore, EntriesOfAWorkunitAloneMakeNoVersion) {
    StoreOnly store;
    store.Fill("p", {});
    const json change{
        {"workunits", {{"w", {{{"dataId", "b"}, {"dataStatus", 1}}, {{"dataId", "a"}, {"dataStatus", 0}}}}}}};
    EXPECT_EQ(store.Apply("p", change), 1);
    const auto entries = store.Projects().WorkunitData("w");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].dataId, "a");
    EXPECT_EQ(entries[0].dataStatus, 0);
    EXPECT_EQ(entries[1].dataId, "b");
    EXPECT_EQ(entries[1].dataStatus, 1);
}

TEST(ProjectStore, AnEntryOfAWorkunitTakesTheLatestStatus) {
    StoreOnly store;
    store.Fill("p", {});
    store.Projects().PutWorkunitData("p", {{"w", "d", 1}});
    store.Projects().PutWorkunitData("p", {{"w", "d", 0}, {"v", "d", 1}});
    ASSERT_EQ(store.Projects().WorkunitData("w").size(), 1U);
    EXPECT_EQ(store.Projects().WorkunitData("w")[0].dataStatus, 0);
    EXPECT_EQ(store.Projects().WorkunitData("v")[0].dataStatus, 1);
}

TEST(ProjectStore, ATemplateFillsAProjectThatWasNeverFilled) {
    StoreOnly store;
    const json tables{{"ConfigTree", {Material("m", "M")}}, {"CircuitTemplate", {Circuit("c", 3)}}};
    store.Fill("default", tables);
    store.Apply("default", {{"add", {{"PipeType", {Series("s", "S")}}}}});
    store.Projects().SetTemplate("159", "default");
    store.Projects().Create("p", "P");
    EXPECT_EQ(store.Projects().TemplateOf("p"), "");
    EXPECT_EQ(store.Projects().FillFromTemplate("p", "159"), 1);
    EXPECT_EQ(store.Tables("p"), store.Tables("default"));
    EXPECT_EQ(store.Projects().TemplateOf("p"), "159");
    EXPECT_EQ(store.Projects().Info("p").templateId, "159");
    store.Apply("p", {{"edit", {{"PipeType", {Series("s", "other")}}}}});
    EXPECT_EQ(store.Tables("default")["PipeType"], json::array({Series("s", "S")}));
}

TEST(ProjectStore, ATemplateFillsNoFilledProjectAndAnUnknownOneNothing) {
    StoreOnly store;
    store.Fill("default", {{"PipeType", {Series("s", "S")}}});
    store.Projects().SetTemplate("159", "default");
    store.Fill("p", {});
    RefusalOf(Answer::AlreadyFilled, [&] { store.Projects().FillFromTemplate("p", "159"); });
    store.Projects().Create("q", "Q");
    RefusalOf(Answer::UnknownTemplate, [&] { store.Projects().FillFromTemplate("q", "160"); });
    EXPECT_EQ(store.Projects().Version("q"), -1);
    EXPECT_EQ(store.Tables("p"), json::object());
}

TEST(ProjectStore, ATemplateCanBeSetAnew) {
    StoreOnly store;
    store.Fill("one", {{"PipeType", {Series("s", "1")}}});
    store.Fill("two", {{"PipeType", {Series("s", "2")}}});
    store.Projects().SetTemplate("159", "one");
    store.Projects().SetTemplate("159", "two");
    store.Projects().Create("p", "P");
    store.Projects().FillFromTemplate("p", "159");
    EXPECT_EQ(store.Tables("p"), store.Tables("two"));
}

TEST(ProjectStore, ADatabaseIsFoundAgainAsItWasLeft) {
    const TempFolder folder;
    const auto path = Narrow(folder.File(L"a b=c.db"));
    {
        service::Database database(path, 1);
        service::ProjectStore(database).Create("p", "P");
    }
    service::Database database(path, 2);
    EXPECT_EQ(service::ProjectStore(database).List().size(), 1U);
}

TEST(Database, APathThatCannotBeOpenedIsAFailure) {
    EXPECT_THROW(service::Database("/nowhere/at/all/service.db", 1), std::exception);
    EXPECT_THROW(service::Database("", 1), std::exception);
}

} // namespace
} // namespace tolmtest
