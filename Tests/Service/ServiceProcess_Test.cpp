#include "ServiceTesting.h"

#include "Support/ChildProcess.h"
#include "Support/ServiceCalls.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <sys/stat.h>
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
