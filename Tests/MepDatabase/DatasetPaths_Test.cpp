#include "MepDatabase/DatasetPaths.h"

#include "Support/DebugWarnings.h"

#include <gtest/gtest.h>

namespace {

using tolm::DatasetPaths;

void ExpectPaths(const std::wstring& path, const std::wstring& status, const std::wstring& temporary,
                 const std::wstring& temporaryStatus) {
    const DatasetPaths paths = DatasetPaths::Of(path);
    EXPECT_EQ(paths.status, status);
    EXPECT_EQ(paths.temporary, temporary);
    EXPECT_EQ(paths.temporaryStatus, temporaryStatus);
}

TEST(DatasetPaths, TheSuffixStandsBeforeTheExtension) {
    ExpectPaths(L"set.db", L"set_Status.db", L"set_temp.db", L"set_Status_temp.db");
    ExpectPaths(L"/data/set.db", L"/data/set_Status.db", L"/data/set_temp.db", L"/data/set_Status_temp.db");
}

TEST(DatasetPaths, TheExtensionBeginsAtTheLastPoint) {
    ExpectPaths(L"a.b.db", L"a.b_Status.db", L"a.b_temp.db", L"a.b_Status_temp.db");
    ExpectPaths(L"set.", L"set_Status.", L"set_temp.", L"set_Status_temp.");
}

TEST(DatasetPaths, TheWholePathIsSearchedForThePoint) {
    ExpectPaths(L"/a.b/set", L"/a_Status.b/set", L"/a_temp.b/set", L"/a_Status_temp.b/set");
}

TEST(DatasetPaths, AStemMayBeEmpty) {
    ExpectPaths(L".db", L"_Status.db", L"_temp.db", L"_Status_temp.db");
}

TEST(DatasetPaths, APathWithoutAPointHasNoCompanions) {
    ExpectPaths(L"/data/set", L"", L"", L"");
    ExpectPaths(L"", L"", L"", L"");
}

} // namespace
