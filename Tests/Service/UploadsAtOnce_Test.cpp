#include "UploadTesting.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <sqlite3.h>
#include <thread>
#include <vector>

namespace tolmtest {
namespace {

/// A gate that somebody opens.
class Gate {
public:
    void Open() {
        const std::lock_guard lock(m_mutex);
        m_open = true;
        m_opened.notify_all();
    }
    void Wait() {
        std::unique_lock lock(m_mutex);
        m_opened.wait(lock, [this] { return m_open; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    bool m_open = false;
};

class UploadsAtOnce : public UploadWire {
protected:
    /// Codes of these uploads, which all begin together, each from a token of its own that knows the version.
    std::vector<std::string> Codes(const std::vector<json>& patches) {
        std::vector<std::string> tokens;
        std::vector<std::string> codes(patches.size());
        for (std::size_t i = 0; i < patches.size(); ++i)
            GetVersion(tokens.emplace_back(Service().SignIn()));
        Gate gate;
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < patches.size(); ++i) {
            threads.emplace_back([&, i] {
                gate.Wait();
                codes[i] = UploadCode(patches[i], tokens[i]);
            });
        }
        gate.Open();
        for (auto& thread : threads)
            thread.join();
        return codes;
    }
};

TEST_F(UploadsAtOnce, FromOneVersionOneIsTakenAndTheOthersAreRefused) {
    Fill();
    for (int round = 1; round <= 10; ++round) {
        std::vector<json> patches;
        for (int i = 0; i < 4; ++i) {
            const auto name = std::to_string(round) + "." + std::to_string(i);
            patches.push_back(Creation(Version(), Series(name, name)));
        }
        const auto codes = Codes(patches);
        EXPECT_EQ(std::ranges::count(codes, "10000"), 1) << "round " << round;
        EXPECT_EQ(std::ranges::count(codes, "200100"), 3) << "round " << round;
        EXPECT_EQ(Version(), round + 1);
        EXPECT_EQ(Tables()["PipeType"].size(), static_cast<std::size_t>(round)) << "no update was lost";
    }
}

TEST_F(UploadsAtOnce, OfClientsThatComeAgainAllArriveOnce) {
    Fill();
    std::vector<std::thread> threads;
    std::atomic<int> taken = 0;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i, token = Service().SignIn()] {
            for (int n = 0; n < 5;) {
                const auto name = std::to_string(i) + "." + std::to_string(n);
                const auto version = GetVersion(token);
                if (UploadCode(Creation(version, Series(name, name)), token) == "10000") {
                    ++n;
                    ++taken;
                }
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(taken, 20);
    EXPECT_EQ(Version(), 21);
    EXPECT_EQ(Tables()["PipeType"].size(), 20U);
}

TEST_F(UploadsAtOnce, ToTwoProjectsAreBothTaken) {
    Fill();
    Service().FillTables("q", "{}");
    std::thread other([this] { EXPECT_EQ(Done("/api/UpLoad/q", Creation(1, Series("s", "S"))), 2); });
    EXPECT_EQ(Upload(Creation(1, Series("s", "S"))), 2);
    other.join();
}

/// A database and the work that is done on it under names.
class NamedWork : public testing::Test {
protected:
    NamedWork() : m_database(Path(), 3, 0) {}

    service::Database& Db() { return m_database; }
    std::string Path() const { return Narrow(m_folder.File(L"service.db")); }

private:
    TempFolder m_folder;
    service::Database m_database;
};

TEST_F(NamedWork, IsNotBegunWhileWorkOfItsNameIsUnderWay) {
    bool inner = true;
    EXPECT_TRUE(Db().TryWrite("p", [&](soci::session&) {
        std::thread([&] { inner = Db().TryWrite("p", [](soci::session&) { ADD_FAILURE(); }); }).join();
    }));
    EXPECT_FALSE(inner);
    EXPECT_TRUE(Db().TryWrite("p", [](soci::session&) {})) << "the name is free again";
}

TEST_F(NamedWork, FreesItsNameWhenItThrows) {
    EXPECT_THROW(Db().TryWrite("p", [](soci::session&) { throw std::runtime_error("fault"); }), std::runtime_error);
    EXPECT_TRUE(Db().TryWrite("p", [](soci::session&) {}));
}

/// Another process in the middle of a transaction.
class ForeignTransaction {
public:
    explicit ForeignTransaction(const std::string& path) {
        EXPECT_EQ(sqlite3_open(path.c_str(), &m_database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(m_database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    }
    ~ForeignTransaction() { sqlite3_close(m_database); }
    ForeignTransaction(const ForeignTransaction&) = delete;
    ForeignTransaction& operator=(const ForeignTransaction&) = delete;

private:
    sqlite3* m_database = nullptr;
};

TEST_F(NamedWork, IsNotBegunWhileAnotherProcessHoldsTheDatabase) {
    {
        const ForeignTransaction foreign(Path());
        EXPECT_FALSE(Db().TryWrite("p", [](soci::session&) { ADD_FAILURE(); }));
        EXPECT_THROW(Db().Write([](soci::session&) { ADD_FAILURE(); }), std::runtime_error);
    }
    EXPECT_TRUE(Db().TryWrite("p", [](soci::session&) {}));
}

TEST_F(NamedWork, OfAnUploadIsRefusedWhileAnotherProcessHoldsTheDatabase) {
    service::ProjectStore projects(Db());
    service::UploadStore uploads(Db());
    projects.Create("p", "P");
    projects.Fill("p", {}, false);
    const auto patch = service::ReadUploadPatch(Creation(1, Series("s", "S")).dump());
    {
        const ForeignTransaction foreign(Path());
        RefusalOf(service::Answer::Busy, [&] { uploads.Upload({"token", "p"}, patch); });
    }
    EXPECT_EQ(uploads.Upload({"token", "p"}, patch), 2);
}

TEST_F(NamedWork, OfAnUploadIsRefusedWhileAnotherIsUnderWay) {
    service::ProjectStore projects(Db());
    service::UploadStore uploads(Db());
    projects.Create("p", "P");
    projects.Fill("p", {}, false);
    const auto patch = service::ReadUploadPatch(Creation(1, Series("s", "S")).dump());
    Db().TryWrite("p", [&](soci::session&) {
        RefusalOf(service::Answer::Busy, [&] { uploads.Upload({"token", "p"}, patch); });
    });
    EXPECT_EQ(projects.Version("p"), 1);
}

} // namespace
} // namespace tolmtest
