#include "StoreSupport/IngestFixture.h"
#include "Support/ScriptedServer.h"
#include "Support/TestSession.h"

#include "MepDatabase/MergeLists.h" // after the test framework, which the macro U would break

namespace tolmtest {
namespace {

using tolm::GetCloudChangedConfigTreeIdLists;
using tolm::GetCloudChangedIdLists;
using IdMap = std::map<wstring, Texts>;

/// The three lists of a table "T".
struct Lists {
    Texts added{L"of before"};
    Texts deleted{L"of before"};
    Texts modified{L"of before"};
    friend bool operator==(const Lists&, const Lists&) = default;
};

Lists ListsOf(const std::string& add, const std::string& del) {
    Lists lists;
    EXPECT_TRUE(GetCloudChangedIdLists(Row(add), Row(del), L"T", lists.added, lists.deleted, lists.modified));
    return lists;
}

TEST(MergeLists, AnIdOnOneSideIsAddedOrDeletedAndOnBothModified) {
    EXPECT_EQ(ListsOf("{'T':[{'ID':'a'},{'ID':'m'}]}", "{'T':[{'ID':'m'},{'ID':'d'}]}"),
              (Lists{{L"a"}, {L"d"}, {L"m"}}));
}

TEST(MergeLists, OneEmptySideLeavesTheOtherWhole) {
    EXPECT_EQ(ListsOf("{'T':[{'ID':'b'},{'ID':'a'}]}", "{}"), (Lists{{L"b", L"a"}, {}, {}}));
    EXPECT_EQ(ListsOf("{}", "{'T':[{'ID':'b'},{'ID':'a'}]}"), (Lists{{}, {L"b", L"a"}, {}}));
    EXPECT_EQ(ListsOf("{'T':[]}", "{'T':[]}"), (Lists{{}, {}, {}}));
}

TEST(MergeLists, OrderIsThatOfTheArrays) {
    EXPECT_EQ(ListsOf("{'T':[{'ID':'4'},{'ID':'2'},{'ID':'3'},{'ID':'1'}]}",
                      "{'T':[{'ID':'6'},{'ID':'1'},{'ID':'5'},{'ID':'2'}]}"),
              (Lists{{L"4", L"3"}, {L"6", L"5"}, {L"2", L"1"}}));
}

TEST(MergeLists, AnIdListedTwiceAppearsTwice) {
    EXPECT_EQ(ListsOf("{'T':[{'ID':'a'},{'ID':'a'}]}", "{}"), (Lists{{L"a", L"a"}, {}, {}}));
    EXPECT_EQ(ListsOf("{'T':[{'ID':'a'},{'ID':'a'}]}", "{'T':[{'ID':'a'}]}"), (Lists{{L"a"}, {}, {L"a"}}));
    EXPECT_EQ(ListsOf("{'T':[{'ID':'a'}]}", "{'T':[{'ID':'a'},{'ID':'b'},{'ID':'a'}]}"),
              (Lists{{}, {L"b", L"a"}, {L"a"}}));
}

TEST(MergeLists, IdsAreComparedWithTheirCase) {
    EXPECT_EQ(ListsOf("{'T':[{'ID':'a'}]}", "{'T':[{'ID':'A'}]}"), (Lists{{L"a"}, {L"A"}, {}}));
}

TEST(MergeLists, ARowWithoutAnIdDoesNotCountAndIsReported) {
    EXPECT_EQ(ListsOf("{'T':[{'name':'n'},{'ID':'a'},7,null]}", "{'T':[{}]}"), (Lists{{L"a"}, {}, {}}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warnings(4, L"GetJsonValueAtField: 此field为空：ID"));
}

TEST(MergeLists, AnIdThatIsNullOrNoTextDoesNotCount) {
    EXPECT_EQ(ListsOf("{'T':[{'ID':null},{'ID':7},{'ID':'a'}]}", "{}"), (Lists{{L"a"}, {}, {}}));
}

TEST(MergeLists, ATableThatIsNoArrayHasNoRows) {
    for (const char* tables : {"{'T':{'ID':'a'}}", "{'T':null}", "{'T':'a'}", "[]", "null", "'T'"})
        EXPECT_EQ(ListsOf(tables, tables), (Lists{{}, {}, {}})) << tables;
}

TEST(MergeLists, AFieldIsGivenBackUnlessItIsMissingOrNull) {
    web::json::value out = Row("'before'");
    EXPECT_TRUE(tolm::GetJsonValueAtField(Row("{'f':7}"), L"f", out));
    EXPECT_EQ(out.as_integer(), 7);
    EXPECT_FALSE(tolm::GetJsonValueAtField(Row("{'f':null}"), L"f", out));
    EXPECT_TRUE(out.is_null());
    out = Row("'before'");
    EXPECT_FALSE(tolm::GetJsonValueAtField(Row("{'g':7}"), L"f", out));
    EXPECT_TRUE(out.is_null());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warnings{L"GetJsonValueAtField: 此field为空：f"});
}

// --- "ConfigTree" --------------------------------------------------------------------------------------------------

struct Groups {
    IdMap added{{L"before", {}}};
    IdMap deleted{{L"before", {}}};
    IdMap modified{{L"before", {}}};
    bool result = false;
};

Groups GroupsOf(const std::string& add, const std::string& del) {
    Groups groups;
    groups.result = GetCloudChangedConfigTreeIdLists(Row(add), Row(del), groups.added, groups.deleted, groups.modified);
    return groups;
}

TEST(MergeLists, ConfigTreeIsFiledByGroupName) {
    const Groups groups = GroupsOf("{'ConfigTree':[{'ID':'a','groupName':'G'},{'ID':'b','groupName':'H'},"
                                   "{'ID':'c','groupName':'G'},{'ID':'m','groupName':'H'}]}",
                                   "{'ConfigTree':[{'ID':'m','groupName':'H'},{'ID':'d','groupName':'G'}]}");
    EXPECT_TRUE(groups.result);
    EXPECT_EQ(groups.added, (IdMap{{L"G", {L"a", L"c"}}, {L"H", {L"b"}}}));
    EXPECT_EQ(groups.deleted, (IdMap{{L"G", {L"d"}}}));
    EXPECT_EQ(groups.modified, (IdMap{{L"H", {L"m"}}}));
}

TEST(MergeLists, WithoutAChangeInConfigTreeTheMapsAreEmptyAndFalseComesBack) {
    for (const char* add : {"{}", "{'ConfigTree':[]}", "{'PipeType':[{'ID':'a','groupName':'G'}]}", "null"}) {
        const Groups groups = GroupsOf(add, "{'ConfigTree':[]}");
        EXPECT_FALSE(groups.result);
        EXPECT_TRUE(groups.added.empty() && groups.deleted.empty() && groups.modified.empty());
    }
}

TEST(MergeLists, TheFirstGroupNameOfAnIdStaysAndAdditionsComeFirst) {
    const Groups groups = GroupsOf("{'ConfigTree':[{'ID':'a','groupName':'G'},{'ID':'a','groupName':'H'},"
                                   "{'ID':'m','groupName':'G'}]}",
                                   "{'ConfigTree':[{'ID':'m','groupName':'H'}]}");
    EXPECT_EQ(groups.added, (IdMap{{L"G", {L"a", L"a"}}}));
    EXPECT_EQ(groups.modified, (IdMap{{L"G", {L"m"}}}));
}

TEST(MergeLists, AnIdWithoutAGroupNameIsDropped) {
    const Groups groups = GroupsOf("{'ConfigTree':[{'ID':'a'},{'ID':'b','groupName':7},{'ID':'c','groupName':'G'}]}",
                                   "{'ConfigTree':[{'ID':'d','groupName':null}]}");
    EXPECT_TRUE(groups.result);
    EXPECT_EQ(groups.added, (IdMap{{L"G", {L"c"}}}));
    EXPECT_TRUE(groups.deleted.empty());
}

TEST(MergeLists, AGroupNameOfTheOtherSideWillDo) {
    const Groups groups =
        GroupsOf("{'ConfigTree':[{'ID':'m'}]}", "{'ConfigTree':[{'ID':'m','groupName':'G','parentID':''}]}");
    EXPECT_EQ(groups.modified, (IdMap{{L"G", {L"m"}}}));
}

// --- the download --------------------------------------------------------------------------------------------------

class MergeDownload : public testing::Test {
protected:
    /// What comes of an answer with this payload.
    bool Get(const std::string& payload) {
        server.On("/api/DownloadVersion/", ScriptedAnswer::Data(payload));
        return tolm::GetCloudAddAndDelData(L"P1", 7, add, del);
    }

