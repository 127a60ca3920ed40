#include "Qbase/SchemaInternal.h"

#include "Qbase/StoreFileInternal.h"

namespace qbase {
namespace {

std::string_view SqlTypeOf(AttributeType type) {
    switch (type) {
    case AttributeType::Byte:
    case AttributeType::Short:
    case AttributeType::Long:
        return " INT";
    case AttributeType::Float:
    case AttributeType::Double:
        return " REAL";
    case AttributeType::Text:
    case AttributeType::TextArray:
        return " TEXT";
    case AttributeType::FloatArray:
    case AttributeType::Binary:
    case AttributeType::BinaryArray:
        break;
    }
    return " BLOB";
}

std::string ColumnSql(const Attribute& attribute) {
    return Quoted(attribute.name).append(SqlTypeOf(attribute.type));
}

std::string CreateTableSql(const std::string& schema, const ClassDefinition& definition) {
    std::string sql = "CREATE TABLE " + Quoted(schema) + "." + Quoted(definition.code) +
                      "(seq INTEGER PRIMARY KEY,id TEXT NOT NULL UNIQUE";
    for (const auto& attribute : definition.attributes)
        sql += "," + ColumnSql(attribute);
    return sql + ")";
}

std::string CreateIndexSql(const std::string& schema, const ClassDefinition& definition,
                           const std::vector<int>& index) {
    std::string columns;
    for (const int position : index) {
        const std::string& attribute = definition.attributes[static_cast<std::size_t>(position)].name;
        columns += (columns.empty() ? "" : ",") + Quoted(attribute);
    }
    return "CREATE INDEX IF NOT EXISTS " + Quoted(schema) + "." + Quoted(definition.IndexName(index)) + " ON " +
           Quoted(definition.code) + "(" + columns + ")";
}

void CreateIndexes(Connection& connection, const std::string& schema, const ClassDefinition& definition) {
    for (const auto& index : definition.indexes)
        connection.Execute(CreateIndexSql(schema, definition, index));
}

void CreateTable(Connection& connection, const std::string& schema, const ClassDefinition& definition) {
    connection.Execute(CreateTableSql(schema, definition));
    CreateIndexes(connection, schema, definition);
}

void SetMark(Connection& connection, const std::string& schema, const std::string& field, int value) {
    connection.Execute("PRAGMA " + Quoted(schema) + "." + field + "=" + std::to_string(value));
}

sqlite3_int64 MarkOf(Connection& connection, const std::string& schema, const std::string& field) {
    return connection.Query("PRAGMA " + Quoted(schema) + "." + field);
}

} // namespace

void WriteSchema(Connection& connection, const std::string& schema, const Definition& definition) {
    SetMark(connection, schema, "application_id", kApplicationId);
    SetMark(connection, schema, "user_version", kFormatVersion);
    for (const auto& classDefinition : definition.Classes())
        CreateTable(connection, schema, classDefinition);
}

void CompleteTable(Connection& connection, const std::string& schema, const ClassDefinition& definition,
                   const std::vector<bool>& present, bool tableExists) {
    if (!tableExists) {
        CreateTable(connection, schema, definition);
        return;
    }
    for (std::size_t i = 0; i < definition.attributes.size(); ++i) {
        if (!present[i])
            connection.Execute("ALTER TABLE " + Quoted(schema) + "." + Quoted(definition.code) + " ADD COLUMN " +
                               ColumnSql(definition.attributes[i]));
    }
    CreateIndexes(connection, schema, definition);
}

bool IsBlank(Connection& connection, const std::string& schema) {
    return MarkOf(connection, schema, "application_id") == 0 && MarkOf(connection, schema, "user_version") == 0 &&
           connection.Query("SELECT count(*) FROM " + Quoted(schema) + ".sqlite_schema") == 0;
}

QbaseError CheckMark(Connection& connection, const std::string& schema) {
    if (MarkOf(connection, schema, "application_id") != kApplicationId)
        return QbaseError::NotAStore;
    const auto version = MarkOf(connection, schema, "user_version");
    if (version > kFormatVersion)
        return QbaseError::NewerVersion;
    return version > 0 ? QbaseError::None : QbaseError::NotAStore;
}

} // namespace qbase
