// An upload against two queries for each record touched, one encoding of the same body and the bare request.
#include "Bench/BareHttp.h"
#include "Bench/Measure.h"
#include "Bench/World.h"
#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Vorn/Text.h"

#include <httplib.h>

#include <map>
#include <mutex>
#include <thread>

namespace tolm::bench {
namespace {

constexpr const char* kUpload = "upload of 1 %";
constexpr const char* kAnswer = R"({"code":"10000","data":{"version":3}})";
constexpr std::size_t kLargestBody = 1 << 30;
constexpr int kQueriesPerRecord = 2;

/// A service that takes everything and does nothing with it.
class TakingServer {
public:
    TakingServer() {
        m_server.set_payload_max_length(kLargestBody);
        m_server.Post(".*", [this](const httplib::Request& request, httplib::Response& response) {
            const std::lock_guard lock(m_mutex);
            m_body = request.body;
            response.set_content(kAnswer, "application/json");
        });
        m_port = m_server.bind_to_any_port("127.0.0.1");
        m_thread = std::thread([this] { m_server.listen_after_bind(); });
    }
    ~TakingServer() {
        m_server.stop();
        m_thread.join();
    }
    TakingServer(const TakingServer&) = delete;
    TakingServer& operator=(const TakingServer&) = delete;

    std::string Address() const { return "http://127.0.0.1:" + std::to_string(m_port); }
    std::string LastBody() {
        const std::lock_guard lock(m_mutex);
        return m_body;
    }

private:
    httplib::Server m_server;
    std::mutex m_mutex;
    std::string m_body;
    int m_port = 0;
    std::thread m_thread;
};

TakingServer& Taking() {
    static TakingServer server;
    return server;
}

void OpenSession() {
    CollaborationProjectSettingForPS::Settings settings;
    settings.httpServer = vorn::StringUtil::ToWString(Taking().Address());
    settings.workingProjectId = L"P";
    settings.workingDatasetId = L"W";
    CollaborationProjectSettingForPS::Open(settings);
    TolmUserSessionUtils::SetUser(L"bench", L"token");
}

void SendChanges(const DatasetFiles& files, const DatasetFiles& withComponents) {
    Require(MepQbaseUtil::GetInstance()->SendModifiedDataToCloud(false, nullptr, Wide(files.Store()),
                                                                 DataSetFilePath::TOLMDDQFilePath,
                                                                 Wide(withComponents.Components())),
            "an upload fails");
}

void Upload(benchmark::State& state, World& world) {
    const DatasetFiles& edited = world.Edited();
    const DatasetFiles scratch = world.Scratch("work");
    OpenSession();
    while (state.KeepRunning()) {
        state.PauseTiming();
        scratch.CopyFrom(edited);
        state.ResumeTiming();
        SendChanges(scratch, edited);
    }
}

/// The body that the library sends for these changes.
std::string BodyOf(World& world) {
    const DatasetFiles scratch = world.Scratch("body");
    scratch.CopyFrom(world.Edited());
    OpenSession();
    SendChanges(scratch, world.Edited());
    return Taking().LastBody();
}

/// Records of one file, by class and id.
struct TouchedRecord {
    std::string classCode;
    std::string id;
};
using TouchedRecords = std::vector<TouchedRecord>;

void AddTouched(TouchedRecords& touched, const DatasetFiles& files, const std::string& changed,
                const std::string& classCode, const std::string& link) {
    const std::string sql = "ATTACH '" + files.Status().string() + "' AS status";
    const auto database = OpenBare(files.Store().string());
    ExecuteBare(database.get(), sql);
    const auto select = PrepareBare(database.get(), "SELECT m." + link + " FROM main.\"" + changed +
                                                        "\" m JOIN status.\"" + changed + "\" s ON s.id=m.id");
    while (sqlite3_step(select.get()) == SQLITE_ROW) {
        if (const auto* id = reinterpret_cast<const char*>(sqlite3_column_text(select.get(), 0)))
            touched.push_back({classCode, id});
    }
}

/// What an upload touches in the dataset: the changed records, with what belongs to their trees.
TouchedRecords TouchedBy(const DatasetFiles& files) {
    TouchedRecords touched;
    for (const char* classCode : {"SYS", "SMS", "PSI", "MTS"})
        AddTouched(touched, files, classCode, classCode, "id");
    AddTouched(touched, files, "SMS", "COS", "ConnectionSerieId");
    AddTouched(touched, files, "SMS", "PSI", "SizeModuleId");
    AddTouched(touched, files, "SMS", "MSG", "SerieGroupId");
    AddTouched(touched, files, "PSI", "MTS", "MaterialId");
    return touched;
}

/// The components of the changed series' fittings: the database has no others. Each counts once, however many fittings
/// hold it.
TouchedRecords ComponentsOf(const DatasetFiles& files) {
    TouchedRecords components;
    for (auto& id : TextsOf(files.Components().string(), "SELECT Id FROM components"))
        components.push_back({"components", std::move(id)});
    return components;
}

/// One query for each record, all columns taken, in one read transaction.
void Fetch(const fs::path& file, const TouchedRecords& touched) {
    const auto database = OpenBare(file.string());
    ExecuteBare(database.get(), "BEGIN");
    std::map<std::string, BareStatement> statements;
    for (const auto& record : touched) {
        auto found = statements.find(record.classCode);
        if (found == statements.end())
            found = statements
                        .emplace(record.classCode,
                                 PrepareBare(database.get(), "SELECT * FROM \"" + record.classCode + "\" WHERE id=?"))
                        .first;
        auto* select = found->second.get();
        BindText(select, 1, record.id);
        Require(sqlite3_step(select) == SQLITE_ROW, "no record");
        for (int i = 0; i < sqlite3_column_count(select); ++i)
            benchmark::DoNotOptimize(sqlite3_column_blob(select, i));
        sqlite3_reset(select);
    }
}

void UploadFloor(benchmark::State& state, World& world) {
    const DatasetFiles& files = world.Edited();
    const auto touched = TouchedBy(files);
    const auto components = ComponentsOf(files);
    const auto encode = BareEncoder(BodyOf(world));
    while (state.KeepRunning()) {
        for (int query = 0; query < kQueriesPerRecord; ++query) {
            Fetch(files.Store(), touched);
            Fetch(files.Components(), components);
        }
        benchmark::DoNotOptimize(PostBare(Taking().Address(), "/api/UpLoad/P", "token", encode()));
    }
}

} // namespace

void AddUploadMeasures(Measures& measures, const Sizes& sizes) {
    for (const std::size_t rows : {10'000, 50'000}) {
        const std::size_t made = sizes.Of(rows);
        measures.push_back({kUpload, std::to_string(rows), static_cast<double>(made) / 100, 1, 1, 0,
                            [made](benchmark::State& state) { UploadFloor(state, WorldOf(made)); },
                            [made](benchmark::State& state) { Upload(state, WorldOf(made)); }});
    }
}

} // namespace tolm::bench
