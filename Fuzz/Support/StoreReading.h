#pragma once

#include "TolmDataSet/MepEnums.h"

#include <cstddef>
#include <string>

namespace tolmfuzz {

using tolm::wstring;

/// Reads the store through every operation that lists records, each for one object type and discipline, which
/// `turn` changes. Returns what they did not list of the records that stand, "" for nothing.
std::string ReadLists(const wstring& path, const wstring& componentPath, std::size_t turn);

/// Holds a store to what no input may change: SQLite finds it in order, its numbers are finite, its packed lists are
/// whole and no longer than a list may be.
void RequireSound(const wstring& path);

/// How many records each class has that a refresh fills.
std::string CountRecords(const wstring& path);

} // namespace tolmfuzz
