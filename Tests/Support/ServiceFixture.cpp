#include "Support/ServiceFixture.h"

#include "Host/Session.h"
#include "Service/ProjectFile.h"
#include "Service/Service.h"
#include "Support/Canary.h"
#include "Vorn/Text.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace tolmtest {

namespace service = tolm::service;

namespace {

/// Few rounds of the key derivation: tests sign in often.
constexpr int kRounds = 10;

void Run(const std::wstring& path, const std::string& sql) {
    sqlite3* database = nullptr;
    const bool done = sqlite3_open(vorn::StringUtil::ToString(path).c_str(), &database) == SQLITE_OK &&
                      sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(database);
    if (!done)
        throw std::runtime_error("the database does not do " + sql);
}

} // namespace

struct ServiceFixture::Running {
    Running(const std::string& database, std::shared_ptr<std::atomic<long long>> seconds)
        : all(database, {8 * 3600, kRounds, [seconds] { return seconds->load(); }}, {.log = SearchLine}),
          thread([this] { all.Http().Run(); }) {}
    ~Running() {
        all.Http().Stop();
        thread.join();
    }
    static void SearchLine(const std::string& line) { SearchForSecrets("the service's log", std::string_view(line)); }

    service::Service all;
    std::thread thread;
};

ServiceFixture::ServiceFixture() : m_seconds(std::make_shared<std::atomic<long long>>(1'000'000)) {
    Restart();
    AddUser("anna", "anna's secret");
    WatchForSecret("anna's secret");
}

ServiceFixture::~ServiceFixture() = default;

void ServiceFixture::Restart() {
    m_running.reset();
    m_running = std::make_unique<Running>(vorn::StringUtil::ToString(m_folder.File(L"service.db")), m_seconds);
}

void ServiceFixture::BackUp(const std::wstring& path) {
    Run(DatabasePath(), "VACUUM INTO '" + vorn::StringUtil::ToString(path) + "'");
}

void ServiceFixture::SetBackTo(const std::wstring& path) {
    m_running.reset();
    const auto database = vorn::StringUtil::ToString(DatabasePath());
    for (const char* const beside : {"", "-wal", "-shm"})
        std::filesystem::remove(database + beside);
    std::filesystem::copy_file(vorn::StringUtil::ToString(path), database);
    Restart();
}

service::Service& ServiceFixture::Service() {
    return m_running->all;
}

int ServiceFixture::Port() const {
    return m_running->all.Http().Port();
}

std::wstring ServiceFixture::Address() const {
    return L"http://127.0.0.1:" + std::to_wstring(Port());
}

void ServiceFixture::CreateProject(const std::string& projectId) {
    Service().Projects().Create(projectId, "Project " + projectId);
}

int ServiceFixture::Fill(const std::string& projectId, const std::string& projectFileText) {
    const auto file = service::ReadProjectFile(projectFileText, vorn::StringUtil::ToString(m_folder.Path()));
    const auto projects = Service().Projects().List();
    if (std::ranges::find(projects, projectId, &service::ProjectInfo::id) == projects.end())
        CreateProject(projectId);
    return static_cast<int>(Service().Projects().Fill(projectId, file.rows, false));
}

int ServiceFixture::FillTables(const std::string& projectId, const std::string& tablesText) {
    return Fill(projectId, R"({"format":"tolm-project","formatVersion":1,"tables":)" + tablesText + "}");
}

int ServiceFixture::Apply(const std::string& projectId, const std::string& changeFileText) {
    const auto file = service::ReadChangeFile(changeFileText, vorn::StringUtil::ToString(m_folder.Path()));
    return static_cast<int>(Service().Projects().Apply(projectId, file.change, file.workunits));
}

int ServiceFixture::Version(const std::string& projectId) {
    return static_cast<int>(Service().Projects().Version(projectId));
}

int ServiceFixture::LoseVersions(const std::string& projectId, int count) {
    return static_cast<int>(Service().Projects().LoseVersions(projectId, count));
}

std::string ServiceFixture::Tables(const std::string& projectId) {
    return Service().Projects().StandingRows(projectId);
}

void ServiceFixture::SetTemplate(const std::string& templateId, const std::string& projectId) {
    Service().Projects().SetTemplate(templateId, projectId);
}

void ServiceFixture::AddUser(const std::string& userId, const std::string& secret) {
    Service().Users().Put(userId, secret);
}

std::string ServiceFixture::SignIn(const std::string& userId, const std::string& secret) {
    const auto token = Service().Users().SignIn(userId, secret);
    if (!token)
        throw std::runtime_error("the sign-in was refused");
    WatchForSecret(*token);
    return *token;
}

void ServiceFixture::OpenSession(const std::string& projectId, const std::string& workunitId) {
    tolm::CollaborationProjectSettingForPS::Settings settings;
    settings.httpServer = Address();
    settings.workingProjectId = vorn::StringUtil::ToWString(projectId);
    settings.workingDatasetId = vorn::StringUtil::ToWString(workunitId);
    tolm::CollaborationProjectSettingForPS::Open(settings);
    tolm::TolmUserSessionUtils::SetUser(L"anna", vorn::StringUtil::ToWString(SignIn()));
}

void ServiceFixture::PassSeconds(long long seconds) {
    *m_seconds += seconds;
}

} // namespace tolmtest
