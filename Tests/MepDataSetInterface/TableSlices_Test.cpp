#include "MepDataSetInterface/TableSlices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using namespace tolm;

TEST(TableSlices, CoverEveryIdWithAMeaningOnce) {
    std::set<int> ids;
    for (const auto& slice : kTableSlices)
        ids.insert(static_cast<int>(slice.id));
    EXPECT_EQ(ids.size(), kTableSlices.size());
    for (int id = -2; id <= 40; ++id) {
        const bool meaningless = id < 0 || id > 35 || (id >= 4 && id <= 6) || id == 8 || id == 9 || id == 14;
        EXPECT_EQ(ids.count(id), meaningless ? 0U : 1U) << id;
        EXPECT_EQ(FindSlice(static_cast<TolmProjectSettingTableId>(id)) == nullptr, meaningless) << id;
    }
}

struct Expected {
    int first;
    int last;
    TableKind table;
};

TEST(TableSlices, RouteEachIdToItsTable) {
    for (const auto& [first, last, table] :
         {Expected{0, 3, TableKind::SystemTypes}, Expected{7, 7, TableKind::SizeModules},
          Expected{10, 13, TableKind::SizeModules}, Expected{33, 33, TableKind::SizeModules},
          Expected{15, 23, TableKind::Connections}, Expected{24, 27, TableKind::Series},
          Expected{34, 34, TableKind::Series}, Expected{28, 31, TableKind::Materials},
          Expected{35, 35, TableKind::Materials}, Expected{32, 32, TableKind::CircuitTemplates}}) {
        for (int id = first; id <= last; ++id)
            EXPECT_EQ(FindSlice(static_cast<TolmProjectSettingTableId>(id))->table, table) << id;
    }
}

struct Selection {
    int id;
    int objectType;
    int discipline;
    int connector;
};
constexpr Selection kSelections[] = {
    {0, 1, 2, 0},  {1, 2, 1, 0},  {2, 1, 1, 0},   {3, 6, 3, 0},   {7, 1, 2, 0},   {10, 2, 1, 0},
    {11, 3, 3, 0}, {12, 4, 3, 0}, {13, 5, 3, 0},  {15, 0, 0, 1},  {16, 0, 0, 2},  {17, 0, 0, 3},
    {18, 0, 0, 4}, {19, 0, 0, 5}, {20, 0, 0, 11}, {21, 0, 0, 21}, {22, 0, 0, 22}, {23, 0, 0, 31},
    {24, 1, 2, 0}, {25, 2, 1, 0}, {26, 3, 3, 0},  {27, 4, 3, 0},  {28, 1, 2, 0},  {29, 2, 1, 0},
    {30, 3, 3, 0}, {31, 4, 3, 0}, {32, 0, 0, 0},  {33, 1, 1, 0},  {34, 1, 1, 0},  {35, 1, 1, 0},
};

TEST(TableSlices, SelectObjectTypeDisciplineAndConnectorType) {
    for (const auto& expected : kSelections) {
        const TableSlice* slice = FindSlice(static_cast<TolmProjectSettingTableId>(expected.id));
        ASSERT_NE(slice, nullptr) << expected.id;
        EXPECT_EQ(static_cast<int>(slice->objectType), expected.objectType) << expected.id;
        EXPECT_EQ(static_cast<int>(slice->discipline), expected.discipline) << expected.id;
        EXPECT_EQ(static_cast<int>(slice->connectorType), expected.connector) << expected.id;
    }
}

TEST(TableSlices, OfAnotherTableAreNotFound) {
    EXPECT_EQ(FindSlice(TolmProjectSettingTableId::DuctSizes, TableKind::Materials), nullptr);
    EXPECT_NE(FindSlice(TolmProjectSettingTableId::DuctSizes, TableKind::SizeModules), nullptr);
}

} // namespace
