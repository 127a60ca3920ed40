#include "ConvergeHost/SettingsHost.h"

#include <iostream>

/// One command a line on the standard input, one answer a line on the standard output, until the input ends.
int main() {
    tolmtest::SettingsHost host;
    std::string line;
    while (std::getline(std::cin, line)) {
        nlohmann::json answer;
        try {
            answer = host.Do(nlohmann::json::parse(line));
        } catch (const std::exception& fault) {
            answer = {{"done", false}, {"fault", true}, {"why", fault.what()}};
        }
        std::cout << answer.dump() << std::endl;
    }
    return 0;
}
