#include "Tools/ToolTesting.h"

#include <fstream>

using namespace tolmtest;
using nlohmann::json;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Misused;
using tolmcli::Refused;

namespace {

/// Templates, methods and combined products by `tolm add` and `tolm edit`, without a service.
class EditExchanged : public LocalTool {
protected:
    json Add(const std::string& what, std::vector<std::string> rest) {
        rest.insert(rest.begin(), what);
        rest.emplace_back("--json");
        const auto run = On("add", rest);
        EXPECT_EQ(run.code, Done) << run.err;
        return run.code == Done ? run.Json() : json();
    }
    json List(const std::string& what) { return On("list", {what, "--json"}).Json(); }
    void ExpectMisused(const std::vector<std::string>& rest, const std::string& words) {
        const auto run = On("add", rest);
        EXPECT_EQ(run.code, Misused) << run.err;
        EXPECT_TRUE(Contains(run.err, words)) << run.err;
    }
};

} // namespace

TEST_F(EditExchanged, AnAddedTemplateHasTheDefaultsAndWhatWasSet) {
    const json added = Add("template", {"--set", "systemTypeId=y1", "--set", "wireSpec=4", "--set", "conduitDN=20",
                                        "--set", R"(switchIds=["a","b","c"])"});
    EXPECT_EQ(added.at("id").get<std::string>().size(), 36U);
    EXPECT_EQ(added.at("systemTypeId"), "y1");
    EXPECT_EQ(added.at("wireSpec"), "4") << "a text stays a text";
    EXPECT_EQ(added.at("conduitDN"), 20);
    EXPECT_EQ(added.at("switchIds"), (json{"a", "b", "c"}));
    EXPECT_EQ(added.at("layingMode"), "SR");
    EXPECT_EQ(List("templates"), json::array({added}));
}

TEST_F(EditExchanged, AnEditedTemplateKeepsItsOtherMembers) {
    const json added = Add("template", {"--set", "id=t1", "--set", "wireCount=3+1", "--set", "phase=4"});
    const auto run = On("edit", {"template", "t1", "--set", "wireSpec=10=x"});
    ASSERT_EQ(run.code, Done) << run.err;
    json expected = added;
    expected["wireSpec"] = "10=x";
    EXPECT_EQ(List("templates"), json::array({expected}));
}

TEST_F(EditExchanged, ATemplateHasNoNameOfItsOwn) {
    ExpectMisused({"template", "--name", "Lighting"}, "no --name");
    ExpectMisused({"template", "--set", "wireType=BV"}, "takes no \"wireType\"");
}

TEST_F(EditExchanged, AnInsulationSeriesIsAddedAndEditedWithItsSizes) {
    const json added = Add("insulation", {"--name", "橡塑", "--set", "code=B1", "--set", "discipline=1", "--set",
                                          "circularSizes=[[50,25]]", "--set", "rectangularSizes=[[400,300,30]]"});
    EXPECT_EQ(added.at("description"), "橡塑");
    EXPECT_EQ(added.at("rectangularSizes"), (json::array({{400, 300, 30}})));
    ASSERT_EQ(On("edit", {"insulation", "橡塑", "--set", "circularSizes=[[50,30],[80,40]]"}).code, Done);
    const json list = List("insulations");
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].at("circularSizes"), (json::array({{50, 30}, {80, 40}})));
    EXPECT_EQ(list[0].at("rectangularSizes"), (json::array({{400, 300, 30}})));
    EXPECT_EQ(list[0].at("code"), "B1");
}

TEST_F(EditExchanged, ASizingMethodIsAddedUnderAnIdInBracesAndEdited) {
    const json added = Add("sizing", {"--name", "Equal friction", "--set", "useStaticRegain=true", "--set",
                                      "steps=[[1,0.5,2.5]]", "--set", "type=0"});
    EXPECT_EQ(added.at("id").get<std::string>().front(), '{');
    EXPECT_EQ(added.at("useStaticRegain"), true);
    ASSERT_EQ(On("edit", {"sizing", "Equal friction", "--name", "Static regain"}).code, Done);
    json expected = added;
    expected["description"] = "Static regain";
    EXPECT_EQ(List("sizings"), json::array({expected}));
}

