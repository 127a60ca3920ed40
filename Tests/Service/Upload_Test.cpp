#include "UploadTesting.h"

#include "Service/UploadBody.h"

namespace tolmtest {
namespace {

class UploadedPatch : public UploadWire {};

TEST_F(UploadedPatch, AnswersTheNewVersionInAnObject) {
    Fill();
    const auto body = Creation(1, Series("s", "S")).dump();
    const auto answer = SendRequest(Service().Port(), {"POST", "/api/UpLoad/p", UserHeaders("anna", Token()), body});
    EXPECT_EQ(answer.status, 200);
    EXPECT_NE(answer.head.find("Content-Type: application/json"), std::string::npos) << answer.head;
    EXPECT_EQ(answer.body, R"({"code":"10000","data":{"version":2}})");
}

TEST_F(UploadedPatch, ARefusalComesWithHttp200AndItsCodeAsAText) {
    Fill();
    const auto answer = SendRequest(Service().Port(), {"POST", "/api/UpLoad/p", UserHeaders("anna", Token()), "{"});
    EXPECT_EQ(answer.status, 200);
    EXPECT_NE(answer.head.find("Content-Type: application/json"), std::string::npos) << answer.head;
    const auto envelope = json::parse(answer.body);
    EXPECT_EQ(envelope["code"], "40001");
    EXPECT_EQ(envelope["data"], nullptr);
}

TEST_F(UploadedPatch, ABodyWithAnotherContentTypeIsReadAllTheSame) {
    Fill();
    auto headers = UserHeaders("anna", Token());
    headers.emplace_back("Content-Type", "text/plain; charset=utf-8");
    const auto answer =
        SendRequest(Service().Port(), {"POST", "/api/UpLoad/p", headers, Creation(1, Series("s", "S")).dump()});
    EXPECT_EQ(answer.body, R"({"code":"10000","data":{"version":2}})");
}

TEST_F(UploadedPatch, CreatesRecoversEditsAndRemovesInOneVersion) {
    Fill({{"PipeType", {Series("edited", "A"), Series("removed", "B")}}, {"ConfigTree", {Material("m", "M")}}});
    auto patch = EmptyPatch(1);
    patch["createList"] = {{"PipeType", {Series("created", "C")}}};
    patch["recoveryList"] = {{"DuctSystemType", {SystemType("recovered", "D")}}};
    patch["editList"] = {{"PipeType", {Series("edited", "E")}}};
    patch["removeList"] = {{"PipeType", {"removed"}}, {"ConfigTree", {"m"}}};
    EXPECT_EQ(Upload(patch), 2);
    EXPECT_EQ(Version(), 2);
    EXPECT_EQ(Tables(), (json{{"PipeType", {Series("edited", "E"), Series("created", "C")}},
                              {"DuctSystemType", {SystemType("recovered", "D")}}}));
}

TEST_F(UploadedPatch, ARecoveryIsACreation) {
    Fill({{"PipeSystemType", {SystemType("gone", "Old")}}});
    Upload(Patch(1, "removeList", {{"PipeSystemType", {"gone"}}}));
    EXPECT_EQ(GetVersion(), 2);
    EXPECT_EQ(Upload(Patch(2, "recoveryList", {{"PipeSystemType", {SystemType("gone", "New")}}})), 3);
    EXPECT_EQ(Tables(), (json{{"PipeSystemType", {SystemType("gone", "New")}}}));
    EXPECT_EQ(Increment(2)["add"]["PipeSystemType"], json::array({SystemType("gone", "New")}));
}

TEST_F(UploadedPatch, ACreationOfAnIdThatStandsReplacesIt) {
    Fill({{"PipeType", {Series("s", "A")}}});
    EXPECT_EQ(Upload(Creation(1, Series("s", "B"))), 2);
    EXPECT_EQ(Tables(), (json{{"PipeType", {Series("s", "B")}}}));
}

TEST_F(UploadedPatch, AnEditOfAnIdThatDoesNotStandCreatesIt) {
    Fill();
    EXPECT_EQ(Upload(Patch(1, "editList", {{"PipeType", {Series("s", "A")}}})), 2);
    EXPECT_EQ(Tables(), (json{{"PipeType", {Series("s", "A")}}}));
}

TEST_F(UploadedPatch, ARemovalOfWhatIsGoneIsNothing) {
    Fill({{"PipeType", {Series("s", "A")}}});
    EXPECT_EQ(Upload(Patch(1, "removeList", {{"PipeType", {"s", "never stood"}}, {"ConfigTree", {"nor this"}}})), 2);
    EXPECT_EQ(Upload(Patch(2, "removeList", {{"PipeType", {"s"}}})), 2);
    EXPECT_EQ(Tables(), json::object());
}

TEST_F(UploadedPatch, AnIdRemovedTwiceIsRemovedOnce) {
    Fill({{"PipeType", {Series("s", "A")}}});
    EXPECT_EQ(Upload(Patch(1, "removeList", {{"PipeType", {"s", "s"}}})), 2);
}

TEST_F(UploadedPatch, RemovedConfigTreeIdsNeedNoGroup) {
    Fill({{"ConfigTree",
           {Material("m", "M"), PipeSize("z", "Z", "m"), Node("cableTray", "t", "T"),
            Node("pipeFittingGroup", "g", "G")}}});
    EXPECT_EQ(Upload(Patch(1, "removeList", {{"ConfigTree", {"m", "z", "t", "g"}}})), 2);
    EXPECT_EQ(Tables(), json::object());
    const json increment = Increment(1);
    for (const auto& row : increment.at("del").at("ConfigTree"))
        EXPECT_TRUE(row["groupName"].is_string() && row["parentID"].is_string()) << "the increment tells whole rows";
}

TEST_F(UploadedPatch, ThatAltersNothingMakesNoVersion) {
    Fill({{"PipeType", {Series("s", "A")}}});
    EXPECT_EQ(Upload(EmptyPatch(1)), 1);
    EXPECT_EQ(Upload(Creation(1, Series("s", "A"))), 1);
    EXPECT_EQ(Version(), 1);
}

TEST_F(UploadedPatch, AnAbsentListAsksForNothing) {
    Fill();
    EXPECT_EQ(Upload({{"version", 1}, {"createList", {{"PipeType", {Series("s", "A")}}}}}), 2);
}

TEST_F(UploadedPatch, ThousandsOfRowsAreOneVersion) {
    Fill();
    json rows = json::array();
    json ids = json::array();
    for (int i = 0; i < 3000; ++i) {
        rows.push_back(Series("s" + std::to_string(i), "S" + std::to_string(i)));
        ids.push_back(rows.back()["ID"]);
    }
    EXPECT_EQ(Upload(Patch(1, "createList", {{"PipeType", rows}})), 2);
    EXPECT_EQ(Tables()["PipeType"].size(), 3000U);
    GetVersion();
    EXPECT_EQ(Upload(Patch(2, "removeList", {{"PipeType", ids}})), 3);
    EXPECT_EQ(Tables(), json::object());
}

TEST_F(UploadedPatch, AnIdKeepsItsTable) {
    Fill({{"PipeType", {Series("s", "A")}}});
    EXPECT_EQ(UploadCode(Creation(1, Series("s", "A"), "DuctType")), "40002");
    EXPECT_EQ(Version(), 1);
}

TEST_F(UploadedPatch, AnIdKeepsItsGroup) {
    Fill({{"ConfigTree", {Material("m", "M")}}});
    EXPECT_EQ(UploadCode(Creation(1, Node("cableTray", "m", "M"), "ConfigTree")), "40002");
    EXPECT_EQ(Version(), 1);
}

TEST_F(UploadedPatch, ToAnUnknownProjectIsRefused) {
    EXPECT_EQ(UploadCode(EmptyPatch(1)), "40401");
}

TEST_F(UploadedPatch, ToAProjectThatWasNeverFilledIsRefused) {
    Service().CreateProject("p");
    EXPECT_EQ(UploadCode(EmptyPatch(-1)), "40902");
    EXPECT_EQ(UploadCode(EmptyPatch(0)), "40902");
}

TEST_F(UploadedPatch, RowsAreTakenAsTheFirstOnesOfAProjectThatWasNeverFilled) {
    Service().CreateProject("p");
    EXPECT_EQ(UploadCode(Creation(0, Series("s", "S"))), "200100");
    EXPECT_EQ(Call("/api/GetVersion/p", "", Token())["data"], -1);
    EXPECT_EQ(UploadCode(Creation(0, Series("s", "S"))), "10000");
    EXPECT_EQ(Version(), 1);
}

TEST_F(UploadedPatch, TwoRowsOfOneNameAreRefusedAndChangeNothing) {
    Fill({{"PipeType", {Series("s", "A")}}});
    auto patch = Creation(1, Series("t", "A"));
    patch["removeList"] = {{"ConfigTree", {"x"}}};
    EXPECT_EQ(UploadCode(patch), "10003");
    EXPECT_EQ(Version(), 1);
    EXPECT_EQ(Tables(), (json{{"PipeType", {Series("s", "A")}}}));
}

TEST_F(UploadedPatch, NamesAreCheckedOverTheFinalStateAlone) {
    Fill({{"PipeType", {Series("s", "A"), Series("t", "B")}}});
    EXPECT_EQ(Upload(Patch(1, "editList", {{"PipeType", {Series("s", "B"), Series("t", "A")}}})), 2) << "swapped";
    GetVersion();
    auto patch = Creation(2, Series("u", "A"));
    patch["removeList"] = {{"PipeType", {"t"}}};
    EXPECT_EQ(Upload(patch), 3) << "the name has become free";
}

TEST_F(UploadedPatch, NamesAreComparedExactly) {
    Fill({{"PipeType", {Series("s", "A")}}});
    EXPECT_EQ(Upload(Patch(1, "createList", {{"PipeType", {Series("t", "a"), Series("u", "A ")}}})), 2);
}

TEST_F(UploadedPatch, NamesCountForEachTable) {
    Fill({{"PipeType", {Series("s", "A")}}});
    EXPECT_EQ(Upload(Creation(1, Series("t", "A"), "HVACPipeType")), 2);
}

TEST_F(UploadedPatch, NamesInConfigTreeCountForEachGroupWithMaterialsAndSizesApart) {
    Fill({{"ConfigTree", {Material("m", "A")}}});
    const auto code = [&](const json& row) { return UploadCode(Creation(Version(), row, "ConfigTree")); };
    EXPECT_EQ(code(Material("n", "A")), "10003");
    EXPECT_EQ(code(PipeSize("z", "A", "m")), "10000");
    EXPECT_EQ(code(PipeSize("y", "A", "other material")), "10003");
    EXPECT_EQ(code(With(Material("n", "A"), "groupName", "HVACMaterialSeries")), "10000");
    EXPECT_EQ(code(Node("cableTray", "t", "A")), "10000");
    EXPECT_EQ(code(Node("cableTray", "u", "A")), "10003");
}

TEST_F(UploadedPatch, NamesOfWiresAreFree) {
    Fill();
    EXPECT_EQ(Upload(Patch(1, "createList",
                           {{"ConfigTree", {Node("electricWireType", "w", "A"), Node("electricWireType", "x", "A")}}})),
              2);
}

TEST_F(UploadedPatch, AWholeNumberRoughnessGoesOutWithAPoint) {
    Fill({{"ConfigTree", {Material("m", "M")}}});
    const auto row = With(PipeSize("z", "Z", "m"), "content", {{"roughness", 1}, {"sizeList", json::array()}});
    Upload(Creation(1, row, "ConfigTree"));
    const auto text = Service().Service().Projects().Increment("p", 1);
    EXPECT_NE(text.find(R"("roughness":1.0)"), std::string::npos) << text;
}

TEST_F(UploadedPatch, ThePartsThatAClientLostAreLeftOut) {
    Fill();
    const json fitting{{"id", "f"},   {"version", 1}, {"categoryCode", "c"},     {"FittingPartType", 1},
                       {"min", 15.5}, {"max", 100},   {"publicComponentId", "7"}};
    auto patch = Creation(1, With(Series("s", "S"), "Elbow", {fitting, nullptr}));
    patch["createList"]["PipeSystemType"] = {With(SystemType("y", "Y"), "fittingIds", {nullptr, "s"})};
    EXPECT_EQ(Upload(patch), 2);
    EXPECT_EQ(Tables()["PipeType"][0]["Elbow"], json::array({fitting}));
    EXPECT_EQ(Tables()["PipeSystemType"][0]["fittingIds"], json::array({"s"}));
}

TEST_F(UploadedPatch, TheRowsOwnVersionIsTheServices) {
    Fill();
    Upload(Creation(1, With(Series("s", "S"), "version", 99)));
    EXPECT_EQ(Tables(), (json{{"PipeType", {Series("s", "S")}}}));
}

TEST(UploadPatch, WithOneByteChangedIsAnother) {
    const auto hash = [](const json& patch) { return service::ReadUploadPatch(patch.dump()).bodyHash; };
    EXPECT_EQ(hash(EmptyPatch(1)), hash(EmptyPatch(1)));
    EXPECT_NE(hash(EmptyPatch(1)), hash(EmptyPatch(2)));
}

} // namespace
} // namespace tolmtest
