#include "StoreSupport/WorkFixture.h"

#include "Host/Categories.h"
#include "StoreSupport/RichCloud.h"

namespace tolmtest {
namespace {

std::string MaterialRow(const std::string& id, const std::string& name) {
    return R"({"ID":")" + id + R"(","text":")" + name +
           R"(","groupName":"MaterialSeries","parentID":"","CreateTime":1,"content":{}})";
}

std::string Rows(const std::vector<std::string>& rows) {
    std::string text = R"({"ConfigTree":[)";
    for (const auto& row : rows)
        text += (&row == &rows.front() ? "" : ",") + row;
    return text + "]}";
}

void LoadAlone(WorkFixture& fixture) {
    fixture.Load();
}
void LoadAndChange(WorkFixture& fixture) {
    fixture.Load();
    ASSERT_TRUE(fixture.Run("create"));
}
void FillCloudAlone(WorkFixture& fixture) {
    fixture.FillCloud();
}
/// A file that was written before materials had a time of creation.
void LoadAndAge(WorkFixture& fixture) {
    fixture.Load();
    Sql(fixture.Path(), "ALTER TABLE MTS DROP COLUMN CreateTime");
}
void LoadAndClash(WorkFixture& fixture) {
    fixture.Load();
    Sql(fixture.Path(), "UPDATE MTS SET Name = 'copper'");
}
void LoadAndMoveCloud(WorkFixture& fixture) {
    fixture.Load();
    fixture.CloudMoves();
}

/// A local edit that loses against the cloud.
void LoadAndLose(WorkFixture& fixture) {
    fixture.Load();
    ASSERT_TRUE(fixture.Run("edit"));
    fixture.CloudMoves();
}
/// And a creation that stays.
void LoadAndKeepOne(WorkFixture& fixture) {
    fixture.Load();
    ASSERT_TRUE(fixture.Run("edit"));
    ASSERT_TRUE(fixture.Run("create"));
    fixture.CloudMoves();
}

void FillRichlyAlone(WorkFixture& fixture) {
    fixture.FillCloudRichly();
}
void LoadRichlyAndMove(WorkFixture& fixture) {
    fixture.LoadRichly();
    fixture.RichCloudMoves();
}
void LoadRichlyAndKeepOne(WorkFixture& fixture) {
    fixture.LoadRichly();
    ASSERT_TRUE(fixture.Run("edit"));
    ASSERT_TRUE(fixture.Run("create"));
    fixture.RichCloudMoves();
}
void LoadRichlyAndLoseASystemType(WorkFixture& fixture) {
    fixture.LoadRichly();
    fixture.CloudRemovesASystemType();
}

/// A creation, an edit and a deletion, which the cloud takes.
void LoadAndChangeAll(WorkFixture& fixture) {
    fixture.Load();
    for (const char* const change : {"create", "edit"})
        ASSERT_TRUE(fixture.Run(change));
    fixture.CloudTakes(3);
}
/// Only deletions.
void LoadAndDelete(WorkFixture& fixture) {
    fixture.Load();
    ASSERT_TRUE(fixture.Run("delete"));
    fixture.CloudTakes(3);
}
/// The cloud goes on, and takes what is left.
void LoadAndDrift(WorkFixture& fixture) {
    LoadAndKeepOne(fixture);
    fixture.CloudTakes(3);
}

} // namespace

const std::vector<PreparedWork>& PreparedWorks() {
    static const std::vector<PreparedWork> works{
        {"FirstEdit", "edit", LoadAlone, true, {}, false, 1, true},
        {"FurtherEdit", "edit", LoadAndChange, true, {}, false, 1, true},
        {"Creation", "create", LoadAlone, true, {}, false, 1, true},
        {"Deletion", "delete", LoadAlone, true, {}, false, 1, true},
        {"VersionStamp", "stamp", LoadAlone, true},
        {"IncrementalPull", "pull", LoadAndMoveCloud, false},
        {"FirstPull", "pull", FillCloudAlone, false},
        {"EditOfAnOlderFile", "edit", LoadAndAge, true, {}, false, 1, true},
        {"RichPull", "pull", LoadRichlyAndMove, false, {}, false, 11},
        {"RichFirstPull", "pull", FillRichlyAlone, false, {}, false, 17},
        {"PullThatRecovers", "pull and recover", LoadRichlyAndLoseASystemType, false, {}, false, 3, true},
        {"RichMerge", "merge", LoadRichlyAndKeepOne, true, {}, false, 89},
        {"NameRepair", "repair", LoadAndClash, false},
        {"MergeThatKeepsAChange", "merge", LoadAndKeepOne, true, {}, false, 17},
        {"MergeThatKeepsNone", "merge", LoadAndLose, false, {}, false, 17},
        {"Upload", "upload", LoadAndChangeAll, true},
        {"UploadOfADeletion", "upload", LoadAndDelete, true},
        {"UploadThatNotesTheTime", "upload and note time", LoadAndChangeAll, true, {"upload"}, true},
        {"UploadTableByTable", "upload tables", LoadAndChangeAll, true, {"upload"}, true},
        {"MergeAndUpload", "synchronise", LoadAndDrift, true, {"merge", "upload"}, false, 17},
        {"MergeWithNothingLeftToUpload", "synchronise", LoadAndLose, true, {"merge"}, false, 17},
    };
    return works;
}

std::string PreparedWorkName(const testing::TestParamInfo<PreparedWork>& info) {
    return info.param.title;
}

/// Combined products are read with a category service, though it knows no category.
WorkFixture::WorkFixture() {
    UseUnknowingCategories();
}

WorkFixture::~WorkFixture() {
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils({});
}

void WorkFixture::FillCloud() {
    CloudHas(2, Rows({MaterialRow("m1", "copper"), MaterialRow("m2", "steel")}), Rows({}));
}

void WorkFixture::Load() {
    FillCloud();
    ASSERT_TRUE(Refresh());
}

void WorkFixture::CloudMoves() {
    CloudHas(3, Rows({MaterialRow("m1", "bronze"), MaterialRow("m3", "zinc")}),
             Rows({MaterialRow("m1", "copper"), MaterialRow("m2", "steel")}));
}

void WorkFixture::FillCloudRichly() {
    CloudHas(2, RichIncrement());
}

void WorkFixture::LoadRichly() {
    FillCloudRichly();
    ASSERT_TRUE(Run("pull"));
}

void WorkFixture::RichCloudMoves() {
    CloudHas(3, RichFurtherIncrement());
}

void WorkFixture::CloudRemovesASystemType() {
    CloudHas(3, RichLossOfASystemType());
}

void WorkFixture::CloudTakes(int version) {
    const auto number = std::to_string(version);
    server.On("/api/UpLoad/", ScriptedAnswer::Data(R"({"version":)" + number + "}"));
    for (const char* const list : {"/api/CreateList/", "/api/EditList/", "/api/RemoveList/"})
        server.On(list, ScriptedAnswer::Data("{}"));
    server.On("/api/workunit/uploadData", ScriptedAnswer::Data("{}"));
    server.On("/api/GetVersion/", ScriptedAnswer::Data(number));
}

void WorkFixture::Prepare(const PreparedWork& work) {
    work.prepare(*this);
    TakeNotifications();
}

} // namespace tolmtest
