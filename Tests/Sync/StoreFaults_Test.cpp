#include "StoreSupport/FaultLoop.h"
#include "StoreSupport/WorkFixture.h"

namespace tolmtest {
namespace {

/// An operation on a dataset, with a fault at each of its file calls in turn.
class StoreFaults : public WorkFixture, public testing::WithParamInterface<PreparedWork> {};

TEST_P(StoreFaults, LeaveTheOldOrTheNewAndAreTold) {
    Prepare(GetParam());
    FaultLoop loop(folder.Path(), path, [this] { return Run(GetParam().name); });
    loop.Run();
    std::cout << loop.Runs() << " faults\n";
}

INSTANTIATE_TEST_SUITE_P(Each, StoreFaults, testing::ValuesIn(PreparedWorks()), PreparedWorkName);

} // namespace
} // namespace tolmtest
