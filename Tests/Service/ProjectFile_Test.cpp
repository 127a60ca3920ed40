#include "ServiceTesting.h"

#include <filesystem>
#include <fstream>

namespace tolmtest {
namespace {

using service::Answer;

json ProjectJson(const json& tables) {
    return {{"format", "tolm-project"}, {"formatVersion", 1}, {"tables", tables}};
}
json ChangeJson() {
    return {{"format", "tolm-change"}, {"formatVersion", 1}};
}

std::string RefusedProject(const std::string& text) {
    return RefusalOf(Answer::BadRow, [&] { service::ReadProjectFile(text, ""); });
}
std::string RefusedChange(const json& file) {
    return RefusalOf(Answer::BadRow, [&] { service::ReadChangeFile(file.dump(), ""); });
}

TEST(ProjectFile, IsReadWithIdNameAndRows) {
    auto root = ProjectJson({{"PipeType", {Series("s", "S")}}, {"ConfigTree", {Material("m", "M")}}});
    root["id"] = "house";
    root["name"] = "House";
    const auto file = service::ReadProjectFile(root.dump(), "");
    EXPECT_EQ(file.id, "house");
    EXPECT_EQ(file.name, "House");
    ASSERT_EQ(file.rows.size(), 2U);
    EXPECT_EQ(file.rows[0].id, "m") << "\"ConfigTree\" comes first";
    EXPECT_EQ(file.rows[1].id, "s");
}

TEST(ProjectFile, OfAnotherFormatIsRefused) {
    EXPECT_EQ(RefusedProject("[]"), "\"format\" is not \"tolm-project\"");
    EXPECT_EQ(RefusedProject("{}"), "\"format\" is not \"tolm-project\"");
    EXPECT_EQ(RefusedProject(ChangeJson().dump()), "\"format\" is not \"tolm-project\"");
    EXPECT_EQ(RefusedProject(With(ProjectJson({}), "formatVersion", 2).dump()), "\"formatVersion\" is not 1");
    EXPECT_EQ(RefusedProject(With(ProjectJson({}), "formatVersion", "1").dump()), "\"formatVersion\" is not 1");
}

TEST(ProjectFile, ThatIsNoJsonIsRefused) {
    RefusalOf(Answer::IllFormed, [] { service::ReadProjectFile("{", ""); });
    RefusalOf(Answer::IllFormed, [] { service::ReadProjectFile("", ""); });
}

TEST(ProjectFile, WithAnUnknownTableIsRefused) {
    EXPECT_EQ(RefusedProject(ProjectJson({{"PipeTypes", json::array()}}).dump()), "there is no table \"PipeTypes\"");
}

TEST(ProjectFile, WithAMemberThatHasNoPlaceIsRefused) {
    EXPECT_EQ(RefusedProject(With(ProjectJson(json::object()), "rows", 1).dump()), "there is no place for \"rows\"");
    EXPECT_EQ(RefusedChange(With(ChangeJson(), "delete", json::object())), "there is no place for \"delete\"");
}

TEST(ProjectFile, WithMembersOfTheWrongTypeIsRefused) {
    EXPECT_EQ(RefusedProject(ProjectJson(json::array()).dump()), "\"tables\" is no object");
    EXPECT_EQ(RefusedProject(ProjectJson({{"PipeType", 1}}).dump()), "PipeType: the rows are no array");
    EXPECT_EQ(RefusedProject(With(ProjectJson(json::object()), "name", 1).dump()), "\"name\" is no text");
}

TEST(ProjectFile, WithAnIdThatStandsTwiceIsRefused) {
    EXPECT_EQ(RefusedProject(ProjectJson({{"PipeType", {Series("s", "A"), Series("s", "B")}}}).dump()),
              "PipeType, row \"s\": the id stands twice");
    EXPECT_EQ(RefusedProject(ProjectJson({{"PipeType", {Series("s", "A")}}, {"DuctType", {Series("s", "B")}}}).dump()),
              "DuctType, row \"s\": the id stands twice")
        << "all series share their ids";
    EXPECT_EQ(RefusedProject(ProjectJson({{"BinaryTable", {Binary("f", "", 0), Binary("f", "", 0)}}}).dump()),
              "BinaryTable, row \"f\": the id stands twice");
}

TEST(ProjectFile, MayUseAnIdInTablesThatShareNone) {
    const auto file = service::ReadProjectFile(
        ProjectJson({{"PipeType", {Series("x", "A")}}, {"ConfigTree", {Material("x", "B")}}}).dump(), "");
    EXPECT_EQ(file.rows.size(), 2U);
}

TEST(ProjectFile, TakesBinaryFilesFromBesideIt) {
    const TempFolder folder;
    std::filesystem::create_directory(Narrow(folder.File(L"files")));
    std::ofstream(Narrow(folder.File(L"files/a.bin")), std::ios::binary) << std::string("\0\1\2\xff", 4);
    const json row{{"fileName", "b.bin"}, {"file", "files/a.bin"}};
    const auto file = service::ReadProjectFile(ProjectJson({{"BinaryTable", {row}}}).dump(), Narrow(folder.Path()));
    EXPECT_EQ(json::parse(file.rows.at(0).body), Binary("b.bin", "AAEC/w==", 4));
}

TEST(ProjectFile, TakesNoFileFromOutsideItsFolder) {
    for (const auto* path : {"/etc/hostname", "../x", "a/../../x", ""}) {
        const json row{{"fileName", "b.bin"}, {"file", path}};
        EXPECT_EQ(RefusedProject(ProjectJson({{"BinaryTable", {row}}}).dump()),
                  "BinaryTable, row \"\"b.bin\"\": \"file\" leaves the folder of the project file");
    }
}

TEST(ProjectFile, ThatNamesAMissingFileCannotBeRead) {
    const TempFolder folder;
    const json row{{"fileName", "b.bin"}, {"file", "missing.bin"}};
    EXPECT_THROW(service::ReadProjectFile(ProjectJson({{"BinaryTable", {row}}}).dump(), Narrow(folder.Path())),
                 std::runtime_error);
}

TEST(ProjectFile, AFileBesideDataIsRefused) {
    const auto row = With(Binary("b.bin", "", 0), "file", "a.bin");
    EXPECT_EQ(RefusedProject(ProjectJson({{"BinaryTable", {row}}}).dump()),
              "BinaryTable, row \"\"b.bin\"\": \"file\" is no text, or stands beside \"data\"");
}

TEST(ProjectFile, IsWrittenAsItIsRead) {
    StoreOnly store;
    const json tables{{"ConfigTree", {Material("m", "M \"quoted\"")}}, {"BinaryTable", {Binary("f", "AAEC", 3)}}};
    store.Fill("p", tables);
    const auto text = service::WriteProjectFile(store.Projects().Info("p"), store.Projects().StandingRows("p"));
    EXPECT_EQ(json::parse(text)["tables"], tables);
    const auto file = service::ReadProjectFile(text, "");
    EXPECT_EQ(file.id, "p");
    store.Projects().Create("q", "Q");
    store.Projects().Fill("q", file.rows, false);
    EXPECT_EQ(store.Tables("q"), tables);
}

TEST(ChangeFile, IsReadWithAllItsParts) {
    auto root = ChangeJson();
    root["description"] = "what for";
    root["add"] = {{"PipeType", {Series("a", "A")}}};
    root["edit"] = {{"PipeType", {Series("b", "B")}}};
    root["remove"] = {{"PipeType", {"c"}}, {"BinaryTable", {"f"}}};
    root["workunits"] = {{"w", {{{"dataId", "d"}, {"dataStatus", 2}}}}};
    const auto file = service::ReadChangeFile(root.dump(), "");
    EXPECT_EQ(file.description, "what for");
    ASSERT_EQ(file.change.put.size(), 2U);
    EXPECT_EQ(file.change.put[1].id, "b");
    ASSERT_EQ(file.change.removed.size(), 2U);
    EXPECT_EQ(file.change.removed[0].second, "f");
    ASSERT_EQ(file.workunits.size(), 1U);
    EXPECT_EQ(file.workunits[0].workunitId, "w");
    EXPECT_EQ(file.workunits[0].dataId, "d");
    EXPECT_EQ(file.workunits[0].dataStatus, 2);
}

TEST(ChangeFile, WithAnIdInTwoPartsIsRefused) {
    const json row{{"PipeType", {Series("s", "S")}}};
    const json id{{"PipeType", {"s"}}};
    EXPECT_EQ(RefusedChange(With(With(ChangeJson(), "add", row), "edit", row)),
              "PipeType, row \"s\": the id stands twice");
    EXPECT_EQ(RefusedChange(With(With(ChangeJson(), "add", row), "remove", id)),
              "PipeType, row \"s\": the id stands twice");
    EXPECT_EQ(RefusedChange(With(ChangeJson(), "remove", {{"PipeType", {"s", "s"}}})),
              "PipeType, row \"s\": the id stands twice");
}

TEST(ChangeFile, WithWrongRemovalsIsRefused) {
    EXPECT_EQ(RefusedChange(With(ChangeJson(), "remove", {{"Pipes", {"s"}}})), "there is no table \"Pipes\"");
    EXPECT_EQ(RefusedChange(With(ChangeJson(), "remove", {{"PipeType", "s"}})), "PipeType: the ids are no array");
    EXPECT_EQ(RefusedChange(With(ChangeJson(), "remove", {{"PipeType", {1}}})),
              "PipeType, row \"1\": the id is no text");
    EXPECT_EQ(RefusedChange(With(ChangeJson(), "remove", {{"PipeType", {""}}})), "PipeType, row \"\": the id is empty");
    EXPECT_EQ(RefusedChange(With(ChangeJson(), "edit", {{"Pipes", json::array()}})), "there is no table \"Pipes\"");
}

TEST(ChangeFile, WithWrongEntriesOfWorkunitsIsRefused) {
    const auto with = [](const json& entries) { return With(ChangeJson(), "workunits", {{"w", entries}}); };
    const auto noId = "a \"dataId\" is missing, empty, too long or no text";
    const auto noStatus = "a \"dataStatus\" is missing or no whole number from 0 on";
    EXPECT_EQ(RefusedChange(With(ChangeJson(), "workunits", json::array())), "\"workunits\" is no object");
    EXPECT_EQ(RefusedChange(with(1)), "work unit \"w\": the entries are no array");
    EXPECT_EQ(RefusedChange(with({1})), noId);
    EXPECT_EQ(RefusedChange(with({{{"dataStatus", 1}}})), noId);
    EXPECT_EQ(RefusedChange(with({{{"dataId", ""}, {"dataStatus", 1}}})), noId);
    EXPECT_EQ(RefusedChange(with({{{"dataId", "d"}}})), noStatus);
    EXPECT_EQ(RefusedChange(with({{{"dataId", "d"}, {"dataStatus", "1"}}})), noStatus);
    EXPECT_EQ(RefusedChange(with({{{"dataId", "d"}, {"dataStatus", 1.0}}})), noStatus);
    EXPECT_EQ(RefusedChange(with({{{"dataId", "d"}, {"dataStatus", -1}}})), noStatus);
}

TEST(ChangeFile, WithoutAnythingIsEmpty) {
    const auto file = service::ReadChangeFile(ChangeJson().dump(), "");
    EXPECT_TRUE(file.change.put.empty() && file.change.removed.empty() && file.workunits.empty());
}

} // namespace
} // namespace tolmtest
