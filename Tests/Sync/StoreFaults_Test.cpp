#include "StoreSupport/FaultLoop.h"
#include "StoreSupport/WorkFixture.h"
#include "Support/TriedPoints.h"

namespace tolmtest {
namespace {

/// An operation on a dataset, with a fault at each of its file calls in turn.
class StoreFaults : public WorkFixture, public testing::WithParamInterface<PreparedWork> {};

TEST_P(StoreFaults, LeaveTheOldOrTheNewAndAreTold) {
    Prepare(GetParam());
    FaultLoop loop(
        folder.Path(), path, [this] { return Run(GetParam().name); }, [this] { return TakeUploads(); });
    for (const auto& warnings : GetParam().mayWarnOf)
        loop.MayWarnOf(warnings);
    std::vector<const char*> stages;
    for (const char* const stage : GetParam().manner.stages) {
        stages.push_back(stage);
        loop.MayStopAt([&] {
            for (const char* const each : stages)
                EXPECT_TRUE(Run(each)) << each;
        });
    }
    if (GetParam().manner.mayStay)
        loop.MayStay();
    if (GetParam().manner.notes)
        loop.MayGoUnnoted();
    if (GetParam().manner.tryOneOf > 1)
        loop.TryOneOf(GetParam().manner.tryOneOf);
    loop.Run();
    TellTriedPoints("faults", GetParam().title, loop.Runs());
}

INSTANTIATE_TEST_SUITE_P(Each, StoreFaults, testing::ValuesIn(PreparedWorks()), PreparedWorkName);

} // namespace
} // namespace tolmtest
