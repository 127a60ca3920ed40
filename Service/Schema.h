#pragma once

#include <array>

namespace tolm::service {

/// A row that stands has this in place of the version that took it away. The same figure is written out in SQL, since
/// the indexes below hold only where the database sees it there.
inline constexpr long long kForever = 4611686018427387904;
#define TOLM_FOREVER "4611686018427387904"

/// The tables, in SQL that SQLite and PostgreSQL both read. A row of `setting_rows` is one state of one setting: it
/// stands from the version `born` up to but not in the version `gone`.
inline constexpr std::array kSchema{
    "CREATE TABLE IF NOT EXISTS projects (project_id TEXT PRIMARY KEY, name TEXT NOT NULL, version BIGINT NOT NULL, "
    "next_position BIGINT NOT NULL, template_id TEXT NOT NULL)",

    "CREATE TABLE IF NOT EXISTS setting_rows (project_id TEXT NOT NULL, id_space INTEGER NOT NULL, row_id TEXT NOT "
    "NULL, "
    "born BIGINT NOT NULL, gone BIGINT NOT NULL, table_name TEXT NOT NULL, row_group TEXT NOT NULL, "
    "position BIGINT NOT NULL, name_scope TEXT NOT NULL, name TEXT NOT NULL, stub TEXT NOT NULL, body TEXT NOT NULL, "
    "PRIMARY KEY (project_id, id_space, row_id, born))",
    "CREATE INDEX IF NOT EXISTS setting_rows_position ON setting_rows (project_id, position)",
    "CREATE INDEX IF NOT EXISTS setting_rows_born ON setting_rows (project_id, born)",
    "CREATE INDEX IF NOT EXISTS setting_rows_gone ON setting_rows (project_id, gone) WHERE gone < " TOLM_FOREVER,
    "CREATE INDEX IF NOT EXISTS setting_rows_name ON setting_rows (project_id, name_scope, name) WHERE gone "
    "= " TOLM_FOREVER " AND name_scope <> ''",

    "CREATE TABLE IF NOT EXISTS lost_versions (project_id TEXT NOT NULL, first BIGINT NOT NULL, last BIGINT NOT NULL, "
    "PRIMARY KEY (project_id, first))",

    "CREATE TABLE IF NOT EXISTS workunit_data (workunit_id TEXT NOT NULL, data_id TEXT NOT NULL, data_status INTEGER "
    "NOT "
    "NULL, project_id TEXT NOT NULL, PRIMARY KEY (workunit_id, data_id))",

    "CREATE TABLE IF NOT EXISTS templates (template_id TEXT PRIMARY KEY, project_id TEXT NOT NULL)",

    "CREATE TABLE IF NOT EXISTS users (user_id TEXT PRIMARY KEY, salt TEXT NOT NULL, hash TEXT NOT NULL, rounds "
    "INTEGER "
    "NOT NULL)",
    "CREATE TABLE IF NOT EXISTS members (project_id TEXT NOT NULL, user_id TEXT NOT NULL, PRIMARY KEY (project_id, "
    "user_id))",
    "CREATE TABLE IF NOT EXISTS tokens (token_hash TEXT PRIMARY KEY, user_id TEXT NOT NULL, last_used BIGINT NOT NULL)",
    "CREATE INDEX IF NOT EXISTS tokens_user ON tokens (user_id)",
    "CREATE TABLE IF NOT EXISTS told_versions (token_hash TEXT NOT NULL, project_id TEXT NOT NULL, version BIGINT NOT "
    "NULL, PRIMARY KEY (token_hash, project_id))",
    "CREATE TABLE IF NOT EXISTS taken_uploads (token_hash TEXT NOT NULL, project_id TEXT NOT NULL, version BIGINT NOT "
    "NULL, body_hash TEXT NOT NULL, PRIMARY KEY (token_hash, project_id))",
};

} // namespace tolm::service
