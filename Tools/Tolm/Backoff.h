#pragma once

#include <chrono>
#include <cstdint>
#include <random>

namespace tolmcli {

/// Pauses between attempts: each about twice as long as the one before, up to half a minute, and never the same for two
/// users, so that those who ran into each other once do not do so again.
class Backoff {
public:
    explicit Backoff(std::chrono::milliseconds first, std::uint32_t seed = std::random_device()())
        : m_next(first), m_random(seed) {}

    /// From half to one and a half of the pause whose turn it is.
    std::chrono::milliseconds Next();

private:
    std::chrono::milliseconds m_next;
    std::mt19937 m_random;
};

} // namespace tolmcli