    ScriptedServer server;
    TestSession session{server.Address()};
    web::json::value add;
    web::json::value del;
};

TEST_F(MergeDownload, BothHalvesComeBack) {
    EXPECT_TRUE(Get(R"({"add":{"A":[]},"del":{"D":[]}})"));
    EXPECT_EQ(add, Row("{'A':[]}"));
    EXPECT_EQ(del, Row("{'D':[]}"));
    EXPECT_EQ(server.Paths(), std::vector<std::string>{"/api/DownloadVersion/P1/7"});
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(MergeDownload, OneHalfIsEnoughAndTwoEmptyOnesAreNothing) {
    EXPECT_TRUE(Get(R"({"add":{"A":[]},"del":{}})"));
    EXPECT_TRUE(Get(R"({"add":{},"del":{"D":[]}})"));
    EXPECT_FALSE(Get(R"({"add":{},"del":{}})"));
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(MergeDownload, AMissingHalfRaisesKeyNotFound) {
    for (const char* payload : {R"({"add":{}})", R"({"del":{}})"}) {
        try {
            Get(payload);
            FAIL() << "nothing was thrown";
        } catch (const web::json::json_exception& error) {
            EXPECT_STREQ(error.what(), "Key not found");
        }
    }
}

TEST_F(MergeDownload, TheUserHearsOfAFailedRequest) {
    server.On("/api/DownloadVersion/", ScriptedAnswer::Code("10001"));
    EXPECT_FALSE(tolm::GetCloudAddAndDelData(L"P1", 7, add, del));
    EXPECT_EQ(TakeNotifications(), (std::vector<Notification>{{2, L"获取云端数据失败！"}}));
    TakeDebugWarnings();
}

} // namespace
} // namespace tolmtest
