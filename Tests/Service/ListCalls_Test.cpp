#include "UploadTesting.h"

namespace tolmtest {
namespace {

class ListCalls : public UploadWire {
protected:
    int Create(const std::string& table, const std::vector<json>& rows) {
        return Done("/api/CreateList/p/" + table, Rows(rows));
    }
    int Edit(const std::string& table, const std::vector<json>& rows) {
        return Done("/api/EditList/p/" + table, Rows(rows));
    }
    int Remove(const std::string& table, const std::vector<json>& ids) {
        return Done("/api/RemoveList/p/" + table, {{"ids", ids}});
    }
};

TEST_F(ListCalls, EachIsOneVersion) {
    Fill();
    EXPECT_EQ(Create("PipeType", {Series("s", "S"), Series("t", "T")}), 2);
    EXPECT_EQ(Edit("PipeType", {Wrapped(Series("s", "U")), Wrapped(Series("t", "S"))}), 3);
    EXPECT_EQ(Tables(), (json{{"PipeType", {Series("s", "U"), Series("t", "S")}}}));
    EXPECT_EQ(Remove("PipeType", {"s", "t"}), 4);
    EXPECT_EQ(Tables(), json::object());
}

/// A row that the table takes, with its name for an id and a mark somewhere.
json RowOf(const std::string& table, const std::string& mark) {
    switch (service::kSettingTables[service::FindSettingTable(table).value()].form) {
    case service::RowForm::ConfigNode:
        return Material(table, mark);
    case service::RowForm::Series:
        return Series(table, mark);
    case service::RowForm::SystemType:
        return SystemType(table, mark);
    case service::RowForm::CircuitTemplate:
        return With(Circuit(table, 1), "WireSpec", mark);
    case service::RowForm::Combination:
        return Combination(table, mark);
    case service::RowForm::Binary:
        return With(Binary(table, "AAEC", 3), "mark", mark);
    }
    return {};
}

TEST_F(ListCalls, ServeAllTables) {
    Fill();
    int version = 1;
    for (const auto& known : service::kSettingTables) {
        const std::string table(known.name);
        SCOPED_TRACE(table);
        EXPECT_EQ(Create(table, {RowOf(table, "a")}), version + 1);
        EXPECT_EQ(Tables(), (json{{table, {RowOf(table, "a")}}}));
        EXPECT_EQ(Edit(table, {json{{"id", table}, {"data", RowOf(table, "b")}}}), version + 2);
        EXPECT_EQ(Tables(), (json{{table, {RowOf(table, "b")}}}));
        EXPECT_EQ(Remove(table, {table}), version + 3);
        EXPECT_EQ(Tables(), json::object());
        version += 3;
    }
}

TEST_F(ListCalls, OfNoRowsMakeNoVersion) {
    Fill();
    EXPECT_EQ(Create("PipeType", json::array()), 1);
    EXPECT_EQ(Edit("PipeType", json::array()), 1);
    EXPECT_EQ(Remove("PipeType", json::array()), 1);
}

TEST_F(ListCalls, OnceMoreHaveNoEffect) {
    Fill();
    EXPECT_EQ(Create("PipeType", {Series("s", "S")}), 2);
    EXPECT_EQ(Create("PipeType", {Series("s", "S")}), 2);
    EXPECT_EQ(Remove("PipeType", {"s", "s"}), 3);
    EXPECT_EQ(Remove("PipeType", {"s"}), 3);
}

TEST_F(ListCalls, CreateReplacesWhatStandsAndEditCreatesWhatDoesNot) {
    Fill({{"PipeType", {Series("s", "S")}}});
    EXPECT_EQ(Create("PipeType", {Series("s", "A")}), 2);
    EXPECT_EQ(Edit("PipeType", {Wrapped(Series("t", "B"))}), 3);
    EXPECT_EQ(Tables(), (json{{"PipeType", {Series("s", "A"), Series("t", "B")}}}));
}

TEST_F(ListCalls, CheckNames) {
    Fill({{"PipeType", {Series("s", "S")}}});
    EXPECT_EQ(Code("/api/CreateList/p/PipeType", Rows({Series("t", "S")})), "10003");
    EXPECT_EQ(Code("/api/EditList/p/PipeType", Rows({Wrapped(Series("t", "S"))})), "10003");
    EXPECT_EQ(Version(), 1);
}

TEST_F(ListCalls, EditedRowsHaveToBeWrapped) {
    Fill({{"PipeType", {Series("s", "S")}}});
    const auto row = Series("s", "T");
    for (const auto& wrapped :
         {row, json(nullptr), json(1), json::array(), json{{"id", "s"}}, json{{"data", row}},
          json{{"id", 1}, {"data", row}}, json{{"id", "s"}, {"data", nullptr}}, json{{"id", "s"}, {"data", {row}}},
          json{{"id", "t"}, {"data", row}}, json{{"id", "s"}, {"data", {{"name", "T"}}}}})
        EXPECT_EQ(Code("/api/EditList/p/PipeType", Rows(json::array({wrapped}))), "40002") << wrapped;
    EXPECT_EQ(Version(), 1);
}

TEST_F(ListCalls, CreatedRowsHaveToBeBare) {
    Fill();
    EXPECT_EQ(Code("/api/CreateList/p/PipeType", Rows({Wrapped(Series("s", "S"))})), "40002");
}

TEST_F(ListCalls, RefuseNullRows) {
    Fill();
    for (const auto* path : {"/api/CreateList/p/CircuitTemplate", "/api/EditList/p/CircuitTemplate",
                             "/api/CreateCombinations/p/16353515", "/api/EditCombinations/p/16352020"})
        EXPECT_EQ(Code(path, Rows({nullptr, nullptr})), "40002") << path;
    EXPECT_EQ(Version(), 1);
}

TEST_F(ListCalls, RefuseBodiesOfTheWrongForm) {
    Fill({{"PipeType", {Series("s", "S")}}});
    for (const auto* call : {"/api/CreateList/p/PipeType", "/api/EditList/p/PipeType"}) {
        for (const auto& body : {json::object(), json{{"ids", {"s"}}}, json{{"rows", nullptr}}, json{{"rows", "s"}},
                                 json{{"rows", json::object()}}, With(Rows(json::array()), "tolm_version", 1),
                                 With(Rows(json::array()), "other", 1), json::array()})
            EXPECT_EQ(Code(call, body), "40000") << call << " " << body;
        EXPECT_EQ(Call(call, "{", Token())["code"], "40001");
    }
    for (const auto& body :
         {json::object(), Rows(json::array()), json{{"ids", "s"}}, json{{"ids", nullptr}}, json::array()})
        EXPECT_EQ(Code("/api/RemoveList/p/PipeType", body), "40000") << body;
    for (const auto& id : {json(1), json(nullptr), json(""), json::array()})
        EXPECT_EQ(Code("/api/RemoveList/p/PipeType", {{"ids", {id}}}), "40002") << id;
    EXPECT_EQ(Version(), 1);
}

TEST_F(ListCalls, RefuseUnknownTablesAndProjects) {
    Fill();
    const auto rows = Rows({Series("s", "S")});
    EXPECT_EQ(Code("/api/CreateList/p/NoSuchTable", rows), "40002");
    EXPECT_EQ(Code("/api/RemoveList/p/pipetype", {{"ids", {"s"}}}), "40002");
    EXPECT_EQ(Code("/api/CreateList/q/PipeType", rows), "40401");
    EXPECT_EQ(Code("/api/CreateList/p", rows), "40400");
    Service().CreateProject("empty");
    EXPECT_EQ(Code("/api/CreateList/empty/PipeType", rows), "40902");
}

class CombinationCalls : public UploadWire, public testing::WithParamInterface<const char*> {
protected:
    std::string Path(const std::string& call) const { return "/api/" + call + "Combinations/p/" + GetParam(); }
    std::string Table() const { return std::string("Combination_") + GetParam(); }
};

TEST_P(CombinationCalls, EachIsOneVersionOfItsCategorysTable) {
    Fill();
    EXPECT_EQ(Done(Path("Create"), Rows({Combination("c", "C")})), 2);
    EXPECT_EQ(Tables(), (json{{Table(), {Combination("c", "C")}}}));
    EXPECT_EQ(Done(Path("Edit"), Rows({Wrapped(Combination("c", "D"))})), 3);
    EXPECT_EQ(Tables(), (json{{Table(), {Combination("c", "D")}}}));
    EXPECT_EQ(Done(Path("Remove"), {{"ids", {"c"}}}), 4);
    EXPECT_EQ(Tables(), json::object());
}

TEST_P(CombinationCalls, LetNamesBeFree) {
    Fill();
    EXPECT_EQ(Done(Path("Create"), Rows({Combination("c", "C"), Combination("d", "C")})), 2);
}

INSTANTIATE_TEST_SUITE_P(Codes, CombinationCalls, testing::Values("16353515", "16302510", "16352020", "16352030"));

TEST_F(ListCalls, CombinationsOfAnUnknownCategoryAreRefused) {
    Fill();
    for (const auto* code : {"1", "16353516", "PipeType", "Combination_16353515"})
        EXPECT_EQ(Code(std::string("/api/CreateCombinations/p/") + code, Rows({Combination("c", "C")})), "40002")
            << code;
}

TEST_F(ListCalls, ARowWithTerminalsIsKeptAsItCame) {
    Fill();
    const json part{{"CategoryStandardCode", "c"}, {"ComponentId", "1"}, {"ComponentTypeId", "2"}};
    const json created{{"ID", "c"},           {"Name", "C"},         {"EquipmentId", "C"},
                       {"AirTerminal1", "C"}, {"AirTerminal2", "C"}, {"List", {part}}};
    const json edited{{"ID", "c"},
                      {"Name", "C"},
                      {"EquipmentComponentId", "e"},
                      {"SupplyAirTerminalComponentId", "s"},
                      {"SupplyAirTerminalComponentTypeId", "s"},
                      {"SupplyAirTerminalDist1", 1.5},
                      {"SupplyAirTerminalNumber", 2},
                      {"ReturnHoseLength", 0}};
    Done("/api/CreateCombinations/p/16352020", Rows({created}));
    EXPECT_EQ(Increment(1)["add"]["Combination_16352020"], json::array({created}));
    Done("/api/EditCombinations/p/16352020", Rows({Wrapped(edited)}));
    EXPECT_EQ(Increment(2)["add"]["Combination_16352020"], json::array({edited})) << "nothing of the old form stays";
}

// What the caller was told.

class CallsOfOnesOwn : public ListCalls {
protected:
    CallsOfOnesOwn() { Fill({{"PipeType", {Series("s", "S")}}}); }
    static json Stale(const std::string& name) { return Creation(0, Series("own " + name, name)); }
};

TEST_F(CallsOfOnesOwn, MoveTheVersionToldAlong) {
    EXPECT_EQ(GetVersion(), 1);
    EXPECT_EQ(Create("CircuitTemplate", {Circuit("c", 1)}), 2);
    EXPECT_EQ(Done("/api/CreateCombinations/p/16353515", Rows({Combination("d", "D")})), 3);
    EXPECT_EQ(Done("/api/RemoveCombinations/p/16353515", {{"ids", {"d"}}}), 4);
    EXPECT_EQ(UploadCode(Stale("A")), "10000");
}

TEST_F(CallsOfOnesOwn, DoNotHideWhatSomebodyElseBrought) {
    EXPECT_EQ(GetVersion(), 1);
    SomebodyElseMakesAVersion();
    EXPECT_EQ(Create("CircuitTemplate", {Circuit("c", 1)}), 3);
    EXPECT_EQ(UploadCode(Stale("A")), "200100");
    EXPECT_EQ(GetVersion(), 3);
    EXPECT_EQ(UploadCode(Stale("A")), "10000");
}

TEST_F(CallsOfOnesOwn, TellNothingToWhoWasNeverTold) {
    EXPECT_EQ(Create("CircuitTemplate", {Circuit("c", 1)}), 2);
    EXPECT_EQ(UploadCode(Stale("A")), "200100");
}

TEST_F(CallsOfOnesOwn, AreSomebodyElsesToAnotherToken) {
    const auto other = Service().SignIn();
    EXPECT_EQ(GetVersion(other), 1);
    EXPECT_EQ(GetVersion(), 1);
    EXPECT_EQ(Create("CircuitTemplate", {Circuit("c", 1)}), 2);
    EXPECT_EQ(UploadCode(Stale("A"), other), "200100");
}

TEST_F(CallsOfOnesOwn, BetweenAnUploadAndTheQueryLeaveTheAnswerAsItWas) {
    EXPECT_EQ(Upload(Creation(1, Series("own", "Own"))), 2);
    EXPECT_EQ(Create("CircuitTemplate", {Circuit("c", 1)}), 3);
    EXPECT_EQ(GetVersion(), 2);
}

TEST_F(CallsOfOnesOwn, AreTakenWhateverTheCallerWasTold) {
    EXPECT_EQ(GetVersion(), 1);
    SomebodyElseMakesAVersion();
    EXPECT_EQ(Create("PipeType", {Series("t", "T")}), 3);
}

TEST_F(ListCalls, ATemplateCallDoesNotMoveTheVersionTold) {
    Service().FillTables("default", R"({"PipeType":[{"ID":"s","name":"S"}]})");
    Service().SetTemplate("t", "default");
    Service().CreateProject("p");
    EXPECT_EQ(GetVersion(), -1);
    EXPECT_EQ(Done("/api/useTemplateForDesktop/t/p", json::object()), 1);
    EXPECT_EQ(UploadCode(Creation(0, Series("own", "Own"))), "200100") << "its sender has not seen the content";
    EXPECT_EQ(GetVersion(), 1);
}

} // namespace
} // namespace tolmtest
