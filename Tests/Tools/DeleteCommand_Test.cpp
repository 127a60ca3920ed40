#include "Tools/PulledTree.h"

using namespace tolmtest;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Misused;
using tolmcli::Refused;

namespace {

class DeleteCommand : public PulledTree {
protected:
    std::size_t Count(const std::string& what) { return On("list", {what, "--json"}).Json().size(); }

    /// The change that is noted for a record; empty when none is.
    std::string NotedChange(const std::string& id) {
        for (const auto& change : On("changes", {"--json"}).Json()) {
            if (change.at("id") == id)
                return change.at("change");
        }
        return {};
    }

    /// Stores a group straight into the file.
    bool StoreGroup(const wchar_t* id, const wchar_t* name) {
        CQbase store;
        return store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, m_folder.File(L"office.db"), false) &&
               store.lockForUpdate() && store.createRec("MSG", id) && store.setWsz(1601, name, -1) &&
               store.setShort(1104, 1) && store.setShort(1181, 2) && store.saveRec() && store.closeDatabase();
    }
};

} // namespace

TEST_F(DeleteCommand, ARecordInUseIsRefusedWithItsUsersNameAndDeletedByForce) {
    struct Case {
        const char* what;
        const char* list;
        const char* name;
        const char* id;
        const char* user;
    };
    for (const Case& c : {Case{"group", "groups", "Cold water", "g1", "Threaded steel"},
                          Case{"series", "series", "Threaded steel", "p1", "Domestic cold water"}}) {
        const auto run = On("delete", {c.what, c.name});
        EXPECT_EQ(run.code, Refused) << run.err;
        EXPECT_TRUE(Contains(run.err, c.user)) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(Count(c.list), 1U) << c.list;
        EXPECT_EQ(NotedChange(c.id), "");

        const auto forced = On("delete", {c.what, c.name, "--force"});
        EXPECT_EQ(forced.code, Done) << forced.err;
        EXPECT_EQ(forced.out, std::string("Deleted ") + c.name + "\n");
        EXPECT_EQ(Count(c.list), 0U) << c.list;
        EXPECT_EQ(NotedChange(c.id), "removed");
    }
}

TEST_F(DeleteCommand, ASystemTypeIsDeletedWithoutForce) {
    EXPECT_EQ(On("delete", {"system", "Domestic cold water"}).code, Done);
    EXPECT_EQ(Count("systems"), 0U);
    EXPECT_EQ(NotedChange("y1"), "removed");
}

TEST_F(DeleteCommand, ATreeIsDeletedFromItsTopWithoutForce) {
    EXPECT_EQ(On("delete", {"system", "y1"}).code, Done);
    EXPECT_EQ(On("delete", {"series", "p1"}).code, Done);
    EXPECT_EQ(On("delete", {"group", "g1"}).code, Done);
    EXPECT_EQ(On("delete", {"size", "s1", "s2"}).code, Done);
    EXPECT_EQ(On("delete", {"material", "m1"}).code, Done);
    for (const char* what : {"systems", "series", "groups", "sizes", "materials"})
        EXPECT_EQ(Count(what), 0U) << what;
}

TEST_F(DeleteCommand, OfSeveralGroupsTheNamedOneGoes) {
    ASSERT_TRUE(StoreGroup(L"g2", L"Hot water"));
    const auto run = On("delete", {"group", "Hot water"});
    EXPECT_EQ(run.code, Done) << run.err;
    const auto groups = On("list", {"groups", "--json"}).Json();
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_EQ(groups[0].at("id"), "g1");
}

TEST_F(DeleteCommand, WhatWentBeforeARefusalIsTold) {
    ASSERT_TRUE(StoreGroup(L"g2", L"Hot water"));
    const auto run = On("delete", {"group", "Hot water", "Cold water"});
    EXPECT_EQ(run.code, Refused);
    EXPECT_EQ(run.out, "Deleted Hot water\n");
    EXPECT_EQ(Count("groups"), 1U);
}

TEST_F(DeleteCommand, ASeriesIsNotDeletedWhereNobodyCanLookWhetherItIsUsed) {
    CQbase reader;
    ASSERT_TRUE(reader.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, m_folder.File(L"office.db"), false));
    ASSERT_TRUE(reader.lockForRead());
    const auto run = On("delete", {"series", "Threaded steel"});
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "could not look")) << run.err;
    ASSERT_TRUE(reader.closeDatabase());
    EXPECT_EQ(Count("series"), 1U);
}

TEST_F(DeleteCommand, WhatCannotBeDeletedOrIsNotThereIsSaid) {
    EXPECT_EQ(On("delete", {"connection", "c1"}).code, Misused);
    for (const char* what : {"series", "group", "system"}) {
        const auto run = On("delete", {what, "Nothing"});
        EXPECT_EQ(run.code, Failed);
        EXPECT_TRUE(Contains(run.err, "Nothing")) << run.err;
    }
    EXPECT_EQ(On("delete", {"series", "Threaded steel", "--kind", "duct", "--force"}).code, Failed);
    EXPECT_EQ(Count("series"), 1U);
}
