#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace tolmfuzz {

using Random = std::mt19937;

/// The JSON text with one thing in it changed: a value becomes a hostile one or another one of the same text, a member
/// or an element goes, comes twice, changes its place or its name. A text that is no JSON comes back as it was.
std::string ChangeJson(const std::string& text, Random& random);
/// The text with a value of the other one in the place of one of its own.
std::string CrossJson(const std::string& text, const std::string& other, Random& random);

/// The bytes with a few of them changed, removed, doubled or added, or with a part of another input in them.
std::string ChangeBytes(const std::string& bytes, const std::vector<std::string>& others, Random& random);

} // namespace tolmfuzz