TEST_F(EditExchanged, ABalancingMethodIsListedAlthoughItHasNoDiscipline) {
    const json added = Add("balancing", {"--name", "Valves", "--set", "device1PressureMin=1500.5", "--set",
                                         "throttling2Max=90", "--set", "warningNearRoot=true"});
    EXPECT_EQ(added.at("discipline"), 0);
    EXPECT_EQ(added.at("device1PressureMin"), 1500.5);
    EXPECT_EQ(added.at("device2PressureMax"), 9999999.0);
    EXPECT_EQ(added.at("throttling2Max"), 90);
    EXPECT_EQ(added.at("warningNearRoot"), true);
    EXPECT_EQ(On("show", {"balancing", "Valves", "--json"}).Json(), added);
    EXPECT_TRUE(Contains(On("list", {"balancings"}).out, "1 balancing methods"));
    ExpectMisused({"balancing", "--name", "x", "--set", "discipline=1"}, "takes no \"discipline\"");
}

TEST_F(EditExchanged, EveryMemberOfABalancingMethodIsKept) {
    const json members{{"name", "n"},
                       {"description", "d"},
                       {"device1PressureMin", 1.0},
                       {"device1PressureMax", 2.0},
                       {"device2PressureMin", 3.0},
                       {"device2PressureMax", 4.0},
                       {"throttling1Min", 5},
                       {"throttling1Max", 6},
                       {"throttling2Min", 7},
                       {"throttling2Max", 8},
                       {"warningNearRoot", true}};
    std::vector<std::string> rest;
    for (const auto& [key, value] : members.items()) {
        rest.emplace_back("--set");
        rest.push_back(key + "=" + (value.is_string() ? value.get<std::string>() : value.dump()));
    }
    const json added = Add("balancing", rest);
    for (const auto& [key, value] : members.items())
        EXPECT_EQ(added.at(key), value) << key;
    EXPECT_EQ(added.size(), members.size() + 2) << "beside them the id and the discipline";
}

TEST_F(EditExchanged, AnEditOfABalancingMethodKeepsADisciplineThatCameFromElsewhere) {
    Add("balancing", {"--name", "Valves", "--set", "id=b1"});
    CQbase store;
    ASSERT_TRUE(OpenStore(store) && store.lockForUpdate() && store.fetchEqualRec("BMD", L"b1"));
    store.setShort(1181, 2);
    ASSERT_TRUE(store.saveRec() && store.closeDatabase());
    ASSERT_EQ(On("edit", {"balancing", "b1", "--name", "Dampers"}).code, Done);
    const json list = List("balancings");
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].at("name"), "Dampers");
    EXPECT_EQ(list[0].at("discipline"), 2);
    ASSERT_EQ(On("delete", {"balancing", "Dampers"}).code, Done);
    EXPECT_TRUE(List("balancings").empty());
}

TEST_F(EditExchanged, BalancingMethodsGoThroughAFile) {
    const json added = Add("balancing", {"--name", "Valves"});
    const std::string file = vorn::StringUtil::ToString(m_folder.File(L"methods.json"));
    ASSERT_EQ(On("export", {"balancings", file}).code, Done);
    ASSERT_EQ(On("delete", {"balancing", "Valves"}).code, Done);
    ASSERT_EQ(On("import", {"balancings", file}).code, Done);
    EXPECT_EQ(List("balancings"), json::array({added}));
}

TEST_F(EditExchanged, AProductNeedsItsCategoryAndIsEditedInItsParts) {
    EXPECT_EQ(On("add", {"product", "--name", "Meter set"}).code, Failed);
    const json added = Add("product", {"--name", "Meter set", "--set", "category=16353515", "--set", "spacing=300",
                                       "--set", R"(components=[{"category":"c","component":"meter"}])"});
    EXPECT_EQ(added.at("id").get<std::string>().size(), 36U);
    EXPECT_EQ(added.at("components")[0].at("component"), "meter");
    ASSERT_EQ(On("edit", {"product", "Meter set", "--set", R"(equipment={"component":"fan"})"}).code, Done);
    const json list = List("products");
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].at("equipment").at("component"), "fan");
    EXPECT_EQ(list[0].at("spacing"), 300);
    EXPECT_EQ(list[0].at("components"), added.at("components"));
}

