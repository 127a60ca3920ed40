#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/SeriesFixture.h"

#include <rapidcheck.h>

namespace {

using namespace tolm;
using namespace tolmtest;

/// The replacement of component ids in stored fittings.
class FittingIds : public SeriesFixture {
protected:
    void Stored(const wstring& id, const std::string& bytes) {
        ASSERT_TRUE(Write(Connection(id)));
        SetFittingList(id, bytes);
    }
    bool Replace(const std::map<wstring, wstring>& ids) { return util.ReplaceFittingComponentId(path, ddq, ids); }
};

std::string Packed(const std::string& product, int part = 1, const std::string& category = "elbow") {
    return PackedFittingBytes(category, part, 11, product, 15.0F, 50.0F);
}

const std::string kEmptyEntry(106, '\0');

TEST_F(FittingIds, AreReplacedInEverySeriesAndAllElseStays) {
    Stored(L"a", Packed("old1") + Packed("keep", 2) + Packed("old2", 0));
    Stored(L"b", Packed("old1", 3));
    EXPECT_TRUE(Replace({{L"old1", L"new1"}, {L"old2", L"new2"}}));
    EXPECT_EQ(FittingList(L"a"), Packed("new1") + Packed("keep", 2) + Packed("new2", 0));
    EXPECT_EQ(FittingList(L"b"), Packed("new1", 3));
}

TEST_F(FittingIds, AreReplacedOnceAndNotInAChain) {
    Stored(L"a", Packed("1") + Packed("2"));
    EXPECT_TRUE(Replace({{L"1", L"2"}, {L"2", L"3"}}));
    EXPECT_EQ(FittingList(L"a"), Packed("2") + Packed("3"));
}

TEST_F(FittingIds, ANegativeEntryLeavesAnEmptyOneAndTheLastIsLost) {
    Stored(L"a", Packed("1") + Packed("x", -1) + Packed("2") + Packed("3"));
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), Packed("new") + kEmptyEntry + Packed("2"));
}

TEST_F(FittingIds, EachNegativeEntryCostsOneAtTheEnd) {
    Stored(L"a", Packed("x", -1) + Packed("y", -7) + Packed("1"));
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), kEmptyEntry) << "the one that was replaced is lost";
}

TEST_F(FittingIds, OfANegativeEntryAreNotReplaced) {
    const std::string before = Packed("x", -1) + Packed("2");
    Stored(L"a", before);
    EXPECT_TRUE(Replace({{L"x", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), before);
}

TEST_F(FittingIds, AnEmptyNewIdAloneChangesNothing) {
    Stored(L"a", Packed("1") + Packed("2"));
    EXPECT_TRUE(Replace({{L"1", L""}}));
    EXPECT_EQ(FittingList(L"a"), Packed("1") + Packed("2"));
    EXPECT_TRUE(Replace({{L"1", L""}, {L"2", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), Packed("") + Packed("new")) << "beside another change it is written";
}

TEST_F(FittingIds, ALongNewIdIsCutAtItsField) {
    Stored(L"a", Packed("1"));
    EXPECT_TRUE(Replace({{L"1", wstring(60, L'n')}}));
    EXPECT_EQ(FittingList(L"a"), Packed(std::string(40, 'n')));
    EXPECT_TRUE(Replace({{wstring(40, L'n'), wstring(20, L'品')}}));
    EXPECT_EQ(FittingList(L"a").value_or("").substr(58 + 39, 1), std::string(1, '\0'));
}

TEST_F(FittingIds, ARemainderThatIsNoEntryIsPassedOver) {
    Stored(L"a", Packed("1") + std::string(105, 'x'));
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), Packed("new"));
    Stored(L"b", "x");
    EXPECT_TRUE(Replace({{L"new", L"1"}}));
    EXPECT_EQ(FittingList(L"b"), "x");
}

TEST_F(FittingIds, OfSeriesWithoutAListAreNone) {
    ASSERT_TRUE(Write(Connection(L"a")));
    Stored(L"b", Packed("1"));
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), std::nullopt);
    EXPECT_EQ(FittingList(L"b"), Packed("new"));
}

TEST_F(FittingIds, OfAListLongerThanAnyWriterMakesAreReplacedToo) {
    std::string before;
    std::string after;
    for (int i = 0; i < 1000; ++i) {
        before += Packed("1");
        after += Packed("new");
    }
    Stored(L"a", before);
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), after);
}

TEST_F(FittingIds, BytesOfAnyKindAreLeftAsTheyAre) {
    const std::string before = std::string(106, '\x7f') + Packed("1") + Packed("2", 1, std::string(50, '\xff'));
    Stored(L"a", before);
    EXPECT_TRUE(Replace({{L"1", L"n"}}));
    EXPECT_EQ(FittingList(L"a"), std::string(106, '\x7f') + Packed("n") + Packed("2", 1, std::string(50, '\xff')));
}

