#include "StoreSupport/StoreFixture.h"

#include "MepDatabase/StoreFrame.h"
#include "Vorn/Text.h"

#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tolmtest {
namespace {

struct CloseConnection {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Connection = std::unique_ptr<sqlite3, CloseConnection>;
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

Connection Connect(const wstring& path) {
    sqlite3* db = nullptr;
    const int code = sqlite3_open_v2(vorn::FileSystem::ToNative(path).c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
    Connection connection(db);
    if (code != SQLITE_OK)
        throw std::runtime_error("no SQLite file opens at the path");
    return connection;
}

std::string Column(sqlite3_stmt* statement, int column) {
    const void* text = sqlite3_column_blob(statement, column);
    const int length = sqlite3_column_bytes(statement, column);
    if (sqlite3_column_type(statement, column) == SQLITE_NULL)
        return "NULL";
    return {static_cast<const char*>(text), static_cast<std::size_t>(length)};
}

SqlRow Row(sqlite3_stmt* statement) {
    SqlRow row;
    for (int i = 0; i < sqlite3_column_count(statement); ++i)
        row.push_back(Column(statement, i));
    return row;
}

} // namespace

std::vector<SqlRow> Sql(const wstring& path, const std::string& query) {
    const Connection db = Connect(path);
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(db.get(), query.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
        throw std::runtime_error(query + ": " + sqlite3_errmsg(db.get()));
    const Statement statement(prepared);
    std::vector<SqlRow> rows;
    int code = sqlite3_step(prepared);
    for (; code == SQLITE_ROW; code = sqlite3_step(prepared))
        rows.push_back(Row(prepared));
    if (code != SQLITE_DONE)
        throw std::runtime_error(query + ": " + sqlite3_errmsg(db.get()));
    return rows;
}

std::string SqlValue(const wstring& path, const std::string& query) {
    const auto rows = Sql(path, query);
    if (rows.size() != 1 || rows[0].size() != 1)
        throw std::runtime_error(query + ": not one value");
    return rows[0][0];
}

std::string FileBytes(const wstring& path) {
    std::ifstream file(vorn::FileSystem::ToNative(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void StoreFixture::MakeStoreAt(const wstring& at) const {
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, at, true));
    ASSERT_TRUE(qb.closeDatabase());
}

std::vector<std::string> StoreFixture::StatusRecords() const {
    std::vector<std::string> records;
    for (const char* classCode : {"SYS", "COS", "MTS", "PSI", "SMS", "MSG", "CRT", "BMD", "ISS", "PSM"}) {
        CQbase qb;
        if (!qb.openDatabase(ddq, statusPath, false))
            return {"no status store"};
        for (bool more = qb.fetchFirstMember(classCode); more; more = qb.fetchNextMember()) {
            CWsz id;
            short status = 0;
            short type = 0;
            short discipline = 0;
            qb.getObjId(id);
            qb.getShort(1109, status);
            qb.getShort(1104, type);
            qb.getShort(1181, discipline);
            records.push_back(std::string(classCode) + " " + vorn::StringUtil::ToString(id.str()) + " " +
                              std::to_string(status) + " " + std::to_string(type) + " " + std::to_string(discipline));
        }
    }
    return records;
}

class EmptyFactory::Factory : public tolm::ITolmDataSetFactory {
public:
    static void Install(tolm::ITolmDataSetFactory* factory) { m_pFactory = factory; }

    vorn::OwnerPtr<tolm::ITolmDataset> CreateDataset(const wstring&, const wstring&, const wstring&,
                                                     const wstring&) override {
        return {};
    }
    vorn::OwnerPtr<tolm::IProjectSettingSizeModule> CreateSizeModule() override { return {}; }
    vorn::OwnerPtr<tolm::IProjectSettingMaterial> CreateMaterial() override { return {}; }
    vorn::OwnerPtr<tolm::IProjectSettingConnectionSerie> CreateConnectionSerie() override { return {}; }
    vorn::OwnerPtr<tolm::IProjectSettingSystemMaterialSerie> CreateSystemMaterialSerie() override { return {}; }
    vorn::OwnerPtr<tolm::IProjectSettingSystemType> CreateSystemType() override { return {}; }
    vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerie> CreateMEPMaterialSerie() override { return {}; }
    vorn::OwnerPtr<tolm::ITolmProjectSettingCircuitTemplate> CreateCircuitTemplate() override { return {}; }
    vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerieGroup> CreateMEPMaterialSerieGroup() override { return {}; }
};

EmptyFactory::EmptyFactory() : m_before(tolm::ITolmDataSetFactory::Get()), m_factory(std::make_unique<Factory>()) {
    Factory::Install(m_factory.get());
}

EmptyFactory::~EmptyFactory() {
    m_factory.reset();
    Factory::Install(m_before);
}

NoStoreHandles::NoStoreHandles() {
    tolm::StoreFrame::SetMaker([] { return vorn::OwnerPtr<CQbase>(); });
}

NoStoreHandles::~NoStoreHandles() {
    tolm::StoreFrame::SetMaker(nullptr);
}

} // namespace tolmtest
