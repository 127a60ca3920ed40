#include "Tools/ToolTesting.h"

#include <fstream>

using namespace tolmtest;
using nlohmann::json;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Misused;

namespace {

/// A file of records as `tolm import` takes it.
std::string WriteFile(const TempFolder& folder, const std::string& what, const json& records) {
    const std::string path = vorn::StringUtil::ToString(folder.File(L"in.json"));
    std::ofstream(path) << json{{"format", "tolm-records"}, {"formatVersion", 1}, {"what", what}, {"records", records}};
    return path;
}

json ReadFile(const std::string& path) {
    std::ifstream in(path);
    return json::parse(in);
}

const json kTemplates{{{"id", "t1"},
                       {"systemTypeId", "y1"},
                       {"systemClassification", 43},
                       {"switchIds", {"a", "b", "c"}},
                       {"switchTypes", {"断路器", "", "x"}},
                       {"phase", 4},
                       {"fireProtection", "NH"},
                       {"wireTypeId", "w1"},
                       {"wireSpec", "16"},
                       {"wireCount", "3+1"},
                       {"conduitTypeId", "c1"},
                       {"conduitDN", 25},
                       {"isApply", 1},
                       {"layingMode", "CC"}},
                      {{"id", "t2"}, {"wireSpec", "4"}}};

const json kProducts{{{"id", "p1"},
                      {"name", "水表组"},
                      {"category", "16353515"},
                      {"spacing", 300},
                      {"components", {{{"category", "c"}, {"component", "i"}, {"componentType", "t"}}}}},
                     {{"id", "e1"},
                      {"name", "风机盘管"},
                      {"category", "16352020"},
                      {"equipment", {{"component", "fan"}}},
                      {"supplyAirTerminalNumber", 3},
                      {"supplyHoseLength", 1200.5}}};

class ExchangeCommands : public LocalTool {
protected:
    ToolRun Import(const std::string& what, const json& records) {
        return On("import", {what, WriteFile(m_folder, what, records)});
    }
    json List(const std::string& what) { return On("list", {what, "--json"}).Json(); }
    /// Every member that was given stands so in the record.
    void ExpectHas(const json& record, const json& given) {
        for (const auto& [key, value] : given.items())
            EXPECT_EQ(record.at(key), value) << key;
    }
    void ExpectRefused(const std::string& what, const json& records, const std::string& words) {
        const auto run = Import(what, records);
        EXPECT_EQ(run.code, Failed);
        EXPECT_TRUE(Contains(run.err, words)) << run.err;
        EXPECT_TRUE(List(what).empty());
    }

    std::string m_out = vorn::StringUtil::ToString(m_folder.File(L"out.json"));
};

} // namespace

TEST_F(ExchangeCommands, TemplatesComeInAreShownAndGoOut) {
    const auto run = Import("templates", kTemplates);
    ASSERT_EQ(run.code, Done) << run.err;
    EXPECT_EQ(run.out, "Imported 2 circuit templates\n");
    const json list = List("templates");
    ASSERT_EQ(list.size(), 2U);
    ExpectHas(list[0], kTemplates[0]);
    ExpectHas(list[1], kTemplates[1]);
    EXPECT_EQ(list[1].at("fireProtection"), "ZR") << "what is not given is the default";
    EXPECT_EQ(On("show", {"template", "t1", "--json"}).Json(), list[0]);
    EXPECT_TRUE(Contains(On("show", {"template", "t1"}).out, "wireSpec  16"));
    EXPECT_TRUE(Contains(On("list", {"templates"}).out, "2 circuit templates"));
    EXPECT_EQ(On("export", {"templates", m_out}).out, "Exported 2 circuit templates\n");
    EXPECT_EQ(ReadFile(m_out).at("records"), list);
    EXPECT_EQ(On("changes").out, "No local changes\n");
}

TEST_F(ExchangeCommands, AnExportedFileCanBeImportedAndChangesByItsIds) {
    ASSERT_EQ(Import("templates", kTemplates).code, Done);
    ASSERT_EQ(On("export", {"templates", m_out}).code, Done);
    json file = ReadFile(m_out);
    file.at("records")[1]["wireSpec"] = "10";
    std::ofstream(m_out) << file;
    EXPECT_EQ(On("import", {"templates", m_out}).code, Done);
    const json list = List("templates");
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[1].at("wireSpec"), "10");
}

TEST_F(ExchangeCommands, InsulationKeepsItsTwoKindsOfSizesThroughAFile) {
    const json series{{{"id", "i1"},
                       {"code", "B1"},
                       {"description", "橡塑"},
                       {"discipline", 1},
                       {"type", 0},
                       {"circularSizes", {{50, 25}, {100, 30}}},
                       {"rectangularSizes", {{400, 300, 30}}}}};
    for (int round = 0; round < 2; ++round) {
        const auto run = Import("insulations", round == 0 ? series : List("insulations"));
        ASSERT_EQ(run.code, Done) << run.err;
        ASSERT_EQ(List("insulations").size(), 1U);
        ExpectHas(List("insulations")[0], series[0]);
    }
    EXPECT_EQ(On("delete", {"insulation", "橡塑"}).out, "Deleted 橡塑\n");
    EXPECT_TRUE(List("insulations").empty());
}

