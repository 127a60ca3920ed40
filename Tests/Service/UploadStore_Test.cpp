#include "UploadTesting.h"

#include "Service/Schema.h"
#include "Support/Canary.h"

#include <iterator>
#include <random>
#include <set>
#include <soci/soci.h>
#include <sqlite3.h>
#include <utility>

namespace tolmtest {
namespace {

/// What the service remembers of tokens, in its database.
class Remembered : public testing::Test {
protected:
    Remembered() { m_projects.Create("p", "P"), m_projects.Fill("p", {}, false); }

    service::UserStore& Users() { return m_users; }
    service::UploadStore& Uploads() { return m_uploads; }
    void PassIdleTime() { m_now += 1001; }

    /// A signed-in caller that was told a version and has an upload whose version it has not asked for.
    service::Caller CallerWithEverything(const std::string& user) {
        const auto token = m_users.SignIn(user, "secret").value();
        WatchForSecret(token);
        const service::Caller caller{m_users.Check(user, token).value(), "p"};
        m_uploads.TellVersion(caller);
        m_uploads.Upload(caller, service::ReadUploadPatch(EmptyPatch(1).dump()));
        return caller;
    }
    int Count(const std::string& table) {
        int count = 0;
        m_database.Read([&](soci::session& session) { session << "SELECT COUNT(*) FROM " + table, soci::into(count); });
        return count;
    }

private:
    TempFolder m_folder;
    long long m_now = 5000;
    service::Database m_database{Narrow(m_folder.File(L"service.db")), 2};
    service::ProjectStore m_projects{m_database};
    service::UserStore m_users{m_database, {1000, 10, [this] { return m_now; }}};
    service::UploadStore m_uploads{m_database};
};

TEST_F(Remembered, GoesWithATokenThatExpires) {
    Users().Put("anna", "secret");
    CallerWithEverything("anna");
    EXPECT_EQ(Count("told_versions"), 1);
    EXPECT_EQ(Count("taken_uploads"), 1);
    PassIdleTime();
    Users().SignIn("anna", "secret");
    EXPECT_EQ(Count("told_versions"), 0);
    EXPECT_EQ(Count("taken_uploads"), 0);
}

TEST_F(Remembered, GoesWithTheUserAlone) {
    Users().Put("anna", "secret");
    Users().Put("bert", "secret");
    CallerWithEverything("anna");
    CallerWithEverything("bert");
    Users().Remove("anna");
    EXPECT_EQ(Count("told_versions"), 1);
    EXPECT_EQ(Count("taken_uploads"), 1);
}

TEST_F(Remembered, IsOneVersionForEachProject) {
    const service::Caller caller{"token", "p"};
    EXPECT_EQ(Uploads().TellVersion(caller), 1);
    EXPECT_EQ(Uploads().TellVersion(caller), 1);
    EXPECT_EQ(Count("told_versions"), 1);
    RefusalOf(service::Answer::UnknownProject, [&] { Uploads().TellVersion({"token", "q"}); });
    EXPECT_EQ(Count("told_versions"), 1);
}

/// A database from before uploads, whose project stands at version 7 as a token was told.
void MakeOlderDatabase(const std::string& path) {
    std::string sql;
    for (const std::string statement : service::kSchema) {
        if (statement.find("taken_uploads") == statement.npos)
            sql += statement + ";";
    }
    sql += "INSERT INTO projects VALUES ('p', 'P', 7, 1, '');"
           "INSERT INTO told_versions VALUES ('token', 'p', 7)";
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
}

TEST(OlderDatabase, OfAServiceThatTookNoUploadsServesThem) {
    const TempFolder folder;
    const auto path = Narrow(folder.File(L"service.db"));
    MakeOlderDatabase(path);
    service::Database database(path, 2);
    service::UploadStore uploads(database);
    const auto patch = service::ReadUploadPatch(Creation(0, Series("s", "S")).dump());
    EXPECT_EQ(uploads.Upload({"token", "p"}, patch), 8) << "what was told before counts";
    EXPECT_EQ(uploads.TellVersion({"token", "p"}), 8);
}

/// A client that works on one table: edits, compares, merges, uploads, and loses answers.
class SmallClient {
public:
    SmallClient(service::ProjectStore& projects, service::UploadStore& uploads, std::string token)
        : m_projects(projects), m_uploads(uploads), m_caller{std::move(token), "p"} {}

    void Create(const std::string& id) { m_created.insert(id), m_rows.insert(id); }
    void Delete(const std::string& id) {
        m_rows.erase(id);
        if (m_created.erase(id) == 0)
            m_removed.insert(id);
    }
    const std::set<std::string>& Rows() const { return m_rows; }
    bool HasChanges() const { return !m_created.empty() || !m_removed.empty(); }

