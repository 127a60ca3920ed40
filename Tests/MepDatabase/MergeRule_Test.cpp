#include "MepDatabase/MergeRule.h"

#include <gtest/gtest.h>

namespace tolmtest {
namespace {

using tolm::CloudChanges;
using tolm::IdPool;
using tolm::LocalChanges;
using Ids = std::vector<tolm::wstring>;

TEST(MergeRule, APoolGivesEachOccurrenceOnce) {
    const Ids ids{L"a", L"b", L"a"};
    IdPool pool(ids);
    EXPECT_TRUE(pool.Take(L"a"));
    EXPECT_TRUE(pool.Take(L"a"));
    EXPECT_FALSE(pool.Take(L"a"));
    EXPECT_FALSE(pool.Take(L"c"));
    EXPECT_EQ(pool.Left(), Ids{L"b"});
}

TEST(MergeRule, APoolGivesFirstOccurrencesFirst) {
    const Ids ids{L"a", L"b", L"a", L"c", L"a"};
    IdPool pool(ids);
    pool.Take(L"a");
    EXPECT_EQ(pool.Left(), (Ids{L"b", L"a", L"c", L"a"}));
    pool.Take(L"a");
    pool.Take(L"c");
    EXPECT_EQ(pool.Left(), (Ids{L"b", L"a"}));
}

TEST(MergeRule, AnUntouchedPoolKeepsItsOrderAndDuplicates) {
    const Ids ids{L"b", L"a", L"b"};
    EXPECT_EQ(IdPool(ids).Left(), ids);
    const Ids none;
    EXPECT_TRUE(IdPool(none).Left().empty());
}

TEST(MergeRule, ConflictsAreDeletionsFirstThenChangesInTheCloudsOrder) {
    LocalChanges local{{L"c"}, {L"m2", L"d2", L"e"}, {L"d1", L"m1", L"r"}};
    EXPECT_EQ(TakeConflicts(CloudChanges{{}, {L"d1", L"d2"}, {L"m2", L"m1"}}, local),
              (Ids{L"d1", L"d2", L"m2", L"m1"}));
    EXPECT_EQ(local.created, Ids{L"c"});
    EXPECT_EQ(local.edited, Ids{L"e"});
    EXPECT_EQ(local.removed, Ids{L"r"});
}

TEST(MergeRule, AdditionsAndLocalCreationsAreNoConflict) {
    LocalChanges local{{L"a", L"d", L"m"}, {L"b"}, {L"c"}};
    EXPECT_TRUE(TakeConflicts(CloudChanges{{L"a", L"b", L"c"}, {L"d"}, {L"m"}}, local).empty());
    EXPECT_EQ(local.created, (Ids{L"a", L"d", L"m"}));
    EXPECT_EQ(local.edited, Ids{L"b"});
    EXPECT_EQ(local.removed, Ids{L"c"});
}

TEST(MergeRule, AnIdTwiceInTheCloudsListTakesOneOccurrenceEachTime) {
    LocalChanges local{{}, {L"x", L"x", L"x"}, {}};
    EXPECT_EQ(TakeConflicts(CloudChanges{{}, {}, {L"x", L"x"}}, local), (Ids{L"x", L"x"}));
    EXPECT_EQ(local.edited, Ids{L"x"});
}

TEST(MergeRule, AnIdThatIsRemovedInOneClassAndEditedInTheOtherIsTakenOutOfBoth) {
    LocalChanges local{{}, {L"x"}, {L"x"}};
    EXPECT_EQ(TakeConflicts(CloudChanges{{}, {L"x"}, {}}, local), (Ids{L"x", L"x"}));
    EXPECT_TRUE(local.IsEmpty());
}

} // namespace
} // namespace tolmtest
