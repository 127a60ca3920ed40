#include "Host/Components.h"

#include "Host/ComponentFileInternal.h"

#include <algorithm>
#include <array>

namespace tolm {
namespace {

template <class Record> struct TextColumn {
    std::string_view name;
    std::wstring Record::*field;
};

constexpr std::array<TextColumn<TolmDisciplineData>, 3> kDisciplineColumns{{
    {"Id", &TolmDisciplineData::id},
    {"Name", &TolmDisciplineData::name},
    {"EnglishName", &TolmDisciplineData::englishName},
}};

constexpr std::array<TextColumn<TolmCategoryData>, 5> kCategoryColumns{{
    {"Code", &TolmCategoryData::code},
    {"ParentCode", &TolmCategoryData::parentCode},
    {"DisciplineId", &TolmCategoryData::disciplineId},
    {"Name", &TolmCategoryData::name},
    {"EnglishName", &TolmCategoryData::englishName},
}};

/// Inserts a row, or replaces the content of the row with the same key: the first column.
template <class Columns> std::string InsertOrReplace(const std::string& table, const Columns& columns) {
    std::string values;
    std::string assignments;
    int parameter = 1;
    for (const auto& column : columns) {
        const std::string separator = parameter > 1 ? ", " : "";
        values.append(separator).append("?").append(std::to_string(parameter++));
        assignments.append(separator).append(column.name).append(" = excluded.").append(column.name);
    }
    return "INSERT INTO " + table + "(" + JoinNames(columns, "", "") + ") VALUES(" + values + ") ON CONFLICT(" +
           std::string(columns.front().name) + ") DO UPDATE SET " + assignments;
}

template <class Record, class Columns>
bool ImportTexts(sql::Connection& sql, const std::string& table, const Columns& columns,
                 const std::vector<Record>& records) {
    sql::Statement insert = sql.Prepare(InsertOrReplace(table, columns));
    return std::ranges::all_of(records, [&](const Record& record) {
        int parameter = 1;
        for (const auto& column : columns)
            insert.Bind(parameter++, record.*column.field);
        return insert.Run();
    });
}

/// Writes components with the statements prepared once.
class ComponentWriter {
public:
    explicit ComponentWriter(sql::Connection& sql)
        : m_insert(sql.Prepare("INSERT INTO components(Id, Version, CategoryCode, ComponentTypeId, Name, PublicId,"
                               " ProductId) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7) ON CONFLICT(Id, Version) DO UPDATE SET"
                               " CategoryCode = excluded.CategoryCode, ComponentTypeId = excluded.ComponentTypeId,"
                               " Name = excluded.Name, PublicId = excluded.PublicId, ProductId = excluded.ProductId"
                               " RETURNING Row")),
          m_clear(sql.Prepare("DELETE FROM component_attributes WHERE ComponentRow = ?1")),
          m_attribute(sql.Prepare("INSERT INTO component_attributes VALUES(?1, ?2, ?3)")) {}

    bool Write(const TolmComponentData& component) {
        m_insert.Bind(1, component.id).Bind(2, __int64{component.version}).Bind(3, component.categoryCode);
        m_insert.Bind(4, component.componentTypeId).Bind(5, component.name);
        m_insert.Bind(6, component.publicId).Bind(7, component.productId);
        if (!m_insert.Next())
            return false;
        const __int64 row = m_insert.Integer(0);
        return m_insert.Run() && m_clear.Bind(1, row).Run() && WriteAttributes(row, component.attributes);
    }

private:
    bool WriteAttributes(__int64 row, const std::map<std::wstring, std::wstring>& attributes) {
        return std::ranges::all_of(attributes, [&](const auto& attribute) {
            return m_attribute.Bind(1, row).Bind(2, attribute.first).Bind(3, attribute.second).Run();
        });
    }

