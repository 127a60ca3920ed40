#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/StoreSchema.h"
#include "MepDatabase/SystemRecovery.h"
#include "StoreSupport/IngestFixture.h"
#include "Vorn/Files.h"

namespace tolmtest {
namespace {

namespace schema = tolm::schema;
using tolm::CollaborationProjectSettingForPS;

class SystemChanges : public testing::Test {
protected:
    void SetUp() override {
        CollaborationProjectSettingForPS::Open({});
        CollaborationProjectSettingForPS::Instance()->AddRecoverSystemTypeRecordId(L"before");
    }
    void TearDown() override { CollaborationProjectSettingForPS::Close(); }

    static Texts Noted() { return CollaborationProjectSettingForPS::Instance()->GetRecoverSystemTypeRecordIds(); }
    static Texts Sync(const std::string& changes) {
        tolm::SyncSystemChangeData(Row(changes));
        return Noted();
    }
};

TEST_F(SystemChanges, TheIdsWithStatusOneAreNotedInOrder) {
    EXPECT_EQ(Sync("[{'dataId':'b','dataStatus':1},{'dataId':'a','dataStatus':1}]"), (Texts{L"b", L"a"}));
}

TEST_F(SystemChanges, AnotherStatusAddsNothing) {
    EXPECT_EQ(Sync("[{'dataId':'a','dataStatus':2},{'dataId':'b','dataStatus':0},{'dataId':'c','dataStatus':-1}]"),
              Texts{});
}

TEST_F(SystemChanges, AStatusThatIsNoIntegerAddsNothing) {
    EXPECT_EQ(
        Sync(
            "[{'dataId':'a','dataStatus':'1'},{'dataId':'b','dataStatus':1.0},{'dataId':'c','dataStatus':null},"
            "{'dataId':'d','dataStatus':true},{'dataId':'e','dataStatus':[1]},{'dataId':'f','dataStatus':4294967297}]"),
        Texts{});
}

TEST_F(SystemChanges, AnIdThatIsNoTextAddsNothing) {
    EXPECT_EQ(Sync("[{'dataId':null,'dataStatus':1},{'dataId':7,'dataStatus':1},{'dataId':['x'],'dataStatus':1}]"),
              Texts{});
}

TEST_F(SystemChanges, AnElementWithoutAStatusIsPassedOver) {
    EXPECT_EQ(Sync("[{},{'dataId':'a'},{'dataId':'b','dataStatus':1}]"), (Texts{L"b"}));
}

TEST_F(SystemChanges, AStatusWithoutAnIdRaisesKeyNotFound) {
    try {
        Sync("[{'dataId':'a','dataStatus':1},{'dataStatus':2}]");
        FAIL() << "nothing was thrown";
    } catch (const web::json::json_exception& error) {
        EXPECT_STREQ(error.what(), "Key not found");
    }
    EXPECT_EQ(Noted(), (Texts{L"a"}));
}

TEST_F(SystemChanges, AnEmptyArrayClearsTheList) {
    EXPECT_EQ(Sync("[]"), Texts{});
}

TEST_F(SystemChanges, WhatIsNoArrayLeavesTheList) {
    EXPECT_THROW(Sync("{}"), web::json::json_exception);
    EXPECT_THROW(Sync("null"), web::json::json_exception);
    EXPECT_EQ(Noted(), (Texts{L"before"}));
    EXPECT_THROW(Sync("[7]"), web::json::json_exception);
}

TEST_F(SystemChanges, NoSessionIsReported) {
    CollaborationProjectSettingForPS::Close();
    tolm::SyncSystemChangeData(Row("[{'dataStatus':1}]"));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"SyncSystemChangeData: pCollaborationProjectSettingForPS为空"}));
}

const web::json::value kType = Row("{'ID':'y1','systemType':'Cold water','code':'CW','description':'d',"
                                   "'systemCategory':21,'CreateTime':12,'version':3}");

/// The data store is open without a lock, as it is during a refresh.
class Recovery : public IngestFixture {
protected:
    void SetUp() override {
        ASSERT_TRUE(qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, true));
        ASSERT_TRUE(qb.beginTransaction());
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(path);
    }
    void TearDown() override {
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
        IngestFixture::TearDown();
    }

    void Recover(const web::json::value& data) {
        wstring definition = tolm::DataSetFilePath::TOLMDDQFilePath;
        util.RecoverInstantiatedSystemTypes(data, &qb, definition, &info);
    }
    static web::json::value Data(const std::string& key, const std::vector<web::json::value>& rows) {
        web::json::value data = web::json::value::object();
        data[key] = web::json::value::array(rows);
        return data;
    }
    /// Status, object type and discipline of a status record; empty when there is none.
    std::vector<short> StatusOf(const wstring& id) {
        CQbase status;
        std::vector<short> values;
        if (!status.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, statusPath, false) ||
            !status.fetchEqualRec("SYS", id))
            return values;
        for (const short attribute : {schema::kStatus, schema::kMEPType, schema::kDisciplineId}) {
            short value = -1;
            EXPECT_TRUE(status.getShort(attribute, value));
            values.push_back(value);
        }
        return values;
    }

    const wstring statusPath = tolm::DatasetPaths::Of(path).status;
    tolm::RecoverDataInfo info;
};

TEST_F(Recovery, NoStoreIsReported) {
    wstring definition = tolm::DataSetFilePath::TOLMDDQFilePath;
    util.RecoverInstantiatedSystemTypes(Data("PipeSystemType", {kType}), nullptr, definition, &info);
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::RecoverInstantiatedSystemTypes: qb为空"}));
    EXPECT_FALSE(info.recovered);
}

struct TableCase {
    const char* key;
    short storedType;
    short noted;
    short discipline;
};