TEST_F(EditExchanged, WhatCannotBeMeantIsRefusedAndChangesNothing) {
    ExpectMisused({"sizing", "--name", "x", "--roughness", "1"}, "--roughness means nothing");
    ExpectMisused({"sizing", "--name", "x", "--kind", "duct"}, "--kind means nothing");
    ExpectMisused({"sizing", "--name", "x", "--row", "1,2"}, "a row means nothing");
    ExpectMisused({"sizing", "--set", "code"}, "MEMBER=VALUE");
    ExpectMisused({"sizing", "--set", "colour=red"}, "takes no \"colour\" (one of id, code");
    ExpectMisused({"sizing", "--set", "steps=[1"}, "\"steps\" cannot be [1");
    ExpectMisused({"sizing", "--set", "id="}, "must not be empty");
    ExpectMisused({"material", "--kind", "duct", "--name", "x", "--set", "name=y"}, "--set means nothing");
    ExpectMisused({"material", "--name", "x"}, "--kind");
    ExpectMisused({"component"}, "component");
    EXPECT_EQ(On("add", {"sizing", "--set", "steps=7"}).code, Failed);
    EXPECT_EQ(On("add", {"balancing", "--set", "throttling1Min=40000"}).code, Failed);
    EXPECT_TRUE(List("sizings").empty());
    EXPECT_TRUE(List("balancings").empty());
}

TEST_F(EditExchanged, ATakenIdIsRefusedAndAnIdDoesNotChange) {
    Add("sizing", {"--name", "one", "--set", "id=s1"});
    const auto again = On("add", {"sizing", "--name", "two", "--set", "id=s1"});
    EXPECT_EQ(again.code, Refused);
    EXPECT_TRUE(Contains(again.err, "the id s1 is taken")) << again.err;
    EXPECT_EQ(On("edit", {"sizing", "s1", "--set", "id=s2"}).code, Misused);
    EXPECT_EQ(On("edit", {"sizing", "s1"}).code, Misused);
    EXPECT_EQ(On("edit", {"sizing", "s9", "--name", "x"}).code, Failed);
    ASSERT_EQ(List("sizings").size(), 1U);
    EXPECT_EQ(List("sizings")[0].at("description"), "one");
}

TEST_F(EditExchanged, ASeriesThatTheDatasetDoesNotListIsToldAsSuch) {
    const auto run = On("add", {"insulation", "--name", "x", "--set", "discipline=9"});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "does not list")) << run.err;
}

// --- components of the catalogue
// ------------------------------------------------------------------------------------------

namespace {

class CatalogueComponents : public LocalTool {
protected:
    void SetUp() override {
        LocalTool::SetUp();
        const std::string file = vorn::StringUtil::ToString(m_folder.File(L"catalogue.json"));
        std::ofstream(file) << json{
            {"categories",
             {{{"code", "1"}, {"name", "top"}}, {{"code", "12"}, {"parentCode", "1"}, {"name", "below"}}}},
            {"components",
             {{{"id", "b"}, {"categoryCode", "12"}, {"name", "Elbow"}, {"version", 1}},
              {{"id", "b"}, {"categoryCode", "12"}, {"name", "Elbow"}, {"version", 2}, {"publicId", 7000000000}},
              {{"id", "a"},
               {"categoryCode", "1"},
               {"name", "Tee"},
               {"componentTypeId", "t"},
               {"attributes", {{"DN", "20"}}}}}}};
        ASSERT_EQ(On("import-components", {file}).code, Done);
    }
};

} // namespace

TEST_F(CatalogueComponents, AreListedByCategoryTheNewestVersionFirst) {
    const json list = On("list", {"components", "--json"}).Json();
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0].at("id"), "a");
    EXPECT_EQ(list[0].at("attributes"), (json{{"DN", "20"}}));
    EXPECT_EQ(list[0].at("componentType"), "t");
    EXPECT_EQ(list[1].at("version"), 2);
    EXPECT_EQ(list[2].at("version"), 1);
    EXPECT_TRUE(Contains(On("list", {"components"}).out, "3 components"));
}

