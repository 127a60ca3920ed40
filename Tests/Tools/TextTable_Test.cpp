#include "Tolm/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>

using tolmcli::DisplayWidth;
using tolmcli::TextTable;

TEST(TextTable, ChineseCharactersTakeTwoColumns) {
    EXPECT_EQ(DisplayWidth(L"铜 Copper"), 9U);
    EXPECT_EQ(DisplayWidth(L""), 0U);
}

TEST(TextTable, ColumnsLineUpAndNumbersStandToTheRight) {
    TextTable table({L"name", L"DN"});
    table.Add({L"铜", L"15"});
    table.Add({L"PVC-U", L"100"});
    std::ostringstream out;
    table.Print(out);
    EXPECT_EQ(out.str(), "name    DN\n"
                         "-----  ---\n"
                         "铜      15\n"
                         "PVC-U  100\n");
}

TEST(TextTable, NumbersHaveNoNeedlessDigits) {
    EXPECT_EQ(tolmcli::Number(25.0), L"25");
    EXPECT_EQ(tolmcli::Number(21.3F), L"21.3");
}
