#include "Tools/PulledTree.h"

using namespace tolmtest;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Misused;

namespace {

class TreeCommands : public PulledTree {};

} // namespace

TEST_F(TreeCommands, EveryKindOfRecordIsListed) {
    struct Case {
        const char* what;
        const char* name;
        const char* count;
    };
    for (const Case& c :
         {Case{"materials", "Steel", "1 materials"}, Case{"sizes", "Steel pipe", "2 size tables"},
          Case{"series", "Threaded steel", "1 series"}, Case{"groups", "Cold water", "1 groups"},
          Case{"systems", "Domestic cold water", "1 system types"}, Case{"connections", "2", "1 connection series"}}) {
        const auto run = On("list", {c.what});
        EXPECT_EQ(run.code, Done) << run.err;
        EXPECT_TRUE(Contains(run.out, c.name)) << run.out;
        EXPECT_TRUE(Contains(run.out, c.count)) << run.out;
    }
}

TEST_F(TreeCommands, ASeriesIsDrawnWithItsFittings) {
    const auto run = On("show", {"series", "Threaded steel"});
    ASSERT_EQ(run.code, Done) << run.err;
    for (const char* part : {"group: Cold water", "sizes: Steel pipe (1 rows, Steel)", "├─ elbow: Elbow 90",
                             "└─ tee: Equal tee", "from  15 to 80"})
        EXPECT_TRUE(Contains(run.out, part)) << part << "\n" << run.out;
}

TEST_F(TreeCommands, ASeriesAsJsonHoldsItsParts) {
    const auto json = On("show", {"series", "p1", "--json"}).Json();
    EXPECT_EQ(json.at("group").at("id"), "g1");
    EXPECT_EQ(json.at("sizes").at("id"), "s1");
    ASSERT_EQ(json.at("connection").at("fittings").size(), 2U);
    EXPECT_EQ(json.at("connection").at("fittings")[0].at("component"), "c1");
    EXPECT_EQ(json.at("connection").at("fittings")[1].at("rule"), "tee");
}

TEST_F(TreeCommands, ASystemTypeShowsItsSeries) {
    EXPECT_TRUE(Contains(On("show", {"system", "Domestic cold water"}).out, "series: Threaded steel"));
    const auto json = On("show", {"system", "y1", "--json"}).Json();
    EXPECT_EQ(json.at("code"), "J");
    EXPECT_EQ(json.at("classification"), 21);
    EXPECT_EQ(json.at("series")[0].at("id"), "p1");
}

TEST_F(TreeCommands, UsedByNamesWhoRefersToARecord) {
    EXPECT_EQ(On("used-by", {"size", "Steel pipe"}).out, "Used by Threaded steel\n");
    EXPECT_EQ(On("used-by", {"series", "Threaded steel"}).out, "Used by Domestic cold water\n");
    EXPECT_EQ(On("used-by", {"size", "Spare pipe"}).out, "Not used\n");
    EXPECT_EQ(On("used-by", {"size", "Spare pipe", "--json"}).Json().at("used"), false);
    EXPECT_EQ(On("used-by", {"size", "Nothing"}).code, Failed);
}

TEST_F(TreeCommands, AvailableTellsWhatADesignerMayChooseFrom) {
    const auto json = On("available", {"--kind", "plumbing-pipe", "--json"}).Json();
    EXPECT_EQ(json.at("materials"), 1);
    EXPECT_EQ(json.at("sizes"), 2);
    EXPECT_EQ(json.at("connections"), 0) << "what the cloud sent has a connector type and no object type";
    EXPECT_EQ(json.at("connectors").size(), 5U);
    ASSERT_EQ(json.at("series").size(), 1U);
    EXPECT_EQ(json.at("series")[0].at("name"), "Threaded steel");
    EXPECT_TRUE(Contains(On("available", {"--kind", "duct"}).out, "0 series"));
    EXPECT_EQ(On("available").code, Misused);
}

TEST_F(TreeCommands, ListsNarrowToAKind) {
    EXPECT_EQ(On("list", {"series", "--kind", "duct", "--json"}).Json().size(), 0U);
    EXPECT_EQ(On("list", {"connections", "--kind", "duct", "--json"}).Json().size(), 0U);
    EXPECT_EQ(On("list", {"connections", "--kind", "plumbing-pipe", "--json"}).Json().size(), 1U);
    EXPECT_EQ(On("list", {"sizes", "--kind", "electrical", "--json"}).Json().size(), 0U);
}
