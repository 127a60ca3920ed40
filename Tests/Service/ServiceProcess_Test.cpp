#include "ServiceTesting.h"

#include "Support/Canary.h"
#include "Support/ChildProcess.h"
#include "Support/ServiceCalls.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace tolmtest {
namespace {

/// A run of the program itself.
class Process : public ChildProcess {
public:
    explicit Process(std::vector<std::string> words, rlim_t fileLimit = RLIM_INFINITY)
        : ChildProcess(WithProgram(std::move(words)), fileLimit) {}

private:
    static std::vector<std::string> WithProgram(std::vector<std::string> words) {
        words.insert(words.begin(), TOLM_BINARY_DIR "/bin/tolm-service");
        return words;
    }
};

class Program : public testing::Test {
protected:
    std::string File(const std::string& name) const { return Narrow(m_folder.Path()) + "/" + name; }
    std::string Written(const std::string& name, const json& content) const {
        std::ofstream(File(name)) << content.dump();
        return File(name);
    }
    static int Run(const std::vector<std::string>& words) { return Process(words).Wait(); }

private:
    TempFolder m_folder;
};

class StopSignals : public Program, public testing::WithParamInterface<int> {};

TEST_P(StopSignals, EndTheServiceCleanly) {
    Process serving({"serve", "--db", File("s.db"), "--port", "0", "--port-file", File("port")});
    const auto line = serving.ReadLine();
    ASSERT_TRUE(line.starts_with("listening on http://127.0.0.1:")) << line;
    const int port = std::stoi(line.substr(line.rfind(':') + 1));
    EXPECT_EQ(SendRequest(port, {"POST", "/api/GetVersion/p", {}, ""}).status, 401);
    serving.Signal(GetParam());
    EXPECT_EQ(serving.ReadLine(), "stopped");
    EXPECT_EQ(serving.Wait(), 0);
    int written = 0;
    std::ifstream(File("port")) >> written;
    EXPECT_EQ(written, port);
}

INSTANTIATE_TEST_SUITE_P(Signals, StopSignals, testing::Values(SIGTERM, SIGINT));

TEST_F(Program, TheDatabaseIsForItsOwnerAlone) {
    Process serving({"serve", "--db", File("s.db")});
    serving.ReadLine();
    struct stat status {};
    ASSERT_EQ(stat(File("s.db").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(Program, AServiceThatCannotListenFails) {
    EXPECT_EQ(Run({"serve", "--db", File("s.db"), "--listen", "192.0.2.1"}), 1);
}

json ManySeries(const std::string& mark) {
    json rows = json::array();
    for (int i = 0; i < 2000; ++i)
        rows.push_back(Series(std::to_string(i), mark + std::to_string(i)));
    return rows;
}

/// A service that several clients upload to, and that is killed again and again.
class KilledService : public Program {
protected:
    static constexpr int kClients = 4;
    static constexpr int kRowsOfAnUpload = 40;

    KilledService() {
        const auto secret = File("secret");
        std::ofstream(secret) << "anna's secret";
        EXPECT_EQ(Run({"user", "add", "anna", "--secret-file", secret, "--db", File("s.db")}), 0);
        std::filesystem::remove(secret);
        WatchForSecret("anna's secret");
        EXPECT_EQ(Run({"project", "create", "p", "--db", File("s.db")}), 0);
        const auto file =
            Written("p.json", {{"format", "tolm-project"}, {"formatVersion", 1}, {"tables", json::object()}});
        EXPECT_EQ(Run({"project", "fill", "--project", "p", "--file", file, "--db", File("s.db")}), 0);
    }

    std::unique_ptr<Process> Serve() {
        auto serving = std::make_unique<Process>(
            std::vector<std::string>{"serve", "--db", File("s.db"), "--port", "0", "--port-file", File("port")});
        const auto line = serving->ReadLine();
        EXPECT_TRUE(line.starts_with("listening on ")) << line;
        m_port = std::stoi(line.substr(line.rfind(':') + 1));
        return serving;
    }

    /// Rows that belong together: "3-17/0" to "3-17/39".
    static json Batch(const std::string& name) {
        json rows = json::array();
        for (int i = 0; i < kRowsOfAnUpload; ++i)
            rows.push_back(Series(name + "/" + std::to_string(i), name + "/" + std::to_string(i)));
        return rows;
    }

    /// Uploads, asking for the version before each, until the service is gone. Notes what was acknowledged.
    void UploadUntilGone(int client, int& next, std::set<std::string>& acknowledged, std::set<std::string>& tried) {
        const auto in = Ask("/api/SignIn", "", {{"userId", "anna"}, {"secret", "anna's secret"}});
        if (!in.is_object())
            return;
        const std::string token = in["data"]["token"];
        WatchForSecret(token);
        while (true) {
            const auto name = std::to_string(client) + "-" + std::to_string(next++);
            const auto version = Ask("/api/GetVersion/p", token, json::object());
            if (!version.is_object())
                return;
            tried.insert(name);
            const json patch{{"version", version["data"]}, {"createList", {{"PipeType", Batch(name)}}}};
            const auto answer = Ask("/api/UpLoad/p", token, patch);
            if (!answer.is_object())
                return;
            if (answer["code"] == "10000")
                acknowledged.insert(name);
            else
                EXPECT_EQ(answer["code"], "200100") << answer;
        }
    }

    std::int64_t VersionNow() {
        service::Database database(File("s.db"), 1);
        return service::ProjectStore(database).Version("p");
    }
    void WaitForVersion(std::int64_t version) {
        service::Database database(File("s.db"), 1);
        while (service::ProjectStore(database).Version("p") < version)
            std::this_thread::yield();
    }

    /// Null when no whole answer came.
    json Ask(const std::string& path, const std::string& token, const json& body) const {
        try {
            const auto answer = SendRequest(m_port, {"POST", path, UserHeaders("anna", token), body.dump()});
            return json::parse(answer.body, nullptr, false);
        } catch (const std::runtime_error&) { // no connection
            return nullptr;
        }
    }

    /// Names of the uploads that stand; each has to be whole.
    std::set<std::string> Standing() {
        service::Database database(File("s.db"), 1);
        const auto tables = json::parse(service::ProjectStore(database).StandingRows("p"));
        std::map<std::string, int> rows;
        for (const auto& row : tables.value("PipeType", json::array())) {
            const std::string id = row["ID"];
            ++rows[id.substr(0, id.find('/'))];
        }
        std::set<std::string> names;
        for (const auto& [name, count] : rows) {
            EXPECT_EQ(count, kRowsOfAnUpload) << name;
            names.insert(name);
        }
        return names;
    }

private:
    int m_port = 0;
};

TEST_F(KilledService, KeepsWhatItAcknowledgedAndNothingHalf) {
    std::set<std::string> acknowledged;
    std::set<std::string> tried;
    std::vector<int> next(kClients, 0);
    for (int round = 0; round < 6; ++round) {
        auto serving = Serve();
        std::vector<std::set<std::string>> acknowledgedBy(kClients);
        std::vector<std::set<std::string>> triedBy(kClients);
        std::vector<std::thread> clients;
        for (std::size_t client = 0; client < kClients; ++client) {
            clients.emplace_back([&, client] {
                UploadUntilGone(static_cast<int>(client), next[client], acknowledgedBy[client], triedBy[client]);
            });
        }
        WaitForVersion(VersionNow() + 1 + round);
        serving->Signal(SIGKILL);
        for (auto& client : clients)
            client.join();
        EXPECT_EQ(serving->Wait(), -SIGKILL);
        for (std::size_t client = 0; client < kClients; ++client) {
            acknowledged.merge(acknowledgedBy[client]);
            tried.merge(triedBy[client]);
        }
        const auto standing = Standing();
        EXPECT_TRUE(std::ranges::includes(standing, acknowledged));
        EXPECT_TRUE(std::ranges::includes(tried, standing));
    }
    EXPECT_FALSE(acknowledged.empty());
}

/// The system kills the program at the first write beyond a length of file, so that every stage of a change is met.
TEST_F(Program, KilledWhileItAppliesAChangeItLeavesTheOldOrTheNew) {
    const json before{{"PipeType", ManySeries("before ")}};
    const json after{{"PipeType", ManySeries("after ")}};
    const auto file = Written("p.json", {{"format", "tolm-project"}, {"formatVersion", 1}, {"tables", before}});
    const auto change = Written("c.json", {{"format", "tolm-change"}, {"formatVersion", 1}, {"edit", after}});
    ASSERT_EQ(Run({"project", "create", "p", "--db", File("filled.db")}), 0);
    ASSERT_EQ(Run({"project", "fill", "--project", "p", "--file", file, "--db", File("filled.db")}), 0);
    std::set<std::pair<int, std::int64_t>> met; // how the program ended, and the version found then
    for (rlim_t limit = 4096; limit < (64U << 20); limit += limit / 2) {
        SCOPED_TRACE("killed beyond byte " + std::to_string(limit));
        const auto db = File("killed.db");
        for (const auto* beside : {"", "-wal", "-shm"})
            std::filesystem::remove(db + beside);
        std::filesystem::copy_file(File("filled.db"), db);
        const int end = Process({"change", "apply", "--project", "p", "--file", change, "--db", db}, limit).Wait();
        service::Database database(db, 1);
        service::ProjectStore projects(database);
        const auto version = projects.Version("p");
        EXPECT_EQ(json::parse(projects.StandingRows("p")), version == 2 ? after : before);
        met.emplace(end, version);
    }
    EXPECT_TRUE(met.contains({-SIGXFSZ, 1})) << "killed before the change was whole";
    EXPECT_TRUE(met.contains({0, 2})) << "not killed";
    EXPECT_FALSE(met.contains({0, 1}));
}

} // namespace
} // namespace tolmtest
