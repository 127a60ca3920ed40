#pragma once

#include "ConvergeHost/Slices.h"
#include "TolmDataSet/TolmDataSet.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace tolmtest {

/// One record of a slice as a host sees it.
struct SeenRecord {
    std::wstring id;
    std::wstring name;
    std::int64_t mark = 0; ///< time of creation, by which the tests know an edit again
};

/// What the dataset holds of a slice, collected afresh.
std::vector<SeenRecord> SeeRecords(tolm::ITolmDataset& dataset, const Slice& slice);

/// Writes a record through its table: {"id", "name", "mark", "n", "links"}. Its values follow from the number `n`; its
/// parts are those of the links that the dataset has. False, and nothing written, where a part is missing that it
/// cannot be without.
bool PutRecord(tolm::ITolmDataset& dataset, const Slice& slice, const nlohmann::json& edit);

/// Deletes a record through its table.
void DeleteRecord(tolm::ITolmDataset& dataset, const Slice& slice, const std::wstring& id);

std::wstring WideAt(const nlohmann::json& object, const char* key);

} // namespace tolmtest
