#pragma once

#include <string>
#include <utility>

namespace tolmfuzz {

/// A property that does not hold. It is no std::exception, so that nothing on its way takes it for a fault of the
/// input.
struct BrokenProperty {
    std::string what;
};

/// Ends the run of a driver where the condition is false.
inline void Require(bool holds, std::string what) {
    if (!holds)
        throw BrokenProperty{std::move(what)};
}

} // namespace tolmfuzz
