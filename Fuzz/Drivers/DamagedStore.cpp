#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/Files.h"
#include "Fuzz/Support/InputBytes.h"
#include "Fuzz/Support/Require.h"
#include "Fuzz/Support/StoreReading.h"
#include "Fuzz/Support/Workshop.h"
#include "Host/Definitions.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Qbase/Qbase.h"
#include "TolmDataSet/ITolmDataSetFactory.h"

#include <array>
#include <sstream>

/// The input is a row of damages: a byte that says which, and what it needs. Values, tables and schema are changed
/// through SQLite, which leaves a file in good order with odd content; then bytes are changed under it.
namespace tolmfuzz {
namespace {

constexpr int kMostDamages = 12;
constexpr std::size_t kHeaderSize = 100;
constexpr std::size_t kPageSize = 4096;

struct Column {
    std::string table;
    std::string name;
};

/// Every column of every class.
std::vector<Column> ColumnsOf(const wstring& path) {
    std::istringstream lines(SqlValue(path, "SELECT group_concat(m.name||' '||p.name, char(10)) FROM sqlite_schema m, "
                                            "pragma_table_info(m.name) p WHERE m.type='table'"));
    std::vector<Column> columns;
    for (Column column; lines >> column.table >> column.name;)
        columns.push_back(column);
    return columns;
}

constexpr std::array kSchemaDamages{
    "DROP TABLE COS",
    "DROP TABLE \"000\"",
    "ALTER TABLE PSI DROP COLUMN PipeSizeList",
    "ALTER TABLE SMS RENAME COLUMN maxSize TO minimum",
    "ALTER TABLE MTS RENAME TO MTX",
    "CREATE TRIGGER t BEFORE INSERT ON MTS BEGIN DELETE FROM PSI; END",
    "CREATE TRIGGER t AFTER DELETE ON MTS BEGIN SELECT RAISE(ABORT,'no'); END",
    "CREATE VIEW v AS SELECT load_extension('x') FROM PSI",
    "CREATE TABLE more(a PRIMARY KEY, b) WITHOUT ROWID",
    "CREATE INDEX more ON PSI(abs(MEPType))",
    "PRAGMA user_version=2",
    "PRAGMA user_version=-1",
    "PRAGMA application_id=1",
    "PRAGMA journal_mode=WAL",
    "PRAGMA auto_vacuum=INCREMENTAL",
    "DELETE FROM MTS",
    "UPDATE PSI SET seq=seq-9223372036854775000",
    "UPDATE SMS SET seq=9223372036854775807 WHERE seq=(SELECT max(seq) FROM SMS)",
};

class Damage {
public:
    Damage(const wstring& path, InputBytes input) : m_path(path), m_input(input), m_columns(ColumnsOf(path)) {}

    void Run() {
        for (int i = 0; i < kMostDamages && !m_input.AtEnd(); ++i)
            One(m_input.Below(7));
        if (!m_bytes.empty())
            WriteBytes(m_path, m_bytes);
    }

    /// True while SQLite would find nothing wrong with the file itself.
    bool OnlyValues() const { return m_onlyValues; }

private:
    void One(std::size_t which) {
        if (which < 2 && m_bytes.empty())
            return Value();
        m_onlyValues = false;
        if (which == 2 && m_bytes.empty()) {
            RunSql(m_path, kSchemaDamages.at(m_input.Below(kSchemaDamages.size())), {});
            return;
        }
        if (m_bytes.empty())
            m_bytes = ReadBytes(m_path);
        switch (which) {
        case 3:
            return Overwrite(m_input.Below(kHeaderSize), m_input.Text(1));
        case 4:
            return m_bytes.resize(m_bytes.size() * m_input.Number(2) / 65536);
        case 5:
            return CopyPage();
        default: {
            const std::size_t at = m_input.Number(3);
            return Overwrite(at, m_input.Text(1 + m_input.Below(16)));
        }
        }
    }

