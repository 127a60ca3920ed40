#pragma once

#include "MepDatabase/StoreSchema.h"

#include <algorithm>
#include <iterator>
#include <span>

/// What a merge goes through, in its order.
namespace tolm {

/// How a table is merged.
enum class MergeForm {
    OneTable,   ///< a table of the download under its own key
    PipeSizes,  ///< a group of "ConfigTree" that holds materials and their size tables
    OneGroup,   ///< any other group of "ConfigTree"
    OtherTables ///< circuit templates, combined products and binary files
};

/// One table of the merge. `classCode` is that of its records, and null where there is not exactly one.
struct MergeTableRow {
    const wchar_t* key;
    const char* classCode;
    short mepType;
    short disciplineId;
    MergeForm form;
    int percentBefore;
    int percentAfter;
};

inline constexpr MergeTableRow kMergeTables[] = {
    {L"PipeSystemType", schema::kSystemType, 1, 2, MergeForm::OneTable, 8, 11},
    {L"HVACPipeSystemType", schema::kSystemType, 1, 1, MergeForm::OneTable, 11, 14},
    {L"DuctSystemType", schema::kSystemType, 2, 1, MergeForm::OneTable, 14, 17},
    {L"ElectricalSystemType", schema::kSystemType, 5, 3, MergeForm::OneTable, 17, 20},
    {L"PipeType", schema::kMaterialSerie, 1, 2, MergeForm::OneTable, 20, 23},
    {L"HVACPipeType", schema::kMaterialSerie, 1, 1, MergeForm::OneTable, 23, 26},
    {L"DuctType", schema::kMaterialSerie, 2, 1, MergeForm::OneTable, 26, 29},
    {L"ConduitFittingsType", schema::kMaterialSerie, 4, 3, MergeForm::OneTable, 29, 32},
    {L"CableTrayFittingsType", schema::kMaterialSerie, 3, 3, MergeForm::OneTable, 32, 35},
    {L"MaterialSeries", nullptr, 1, 2, MergeForm::PipeSizes, 35, 38},
    {L"HVACMaterialSeries", nullptr, 1, 1, MergeForm::PipeSizes, 38, 41},
    {L"ductSeriesType", schema::kSizeModule, 2, 1, MergeForm::OneGroup, 41, 44},
    {L"electricWireType", schema::kSizeModule, 5, 3, MergeForm::OneGroup, 44, 47},
    {L"electricLinePipe", schema::kSizeModule, 4, 3, MergeForm::OneGroup, 47, 50},
    {L"cableTray", schema::kSizeModule, 3, 3, MergeForm::OneGroup, 50, 53},
    {L"pipeFittingGroup", schema::kMaterialSerieGroup, 1, 2, MergeForm::OneGroup, 53, 56},
    {L"havcFittingGroup", schema::kMaterialSerieGroup, 1, 1, MergeForm::OneGroup, 56, 59},
    {L"ductFittingGroup", schema::kMaterialSerieGroup, 2, 1, MergeForm::OneGroup, 59, 62},
    {L"", nullptr, 0, 0, MergeForm::OtherTables, 62, 65},
};

/// True when each row goes on where the one before it ended, and plain tables come before the groups.
constexpr bool AreMergeTablesInOrder() {
    for (std::size_t i = 1; i < std::size(kMergeTables); ++i) {
        const MergeTableRow& before = kMergeTables[i - 1];
        const MergeTableRow& row = kMergeTables[i];
        const bool isPlain = row.form == MergeForm::OneTable;
        if (row.percentBefore != before.percentAfter || (isPlain && before.form != MergeForm::OneTable))
            return false;
    }
    return true;
}
static_assert(AreMergeTablesInOrder());

/// The tables with a key of their own.
constexpr std::span<const MergeTableRow> PlainMergeTables() {
    const auto* end = std::find_if_not(std::begin(kMergeTables), std::end(kMergeTables),
                                       [](const MergeTableRow& row) { return row.form == MergeForm::OneTable; });
    return {std::begin(kMergeTables), end};
}
/// The groups of "ConfigTree" and what comes with them.
constexpr std::span<const MergeTableRow> ConfigTreeMergeTables() {
    return std::span(kMergeTables).subspan(PlainMergeTables().size());
}

// What is reported around the tables.
inline constexpr int kMergeBegun = 1;
inline constexpr int kMergeDownloaded = 5;
inline constexpr int kMergeOpened = kMergeTables[0].percentBefore;
inline constexpr int kMergeTablesDone = kMergeTables[std::size(kMergeTables) - 1].percentAfter;
inline constexpr int kMergeDone = 80;

} // namespace tolm
