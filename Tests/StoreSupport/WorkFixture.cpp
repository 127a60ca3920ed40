#include "StoreSupport/WorkFixture.h"

#include "Host/Categories.h"
#include "StoreSupport/RichCloud.h"

#include <algorithm>

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

// What the parts of an operation may warn of when its files fail.
constexpr const wchar_t* kOfAnEdit[] = {L"closeDatabase 失败"};
constexpr const wchar_t* kOfAStamp[] = {L"openDatabase 失败"};
constexpr const wchar_t* kOfAPull[] = {L"beginTransaction 失败", L"closeDatabase 失败"};
constexpr const wchar_t* kOfRecords[] = {L"ductSeriesType:下载风管类型失败",
                                         L"pipeFittingGroup:下载管配件组合的分组失败",
                                         L"CircuitTemplate:下载回路模板失败"};
constexpr const wchar_t* kOfANewFile[] = {L"BinaryTable:下载文件失败"};
constexpr const wchar_t* kOfAFileThatGoes[] = {L"删除单文件失败"};
constexpr const wchar_t* kOfARepair[] = {L"云端下载的此条目没找到: ", L"本地修改的此条目没找到: "};
constexpr const wchar_t* kOfAMerge[] = {L"复制文件失败 exception", L"ducplicateFilesSucc为false", L"覆盖文件失败",
                                        L"删除文件失败 exception"};
constexpr const wchar_t* kOfAnUpload[] = {L"fetchNextRec 失败", L"RemoveFile 失败", L"closeDatabase 失败"};
constexpr const wchar_t* kOfASavedStamp[] = {L"saveRec 失败"};
constexpr const wchar_t* kOfAComparison[] = {L"closeDatabase 失败"};
constexpr const wchar_t* kOfAFailedMerge[] = {L"mergeSucc 失败"};
constexpr const wchar_t* kOfAFailedUpload[] = {L"bSucc 失败"};

} // namespace

const std::vector<PreparedWork>& PreparedWorks() {
    static const std::vector<PreparedWork> works{
        {"FirstEdit", "edit", LoadAlone, {kOfAnEdit}, {.mayBeRepeated = true, .notes = true}},
        {"FurtherEdit", "edit", LoadAndChange, {kOfAnEdit}, {.mayBeRepeated = true, .notes = true}},
        {"Creation", "create", LoadAlone, {kOfAnEdit}, {.mayBeRepeated = true, .notes = true}},
        {"Deletion", "delete", LoadAlone, {kOfAnEdit}, {.mayBeRepeated = true, .notes = true}},
        {"VersionStamp", "stamp", LoadAlone, {kOfAStamp}, {.mayBeRepeated = true}},
        {"IncrementalPull", "pull", LoadAndMoveCloud, {kOfAPull}},
        {"FirstPull", "pull", FillCloudAlone, {kOfAPull}, {.makesTheFile = true}},
        {"EditOfAnOlderFile", "edit", LoadAndAge, {kOfAnEdit}, {.mayBeRepeated = true, .notes = true}},
        {"RichPull",
         "pull",
         LoadRichlyAndMove,
         {kOfAPull, kOfRecords, kOfANewFile, kOfAFileThatGoes},
         {.tryOneOf = 11}},
        {"RichFirstPull", "pull", FillRichlyAlone, {kOfAPull, kOfRecords}, {.makesTheFile = true, .tryOneOf = 17}},
        {"PullThatRecovers",
         "pull and recover",
         LoadRichlyAndLoseASystemType,
         {kOfAPull, kOfAFileThatGoes},
         {.notes = true, .tryOneOf = 3}},
        {"RichMerge",
         "merge",
         LoadRichlyAndKeepOne,
         {kOfAMerge, kOfRecords, kOfANewFile, kOfAFileThatGoes},
         {.mayBeRepeated = true, .tryOneOf = 89}},
        {"NameRepair", "repair", LoadAndClash, {kOfARepair}},
        {"MergeThatKeepsAChange", "merge", LoadAndKeepOne, {kOfAMerge}, {.mayBeRepeated = true, .tryOneOf = 17}},
        {"MergeThatKeepsNone", "merge", LoadAndLose, {kOfAMerge}, {.tryOneOf = 17}},
        {"Upload", "upload", LoadAndChangeAll, {kOfAnUpload}, {.mayBeRepeated = true}},
        {"UploadOfADeletion", "upload", LoadAndDelete, {kOfAnUpload}, {.mayBeRepeated = true}},
        {"UploadThatNotesTheTime",
         "upload and note time",
         LoadAndChangeAll,
         {kOfAnUpload, kOfASavedStamp},
         {.mayBeRepeated = true, .stages = {"upload"}, .mayStay = true}},
        {"UploadTableByTable",
         "upload tables",
         LoadAndChangeAll,
         {kOfAnUpload, kOfASavedStamp},
         {.mayBeRepeated = true, .stages = {"upload"}, .mayStay = true}},
        {"MergeAndUpload",
         "synchronise",
         LoadAndDrift,
         {kOfAComparison, kOfAMerge, kOfAFailedMerge, kOfAnUpload, kOfAFailedUpload, kOfAStamp},
         {.mayBeRepeated = true, .tryOneOf = 17, .stages = {"merge", "upload"}}},
        {"MergeWithNothingLeftToUpload",
         "synchronise",
         LoadAndLose,
         {kOfAComparison, kOfAMerge, kOfAFailedMerge, kOfAStamp},
         {.mayBeRepeated = true, .tryOneOf = 17, .stages = {"merge"}}},
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

std::vector<std::string> WorkFixture::TakeUploads() {
    constexpr const char* kCalls[] = {"/api/UpLoad/", "/api/CreateList/", "/api/EditList/", "/api/RemoveList/"};
    const auto requests = server.Paths();
    std::vector<std::string> uploads;
    for (; m_requestsSeen < requests.size(); ++m_requestsSeen) {
        const auto& request = requests[m_requestsSeen];
        if (std::ranges::any_of(kCalls, [&](const char* call) { return request.starts_with(call); }))
            uploads.push_back(request);
    }
    return uploads;
}

void WorkFixture::Prepare(const PreparedWork& work) {
    work.prepare(*this);
    TakeNotifications();
    TakeUploads();
}

} // namespace tolmtest
