#include "UploadTesting.h"

#include <sqlite3.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <set>

namespace tolmtest {
namespace {

/// Hears of each statement that this process runs on an SQLite database opened while this lives.
class HeardStatements {
public:
    HeardStatements() { sqlite3_auto_extension(Entry()); }
    ~HeardStatements() {
        sqlite3_cancel_auto_extension(Entry());
        Forget();
    }
    HeardStatements(const HeardStatements&) = delete;
    HeardStatements& operator=(const HeardStatements&) = delete;

    static void Forget() {
        const std::lock_guard lock(s_mutex);
        s_statements.clear();
    }
    static std::set<std::string> All() {
        const std::lock_guard lock(s_mutex);
        return s_statements;
    }

private:
    static void (*Entry())() { return reinterpret_cast<void (*)()>(&Listen); }

    static int Listen(sqlite3* database, char**, const void*) {
        return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, &Note, nullptr);
    }
    static int Note(unsigned, void*, void* statement, void*) {
        const std::lock_guard lock(s_mutex);
        s_statements.insert(sqlite3_sql(static_cast<sqlite3_stmt*>(statement)));
        return 0;
    }

    static inline std::mutex s_mutex;
    static inline std::set<std::string> s_statements;
};

/// The service, listened to from its start.
class QueryPlans : private HeardStatements, public UploadWire {
protected:
    QueryPlans() {
        Fill({{"PipeType", {Series("a", "A"), Series("b", "B")}}});
        Forget();
    }

    /// The statements that read or write rows, since the project was filled.
    static std::set<std::string> Statements() {
        auto statements = All();
        std::erase_if(statements, [](const std::string& sql) {
            constexpr const char* kOfRows[] = {"SELECT", "INSERT", "UPDATE", "DELETE"};
            return std::ranges::none_of(kOfRows, [&](const char* word) { return sql.starts_with(word); });
        });
        return statements;
    }

    std::vector<std::string> PlanOf(const std::string& sql) {
        sqlite3* database = nullptr;
        EXPECT_EQ(sqlite3_open(Narrow(Service().DatabasePath()).c_str(), &database), SQLITE_OK);
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(database, ("EXPLAIN QUERY PLAN " + sql).c_str(), -1, &statement, nullptr),
                  SQLITE_OK)
            << sqlite3_errmsg(database);
        std::vector<std::string> plan;
        while (sqlite3_step(statement) == SQLITE_ROW)
            plan.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement, 3)));
        sqlite3_finalize(statement);
        sqlite3_close(database);
        return plan;
    }

    /// No step goes through a whole table, nor through all the rows that a project ever had.
    void ExpectNoWalk(const std::string& sql) {
        for (const auto& step : PlanOf(sql)) {
            EXPECT_FALSE(step.starts_with("SCAN") && !step.starts_with("SCAN CONSTANT ROW")) << step << " in " << sql;
            const bool isSearch = step.starts_with("SEARCH") && step.find("setting_rows") != std::string::npos;
            EXPECT_FALSE(isSearch && step.ends_with("(project_id=?)")) << step << " in " << sql;
        }
    }

    static void ExpectHeard(const std::set<std::string>& statements, const std::string& part) {
        const auto hasPart = [&](const std::string& sql) { return sql.find(part) != std::string::npos; };
        EXPECT_TRUE(std::ranges::any_of(statements, hasPart)) << "no statement with " << part;
    }
};

TEST_F(QueryPlans, NoCallOfAClientWalksThroughATable) {
    GetVersion();
    auto patch = Creation(1, Series("c", "C"));
    patch["editList"] = {{"PipeType", {Series("a", "A again")}}};
    patch["removeList"] = {{"PipeType", {"b"}}};
    Upload(patch);
    GetVersion();
    Call("/api/DownloadVersion/p/1", json::object());
    Call("/api/DownloadVersion/p/0", json::object());
    const auto statements = Statements();
    for (const auto* part : {"INSERT INTO setting_rows", "UPDATE setting_rows SET gone", "row_id IN (", "MIN(row_id)",
                             "born > :v", "> :v AND gone <", "FROM tokens", "FROM members", "told_versions",
                             "taken_uploads", "lost_versions", "UPDATE projects"})
        ExpectHeard(statements, part);
    for (const auto& sql : statements)
        ExpectNoWalk(sql);
}

} // namespace
} // namespace tolmtest
