#pragma once

#include "Service/Answer.h"
#include "Service/Database.h"
#include "Service/JsonText.h"
#include "Service/ProjectFile.h"
#include "Service/ProjectStore.h"
#include "Service/SettingTables.h"
#include "Support/TempFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>

namespace tolmtest {

using nlohmann::json;
namespace service = tolm::service;

inline std::string Narrow(const std::wstring& text) {
    return {text.begin(), text.end()};
}

/// The words of the refusal that the work ends in, which has to be of this kind.
inline std::string RefusalOf(service::Answer kind, const std::function<void()>& work) {
    try {
        work();
    } catch (const service::Refusal& refusal) {
        EXPECT_EQ(service::RowOf(refusal.What()).code, service::RowOf(kind).code) << refusal.what();
        return refusal.what();
    }
    ADD_FAILURE() << "nothing was refused";
    return {};
}

/// A database with projects of its own, without a server.
class StoreOnly {
public:
    StoreOnly() : m_database(Narrow(m_folder.File(L"service.db")), 3), m_projects(m_database) {}

    service::Database& Db() { return m_database; }
    service::ProjectStore& Projects() { return m_projects; }
    std::string Folder() const { return Narrow(m_folder.Path()); }

    std::int64_t Fill(const std::string& projectId, const json& tables) {
        m_projects.Create(projectId, projectId);
        return m_projects.Fill(projectId, Read(tables).rows, false);
    }
    std::int64_t Refill(const std::string& projectId, const json& tables) {
        return m_projects.Fill(projectId, Read(tables).rows, true);
    }
    std::int64_t Apply(const std::string& projectId, json change) {
        change["format"] = "tolm-change";
        change["formatVersion"] = 1;
        const auto file = service::ReadChangeFile(change.dump(), Folder());
        return m_projects.Apply(projectId, file.change, file.workunits);
    }
    json Increment(const std::string& projectId, std::int64_t since) {
        return json::parse(m_projects.Increment(projectId, since));
    }
    json Tables(const std::string& projectId) { return json::parse(m_projects.StandingRows(projectId)); }

private:
    service::ProjectFile Read(const json& tables) const {
        const json file{
            {"format", "tolm-project"}, {"formatVersion", 1}, {"tables", tables.is_null() ? json::object() : tables}};
        return service::ReadProjectFile(file.dump(), Folder());
    }

    TempFolder m_folder;
    service::Database m_database;
    service::ProjectStore m_projects;
};

inline json Material(const std::string& id, const std::string& name) {
    return {{"ID", id}, {"text", name}, {"groupName", "MaterialSeries"}, {"parentID", ""}};
}
inline json PipeSize(const std::string& id, const std::string& name, const std::string& parent) {
    return {{"ID", id}, {"text", name}, {"groupName", "MaterialSeries"}, {"parentID", parent}};
}
inline json Node(const std::string& group, const std::string& id, const std::string& name) {
    return {{"ID", id}, {"text", name}, {"groupName", group}, {"parentID", ""}};
}
inline json Series(const std::string& id, const std::string& name) {
    return {{"ID", id}, {"name", name}};
}
inline json SystemType(const std::string& id, const std::string& name) {
    return {{"ID", id}, {"systemType", name}};
}
inline json Circuit(const std::string& id, int phase) {
    return {{"ID", id}, {"Phase", phase}};
}
inline json Combination(const std::string& id, const std::string& name) {
    return {{"ID", id}, {"Name", name}};
}
inline json Binary(const std::string& name, const std::string& data, int length) {
    return {{"fileName", name}, {"length", length}, {"data", data}};
}

/// The row with another key.
inline json With(json row, const std::string& key, const json& value) {
    row[key] = value;
    return row;
}

} // namespace tolmtest
