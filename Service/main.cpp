#include "Service/Commands.h"

#include <iostream>

int main(int argc, char** argv) {
    return tolm::service::RunServiceCommand(argc, argv, {std::cin, std::cout, std::cerr});
}
