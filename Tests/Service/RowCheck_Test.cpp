#include "ServiceTesting.h"

#include "Service/SettingRow.h"

#include <set>

namespace tolmtest {
namespace {

using service::Answer;

std::string RefusedRow(const std::string& table, const json& row) {
    const auto index = service::FindSettingTable(table).value();
    return RefusalOf(Answer::BadRow, [&] { service::MakeSettingRow(index, row); });
}

service::SettingRow Made(const std::string& table, const json& row) {
    return service::MakeSettingRow(service::FindSettingTable(table).value(), row);
}

json Content(const std::string& group, const json& content) {
    return With(Node(group, "r", "R"), "content", content);
}

struct BadRow {
    const char* table;
    json row;
    const char* words;
};

void PrintTo(const BadRow& bad, std::ostream* out) {
    *out << bad.words;
}

class RefusedRows : public testing::TestWithParam<BadRow> {};

TEST_P(RefusedRows, AreNamedWithTableAndRow) {
    const auto& [table, row, words] = GetParam();
    EXPECT_EQ(RefusedRow(table, row), words) << row;
}

json ManyEntries(const json& entry, std::size_t count) {
    json list = json::array();
    for (std::size_t i = 0; i < count; ++i)
        list.push_back(entry);
    return list;
}

const json kFitting{{"categoryCode", "c"}, {"id", "i"}, {"FittingPartType", 1}};

const std::vector<BadRow> kWrongHeads{
    {"PipeType", json("text"), "PipeType, row \"\": a row is no object"},
    {"PipeType", json::array(), "PipeType, row \"\": a row is no object"},
    {"PipeType", {{"name", "N"}}, "PipeType, row \"\": \"ID\" is missing or no text"},
    {"PipeType", {{"ID", 7}, {"name", "N"}}, "PipeType, row \"\": \"ID\" is missing or no text"},
    {"PipeType", Series("", "N"), "PipeType, row \"\": the id is empty"},
    {"PipeType", Series("a\nb", "N"), "PipeType, row \"a\nb\": the id is too long or holds control characters"},
    {"PipeType", {{"ID", "r"}}, "PipeType, row \"r\": \"name\" is missing"},
    {"PipeType", {{"ID", "r"}, {"name", 1}}, "PipeType, row \"r\": \"name\" has a value of the wrong type"},
    {"PipeSystemType", {{"ID", "r"}}, "PipeSystemType, row \"r\": \"systemType\" is missing"},
    {"ConfigTree", {{"ID", "r"}, {"text", "T"}}, "ConfigTree, row \"r\": \"groupName\" is missing"},
    {"ConfigTree", {{"ID", "r"}, {"groupName", "cableTray"}}, "ConfigTree, row \"r\": \"text\" is missing"},
    {"ConfigTree", Node("another", "r", "R"), "ConfigTree, row \"r\": \"groupName\" is none that is known"},
    {"ConfigTree", Node("tolmOtherContent", "r", "R"), "ConfigTree, row \"r\": \"groupName\" is none that is known"},
    {"ConfigTree",
     {{"ID", "r"}, {"text", "T"}, {"groupName", "HVACMaterialSeries"}},
     "ConfigTree, row \"r\": \"parentID\" is missing"},
    {"BinaryTable", {{"ID", "r"}}, "BinaryTable, row \"\": \"fileName\" is missing or no text"},
    {"BinaryTable", {{"fileName", "f"}, {"length", 0}}, "BinaryTable, row \"f\": \"data\" is missing"},
    {"BinaryTable", {{"fileName", "f"}, {"data", ""}}, "BinaryTable, row \"f\": \"length\" is missing"},
    {"Combination_16353515", {{"ID", "r"}}, "Combination_16353515, row \"r\": \"Name\" is missing"},
};
INSTANTIATE_TEST_SUITE_P(Heads, RefusedRows, testing::ValuesIn(kWrongHeads));

const std::vector<BadRow> kWrongTypes{
    {"ConfigTree", With(Node("cableTray", "r", "R"), "parentID", 1),
     "ConfigTree, row \"r\": \"parentID\" has a value of the wrong type"},
    {"ConfigTree", With(Node("cableTray", "r", "R"), "CreateTime", "now"),
     "ConfigTree, row \"r\": \"CreateTime\" has a value of the wrong type"},
    {"ConfigTree", Content("cableTray", "none"), "ConfigTree, row \"r\": \"content\" has a value of the wrong type"},
    {"ConfigTree", With(Node("cableTray", "r", "R"), "Nodes", json::array()),
     "ConfigTree, row \"r\": \"Nodes\" has a value of the wrong type"},
    {"ConfigTree", Content("MaterialSeries", {{"roughness", "1"}}),
     "ConfigTree, row \"r\": content: \"roughness\" has a value of the wrong type"},
    {"ConfigTree", Content("ductSeriesType", {{"shape", 1.5}}),
     "ConfigTree, row \"r\": content: \"shape\" has a value of the wrong type"},
    {"ConfigTree", Content("ductSeriesType", {{"series", 1}}), "ConfigTree, row \"r\": \"series\" is no text"},
    {"ConfigTree", Content("electricWireType", {{"series", "1"}}),
     "ConfigTree, row \"r\": \"series\" is no whole number"},
    {"ConfigTree", Content("cableTray", {{"sizeList", json::object()}}),
     "ConfigTree, row \"r\": \"sizeList\" is no array"},
    {"ConfigTree", Content("cableTray", {{"sizeList", {1}}}),
     "ConfigTree, row \"r\": \"sizeList\" holds what is no object"},
    {"ConfigTree", Content("cableTray", {{"sizeList", {{{"Size", true}}}}}),
     "ConfigTree, row \"r\": \"sizeList\" has a \"Size\" of the wrong type"},
    {"ConfigTree", Content("MaterialSeries", {{"sizeList", {{{"DN", json::array()}}}}}),
     "ConfigTree, row \"r\": \"sizeList\" has a \"DN\" of the wrong type"},
    {"ConfigTree", Content("electricWireType", {{"sizeList", {{{"area", 2.5}}}}}),
     "ConfigTree, row \"r\": \"sizeList\" has a \"area\" of the wrong type"},
    {"ConfigTree", Content("electricWireType", {{"sizeList", {{{"temperature", 30.5}}}}}),
     "ConfigTree, row \"r\": \"sizeList\" has a \"temperature\" of the wrong type"},
    {"PipeType", With(Series("r", "R"), "minSize", "1"),
     "PipeType, row \"r\": \"minSize\" has a value of the wrong type"},
    {"PipeType", With(Series("r", "R"), "connective", 1.0),
     "PipeType, row \"r\": \"connective\" has a value of the wrong type"},
    {"PipeType", With(Series("r", "R"), "Elbow", "none"),
     "PipeType, row \"r\": \"Elbow\" has a value of the wrong type"},
    {"PipeType", With(Series("r", "R"), "Elbow", {nullptr}), "PipeType, row \"r\": \"Elbow\" holds what is no object"},
    {"PipeType", With(Series("r", "R"), "Tee", {{{"id", "i"}, {"FittingPartType", 1}}}),
     "PipeType, row \"r\": Tee: \"categoryCode\" is missing"},
    {"PipeType", With(Series("r", "R"), "Tee", {{{"id", "i"}, {"categoryCode", "c"}}}),
     "PipeType, row \"r\": Tee: \"FittingPartType\" is missing"},
    {"PipeType", With(Series("r", "R"), "Tee", json::array({With(kFitting, "max", "9")})),
     "PipeType, row \"r\": Tee: \"max\" has a value of the wrong type"},
    {"PipeType", With(Series("r", "R"), "Tee", json::array({With(kFitting, "id", true)})),
     "PipeType, row \"r\": Tee: \"id\" has a value of the wrong type"},
    {"DuctSystemType", With(SystemType("r", "R"), "fittingIds", {"a", 1}),
     "DuctSystemType, row \"r\": \"fittingIds\" has a value of the wrong type"},
    {"DuctSystemType", With(SystemType("r", "R"), "systemCategory", "1"),
     "DuctSystemType, row \"r\": \"systemCategory\" has a value of the wrong type"},
    {"ElectricalSystemType", With(SystemType("r", "R"), "bindIDs", "a"),
     "ElectricalSystemType, row \"r\": \"bindIDs\" has a value of the wrong type"},
    {"CircuitTemplate", With(Circuit("r", 1), "Phase", "1"),
     "CircuitTemplate, row \"r\": \"Phase\" has a value of the wrong type"},
    {"CircuitTemplate", With(Circuit("r", 1), "LayingMode", 1),
     "CircuitTemplate, row \"r\": \"LayingMode\" has a value of the wrong type"},
    {"Combination_16302510", With(Combination("r", "R"), "Spacing", 1.5),
     "Combination_16302510, row \"r\": \"Spacing\" has a value of the wrong type"},
    {"Combination_16302510", With(Combination("r", "R"), "List", {{{"ComponentId", 1}}}),
     "Combination_16302510, row \"r\": List: \"ComponentId\" has a value of the wrong type"},
};
INSTANTIATE_TEST_SUITE_P(Types, RefusedRows, testing::ValuesIn(kWrongTypes));

const std::vector<BadRow> kLongLists{
    {"ConfigTree", Content("cableTray", {{"sizeList", ManyEntries({{"Size", 1}}, 301)}}),
     "ConfigTree, row \"r\": \"sizeList\" has more than 300 entries"},
    {"PipeType", With(Series("r", "R"), "Cap", ManyEntries(kFitting, 301)),
     "PipeType, row \"r\": \"Cap\" has more than 300 entries"},
    {"PipeType", With(With(Series("r", "R"), "Cap", ManyEntries(kFitting, 150)), "Tee", ManyEntries(kFitting, 151)),
     "PipeType, row \"r\": there are more than 300 fittings"},
    {"PipeSystemType", With(SystemType("r", "R"), "fittingIds", ManyEntries("i", 301)),
     "PipeSystemType, row \"r\": \"fittingIds\" has more than 300 entries"},
    {"ElectricalSystemType", With(SystemType("r", "R"), "bindIDs", ManyEntries("i", 301)),
     "ElectricalSystemType, row \"r\": \"bindIDs\" has more than 300 entries"},
    {"Combination_16353515", With(Combination("r", "R"), "List", ManyEntries(json::object(), 301)),
     "Combination_16353515, row \"r\": \"List\" has more than 300 entries"},
};
INSTANTIATE_TEST_SUITE_P(Lists, RefusedRows, testing::ValuesIn(kLongLists));

const std::vector<BadRow> kBadFiles{
    {"BinaryTable", Binary("../f", "AAEC", 3), "BinaryTable, row \"../f\": \"fileName\" is no plain file name"},
    {"BinaryTable", Binary("a\\f", "AAEC", 3), "BinaryTable, row \"a\\f\": \"fileName\" is no plain file name"},
    {"BinaryTable", Binary("C:f", "AAEC", 3), "BinaryTable, row \"C:f\": \"fileName\" is no plain file name"},
    {"BinaryTable", Binary(".", "AAEC", 3), "BinaryTable, row \".\": \"fileName\" is no plain file name"},
    {"BinaryTable", Binary("..", "AAEC", 3), "BinaryTable, row \"..\": \"fileName\" is no plain file name"},
    {"BinaryTable", Binary("f", "AAEC", 4),
     "BinaryTable, row \"f\": \"length\" is not the number of bytes in \"data\""},
    {"BinaryTable", Binary("f", "AAE", 2), "BinaryTable, row \"f\": \"data\" is no base64 text"},
    {"BinaryTable", Binary("f", "A=EC", 3), "BinaryTable, row \"f\": \"data\" is no base64 text"},
    {"BinaryTable", Binary("f", "AA C", 3), "BinaryTable, row \"f\": \"data\" is no base64 text"},
};
INSTANTIATE_TEST_SUITE_P(Files, RefusedRows, testing::ValuesIn(kBadFiles));

TEST(SettingRow, AnIdThatIsTooLongIsRefused) {
    EXPECT_EQ(Made("PipeType", Series(std::string(255, 'i'), "N")).id.size(), 255U);
    RefusedRow("PipeType", Series(std::string(256, 'i'), "N"));
}

TEST(SettingRow, ListsOfThreeHundredEntriesAreTaken) {
    Made("ConfigTree", Content("cableTray", {{"sizeList", ManyEntries({{"Size", 1}}, 300)}}));
    Made("PipeType", With(Series("r", "R"), "Cap", ManyEntries(kFitting, 300)));
    Made("PipeSystemType", With(SystemType("r", "R"), "fittingIds", ManyEntries("i", 300)));
}

TEST(SettingRow, NumbersInSizeListsMayBeTexts) {
    Made("ConfigTree", Content("MaterialSeries", {{"sizeList", {{{"DN", "25 "}, {"OD", 1}, {"ID", 1.5}}}}}));
    Made("ConfigTree", Content("electricWireType", {{"sizeList", {{{"area", "2.5"}, {"current", "16"}}}}}));
}

TEST(SettingRow, AFittingsIdMayBeANumber) {
    Made("PipeType", With(Series("r", "R"), "Elbow", json::array({With(kFitting, "id", 12345)})));
}

TEST(SettingRow, NullStandsForAnAbsentKey) {
    Made("ConfigTree", With(Node("cableTray", "r", "R"), "content", nullptr));
    Made("PipeType", With(With(Series("r", "R"), "minSize", nullptr), "Elbow", nullptr));
    RefusedRow("PipeType", With(Series("r", "R"), "name", nullptr));
}

TEST(SettingRow, AVersionOfItsOwnIsTakenOff) {
    EXPECT_EQ(Made("PipeType", With(Series("r", "R"), "version", 3)).body, Series("r", "R").dump());
}

TEST(SettingRow, AWholeRoughnessIsKeptAsADouble) {
    const auto row = Made("ConfigTree", Content("MaterialSeries", {{"roughness", 2}}));
    EXPECT_NE(row.body.find("\"roughness\":2.0"), std::string::npos) << row.body;
}

TEST(SettingRow, OtherNumbersKeepTheirForm) {
    const auto row = Made("PipeType", With(With(Series("r", "R"), "minSize", 15), "maxSize", 25.0));
    EXPECT_NE(row.body.find("\"minSize\":15"), std::string::npos) << row.body;
    EXPECT_NE(row.body.find("\"maxSize\":25.0"), std::string::npos) << row.body;
}

TEST(SettingRow, TheStubHasWhatADeletionNeeds) {
    EXPECT_EQ(json::parse(Made("ConfigTree", PipeSize("z", "Z", "m")).stub),
              (json{{"ID", "z"}, {"groupName", "MaterialSeries"}, {"parentID", "m"}}));
    EXPECT_EQ(json::parse(Made("PipeType", Series("s", "S")).stub), (json{{"ID", "s"}}));
    EXPECT_EQ(Made("CircuitTemplate", Circuit("c", 1)).stub, "");
}

TEST(SettingTables, EachHasANameOfItsOwn) {
    std::set<std::string_view> names;
    for (const auto& table : service::kSettingTables)
        EXPECT_TRUE(names.insert(table.name).second) << table.name;
    EXPECT_EQ(service::kSettingTables[service::kConfigTree].name, "ConfigTree");
    EXPECT_FALSE(service::FindSettingTable("configtree").has_value());
}

} // namespace
} // namespace tolmtest
