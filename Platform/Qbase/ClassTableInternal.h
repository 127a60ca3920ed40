#pragma once

#include "Qbase/ConnectionInternal.h"
#include "Qbase/DefinitionInternal.h"

#include <map>
#include <string>
#include <vector>

namespace qbase {

/// The table of one class in one open file, and the statements that work on it. A row that is selected has the
/// record's number in column 0, its id in column 1, and attribute i of the definition in column i + 2, which is NULL
/// where an older file has no such column.
class ClassTable {
public:
    /// Looks at the file. Throws `SqlFailure` where the table is no table of records.
    ClassTable(Connection& connection, std::string schema, const ClassDefinition& definition);

    const ClassDefinition& Definition() const { return m_definition; }
    bool Exists() const { return m_exists; }
    /// True when the file has the attribute's column.
    bool HasAttribute(int position) const { return Present()[static_cast<std::size_t>(position)]; }
    /// Looks again at a file that lacked something, which another handle may have added. True when it has more now:
    /// statements that were made before do not know of it. Needs a lock.
    bool Refresh();
    /// Gives an older file what it lacks; true when it has more than before. Needs the update lock.
    bool Complete();

    /// The rows that meet the condition, which may be empty.
    std::string SelectSql(const std::string& condition) const;
    /// The table's name in SQL.
    const std::string& Name() const { return m_name; }

    /// Row with the id ?1.
    Statement& RowOfId();
    /// A row without columns of interest where the id ?1 stands.
    Statement& HasId();
    Statement& Remove();
    /// Takes number, id and all attributes.
    Statement& Insert();
    /// Takes the attributes that are true in `changed`, in order, and the record's number after them.
    Statement& Update(const std::vector<bool>& changed);

private:
    void Look();
    const std::vector<bool>& Present() const;
    bool HasColumn(const char* column) const;
    Statement& Ready(Statement& statement, const std::string& sql);

    Connection& m_connection;
    std::string m_schema;
    const ClassDefinition& m_definition;
    std::string m_name;
    bool m_exists = false;
    // Of the attributes, once somebody asked for them.
    mutable bool m_isKnown = false;
    mutable bool m_complete = false;
    mutable std::vector<bool> m_present;
    Statement m_rowOfId;
    Statement m_hasId;
    Statement m_remove;
    Statement m_insert;
    std::map<std::vector<bool>, Statement> m_updates;
};

} // namespace qbase
