#include "StoreSupport/FaultLoop.h"
#include "StoreSupport/WorkFixture.h"

#include <string_view>

namespace tolmtest {
namespace {

/// An operation on a dataset, with a fault at each of its file calls in turn.
class StoreFaults : public WorkFixture, public testing::WithParamInterface<PreparedWork> {};

TEST_P(StoreFaults, LeaveTheOldOrTheNewAndAreTold) {
    Prepare(GetParam());
    FaultLoop loop(folder.Path(), path, [this] { return Run(GetParam().name); });
    for (const wchar_t* text : {L"复制文件失败 exception", L"删除文件失败 exception", L"ducplicateFilesSucc为false",
                                L"覆盖文件失败", L"此条目没有name字段: "})
        loop.MayWarnOf(text);
    if (std::string_view(GetParam().name) == "merge")
        loop.TryOneOf(17);
    loop.Run();
    std::cout << loop.Runs() << " faults\n";
}

INSTANTIATE_TEST_SUITE_P(Each, StoreFaults, testing::ValuesIn(PreparedWorks()), PreparedWorkName);

} // namespace
} // namespace tolmtest
