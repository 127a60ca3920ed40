#include "Qbase/ClassTableInternal.h"

#include "Qbase/SchemaInternal.h"

#include <algorithm>

namespace qbase {

ClassTable::ClassTable(Connection& connection, std::string schema, const ClassDefinition& definition)
    : m_connection(connection), m_schema(std::move(schema)), m_definition(definition),
      m_name(Quoted(m_schema) + "." + Quoted(definition.code)) {
    Look();
}

void ClassTable::Look() {
    m_exists = HasColumn(nullptr);
    if (m_exists && (!HasColumn("seq") || !HasColumn("id")))
        throw SqlFailure{SQLITE_CORRUPT};
    m_isKnown = false;
    m_complete = false;
}

/// Most tables of a file are asked for nothing but their highest number.
const std::vector<bool>& ClassTable::Present() const {
    if (m_isKnown)
        return m_present;
    m_present.clear();
    for (const auto& attribute : m_definition.attributes)
        m_present.push_back(m_exists && HasColumn(attribute.name.c_str()));
    m_complete = m_exists && std::ranges::find(m_present, false) == m_present.end();
    m_isKnown = true;
    return m_present;
}

/// Without a name: whether the table stands.
bool ClassTable::HasColumn(const char* column) const {
    const int code = sqlite3_table_column_metadata(m_connection.Get(), m_schema.c_str(), m_definition.code.c_str(),
                                                   column, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK && code != SQLITE_ERROR)
        throw SqlFailure{code};
    return code == SQLITE_OK;
}

bool ClassTable::Refresh() {
    if (m_complete)
        return false;
    const bool existed = m_exists;
    const bool wasKnown = m_isKnown;
    const std::vector<bool> before = m_present;
    Look();
    if (m_exists == existed && (!wasKnown || Present() == before))
        return false;
    m_rowOfId = {};
    return true;
}

bool ClassTable::Complete() {
    const bool hasMore = Refresh();
    const std::vector<bool>& present = Present();
    if (m_complete)
        return hasMore;
    CompleteTable(m_connection, m_schema, m_definition, present, m_exists);
    Look();
    m_rowOfId = {};
    return true;
}

std::string ClassTable::SelectSql(const std::string& condition) const {
    const std::vector<bool>& present = Present();
    std::string sql = "SELECT seq,id";
    for (std::size_t i = 0; i < present.size(); ++i)
        sql += present[i] ? "," + Quoted(m_definition.attributes[i].name) : std::string(",NULL");
    return sql + " FROM " + m_name + condition;
}

Statement& ClassTable::Ready(Statement& statement, const std::string& sql) {
    if (!statement)
        statement = Statement(m_connection.Get(), sql);
    return statement;
}

Statement& ClassTable::RowOfId() {
    return m_rowOfId ? m_rowOfId : Ready(m_rowOfId, SelectSql(" WHERE id=?"));
}

Statement& ClassTable::HasId() {
    return Ready(m_hasId, "SELECT 1 FROM " + m_name + " WHERE id=?");
}

Statement& ClassTable::Remove() {
    return Ready(m_remove, "DELETE FROM " + m_name + " WHERE id=?");
}

Statement& ClassTable::Insert() {
    if (m_insert)
        return m_insert;
    std::string columns = "seq,id";
    std::string values = "?,?";
    for (const auto& attribute : m_definition.attributes) {
        columns += "," + Quoted(attribute.name);
        values += ",?";
    }
    return Ready(m_insert, "INSERT INTO " + m_name + "(" + columns + ")VALUES(" + values + ")");
}

Statement& ClassTable::Update(const std::vector<bool>& changed) {
    Statement& statement = m_updates[changed];
    if (statement)
        return statement;
    std::string columns;
    for (std::size_t i = 0; i < changed.size(); ++i) {
        if (changed[i])
            columns += (columns.empty() ? "" : ",") + Quoted(m_definition.attributes[i].name) + "=?";
    }
    return Ready(statement, "UPDATE " + m_name + " SET " + columns + " WHERE seq=?");
}

} // namespace qbase
