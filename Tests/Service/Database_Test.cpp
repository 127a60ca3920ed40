#include "UploadTesting.h"

#include "Service/UploadBody.h"
#include "Service/UploadStore.h"
#include "Support/FaultyFiles.h"

#include <soci/soci.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace tolmtest {
namespace {

/// The connections of a database, all at the same time.
void ForEachConnection(service::Database& database, std::size_t count, const service::Database::Work& work) {
    if (count == 0)
        return;
    database.Read([&](soci::session& session) {
        work(session);
        ForEachConnection(database, count - 1, work);
    });
}

TEST(Database, EachConnectionWritesAheadAndSyncsEachCommit) {
    const TempFolder folder;
    service::Database database(Narrow(folder.File(L"service.db")), service::kConnections);
    std::size_t connections = 0;
    ForEachConnection(database, service::kConnections, [&](soci::session& session) {
        std::string journal;
        int synchronous = 0;
        session << "PRAGMA journal_mode", soci::into(journal);
        session << "PRAGMA synchronous", soci::into(synchronous);
        EXPECT_EQ(journal, "wal");
        EXPECT_EQ(synchronous, 2) << "FULL";
        ++connections;
    });
    EXPECT_EQ(connections, service::kConnections);
}

/// A project that takes a few uploads until the power is cut.
class PowerCutService : public testing::Test {
protected:
    static constexpr int kUploads = 2;

    PowerCutService() {
        service::Database database(File("before.db"), 1);
        service::ProjectStore projects(database);
        projects.Create("p", "P");
        projects.Fill("p", {}, false);
        std::filesystem::create_directory(File("disk"));
    }

    /// Uploads in a process of its own, which ends before the change of this number. True when it met no such change.
    bool ComesToItsEnd(long change, FaultyFiles::Unsynced unsynced) {
        for (const auto* beside : {"", "-wal", "-shm", "-journal"})
            std::filesystem::remove(File("disk/s.db") + beside);
        std::filesystem::remove(File("acknowledged"));
        std::filesystem::copy_file(File("before.db"), File("disk/s.db"));
        const pid_t process = fork();
        if (process == 0)
            UploadUntilTheEnd(change, unsynced);
        int status = 0;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        const bool isDone = WIFEXITED(status) && WEXITSTATUS(status) == kDone;
        EXPECT_TRUE(isDone || (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)) << status;
        return isDone;
    }

    std::int64_t Acknowledged() const {
        std::int64_t version = 1;
        std::ifstream(File("acknowledged")) >> version;
        return version;
    }

    /// Whole versions alone; the one that stands.
    std::int64_t Standing() {
        service::Database database(File("disk/s.db"), 1);
        service::ProjectStore projects(database);
        const auto version = projects.Version("p");
        const auto tables = json::parse(projects.StandingRows("p"));
        EXPECT_EQ(tables.value("PipeType", json::array()).size(), static_cast<std::size_t>(version - 1));
        return version;
    }

private:
    static constexpr int kDone = 42;

    std::string File(const std::string& name) const { return Narrow(m_folder.Path()) + "/" + name; }

    /// The last upload is followed by the end of the service, which brings all into the file itself.
    [[noreturn]] void UploadUntilTheEnd(long change, FaultyFiles::Unsynced unsynced) {
        FaultyFiles files(m_folder.File(L"disk"));
        files.CutPowerAt(change, unsynced, static_cast<std::uint64_t>(change));
        {
            service::Database database(File("disk/s.db"), 2);
            service::UploadStore uploads(database);
            for (int version = 1; version <= kUploads; ++version) {
                const auto name = std::to_string(version);
                const auto body = Creation(version, Series(name, name)).dump();
                const auto made = uploads.Upload({"a token's hash", "p"}, service::ReadUploadPatch(body));
                std::ofstream(File("acknowledged")) << made;
            }
        }
        _exit(kDone);
    }

    TempFolder m_folder;
};

TEST_F(PowerCutService, KeepsWhatItAcknowledgedAndNothingHalf) {
    using Unsynced = FaultyFiles::Unsynced;
    for (const auto unsynced : {Unsynced::Dropped, Unsynced::Torn}) {
        long change = 1;
        for (; !ComesToItsEnd(change, unsynced); ++change) {
            SCOPED_TRACE("before change " + std::to_string(change) + ", " + std::to_string(static_cast<int>(unsynced)));
            const auto acknowledged = Acknowledged();
            const auto standing = Standing();
            EXPECT_TRUE(standing == acknowledged || standing == acknowledged + 1)
                << standing << " stands, " << acknowledged << " was acknowledged";
        }
        EXPECT_GT(change, 3 * kUploads) << "each upload writes rows, versions and the end of a transaction";
        EXPECT_EQ(Standing(), 1 + kUploads);
    }
}

} // namespace
} // namespace tolmtest
