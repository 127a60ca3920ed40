// One operation on a dataset in a process of its own, which the power is cut for at one of its changes:
//   tolm-crash-process OPERATION FOLDER ADDRESS CHANGE kept|dropped|torn SEED
// CHANGE 0 lets it come to its end; it prints how many changes it made, and by which functions of the system those past
// SQLite. One more than these cuts the power when the
// operation has said true. Exit code 0 for true, 1 for false.

#include "Host/Session.h"
#include "StoreSupport/DatasetWorks.h"
#include "Support/FaultyFiles.h"
#include "Vorn/Text.h"

#include <iostream>
#include <string>

int main(int argc, char** argv) {
    if (argc != 7)
        return 2;
    const std::wstring folder = vorn::StringUtil::ToWString(argv[2]);
    const std::wstring path = folder + L"/set.db";
    tolm::CollaborationProjectSettingForPS::Open({vorn::StringUtil::ToWString(argv[3]), L"P1", L"W1", 30'000'000});
    tolm::TolmUserSessionUtils::SetUser(L"user-1", L"secret-token");
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(path);
    tolmtest::UseUnknowingCategories();
    tolmtest::FaultyFiles files(folder);
    const long change = std::stol(argv[4]);
    if (change > 0)
        files.CutPowerAt(change, tolmtest::FaultyFiles::UnsyncedOf(argv[5]), std::stoull(argv[6]));
    const bool said =
        tolmtest::FindDatasetWork(argv[1]).run({path, folder + L"/combined.db", folder + L"/beside/files"});
    if (said && change == files.Changes() + 1)
        files.CutPower();
    std::cout << files.Changes() << "\n";
    for (const auto& function : files.FunctionsPastSqlite())
        std::cout << function << ' ';
    std::cout << "\n";
    return said ? 0 : 1;
}
