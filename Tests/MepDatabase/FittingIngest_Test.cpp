#include "MepDatabase/FittingIngest.h"
#include "StoreSupport/IngestFixture.h"

#include <array>
#include <limits>
#include <stdexcept>

namespace tolmtest {
namespace {

class FittingIngest : public IngestFixture {
protected:
    void SetUp() override {
        IngestFixture::SetUp();
        ProvideCategories({"cat", std::string(60, 'c')});
    }

    bool Read(const std::string& products) {
        web::json::value list = Row(products);
        std::vector<web::json::value> elements(list.as_array().begin(), list.as_array().end());
        return tolm::GetFittingProductsOfOneRuleType(4, std::move(elements), category, rows.data(), count);
    }
    std::string ReadRow(const std::string& product) {
        EXPECT_TRUE(Read("[" + product + "]"));
        return {rows.data(), tolm::kFittingEntrySize};
    }
    static std::string Expected(const std::string& categoryId, const std::string& id, int part, float min, float max) {
        return PackedText(categoryId, 50) + PackedInt32(part) + PackedInt32(4) + PackedText(id, 40) +
               PackedFloats({min, max});
    }

    wstring category;
    std::array<char, 300 * tolm::kFittingEntrySize> rows{};
    int count = -1;
};

TEST_F(FittingIngest, NoRowsToWriteToIsReported) {
    EXPECT_FALSE(tolm::GetFittingProductsOfOneRuleType(1, {}, category, nullptr, count));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetFittingProductsOfOneRuleType: productlist1为空"}));
    EXPECT_EQ(count, -1);
}

TEST_F(FittingIngest, NoProductsAreNoRows) {
    EXPECT_FALSE(Read("[]"));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(category, L"");
}

TEST_F(FittingIngest, ARowHoldsAllMembers) {
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':'e1','FittingPartType':3,'min':1.5,'max':20,'version':2,"
                      "'publicComponentId':'77'}"),
              Expected("cat", "e1", 3, 1.5F, 20.0F));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(category, L"cat");
}

TEST_F(FittingIngest, ANumericIdIsWrittenInDecimal) {
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':12345,'FittingPartType':1}"), Expected("cat", "12345", 1, 0, 0));
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':12345.9,'FittingPartType':1}"), Expected("cat", "12345", 1, 0, 0));
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':-7,'FittingPartType':1}"), Expected("cat", "-7", 1, 0, 0));
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':9007199254740993,'FittingPartType':1}"),
              Expected("cat", "9007199254740993", 1, 0, 0));
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':1e300,'FittingPartType':1}"),
              Expected("cat", "9223372036854775807", 1, 0, 0));
}

TEST_F(FittingIngest, AnIdOfAnyOtherTypeLeavesTheFieldEmpty) {
    for (const char* id : {"null", "true", "[]", "{}"})
        EXPECT_EQ(ReadRow(std::string("{'categoryCode':'cat','id':") + id + ",'FittingPartType':1}"),
                  Expected("cat", "", 1, 0, 0))
            << id;
}

TEST_F(FittingIngest, TextsAreCutAtTheirFieldsBetweenCharacters) {
    const std::string wide = "\xE7\xAE\xA1";
    std::string id;
    for (int i = 0; i < 20; ++i)
        id += wide;
    EXPECT_EQ(ReadRow("{'categoryCode':'" + std::string(60, 'c') + "','id':'" + id + "','FittingPartType':1}"),
              Expected(std::string(50, 'c'), id.substr(0, 39), 1, 0, 0));
    EXPECT_EQ(ReadRow("{'categoryCode':'x','id':'" + std::string(41, 'i') + "','FittingPartType':1}"),
              Expected(std::string(50, 'c'), std::string(40, 'i'), 1, 0, 0));
}

TEST_F(FittingIngest, BoundsThatAreNoNumbersAreZero) {
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':'e','FittingPartType':1,'min':'5','max':null}"),
              Expected("cat", "e", 1, 0, 0));
}

TEST_F(FittingIngest, NumbersAreClamped) {
    constexpr float most = std::numeric_limits<float>::max();
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':'e','FittingPartType':99999999999,'min':-1e300,'max':1e300}"),
              Expected("cat", "e", 2147483647, -most, most));
}

TEST_F(FittingIngest, ACategoryThatIsFoundAlreadyIsNotLookedUp) {
    category = L"given";
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
    EXPECT_EQ(ReadRow("{'categoryCode':'cat','id':'e','FittingPartType':1}"), Expected("given", "e", 1, 0, 0));
}

TEST_F(FittingIngest, AnUnknownCategoryIsEmptyAndTheNextProductIsAsked) {
    EXPECT_TRUE(Read("[{'categoryCode':'no','id':'a','FittingPartType':1},"
                     "{'categoryCode':'cat','id':'b','FittingPartType':1}]"));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::string(rows.data(), 2 * tolm::kFittingEntrySize),
              Expected("", "a", 1, 0, 0) + Expected("cat", "b", 1, 0, 0));
}

TEST_F(FittingIngest, WithoutACategoryServiceTheReadEnds) {
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
    EXPECT_FALSE(Read("[{'categoryCode':'cat','id':'a','FittingPartType':1},"
                      "{'categoryCode':'cat','id':'b','FittingPartType':1}]"));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"GetFittingProductsOfOneRuleType: pTolmCategoryInfoUtils为空"}));
}

TEST_F(FittingIngest, AMissingMemberThrows) {
    EXPECT_THROW(Read("[{'id':'a','FittingPartType':1}]"), web::json::json_exception);
    EXPECT_THROW(Read("[{'categoryCode':'cat','FittingPartType':1}]"), web::json::json_exception);
    EXPECT_THROW(Read("[{'categoryCode':'cat','id':'a'}]"), web::json::json_exception);
    EXPECT_THROW(Read("[null]"), web::json::json_exception);
}

TEST_F(FittingIngest, MoreThanThreeHundredProductsThrow) {
    std::vector<web::json::value> products(301, Row("{'categoryCode':'cat','id':'a','FittingPartType':1}"));
    EXPECT_THROW(tolm::GetFittingProductsOfOneRuleType(1, std::move(products), category, rows.data(), count),
                 std::length_error);
}

} // namespace
} // namespace tolmtest