TEST_F(Recovery, ATypeComesBackAsACreationOfItsTable) {
    const TableCase cases[] = {
        {"PipeSystemType", 1, 1, 2},
        {"DuctSystemType", 2, 2, 1},
        {"HVACPipeSystemType", 1, 1, 1},
        {"ElectricalSystemType", 6, 5, 3},
    };
    for (const TableCase& test : cases) {
        const wstring id(test.key, test.key + std::string(test.key).size());
        info.recovered = false;
        web::json::value row = kType;
        row["ID"] = web::json::value::string(test.key);
        Recover(Data(test.key, {row}));
        EXPECT_TRUE(info.recovered) << test.key;
        EXPECT_EQ(util.RecoveredSystemTypeIds(), (Texts{id}));
        EXPECT_EQ(Short("SYS", id, schema::kMEPType), test.storedType) << test.key;
        EXPECT_EQ(Short("SYS", id, schema::kDisciplineId), test.discipline) << test.key;
    }
    ASSERT_TRUE(qb.closeDatabase());
    for (const TableCase& test : cases)
        EXPECT_EQ(StatusOf(wstring(test.key, test.key + std::string(test.key).size())),
                  (std::vector<short>{1, test.noted, test.discipline}))
            << test.key;
}

TEST_F(Recovery, WhatIsGivenUpLeavesNeitherTypeNorStatus) {
    Recover(Data("PipeSystemType", {kType}));
    qb.abandon();
    EXPECT_TRUE(StatusOf(L"y1").empty());
    ASSERT_TRUE(qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, false));
    EXPECT_EQ(Count("SYS"), 0);
}

TEST_F(Recovery, AStatusRecordThatIsThereBecomesACreation) {
    {
        CQbase status;
        ASSERT_TRUE(status.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, statusPath, true));
        ASSERT_TRUE(status.createRec("SYS", L"y1"));
        status.setShort(schema::kStatus, 3);
        status.setShort(schema::kMEPType, 1);
        status.setShort(schema::kDisciplineId, 2);
        ASSERT_TRUE(status.saveRec());
    }
    Recover(Data("PipeSystemType", {kType}));
    ASSERT_TRUE(qb.closeDatabase());
    EXPECT_EQ(StatusOf(L"y1"), (std::vector<short>{1, 1, 2}));
}

TEST_F(Recovery, WithoutAPathForTheStatusTheTypeComesBackAllTheSame) {
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
    Recover(Data("PipeSystemType", {kType}));
    EXPECT_TRUE(info.recovered);
    EXPECT_EQ(util.RecoveredSystemTypeIds(), (Texts{L"y1"}));
    EXPECT_TRUE(Exists("SYS", L"y1"));
}

TEST_F(Recovery, NobodyNeedsToAskWhetherSomethingCameBack) {
    wstring definition = tolm::DataSetFilePath::TOLMDDQFilePath;
    util.RecoverInstantiatedSystemTypes(Data("PipeSystemType", {kType}), &qb, definition, nullptr);
    EXPECT_EQ(util.RecoveredSystemTypeIds(), (Texts{L"y1"}));
}

TEST_F(Recovery, TheTablesAreTakenInTheirOrderAndIdsInTheirs) {
    web::json::value data = Data("ElectricalSystemType", {With(kType, "{'ID':'a'}")});
    data["PipeSystemType"] = web::json::value::array({With(kType, "{'ID':'z'}"), With(kType, "{'ID':'y'}")});
    data["HVACPipeSystemType"] = web::json::value::array({With(kType, "{'ID':'c'}")});
    data["DuctSystemType"] = web::json::value::array({With(kType, "{'ID':'d'}")});
    Recover(data);
    EXPECT_EQ(util.RecoveredSystemTypeIds(), (Texts{L"y", L"z", L"d", L"c", L"a"}));
}

TEST_F(Recovery, ATypeThatIsThereIsOverwrittenAndNotRecovered) {
    MakeRecord("SYS", L"y1", L"old", 1, 2);
    Recover(Data("PipeSystemType", {kType}));
    EXPECT_EQ(Text("SYS", L"y1", schema::kName), L"Cold water");
    EXPECT_FALSE(info.recovered);
    EXPECT_TRUE(util.RecoveredSystemTypeIds().empty());
    EXPECT_FALSE(vorn::FileInfo(statusPath).Exists());
}

TEST_F(Recovery, TablesThatAreMissingOrNoArraysAreSkipped) {
    info.recovered = false;
    Recover(web::json::value::object());
    Recover(web::json::value::null());
    Recover(Row("{'PipeSystemType':null,'DuctSystemType':{},'HVACPipeSystemType':'x','ElectricalSystemType':[]}"));
    EXPECT_EQ(Count("SYS"), 0);
    EXPECT_FALSE(info.recovered);
    EXPECT_TRUE(TakeLogLines().empty());
}

TEST_F(Recovery, AFailedRowIsLoggedAndNotRecovered) {
    Recover(Data("PipeSystemType", {Without(kType, "code"), With(kType, "{'ID':'y2'}")}));
    EXPECT_EQ(util.RecoveredSystemTypeIds(), (Texts{L"y2"}));
    EXPECT_EQ(TakeLogLines(), (Lines{L"Key not found"}));
}

TEST_F(Recovery, TheIdsOfTheLastRecoveryAreForgotten) {
    Recover(Data("PipeSystemType", {kType}));
    EXPECT_EQ(util.RecoveredSystemTypeIds().size(), 1U);
    Recover(web::json::value::object());
    EXPECT_TRUE(util.RecoveredSystemTypeIds().empty());
    EXPECT_TRUE(info.recovered);
}

} // namespace
} // namespace tolmtest
