#pragma once

#include <string>

namespace tolmtest {

/// What a cloud answers that holds records of most classes: size tables and materials, a series with fittings, its
/// group, system types, circuit templates, a combined product and binary files.
std::string RichIncrement();
/// What came and went since then: in each table one record edited, one new, one gone.
std::string RichFurtherIncrement();
/// The system type "y1" and a binary file went since then, and nothing else.
std::string RichLossOfASystemType();

} // namespace tolmtest