TEST_F(ExchangeCommands, SizingMethodsComeInAndAreDeleted) {
    const json methods{{{"id", "s1"},
                        {"code", "S"},
                        {"description", "等摩阻"},
                        {"type", 0},
                        {"keepConnectTerminalSize", true},
                        {"useStaticRegain", true},
                        {"minWidthPerHeight", 0.25},
                        {"steps", {{1, 0.5, 2.5}, {2, 8.0, 0.0}}}}};
    ASSERT_EQ(Import("sizings", methods).code, Done);
    ASSERT_EQ(List("sizings").size(), 1U);
    ExpectHas(List("sizings")[0], methods[0]);
    EXPECT_EQ(On("delete", {"sizing", "s1"}).code, Done);
    EXPECT_TRUE(List("sizings").empty());
}

TEST_F(ExchangeCommands, ProductsComeInAndAreDeleted) {
    ASSERT_EQ(Import("products", kProducts).code, Done);
    json list = List("products");
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].at("equipment").at("component"), "fan");
    EXPECT_EQ(list[0].at("supplyHoseLength"), 1200.5);
    EXPECT_EQ(list[1].at("spacing"), 300);
    EXPECT_EQ(list[1].at("components")[0].at("component"), "i");
    EXPECT_EQ(On("delete", {"product", "水表组"}).code, Done);
    EXPECT_EQ(List("products").size(), 1U);
}

TEST_F(ExchangeCommands, AFileThatIsNoneOfTheKindChangesNothing) {
    ExpectRefused("templates", json{{{"id", "t"}, {"wire", "x"}}}, "\"wire\"");
    ExpectRefused("templates", json{{{"id", "t"}, {"wireSpec", 4}}}, "\"wireSpec\" cannot be 4");
    ExpectRefused("templates", json{{{"id", "t"}, {"phase", 1.5}}}, "1.5");
    ExpectRefused("templates", json{{{"id", "t"}, {"switchIds", {"1", "2", "3", "4"}}}}, "three switches");
    ExpectRefused("templates", json{"t"}, "object");
    ExpectRefused("insulations", json{{{"id", "i"}, {"circularSizes", {{1}}}}}, "circularSizes");
    ExpectRefused("insulations", json{{{"id", "i"}, {"circularSizes", {{1, 40000}}}}}, "40000");
    ExpectRefused("sizings", json{{{"id", "ok"}}, {{"id", "s"}, {"steps", {{1, "x", 2}}}}}, "steps");
    ExpectRefused("products", json{{{"id", "p"}}}, "category");
    const std::string other = WriteFile(m_folder, "products", json::array());
    EXPECT_EQ(On("import", {"templates", other}).code, Failed);
    std::ofstream(m_out) << "{";
    EXPECT_EQ(On("import", {"templates", m_out}).code, Failed);
    EXPECT_EQ(On("import", {"templates", m_out + ".none"}).code, Failed);
    EXPECT_EQ(On("import", {"materials", m_out}).code, Misused);
}

TEST_F(ExchangeCommands, WhatIsNotThereIsSaid) {
    EXPECT_EQ(On("show", {"template", "t9"}).code, Failed);
    EXPECT_EQ(On("delete", {"product", "p9"}).code, Failed);
    EXPECT_EQ(On("export", {"templates", "/no/such/folder/file.json"}).code, Failed);
    EXPECT_EQ(On("export", {"templates", m_out}).out, "Exported 0 circuit templates\n");
}

namespace {

/// A dataset that was pulled, and the records of another one after its pull.
class SharedExchange : public ConnectedTool {
protected:
    void SetUp() override {
        ConnectedTool::SetUp();
        ASSERT_EQ(On("pull").code, Done);
    }
    json OfAColleague(const std::string& what) {
        const std::string path = vorn::StringUtil::ToString(m_folder.File(L"colleague.db"));
        EXPECT_EQ(Tolm({"new", path, "--server", vorn::StringUtil::ToString(m_service.Address()), "--project", "tower",
                        "--user", "anna", "--combined-products",
                        vorn::StringUtil::ToString(m_folder.File(L"colleague-combined.db"))})
                      .code,
                  Done);
        const auto run = Tolm({"pull", path});
        EXPECT_EQ(run.code, Done) << run.err;
        return Tolm({"list", path, what, "--json"}).Json();
    }
};

} // namespace

TEST_F(SharedExchange, TemplatesAndProductsReachAColleague) {
    ASSERT_EQ(On("import", {"templates", WriteFile(m_folder, "templates", kTemplates)}).code, Done);
    ASSERT_EQ(On("import", {"products", WriteFile(m_folder, "products", kProducts)}).code, Done);
    EXPECT_EQ(m_service.Version("tower"), 4) << "one version for each call";
    EXPECT_EQ(OfAColleague("templates").size(), 2U);
}

TEST_F(SharedExchange, ADeletedTemplateIsGoneWithAColleague) {
    ASSERT_EQ(On("import", {"templates", WriteFile(m_folder, "templates", kTemplates)}).code, Done);
    const auto run = On("delete", {"template", "t1"});
    ASSERT_EQ(run.code, Done) << run.err;
    const json list = OfAColleague("templates");
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].at("id"), "t2");
}

TEST_F(SharedExchange, AProductThatTheServiceRefusesStaysHereAndIsTold) {
    const json product{{{"id", "p1"}, {"name", "x"}, {"category", "99999999"}}};
    const auto run = On("import", {"products", WriteFile(m_folder, "products", product)});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "stored here, but the service did not take it")) << run.err;
    EXPECT_EQ(On("list", {"products", "--json"}).Json().size(), 1U);
}

TEST_F(SharedExchange, WithoutItsServiceNothingIsChanged) {
    m_service.Restart(); // on another port
    const auto run = On("import", {"templates", WriteFile(m_folder, "templates", kTemplates)});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(On("list", {"templates", "--json"}).Json().empty());
}
