#include "MepDatabase/ConfigTreeIngest.h"
#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"

namespace tolmtest {
namespace {

namespace schema = tolm::schema;

class ConfigTreeDeletion : public IngestFixture {
protected:
    void SetUp() override {
        IngestFixture::SetUp();
        for (const char* classCode : {"MTS", "PSI", "MSG"})
            for (const wchar_t* id : {L"a", L"b"})
                MakeRecord(classCode, id, L"n", 1, 1);
    }

    void Delete(const std::string& elements) {
        const web::json::value del = Row("{'ConfigTree':[" + elements + "]}");
        tolm::DeleteConfigTreeItems(del.as_object(), &qb);
    }
    void DeleteOne(const std::string& group) { Delete("{'groupName':'" + group + "','ID':'a','parentID':''}"); }

    /// Records that are left, of all three classes.
    Texts Left() {
        Texts left;
        for (const char* classCode : {"MTS", "PSI", "MSG"})
            for (const wstring& id : Ids(classCode))
                left.push_back(wstring(classCode, classCode + 3) + L" " + id);
        return left;
    }

    const Texts all = {L"MTS a", L"MTS b", L"PSI a", L"PSI b", L"MSG a", L"MSG b"};
};

TEST_F(ConfigTreeDeletion, AMaterialOfAPipeGroupHasNoParent) {
    DeleteOne("MaterialSeries");
    Delete("{'groupName':'HVACMaterialSeries','ID':'b','parentID':''}");
    EXPECT_EQ(Left(), (Texts{L"PSI a", L"PSI b", L"MSG a", L"MSG b"}));
}

TEST_F(ConfigTreeDeletion, ASizeTableOfAPipeGroupHasOne) {
    Delete("{'groupName':'MaterialSeries','ID':'a','parentID':'m'},"
           "{'groupName':'HVACMaterialSeries','ID':'b','parentID':'m'}");
    EXPECT_EQ(Left(), (Texts{L"MTS a", L"MTS b", L"MSG a", L"MSG b"}));
}

TEST_F(ConfigTreeDeletion, WiresAndConduitsAreSizeTables) {
    DeleteOne("electricWireType");
    EXPECT_EQ(Left(), (Texts{L"MTS a", L"MTS b", L"PSI b", L"MSG a", L"MSG b"}));
    Delete("{'groupName':'electricLinePipe','ID':'b'}");
    EXPECT_EQ(Left(), (Texts{L"MTS a", L"MTS b", L"MSG a", L"MSG b"}));
}

TEST_F(ConfigTreeDeletion, FittingGroupsAreGroups) {
    for (const char* group : {"pipeFittingGroup", "havcFittingGroup", "ductFittingGroup"}) {
        MakeRecord("MSG", L"c", L"n", 1, 1);
        Delete(std::string("{'groupName':'") + group + "','ID':'c'}");
        EXPECT_EQ(Left(), all) << group;
    }
}

TEST_F(ConfigTreeDeletion, ADuctTableTakesItsMaterialAlong) {
    ASSERT_TRUE(qb.fetchEqualRec("PSI", L"a"));
    qb.setWsz(schema::kMaterialId, L"b", -1);
    ASSERT_TRUE(qb.saveRec());
    DeleteOne("ductSeriesType");
    EXPECT_EQ(Left(), (Texts{L"MTS a", L"PSI b", L"MSG a", L"MSG b"}));
}

TEST_F(ConfigTreeDeletion, ADuctTableWithoutAMaterialGoesAlone) {
    DeleteOne("ductSeriesType");
    EXPECT_EQ(Left(), (Texts{L"MTS a", L"MTS b", L"PSI b", L"MSG a", L"MSG b"}));
}

TEST_F(ConfigTreeDeletion, ADuctTableWhoseMaterialIsGoneGoesAllTheSame) {
    ASSERT_TRUE(qb.fetchEqualRec("PSI", L"a"));
    qb.setWsz(schema::kMaterialId, L"gone", -1);
    ASSERT_TRUE(qb.saveRec());
    DeleteOne("ductSeriesType");
    EXPECT_EQ(Left(), (Texts{L"MTS a", L"MTS b", L"PSI b", L"MSG a", L"MSG b"}));
}

TEST_F(ConfigTreeDeletion, CableTraysAndUnknownGroupsAreIgnored) {
    DeleteOne("cableTray");
    DeleteOne("nobodyKnows");
    DeleteOne("");
    EXPECT_EQ(Left(), all);
}

TEST_F(ConfigTreeDeletion, WhatIsNotThereIsPassedOver) {
    for (const char* group : {"MaterialSeries", "HVACMaterialSeries", "ductSeriesType", "electricWireType",
                              "electricLinePipe", "pipeFittingGroup", "havcFittingGroup", "ductFittingGroup"})
        Delete(std::string("{'groupName':'") + group + "','ID':'gone','parentID':''}");
    EXPECT_EQ(Left(), all);
}

TEST_F(ConfigTreeDeletion, AMissingTableRaisesKeyNotFound) {
    const web::json::value del = web::json::value::object();
    try {
        tolm::DeleteConfigTreeItems(del.as_object(), &qb);
        FAIL() << "nothing was thrown";
    } catch (const web::json::json_exception& error) {
        EXPECT_STREQ(error.what(), "Key not found");
    }
}

TEST_F(ConfigTreeDeletion, AMissingMemberPassesThroughWithWhatWasDeletedBefore) {
    EXPECT_THROW(Delete("{'groupName':'electricWireType','ID':'a'},{'groupName':'electricWireType'}"),
                 web::json::json_exception);
    EXPECT_THROW(Delete("{'ID':'b'}"), web::json::json_exception);
    EXPECT_THROW(Delete("{'groupName':'MaterialSeries','ID':'b'}"), web::json::json_exception);
    EXPECT_THROW(Delete("null"), web::json::json_exception);
    EXPECT_EQ(Left(), (Texts{L"MTS a", L"MTS b", L"PSI b", L"MSG a", L"MSG b"}));
}

TEST_F(ConfigTreeDeletion, AnEmptyTableIsNothing) {
    Delete("");
    EXPECT_EQ(Left(), all);
}

} // namespace
} // namespace tolmtest
