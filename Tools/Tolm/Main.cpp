#include "Tolm/Commands.h"

#include <iostream>

int main(int argc, char** argv) {
    return tolmcli::RunCommandLine(argc, argv, std::cout, std::cerr);
}
