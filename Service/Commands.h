#pragma once

#include <iosfwd>

namespace tolm::service {

struct Streams {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
};

/// The command line of the service. Returns 0 for success, 1 for a failure, 2 for a wrong use.
int RunServiceCommand(int argc, const char* const* argv, const Streams& streams);

} // namespace tolm::service
