#include "Host/ComponentFileInternal.h"

#include "Vorn/Files.h"

namespace tolm {
namespace {

constexpr __int64 kApplicationId = 0x544F4C43; // "TOLC"
constexpr __int64 kSchemaVersion = 1;

// A component's id is null only while ids are exchanged: a unique index lets any number of nulls pass.
constexpr const char* kSchema = R"sql(
CREATE TABLE disciplines(
  Position INTEGER PRIMARY KEY,
  Id TEXT NOT NULL UNIQUE,
  Name TEXT NOT NULL,
  EnglishName TEXT NOT NULL);
CREATE TABLE categories(
  Position INTEGER PRIMARY KEY,
  Code TEXT NOT NULL UNIQUE,
  ParentCode TEXT NOT NULL,
  DisciplineId TEXT NOT NULL,
  Name TEXT NOT NULL,
  EnglishName TEXT NOT NULL);
CREATE TABLE components(
  Row INTEGER PRIMARY KEY,
  Id TEXT,
  Version INTEGER NOT NULL,
  CategoryCode TEXT NOT NULL,
  ComponentTypeId TEXT NOT NULL,
  Name TEXT NOT NULL,
  PublicId INTEGER NOT NULL,
  ProductId INTEGER NOT NULL,
  UNIQUE(Id, Version));
CREATE INDEX components_by_category ON components(CategoryCode, Id, Version);
CREATE INDEX components_by_product ON components(ProductId, CategoryCode, Version);
CREATE TABLE component_attributes(
  ComponentRow INTEGER NOT NULL REFERENCES components(Row) ON DELETE CASCADE,
  Name TEXT NOT NULL,
  Value TEXT NOT NULL,
  PRIMARY KEY(ComponentRow, Name)) WITHOUT ROWID;
CREATE TABLE combined_products(
  Id TEXT PRIMARY KEY NOT NULL,
  CategoryCode TEXT NOT NULL DEFAULT '',
  Name TEXT NOT NULL DEFAULT '',
  Spacing INTEGER NOT NULL DEFAULT 0,
  SupplySystemTypeId TEXT NOT NULL DEFAULT '',
  SupplyHoseLength REAL NOT NULL DEFAULT 0,
  SupplyAirTerminalNumber INTEGER NOT NULL DEFAULT 0,
  SupplyAirTerminalDist1 REAL NOT NULL DEFAULT 0,
  SupplyAirTerminalDist2 REAL NOT NULL DEFAULT 0,
  SupplyDuctTypeId TEXT NOT NULL DEFAULT '',
  ReturnSystemTypeId TEXT NOT NULL DEFAULT '',
  ReturnDuctTypeId TEXT NOT NULL DEFAULT '',
  ReturnHoseLength REAL NOT NULL DEFAULT 0);
CREATE TABLE combined_components(
  CombinedProductId TEXT NOT NULL REFERENCES combined_products(Id) ON DELETE CASCADE,
  Role INTEGER NOT NULL,
  Position INTEGER NOT NULL,
  CategoryStandardCode TEXT NOT NULL,
  ComponentId TEXT NOT NULL,
  ComponentTypeId TEXT NOT NULL,
  CategoryName TEXT NOT NULL,
  CategoryEnglishName TEXT NOT NULL,
  PRIMARY KEY(CombinedProductId, Role, Position)) WITHOUT ROWID;
PRAGMA application_id = 0x544F4C43;
PRAGMA user_version = 1;
)sql";

bool ReadDisciplines(sql::Connection& sql, std::vector<TolmDisciplineData>& disciplines) {
    auto rows = sql.Prepare("SELECT Id, Name, EnglishName FROM disciplines ORDER BY Position");
    while (rows.Next())
        disciplines.push_back({rows.Text(0), rows.Text(1), rows.Text(2)});
    return !rows.Failed();
}

bool ReadCategories(sql::Connection& sql, std::vector<TolmCategoryData>& categories) {
    auto rows =
        sql.Prepare("SELECT Code, ParentCode, DisciplineId, Name, EnglishName FROM categories ORDER BY Position");
    while (rows.Next())
        categories.push_back({rows.Text(0), rows.Text(1), rows.Text(2), rows.Text(3), rows.Text(4)});
    return !rows.Failed();
}

} // namespace

ComponentFile::ComponentFile(const std::wstring& path, Purpose purpose)
    : m_connection(path, purpose == Purpose::Create), m_state(State::Failed) {
    if (m_connection.IsOpen())
        m_state = Begin(purpose);
    else if (purpose != Purpose::Create && !vorn::FileInfo(path).Exists())
        m_state = State::Absent;
}

ComponentFile::~ComponentFile() {
    if (m_connection.IsOpen())
        m_connection.Execute("ROLLBACK");
}

bool ComponentFile::Commit() {
    return IsReady() && m_connection.Execute("COMMIT");
}

ComponentFile::State ComponentFile::Begin(Purpose purpose) {
    const bool begun = m_connection.Execute(purpose == Purpose::Read ? "BEGIN" : "BEGIN IMMEDIATE");
    return begun ? Identify(purpose) : State::Failed;
}

ComponentFile::State ComponentFile::Identify(Purpose purpose) {
    __int64 tables = 0;
    __int64 application = 0;
    __int64 version = 0;
    if (!m_connection.ReadNumber("SELECT count(*) FROM sqlite_schema", tables) ||
        !m_connection.ReadNumber("PRAGMA application_id", application) ||
        !m_connection.ReadNumber("PRAGMA user_version", version))
        return State::Failed;
    if (tables > 0 || application != 0 || version != 0)
        return application == kApplicationId && version == kSchemaVersion ? State::Ready : State::Failed;
    if (purpose != Purpose::Create)
        return State::Absent;
    return CreateTables() ? State::Ready : State::Failed;
}

bool ComponentFile::Resume() {
    return IsReady() && !m_connection.HasMoved() && m_connection.Execute("BEGIN");
}

bool ComponentFile::CreateTables() {
    return m_connection.Execute(kSchema);
}

bool FillTextSet(sql::Connection& sql, const std::string& name, const std::vector<std::wstring>& texts) {
    const std::string create = "CREATE TEMP TABLE " + name + "(Value TEXT PRIMARY KEY NOT NULL) WITHOUT ROWID";
    if (!sql.Execute(create.c_str()))
        return false;
    auto insert = sql.Prepare("INSERT OR IGNORE INTO temp." + name + " VALUES(?1)");
    for (const auto& text : texts) {
        if (!insert.Bind(1, text).Run())
            return false;
    }
    return true;
}

bool ReadCatalogue(const std::wstring& path, std::vector<TolmDisciplineData>& disciplines,
                   std::vector<TolmCategoryData>& categories) {
    ComponentFile file(path, ComponentFile::Purpose::Read);
    return file.IsReady() && ReadDisciplines(file.Sql(), disciplines) && ReadCategories(file.Sql(), categories);
}

} // namespace tolm