    /// Compares, and refreshes or merges. What the cloud says of an id wins.
    void Synchronise() {
        Finish();
        const auto version = m_uploads.TellVersion(m_caller);
        if (version <= m_stamp)
            return;
        TakeIn(json::parse(m_projects.Increment("p", m_stamp)));
        m_merged = HasChanges();
        if (!m_merged)
            m_stamp = version;
    }
    /// Sends what it has; an answer that is lost leaves it where it was.
    void Send(bool loseAnswer) {
        auto patch = EmptyPatch(static_cast<int>(m_stamp));
        for (const auto& id : m_created) {
            if (m_rows.contains(id)) // another may have removed what an upload without an answer brought
                patch["createList"]["PipeType"].push_back(Series(id, id));
        }
        for (const auto& id : m_removed)
            patch["removeList"]["PipeType"].push_back(id);
        try {
            m_uploads.Upload(m_caller, service::ReadUploadPatch(patch.dump()));
        } catch (const service::Refusal& refusal) {
            EXPECT_EQ(refusal.What(), service::Answer::Busy) << refusal.what();
            return;
        }
        if (loseAnswer)
            return;
        m_created.clear();
        m_removed.clear();
        m_asks = true;
    }
    /// Asks for the version of an upload that was taken: others may have come in between.
    void Finish() {
        if (!std::exchange(m_asks, false))
            return;
        m_stamp = m_uploads.TellVersion(m_caller);
        m_merged = false;
    }
    /// A host sends without a comparison only what was changed at the version that its dataset bears.
    void Upload(bool compareFirst, bool loseAnswer) {
        if (compareFirst || m_merged)
            Synchronise();
        if (HasChanges())
            Send(loseAnswer);
    }

private:
    void TakeIn(const json& increment) {
        const auto deleted = increment["del"].value("PipeType", json::array());
        const auto added = increment["add"].value("PipeType", json::array());
        for (const auto& row : deleted) {
            m_rows.erase(row["ID"].get<std::string>());
            m_removed.erase(row["ID"].get<std::string>());
        }
        for (const auto& row : added)
            m_rows.insert(row["ID"].get<std::string>());
    }

    service::ProjectStore& m_projects;
    service::UploadStore& m_uploads;
    service::Caller m_caller;
    std::set<std::string> m_rows;
    std::set<std::string> m_created;
    std::set<std::string> m_removed;
    std::int64_t m_stamp = 0;
    bool m_asks = false;
    bool m_merged = false; ///< holds more than its version says
};

class UploadHistories : public testing::TestWithParam<int> {
protected:
    UploadHistories() {
        m_store.Fill("p", json::object());
        for (auto& client : m_clients)
            client.Synchronise();
    }

    void Step() {
        auto& client = m_clients[m_random() % m_clients.size()];
        client.Finish();
        switch (m_random() % 6) {
        case 0:
        case 1:
            return client.Create("id" + std::to_string(m_next++));
        case 2:
            if (!client.Rows().empty())
                client.Delete(std::string(*std::next(client.Rows().begin(), m_random() % client.Rows().size())));
            return;
        case 3:
            return client.Synchronise();
        default:
            return client.Upload(m_random() % 2 == 0, m_random() % 2 == 0);
        }
    }
    /// Each client synchronises and sends until nobody has anything left.
    void ComeToRest() {
        for (int round = 0; round < 6; ++round) {
            for (auto& client : m_clients) {
                client.Synchronise();
                client.Synchronise();
                if (client.HasChanges())
                    client.Send(false);
            }
        }
        for (auto& client : m_clients)
            client.Synchronise();
    }
    std::set<std::string> Standing() {
        std::set<std::string> ids;
        const auto rows = m_store.Tables("p").value("PipeType", json::array());
        for (const auto& row : rows)
            ids.insert(row["ID"].get<std::string>());
        return ids;
    }
    std::vector<SmallClient>& Clients() { return m_clients; }

private:
    std::mt19937_64 m_random{static_cast<std::uint64_t>(GetParam())};
    StoreOnly m_store;
    service::UploadStore m_uploads{m_store.Db()};
    std::vector<SmallClient> m_clients{{m_store.Projects(), m_uploads, "a"},
                                       {m_store.Projects(), m_uploads, "b"},
                                       {m_store.Projects(), m_uploads, "c"}};
    int m_next = 0;
};

TEST_P(UploadHistories, WithLostAnswersLeaveAllClientsWithWhatTheServiceHolds) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    for (int i = 0; i < 100; ++i)
        Step();
    ComeToRest();
    for (const auto& client : Clients()) {
        EXPECT_FALSE(client.HasChanges());
        EXPECT_EQ(client.Rows(), Standing());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, UploadHistories, testing::Range(1, 41));

} // namespace
} // namespace tolmtest