    sql::Statement m_insert;
    sql::Statement m_clear;
    sql::Statement m_attribute;
};

bool ImportComponents(sql::Connection& sql, const std::vector<TolmComponentData>& components) {
    ComponentWriter writer(sql);
    return std::ranges::all_of(components, [&](const TolmComponentData& component) { return writer.Write(component); });
}

/// New ids under the old ones, in a temporary table.
bool FillRenames(sql::Connection& sql, const std::string& name, const std::map<std::wstring, std::wstring>& renames) {
    const std::string create =
        "CREATE TEMP TABLE " + name + "(Old TEXT PRIMARY KEY NOT NULL, New TEXT NOT NULL) WITHOUT ROWID";
    if (!sql.Execute(create.c_str()))
        return false;
    sql::Statement insert = sql.Prepare("INSERT OR REPLACE INTO temp." + name + " VALUES(?1, ?2)");
    return std::ranges::all_of(
        renames, [&](const auto& rename) { return insert.Bind(1, rename.first).Bind(2, rename.second).Run(); });
}

/// Where ids of components and of their types stand.
struct RenamedColumn {
    const char* table;
    const char* column;
    const char* renames;
};
constexpr std::array<RenamedColumn, 3> kRenamedColumns{{
    {"components", "ComponentTypeId", "type_ids"},
    {"combined_components", "ComponentId", "component_ids"},
    {"combined_components", "ComponentTypeId", "type_ids"},
}};

bool RenameColumn(sql::Connection& sql, const RenamedColumn& row) {
    const std::string column = row.column;
    const std::string renames = std::string("temp.") + row.renames;
    const std::string update = "UPDATE " + std::string(row.table) + " SET " + column + " = (SELECT New FROM " +
                               renames + " WHERE Old = " + column + ") WHERE " + column + " IN (SELECT Old FROM " +
                               renames + ")";
    return sql.Execute(update.c_str());
}

/// Ids are unique: all that change are taken away before the first new one is given.
bool RenameComponents(sql::Connection& sql) {
    return sql.Execute("CREATE TEMP TABLE moved(Row INTEGER PRIMARY KEY, New TEXT NOT NULL);"
                       "INSERT INTO temp.moved SELECT c.Row, r.New FROM components c"
                       " JOIN temp.component_ids r ON r.Old = c.Id;"
                       "UPDATE components SET Id = NULL WHERE Row IN (SELECT Row FROM temp.moved);"
                       "UPDATE components SET Id = (SELECT New FROM temp.moved m WHERE m.Row = components.Row)"
                       " WHERE Row IN (SELECT Row FROM temp.moved)");
}

} // namespace

bool TolmComponentSqlUtil::Import(const std::wstring& path, const std::vector<TolmDisciplineData>& disciplines,
                                  const std::vector<TolmCategoryData>& categories,
                                  const std::vector<TolmComponentData>& components) {
    ComponentFile file(path, ComponentFile::Purpose::Create);
    return file.IsReady() && ImportTexts(file.Sql(), "disciplines", kDisciplineColumns, disciplines) &&
           ImportTexts(file.Sql(), "categories", kCategoryColumns, categories) &&
           ImportComponents(file.Sql(), components) && file.Commit();
}

bool TolmComponentSqlUtil::UpdateAllComponentId(const std::wstring& path,
                                                std::map<std::wstring, std::wstring>& componentIds,
                                                std::map<std::wstring, std::wstring>& componentTypeIds) {
    ComponentFile file(path, ComponentFile::Purpose::Update);
    if (!file.IsReady())
        return file.IsAbsent();
    sql::Connection& sql = file.Sql();
    return FillRenames(sql, "component_ids", componentIds) && FillRenames(sql, "type_ids", componentTypeIds) &&
           RenameComponents(sql) &&
           std::ranges::all_of(kRenamedColumns, [&](const auto& row) { return RenameColumn(sql, row); }) &&
           file.Commit();
}

} // namespace tolm
