#include "MepDatabase/MergeTables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tolmtest {
namespace {

using tolm::MergeForm;

std::string Line(const tolm::MergeTableRow& row) {
    const std::wstring key = row.key;
    const char* const forms[] = {"one table", "pipe sizes", "one group", "other"};
    return std::string(key.begin(), key.end()) + " " + (row.classCode != nullptr ? row.classCode : "-") + " " +
           std::to_string(row.mepType) + " " + std::to_string(row.disciplineId) + " " +
           forms[static_cast<int>(row.form)] + " " + std::to_string(row.percentBefore) + " " +
           std::to_string(row.percentAfter);
}

TEST(MergeTables, AreTheseInThisOrder) {
    std::vector<std::string> lines;
    for (const auto& row : tolm::kMergeTables)
        lines.push_back(Line(row));
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "PipeSystemType SYS 1 2 one table 8 11",
                         "HVACPipeSystemType SYS 1 1 one table 11 14",
                         "DuctSystemType SYS 2 1 one table 14 17",
                         "ElectricalSystemType SYS 5 3 one table 17 20",
                         "PipeType SMS 1 2 one table 20 23",
                         "HVACPipeType SMS 1 1 one table 23 26",
                         "DuctType SMS 2 1 one table 26 29",
                         "ConduitFittingsType SMS 4 3 one table 29 32",
                         "CableTrayFittingsType SMS 3 3 one table 32 35",
                         "MaterialSeries - 1 2 pipe sizes 35 38",
                         "HVACMaterialSeries - 1 1 pipe sizes 38 41",
                         "ductSeriesType PSI 2 1 one group 41 44",
                         "electricWireType PSI 5 3 one group 44 47",
                         "electricLinePipe PSI 4 3 one group 47 50",
                         "cableTray PSI 3 3 one group 50 53",
                         "pipeFittingGroup MSG 1 2 one group 53 56",
                         "havcFittingGroup MSG 1 1 one group 56 59",
                         "ductFittingGroup MSG 2 1 one group 59 62",
                         " - 0 0 other 62 65",
                     }));
}

TEST(MergeTables, NineHaveAKeyOfTheirOwnAndTenComeWithConfigTree) {
    EXPECT_EQ(tolm::PlainMergeTables().size(), 9U);
    EXPECT_EQ(tolm::ConfigTreeMergeTables().size(), 10U);
    EXPECT_EQ(&tolm::ConfigTreeMergeTables().front(), &tolm::kMergeTables[9]);
}

TEST(MergeTables, TheMergeBeginsAtOneAndEndsAtEighty) {
    EXPECT_EQ(tolm::kMergeBegun, 1);
    EXPECT_EQ(tolm::kMergeDownloaded, 5);
    EXPECT_EQ(tolm::kMergeOpened, 8);
    EXPECT_EQ(tolm::kMergeTablesDone, 65);
    EXPECT_EQ(tolm::kMergeDone, 80);
}

} // namespace
} // namespace tolmtest
