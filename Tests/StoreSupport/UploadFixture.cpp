#include "StoreSupport/UploadFixture.h"

#include "StoreSupport/MepQbaseUtilTestAccess.h"

#include <sqlite3.h>

#include <fstream>

namespace tolmtest {
namespace {

std::string g_stays;
sqlite3_vfs* g_real = nullptr;
sqlite3_vfs g_shim;

int Delete(sqlite3_vfs*, const char* name, int sync) {
    return name == g_stays ? SQLITE_IOERR_DELETE : g_real->xDelete(g_real, name, sync);
}

} // namespace

void UploadFixture::SetUp() {
    SeriesFixture::SetUp();
    server.On("/api/UpLoad/", ScriptedAnswer::Data(R"({"version":8})"));
    for (const char* call : {"/api/CreateList/", "/api/EditList/", "/api/RemoveList/", "/api/workunit/uploadData"})
        server.On(call, ScriptedAnswer::Data("null"));
    server.On("/api/GetVersion/", ScriptedAnswer::Data("8"));
    Recovered().clear();
}

void UploadFixture::TearDown() {
    Recovered().clear();
    SeriesFixture::TearDown();
}

void UploadFixture::Note(const char* classCode, const wstring& id, Change change, std::optional<short> type,
                         std::optional<short> discipline) const {
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, statusPath, true));
    ASSERT_TRUE(qb.createRec(classCode, id));
    ASSERT_TRUE(qb.setShort(tolm::schema::kStatus, change));
    if (type) {
        ASSERT_TRUE(qb.setShort(tolm::schema::kMEPType, *type));
    }
    if (discipline) {
        ASSERT_TRUE(qb.setShort(tolm::schema::kDisciplineId, *discipline));
    }
    ASSERT_TRUE(qb.saveRec());
}

void UploadFixture::StoreOfEachClass(const wstring& prefix, const wstring& name) {
    auto group = Group(prefix + L"group", name, Type::Pipe, Discipline::Plumbing, 11);
    ASSERT_TRUE(Write(group));
    ASSERT_TRUE(Store(Material(prefix + L"material", name, Type::Pipe, Discipline::HVAC, 12)));
    auto module = SizeModule(prefix + L"sizes", name, Type::Pipe, Discipline::Plumbing, 13);
    module->SetRoughness(0.0015);
    module->AddPipeSize({28.4F, 32.0F, 25.0F, 1.8F});
    ASSERT_TRUE(Write(module));
    auto connection = Connection(prefix + L"connection", name);
    AddFitting(*connection, {.part = Part::Tee, .component = L"t1", .min = 15.0, .max = 40.0}, L"tee");
    auto serie = Serie(prefix + L"serie", name);
    serie->SetCreateTime(14);
    serie->SetConnectionSerie(connection);
    ASSERT_TRUE(Write(serie));
    auto systemType = SystemType(prefix + L"system", name);
    systemType->SetCreateTime(15);
    ASSERT_TRUE(Write(systemType));
}

std::vector<wstring>& UploadFixture::Recovered() const {
    return tolm::MepQbaseUtilTestAccess::RecoveredSystemTypeIds();
}

int UploadFixture::Version() const {
    bool changed = false;
    return util.GetLocalVersion(path, ddq, changed);
}

std::vector<RecordedRequest> UploadFixture::Requests(const std::string& pathPrefix) const {
    auto requests = server.Requests();
    std::erase_if(requests, [&](const RecordedRequest& request) { return !request.path.starts_with(pathPrefix); });
    return requests;
}

std::string UploadFixture::PatchText() const {
    const auto patches = Requests("/api/UpLoad/");
    EXPECT_EQ(patches.size(), 1U);
    return patches.empty() ? "{}" : patches[0].body;
}

std::vector<std::string> IdsOf(const nlohmann::json& rows) {
    std::vector<std::string> ids;
    for (const auto& row : rows)
        ids.push_back(row.at("ID"));
    return ids;
}

FileThatStays::FileThatStays(const wstring& path) {
    g_real = sqlite3_vfs_find(nullptr);
    g_stays = vorn::FileSystem::ToNative(path);
    g_shim = *g_real;
    g_shim.zName = "file-that-stays";
    g_shim.pNext = nullptr;
    g_shim.xDelete = &Delete;
    sqlite3_vfs_register(&g_shim, 1);
}

FileThatStays::~FileThatStays() {
    sqlite3_vfs_unregister(&g_shim);
}

void DamageTable(const wstring& path, const std::string& table) {
    const auto page = std::stol(SqlValue(path, "SELECT rootpage FROM sqlite_master WHERE name = '" + table + "'"));
    const auto size = std::stol(SqlValue(path, "PRAGMA page_size"));
    std::fstream file(vorn::FileSystem::ToNative(path), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp((page - 1) * size);
    file << std::string(static_cast<std::size_t>(size), '\x55');
}

} // namespace tolmtest