    void Value() {
        const Column& column = m_columns.at(m_input.Below(m_columns.size()));
        const std::string row = std::to_string(m_input.Below(8));
        SqlBinding value;
        value.kind = static_cast<SqlBinding::Kind>(m_input.Below(5));
        value.integer = static_cast<long long>(m_input.Number(4)) << m_input.Below(33);
        value.real = static_cast<double>(value.integer) * 1e290;
        if (value.kind == SqlBinding::Kind::Text || value.kind == SqlBinding::Kind::Blob)
            value.bytes = m_input.Text(m_input.Below(256));
        const std::string table = "\"" + column.table + "\"";
        RunSql(m_path,
               "UPDATE " + table + " SET \"" + column.name + "\"=?1 WHERE seq=(SELECT seq FROM " + table +
                   " ORDER BY seq LIMIT 1 OFFSET " + row + ")",
               value);
    }

    void Overwrite(std::size_t at, const std::string& bytes) {
        if (m_bytes.empty() || bytes.empty())
            return;
        at %= m_bytes.size();
        m_bytes.replace(at, std::min(bytes.size(), m_bytes.size() - at), bytes);
    }

    void CopyPage() {
        const std::size_t pages = m_bytes.size() / kPageSize;
        if (pages == 0)
            return;
        const std::size_t from = m_input.Below(pages) * kPageSize;
        const std::size_t to = m_input.Below(pages) * kPageSize;
        m_bytes.replace(to, kPageSize, m_bytes.substr(from, kPageSize));
    }

    wstring m_path;
    InputBytes m_input;
    std::vector<Column> m_columns;
    std::string m_bytes; ///< empty until bytes are changed
    bool m_onlyValues = true;
};

bool WriteMaterial(const wstring& path, wstring id) {
    auto material = tolm::ITolmDataSetFactory::Get()->CreateMaterial();
    material->SetId(id);
    wstring name = L"written";
    material->SetName(name);
    material->SetMEPType(tolm::TolmProjectSettingMEPObjectType::Pipe);
    material->SetDisciplineId(tolm::MEPDisciplineId::Plumbing);
    return tolm::MepQbaseUtil::GetInstance()->WriteMaterial(path, tolm::DataSetFilePath::TOLMDDQFilePath,
                                                            material.get());
}

bool HasMaterial(const wstring& path, const wstring& id) {
    vorn::OwnerPtr<tolm::IProjectSettingMaterial> material;
    return tolm::MepQbaseUtil::GetInstance()->ReadMaterial(path, tolm::DataSetFilePath::TOLMDDQFilePath, id,
                                                           material) &&
           material != nullptr && material->GetName() == L"written";
}

void RequireUnchanged(const DatasetPlace& place, const std::string& bytes, const char* after) {
    Require(ReadBytes(place.data) == bytes, std::string("the file is as it was after ") + after);
    Workshop::Get().RequireNothingElse();
}

} // namespace

int TryDamagedStore(const std::uint8_t* data, std::size_t size) {
    const DatasetPlace& place = Workshop::Get().Prepare(Workshop::Begin::Filled);
    Damage damage(place.data, InputBytes(data, size));
    damage.Run();
    const std::string bytes = ReadBytes(place.data);
    CQbase qb;
    const bool opens = qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, place.data, false);
    qb.closeDatabase();
    RequireUnchanged(place, bytes, "opening");
    const std::string missed = ReadLists(place.data, place.products, size);
    Require(!damage.OnlyValues() || missed.empty(), "odd values spoil no list: " + missed);
    RequireUnchanged(place, bytes, "reading");
    const bool isWritten = WriteMaterial(place.data, L"written");
    Require(opens || bytes.empty() || !isWritten, "what does not open is not written to");
    if (!isWritten)
        RequireUnchanged(place, bytes, "a write that failed");
    if (damage.OnlyValues())
        Require(isWritten && HasMaterial(place.data, L"written"), "a store with odd values can be written to");
    return 0;
}

} // namespace tolmfuzz