TEST_F(FittingIds, OfAReplacedFittingLeaveTheBytesOfTheCategory) {
    const std::string cutWithinACharacter = std::string(48, 'c') + "\xe7\xb1";
    Stored(L"a", Packed("1", 1, std::string(50, '\xff')) + Packed("1", 1, cutWithinACharacter));
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), Packed("new", 1, std::string(50, '\xff')) + Packed("new", 1, cutWithinACharacter));
}

TEST_F(FittingIds, ClearTheBytesBehindEachText) {
    const std::string rest = std::string(1, '\0') + "rest";
    Stored(L"a", Packed("1" + rest, 1, "elbow" + rest) + Packed("2" + rest, 2, "elbow" + rest));
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), Packed("new") + Packed("2", 2));
}

TEST_F(FittingIds, ThatNoFittingHasMoveTheTimePointAlone) {
    Stored(L"a", Packed("1"));
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, 7));
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq), L"");
    EXPECT_TRUE(Replace({{L"unknown", L"new"}}));
    EXPECT_EQ(FittingList(L"a"), Packed("1"));
    EXPECT_EQ(util.GetLastUpdateTimePoint(path, ddq).size(), 19U);
    bool changed = false;
    EXPECT_EQ(util.GetLocalVersion(path, ddq, changed), 7);
}

TEST_F(FittingIds, BringTheHeaderIntoBeing) {
    Stored(L"a", Packed("1"));
    EXPECT_EQ(SqlValue(path, "select count(*) from \"000\""), "0");
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_EQ(SqlValue(path, "select id from \"000\""), "FileHeader");
}

TEST_F(FittingIds, AreReplacedWithoutANoteForTheNextUpload) {
    Stored(L"a", Packed("1"));
    ASSERT_TRUE(CQbase::removeStore(statusPath));
    EXPECT_TRUE(Replace({{L"1", L"new"}}));
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(FittingIds, OfAnEmptyMapAreFalseAndNothingIsOpened) {
    Stored(L"a", Packed("1"));
    const auto before = FileBytes(path);
    EXPECT_FALSE(Replace({}));
    EXPECT_EQ(FileBytes(path), before);
}

struct Entry {
    int part;
    std::string product;
    std::string Bytes() const { return Packed(product, part); }
};

/// The list that a replacement leaves, entry by entry in an area of zeros of which as many are kept as were copied.
std::string Replaced(const std::vector<Entry>& entries, const std::map<std::string, std::string>& ids) {
    std::string area;
    std::string before;
    std::size_t copied = 0;
    bool isChanged = false;
    for (const Entry& entry : entries) {
        before += entry.Bytes();
        if (entry.part < 0) {
            area += kEmptyEntry;
            continue;
        }
        const auto id = ids.find(entry.product);
        area += id != ids.end() ? Packed(id->second, entry.part) : entry.Bytes();
        isChanged = isChanged || (id != ids.end() && !id->second.empty());
        ++copied;
    }
    return isChanged ? area.substr(0, copied * 106) : before;
}

TEST_F(FittingIds, OfAnyListBecomeWhatTheRuleSays) {
    ASSERT_TRUE(Write(Connection(L"a")));
    const bool holds = rc::check([this] {
        std::vector<Entry> entries;
        std::string bytes;
        for (int left = *rc::gen::inRange(1, 12); left > 0; --left) {
            entries.push_back({*rc::gen::inRange(-2, 6), *rc::gen::element<std::string>("1", "2", "3", "4")});
            bytes += entries.back().Bytes();
        }
        std::map<std::string, std::string> ids;
        for (int left = *rc::gen::inRange(0, 4); left > 0; --left) {
            const auto from = *rc::gen::element<std::string>("1", "2", "5");
            ids[from] = *rc::gen::element<std::string>("", "2", "9");
        }
        std::map<wstring, wstring> wideIds;
        for (const auto& [from, to] : ids)
            wideIds.emplace(wstring(from.begin(), from.end()), wstring(to.begin(), to.end()));
        SetFittingList(L"a", bytes);
        RC_ASSERT(Replace(wideIds) == !ids.empty());
        RC_ASSERT(FittingList(L"a").value_or("none") == Replaced(entries, ids));
    });
    EXPECT_TRUE(holds);
}

TEST_F(FittingIds, BytesOfAnyKindAreReadAndReplacedWithoutHarm) {
    ASSERT_TRUE(Write(Connection(L"a")));
    const bool holds = rc::check([this] {
        const auto bytes = *rc::gen::resize(700, rc::gen::container<std::string>(rc::gen::arbitrary<char>()));
        SetFittingList(L"a", bytes);
        const std::size_t read = Connections().empty() ? 0 : Connections()[0]->GetProducts().size();
        RC_ASSERT(read <= bytes.size() / 106);
        RC_ASSERT(Replace({{L"1", L"2"}}));
        RC_ASSERT(FittingList(L"a").value_or("").size() <= bytes.size());
    });
    EXPECT_TRUE(holds);
    TakeDebugWarnings();
}

} // namespace
