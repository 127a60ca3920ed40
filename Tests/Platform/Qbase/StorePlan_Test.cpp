#include "StoreFixture.h"

namespace qbasetest {
namespace {

/// The statements that a walk runs, as SQLite sees them.
class StorePlan : public StoreTest {
protected:
    /// The indexes of the definition stand in a new file.
    StorePlan() {
        Change([](CQbase&) {});
    }
    std::string Plan(const std::string& condition) {
        const std::string sql = "SELECT seq,id,Name FROM AAA WHERE seq>?" + condition + " ORDER BY seq";
        sqlite3* database = nullptr;
        EXPECT_EQ(sqlite3_open(Native(m_path).c_str(), &database), SQLITE_OK);
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(database, ("EXPLAIN QUERY PLAN " + sql).c_str(), -1, &statement, nullptr),
                  SQLITE_OK);
        std::string plan;
        while (sqlite3_step(statement) == SQLITE_ROW)
            plan += std::string(plan.empty() ? "" : "; ") +
                    reinterpret_cast<const char*>(sqlite3_column_text(statement, 3));
        sqlite3_finalize(statement);
        sqlite3_close(database);
        return plan;
    }
};

TEST_F(StorePlan, AWalkThroughAnIndexNeedsNoSorting) {
    EXPECT_EQ(Plan(" AND \"MEPType\"=? AND \"DisciplineId\"=?"),
              "SEARCH AAA USING INDEX AAA_MEPType_DisciplineId (MEPType=? AND DisciplineId=? AND rowid>?)");
    EXPECT_EQ(Plan(" AND +\"MEPType\"=? AND \"MaterialId\"=?"),
              "SEARCH AAA USING INDEX AAA_MaterialId (MaterialId=? AND rowid>?)");
    EXPECT_EQ(Plan(" AND +\"MEPType\"=?"), "SEARCH AAA USING INTEGER PRIMARY KEY (rowid>?)");
}

TEST_F(StorePlan, AWalkThroughAnIndexFindsWhatAScanFinds) {
    Change([](CQbase& qb) {
        for (int i = 0; i < 60; ++i) {
            ASSERT_TRUE(qb.createRec("AAA", std::to_wstring(i)) && qb.setShort(kMEPType, static_cast<short>(i % 3)));
            ASSERT_TRUE(qb.setShort(kDisciplineId, static_cast<short>(i % 2)));
            ASSERT_TRUE(qb.setWsz(kMaterialId, i % 5 == 0 ? L"m" : L"n", -1) && qb.saveRec());
        }
    });
    const auto walk = [&](bool withIndex) {
        if (!withIndex)
            Sql(m_path, "DROP INDEX IF EXISTS AAA_MaterialId; DROP INDEX IF EXISTS AAA_MEPType_DisciplineId");
        std::vector<Ids> found;
        Look([&](CQbase& qb) {
            ASSERT_TRUE(qb.setFilter(kMEPType, "=", short{1}));
            found.push_back(Walk(qb, "AAA"));
            ASSERT_TRUE(qb.setFilter(kDisciplineId, "=", short{1}));
            found.push_back(Walk(qb, "AAA"));
            ASSERT_TRUE(qb.setFilter(kMaterialId, "=", L"m"));
            found.push_back(Walk(qb, "AAA"));
        });
        return found;
    };
    const auto withIndex = walk(true);
    EXPECT_EQ(withIndex, walk(false));
    EXPECT_EQ(withIndex[0].size(), 20u);
    EXPECT_EQ(withIndex[1].size(), 10u);
    EXPECT_EQ(withIndex[2], (Ids{L"25", L"55"}));
}

} // namespace
} // namespace qbasetest
