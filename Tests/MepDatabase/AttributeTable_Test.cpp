#include "MepDatabase/AttributeTable.h"

#include "MepDatabase/RecordAttributes.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>

namespace {

using namespace tolm;
using namespace tolmtest;

TEST(AttributeTable, ANumberIsBroughtIntoTheRangeOfItsAttribute) {
    EXPECT_EQ(ClampTo<std::int64_t>(1.9), 1);
    EXPECT_EQ(ClampTo<std::int64_t>(-1.9), -1);
    EXPECT_EQ(ClampTo<std::int64_t>(9.3e18), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(ClampTo<std::int64_t>(-std::numeric_limits<double>::infinity()),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(ClampTo<std::int64_t>(std::nan("")), 0);
    EXPECT_EQ(ClampTo<float>(1e300), std::numeric_limits<float>::max());
    EXPECT_EQ(ClampTo<float>(0.1), 0.1F);
    EXPECT_EQ(ClampTo<double>(std::numeric_limits<double>::infinity()), std::numeric_limits<double>::max());
}

TEST(AttributeTable, AShortIsTheNearestOne) {
    EXPECT_EQ(ToShort(Type::Wire), 5);
    EXPECT_EQ(ToShort(true), 1);
    EXPECT_EQ(ToShort(40000), 32767);
    EXPECT_EQ(ToShort(static_cast<Type>(-40000)), -32768);
}

TEST(AttributeTable, EachTypeOfSizeModuleHasItsRow) {
    for (int type = 1; type <= 5; ++type) {
        const SizeModuleKind* kind = SizeModuleKindOf(static_cast<Type>(type));
        ASSERT_NE(kind, nullptr);
        EXPECT_EQ(static_cast<int>(kind->type), type);
        EXPECT_EQ(kind->storesMaterial, type <= 2);
    }
    for (const int type : {-1, 0, 6, 7})
        EXPECT_EQ(SizeModuleKindOf(static_cast<Type>(type)), nullptr);
}

template <class Record> void ExpectNoAttributeTwice(AttributeTable<Record> table) {
    std::set<short> written;
    std::set<short> read;
    for (const auto& row : table) {
        EXPECT_TRUE(row.write == nullptr || written.insert(row.id).second) << row.id;
        EXPECT_TRUE(row.read == nullptr || read.insert(row.id).second) << row.id;
    }
}

TEST(AttributeTable, NoAttributeStandsTwiceInATable) {
    ExpectNoAttributeTwice(MaterialAttributes());
    ExpectNoAttributeTwice(SizeModuleAttributes());
    ExpectNoAttributeTwice(ConnectionSerieAttributes());
    ExpectNoAttributeTwice(MaterialSerieAttributes());
    ExpectNoAttributeTwice(MaterialSerieGroupAttributes());
    ExpectNoAttributeTwice(SystemTypeAttributes());
    for (int type = 1; type <= 5; ++type)
        ExpectNoAttributeTwice(SizeModuleKindOf(static_cast<Type>(type))->attributes);
}

TEST(AttributeTable, TheNestedMaterialLacksTheTimeOfCreationAlone) {
    EXPECT_EQ(NestedMaterialAttributes().size() + 1, MaterialAttributes().size());
    EXPECT_EQ(MaterialAttributes().back().id, 1401);
    EXPECT_EQ(NestedMaterialAttributes().data(), MaterialAttributes().data());
}

TEST(AttributeTable, TheNestedGroupLacksTheTimeOfCreationAlone) {
    EXPECT_EQ(NestedMaterialSerieGroupAttributes().size() + 1, MaterialSerieGroupAttributes().size());
    EXPECT_EQ(MaterialSerieGroupAttributes().back().id, 1401);
    EXPECT_EQ(NestedMaterialSerieGroupAttributes().data(), MaterialSerieGroupAttributes().data());
}

class NumbersThatAreNone : public StoreFixture {};

TEST_F(NumbersThatAreNone, AreNeverStored) {
    auto module = SizeModule(L"p", L"");
    module->SetRoughness(std::nan(""));
    ASSERT_TRUE(util.WriteSizeModule(path, ddq, module.get()));
    EXPECT_EQ(SqlValue(path, "select roughness from PSI"), "0.0");
    module->SetRoughness(-std::numeric_limits<double>::infinity());
    ASSERT_TRUE(util.WriteSizeModule(path, ddq, module.get()));
    EXPECT_EQ(SqlValue(path, "select roughness > -1.8e308 and roughness < -1.7e308 from PSI"), "1");
}

} // namespace
