#include "StoreSupport/FaultLoop.h"
#include "StoreSupport/WorkFixture.h"
#include "Support/TriedPoints.h"

namespace tolmtest {
namespace {

/// An operation on a dataset, with a fault at each of its file calls in turn.
class StoreFaults : public WorkFixture, public testing::WithParamInterface<PreparedWork> {};

TEST_P(StoreFaults, LeaveTheOldOrTheNewAndAreTold) {
    Prepare(GetParam());
    FaultLoop loop(folder.Path(), path, [this] { return Run(GetParam().name); });
    for (const wchar_t* text :
         {L"复制文件失败 exception", L"删除文件失败 exception", L"ducplicateFilesSucc为false", L"覆盖文件失败",
          L"此条目没有name字段: ", L"fetchNextRec 失败", L"RemoveFile 失败", L"mergeSucc 失败", L"bSucc 失败",
          L"getCloudDataSucc 为false", L"ductSeriesType:下载风管类型失败", L"pipeFittingGroup:下载管配件组合的分组失败",
          L"CircuitTemplate:下载回路模板失败", L"Combination_:下载组合设备失败"})
        loop.MayWarnOf(text);
    std::vector<const char*> stages;
    for (const char* const stage : GetParam().stages) {
        stages.push_back(stage);
        loop.MayStopAt([&] {
            for (const char* const each : stages)
                EXPECT_TRUE(Run(each)) << each;
        });
    }
    if (GetParam().mayStay)
        loop.MayStay();
    if (GetParam().notes)
        loop.MayGoUnnoted();
    if (GetParam().tryOneOf > 1)
        loop.TryOneOf(GetParam().tryOneOf);
    loop.Run();
    TellTriedPoints("faults", GetParam().title, loop.Runs());
}

INSTANTIATE_TEST_SUITE_P(Each, StoreFaults, testing::ValuesIn(PreparedWorks()), PreparedWorkName);

} // namespace
} // namespace tolmtest