TEST_F(CatalogueComponents, AreShownInTheirNewestVersion) {
    const json shown = On("show", {"component", "b", "--json"}).Json();
    EXPECT_EQ(shown.at("version"), 2);
    EXPECT_EQ(shown.at("publicId"), 7000000000);
    EXPECT_EQ(shown.at("category"), "12");
    EXPECT_TRUE(Contains(On("show", {"component", "Tee"}).out, "category  1"));
    EXPECT_EQ(On("show", {"component", "none"}).code, Failed);
}

TEST_F(CatalogueComponents, AreNotChangedOneByOne) {
    EXPECT_EQ(On("delete", {"component", "a"}).code, Misused);
    EXPECT_EQ(On("edit", {"component", "a", "--set", "name=x"}).code, Misused);
    EXPECT_EQ(On("export", {"components", vorn::StringUtil::ToString(m_folder.File(L"out.json"))}).code, Misused);
}

TEST_F(CatalogueComponents, OfADamagedDatabaseAreNotTakenForNone) {
    const auto database = On("info", {"--json"}).Json().at("componentFile").get<std::string>();
    std::ofstream(database) << "this was a database once, and now it is some text that fills more than a header";
    const auto run = On("list", {"components"});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "could not be read")) << run.err;
}

// --- with a service
// --------------------------------------------------------------------------------------------------------

namespace {

/// A pulled dataset; what the service has is read from it.
class SharedEdits : public ConnectedTool {
protected:
    void SetUp() override {
        ConnectedTool::SetUp();
        ASSERT_EQ(On("pull").code, Done);
    }
    json Rows(const char* table) { return json::parse(m_service.Tables("tower")).value(table, json::array()); }
};

} // namespace

TEST_F(SharedEdits, OfATemplateReachTheServiceAtOnce) {
    ASSERT_EQ(On("add", {"template", "--set", "id=t1", "--set", "wireSpec=4"}).code, Done);
    ASSERT_EQ(Rows("CircuitTemplate").size(), 1U);
    EXPECT_EQ(Rows("CircuitTemplate")[0].at("WireSpec"), "4");
    const auto run = On("edit", {"template", "t1", "--set", "wireSpec=6"});
    ASSERT_EQ(run.code, Done) << run.err;
    ASSERT_EQ(Rows("CircuitTemplate").size(), 1U);
    EXPECT_EQ(Rows("CircuitTemplate")[0].at("WireSpec"), "6");
    EXPECT_EQ(m_service.Version("tower"), 3);
}

TEST_F(SharedEdits, OfAProductReachTheServiceAtOnce) {
    const std::vector<std::string> members{"--set", "category=16353515", "--set",
                                           R"(components=[{"category":"c","component":"meter"}])"};
    std::vector<std::string> add{"product", "--name", "Meter set"};
    add.insert(add.end(), members.begin(), members.end());
    const auto run = On("add", add);
    ASSERT_EQ(run.code, Done) << run.err;
    ASSERT_EQ(On("edit", {"product", "Meter set", "--set", "spacing=300"}).code, Done);
    ASSERT_EQ(Rows("Combination_16353515").size(), 1U);
    EXPECT_EQ(Rows("Combination_16353515")[0].at("Spacing"), 300);
    EXPECT_EQ(Rows("Combination_16353515")[0].at("Name"), "Meter set");
}

TEST_F(SharedEdits, OfAMethodStayHereAndNeedNoService) {
    m_service.Restart(); // on another port
    ASSERT_EQ(On("add", {"balancing", "--name", "Valves"}).code, Done);
    EXPECT_EQ(m_service.Version("tower"), 1);
    EXPECT_EQ(On("changes").out, "No local changes\n");
}

TEST_F(SharedEdits, ThatTheServiceDoesNotTakeStayHereAndAreTold) {
    const auto run = On("add", {"product", "--name", "x", "--set", "id=p1", "--set", "category=99999999"});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "stored here, but the service did not take it")) << run.err;
    EXPECT_EQ(On("list", {"products", "--json"}).Json().size(), 1U);
}
