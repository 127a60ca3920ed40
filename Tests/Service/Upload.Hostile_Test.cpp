#include "UploadTesting.h"

namespace tolmtest {
namespace {

/// Each body is refused with a code and changes nothing.
class HostileUpload : public UploadWire {
protected:
    HostileUpload() { Fill({{"PipeType", {Series("s", "S")}}, {"ConfigTree", {Material("m", "M")}}}); }

    std::string RefusedCode(const std::string& path, const std::string& body) {
        const auto before = Tables();
        const auto envelope = Call(path, body, Token());
        EXPECT_NE(envelope["code"], "10000") << body.substr(0, 200);
        EXPECT_EQ(envelope["data"], nullptr);
        EXPECT_TRUE(envelope["msg"].is_string());
        EXPECT_EQ(Version(), 1) << body.substr(0, 200);
        EXPECT_EQ(Tables(), before);
        return envelope["code"];
    }
    std::string RefusedCode(const json& patch) { return RefusedCode("/api/UpLoad/p", patch.dump()); }
    std::string RefusedRow(const json& row, const std::string& table = "PipeType") {
        return RefusedCode(Creation(1, row, table));
    }
};

TEST_F(HostileUpload, ThatIsNoJsonObject) {
    for (const auto* body :
         {"", "{", "nonsense", "{}x", "{\"version\":1,}", "{\"version\":01}", "\xff\xfe", "{\"a\":\"\xc0\x80\"}"})
        EXPECT_EQ(RefusedCode("/api/UpLoad/p", body), "40001") << body;
    for (const auto* body : {"[]", "null", "1", "\"text\""})
        EXPECT_EQ(RefusedCode("/api/UpLoad/p", body), "40000") << body;
}

TEST_F(HostileUpload, WithTextThatIsNoUnicode) {
    const std::string text = R"({"version":1,"createList":{"PipeType":[{"ID":"t","name":")";
    const std::string end = "\"}]}}";
    for (const std::string name : {"\xff", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe4\xb8", "\\ud800", "\\udc00\\ud800"})
        EXPECT_EQ(RefusedCode("/api/UpLoad/p", text + name + end), "40001") << name;
    EXPECT_EQ(RefusedCode("/api/UpLoad/p", text + std::string(1, '\0') + end), "40001");
}

TEST_F(HostileUpload, NestedTooDeeply) {
    EXPECT_EQ(RefusedCode("/api/UpLoad/p", std::string(100000, '[')), "40001");
    EXPECT_EQ(RefusedCode("/api/UpLoad/p", R"({"version":1,"createList":)" + std::string(100, '[')), "40001");
}

TEST_F(HostileUpload, WithANumberOutOfRange) {
    EXPECT_EQ(RefusedCode("/api/UpLoad/p", R"({"version":1e999})"), "40001");
}

TEST_F(HostileUpload, WithAHeadOfTheWrongType) {
    const auto good = EmptyPatch(1);
    for (const auto* key : {"tolm_version", "userID"}) {
        for (const auto& value : {json(1), json(nullptr), json::array(), json::object(), json(true)})
            EXPECT_EQ(RefusedCode(With(good, key, value)), "40000") << key << " " << value;
    }
    for (const auto* key : {"version", "force"}) {
        for (const auto& value : {json("1"), json(nullptr), json::array(), json::object(), json(true), json(1.5),
                                  json(18446744073709551615ULL)})
            EXPECT_EQ(RefusedCode(With(good, key, value)), "40000") << key << " " << value;
    }
}

TEST_F(HostileUpload, WithoutAVersion) {
    auto patch = Creation(1, Series("t", "T"));
    patch.erase("version");
    EXPECT_EQ(RefusedCode(patch), "40000");
}

TEST_F(HostileUpload, WithListsOfTheWrongType) {
    for (const auto* list : {"createList", "recoveryList", "editList", "removeList"}) {
        for (const auto& value : {json(1), json(nullptr), json::array(), json("PipeType"), json(false)})
            EXPECT_EQ(RefusedCode(Patch(1, list, value)), "40000") << list << " " << value;
        for (const auto& value : {json(1), json(nullptr), json::object(), json("s"), json(false)})
            EXPECT_EQ(RefusedCode(Patch(1, list, {{"PipeType", value}})), "40002") << list << " " << value;
    }
}

TEST_F(HostileUpload, WithAKeyThatHasNoPlace) {
    EXPECT_EQ(RefusedCode(With(EmptyPatch(1), "creatList", {{"PipeType", {Series("t", "T")}}})), "40000");
    EXPECT_EQ(RefusedCode(With(EmptyPatch(1), "", 1)), "40000");
}

TEST_F(HostileUpload, WithATableThatThereIsNot) {
    for (const auto* table : {"", "pipetype", "PipeType ", "setting_rows", "MaterialSeries", "Combination_1"}) {
        EXPECT_EQ(RefusedRow(Series("t", "T"), table), "40002") << table;
        EXPECT_EQ(RefusedCode(Patch(1, "removeList", {{table, {"s"}}})), "40002") << table;
    }
    auto patch = Creation(1, Series("t", "T"));
    patch["editList"] = {{"NoSuchTable", json::array()}};
    EXPECT_EQ(RefusedCode(patch), "40002") << "an unknown table without rows, beside a good one";
}

TEST_F(HostileUpload, WithARowThatIsNoObject) {
    for (const auto& row : {json(nullptr), json(1), json("s"), json::array(), json(true)})
        EXPECT_EQ(RefusedRow(row), "40002") << row;
}

TEST_F(HostileUpload, WithARowWithoutAnId) {
    EXPECT_EQ(RefusedRow({{"name", "T"}}), "40002");
    EXPECT_EQ(RefusedRow({{"id", "t"}, {"name", "T"}}), "40002") << "keys are told apart by case";
    for (const auto& id : {json(nullptr), json(1), json(""), json("a\nb"), json(std::string(256, 'x'))})
        EXPECT_EQ(RefusedRow({{"ID", id}, {"name", "T"}}), "40002") << id;
}

TEST_F(HostileUpload, WithAnIdToRemoveThatIsNone) {
    for (const auto& id : {json(nullptr), json(1), json(""), json::object(), json(std::string(256, 'x'))})
        EXPECT_EQ(RefusedCode(Patch(1, "removeList", {{"PipeType", {"s", id}}})), "40002") << id;
}

TEST_F(HostileUpload, WithAWrappedRow) {
    EXPECT_EQ(RefusedCode(Patch(1, "editList", {{"PipeType", {Wrapped(Series("s", "T"))}}})), "40002");
}

TEST_F(HostileUpload, WithARowWithoutAName) {
    EXPECT_EQ(RefusedRow({{"ID", "t"}}), "40002");
    EXPECT_EQ(RefusedRow({{"ID", "t"}, {"name", 1}}), "40002");
    EXPECT_EQ(RefusedRow({{"ID", "t"}, {"name", "T"}}, "PipeSystemType"), "40002") << "\"systemType\" is its name";
}

TEST_F(HostileUpload, WithConfigTreeRowsOfNoKnownGroup) {
    for (const auto& group : {json("NoSuchGroup"), json(service::kUnknownGroup), json(""), json(1), json(nullptr)})
        EXPECT_EQ(RefusedRow(With(Material("n", "N"), "groupName", group), "ConfigTree"), "40002") << group;
}

TEST_F(HostileUpload, WithValuesOfTheWrongType) {
    EXPECT_EQ(RefusedRow(With(Series("t", "T"), "minSize", "15")), "40002");
    EXPECT_EQ(RefusedRow(With(Series("t", "T"), "connective", 1.5)), "40002");
    EXPECT_EQ(RefusedRow(With(Series("t", "T"), "Elbow", "none")), "40002");
    EXPECT_EQ(RefusedRow(With(Series("t", "T"), "Elbow", {{{"categoryCode", 1}}})), "40002");
    EXPECT_EQ(RefusedRow(With(SystemType("t", "T"), "fittingIds", {1}), "PipeSystemType"), "40002");
    EXPECT_EQ(RefusedRow(With(Material("n", "N"), "Nodes", json::array()), "ConfigTree"), "40002");
    EXPECT_EQ(RefusedRow(With(Material("n", "N"), "content", "none"), "ConfigTree"), "40002");
}

TEST_F(HostileUpload, WithMoreThan300EntriesInAList) {
    const json sizes(301, json{{"DN", 25}});
    const json ids(301, "s");
    const json fittings(301, json{{"categoryCode", "c"}, {"FittingPartType", 1}});
    EXPECT_EQ(RefusedRow(With(PipeSize("z", "Z", "m"), "content", {{"sizeList", sizes}}), "ConfigTree"), "40002");
    EXPECT_EQ(RefusedRow(With(SystemType("y", "Y"), "fittingIds", ids), "PipeSystemType"), "40002");
    EXPECT_EQ(RefusedRow(With(SystemType("y", "Y"), "bindIDs", ids), "ElectricalSystemType"), "40002");
    EXPECT_EQ(RefusedRow(With(Series("t", "T"), "Tee", fittings)), "40002");
}

TEST_F(HostileUpload, WithAnIdThatStandsTwice) {
    EXPECT_EQ(RefusedCode(Patch(1, "createList", {{"PipeType", {Series("t", "T"), Series("t", "U")}}})), "40002");
    EXPECT_EQ(RefusedCode(Patch(1, "createList", {{"PipeType", {Series("t", "T")}}, {"DuctType", {Series("t", "U")}}})),
              "40002");
    auto patch = Creation(1, Series("s", "T"));
    EXPECT_EQ(RefusedCode(With(patch, "editList", {{"PipeType", {Series("s", "U")}}})), "40002");
    EXPECT_EQ(RefusedCode(With(patch, "removeList", {{"PipeType", {"s"}}})), "40002");
}

TEST_F(HostileUpload, OfWhichOnlyTheLastRowIsBad) {
    json rows = json::array();
    for (int i = 0; i < 50; ++i)
        rows.push_back(Series("t" + std::to_string(i), "T" + std::to_string(i)));
    rows.push_back(nullptr);
    EXPECT_EQ(RefusedCode(Patch(1, "createList", {{"PipeType", rows}})), "40002");
}

TEST_F(HostileUpload, WhoseTextWouldBeSqlIsData) {
    const std::string text = "'); DROP TABLE setting_rows; --";
    EXPECT_EQ(Upload(Creation(1, Series(text, text))), 2);
    EXPECT_EQ(Tables()["PipeType"][1], Series(text, text));
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(Upload(Patch(2, "removeList", {{"PipeType", {"x' OR '1'='1"}}})), 2);
}

} // namespace
} // namespace tolmtest
