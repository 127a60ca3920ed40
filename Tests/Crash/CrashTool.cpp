// The command line in a process of its own, which the power is cut for at one of the changes of its files:
//   tolm-crash-tool FOLDER CHANGE kept|dropped|torn SEED COMMAND...
// CHANGE 0 lets it come to its end; it prints how many changes it made, and by which functions of the system those past
// SQLite, and nothing of what the command says. CHANGE -1 cuts the power when the command is done: how many changes
// that takes is not the same each time, as a point of time is written only where it is another one. The exit code is
// that of the command.

#include "Support/FaultyFiles.h"
#include "Tolm/Commands.h"
#include "Tolm/Errors.h"
#include "Vorn/Text.h"

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    if (argc < 6)
        return 100;
    tolmtest::FaultyFiles files(vorn::StringUtil::ToWString(argv[1]));
    const long change = std::stol(argv[2]);
    if (change != 0)
        files.CutPowerAt(change, tolmtest::FaultyFiles::UnsyncedOf(argv[3]), std::stoull(argv[4]));
    std::vector<const char*> words{"tolm"};
    words.insert(words.end(), argv + 5, argv + argc);
    std::ostringstream unheard;
    const int code = tolmcli::RunCommandLine(static_cast<int>(words.size()), words.data(), unheard, unheard);
    if (code == tolmcli::Done && change < 0)
        files.CutPower();
    std::cout << files.Changes() << "\n";
    for (const auto& function : files.FunctionsPastSqlite())
        std::cout << function << ' ';
    std::cout << "\n";
    return code;
}
