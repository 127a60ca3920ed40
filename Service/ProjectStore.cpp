#include "Service/ProjectStore.h"

#include "Service/Answer.h"
#include "Service/Database.h"
#include "Service/Increment.h"
#include "Service/LostVersions.h"
#include "Service/RowVersions.h"
#include "Service/Schema.h"
#include "Service/SettingTables.h"

#include <soci/soci.h>

#include <limits>

namespace tolm::service {
namespace {

/// What a project for its members alone was told is not changed by others.
void PutEntries(soci::session& session, const std::string& projectId, const std::vector<WorkunitEntry>& entries) {
    for (const auto& entry : entries) {
        session
            << "INSERT INTO workunit_data (workunit_id, data_id, data_status, project_id) VALUES (:w, :d, :s, :p) ON "
               "CONFLICT (workunit_id, data_id) DO UPDATE SET data_status = excluded.data_status, project_id = "
               "excluded.project_id WHERE workunit_data.project_id = excluded.project_id OR NOT EXISTS (SELECT 1 FROM "
               "members WHERE members.project_id = workunit_data.project_id AND members.user_id = '')",
            soci::use(entry.workunitId, "w"), soci::use(entry.dataId, "d"), soci::use(entry.dataStatus, "s"),
            soci::use(projectId, "p");
    }
}

std::string TemplateProject(soci::session& session, const std::string& templateId) {
    std::string projectId;
    session << "SELECT project_id FROM templates WHERE template_id = :t", soci::use(templateId), soci::into(projectId);
    if (!session.got_data())
        throw Refusal(Answer::UnknownTemplate);
    return projectId;
}

/// Clients keep the version in 32 bits.
constexpr std::int64_t kLastVersion = std::numeric_limits<std::int32_t>::max();

void RefuseFilled(const ProjectState& state) {
    if (state.version >= 1)
        throw Refusal(Answer::AlreadyFilled);
}

} // namespace

void ProjectStore::Create(const std::string& projectId, const std::string& name) {
    m_database.Write([&](soci::session& session) {
        int count = 0;
        session << "SELECT COUNT(*) FROM projects WHERE project_id = :p", soci::use(projectId), soci::into(count);
        if (count > 0)
            throw Refusal(Answer::BadRequest, "there is a project \"" + projectId + "\" already");
        session << "INSERT INTO projects (project_id, name, version, next_position, template_id) VALUES (:p, :n, -1, "
                   "1, '')",
            soci::use(projectId, "p"), soci::use(name, "n");
    });
}

std::vector<ProjectInfo> ProjectStore::List() {
    std::vector<ProjectInfo> projects;
    m_database.Read([&](soci::session& session) {
        ProjectInfo info;
        long long version = 0;
        soci::statement query =
            (session.prepare << "SELECT project_id, name, version, template_id FROM projects ORDER BY project_id",
             soci::into(info.id), soci::into(info.name), soci::into(version), soci::into(info.templateId));
        query.execute();
        while (query.fetch()) {
            info.version = version;
            projects.push_back(info);
        }
    });
    return projects;
}

ProjectInfo ProjectStore::Info(const std::string& projectId) {
    ProjectInfo info;
    info.id = projectId;
    m_database.Read([&](soci::session& session) {
        info.version = ReadProject(session, projectId).version;
        session << "SELECT name, template_id FROM projects WHERE project_id = :p", soci::use(projectId),
            soci::into(info.name), soci::into(info.templateId);
    });
    return info;
}

std::int64_t ProjectStore::Version(const std::string& projectId) {
    std::int64_t version = 0;
    m_database.Read([&](soci::session& session) { version = ReadProject(session, projectId).version; });
    return version;
}

std::vector<std::int64_t> ProjectStore::RowCounts(const std::string& projectId) {
    std::vector<std::int64_t> counts(kSettingTables.size(), 0);
    m_database.Read([&](soci::session& session) {
        ReadProject(session, projectId);
        std::string table;
        long long count = 0;
        soci::statement query =
            (session.prepare << "SELECT table_name, COUNT(*) FROM setting_rows WHERE project_id = :p "
                                "AND gone = " TOLM_FOREVER " GROUP BY table_name",
             soci::use(projectId), soci::into(table), soci::into(count));
        query.execute();
        while (query.fetch())
            counts[FindSettingTable(table).value()] = count;
    });
    return counts;
}

std::int64_t ProjectStore::Fill(const std::string& projectId, const std::vector<SettingRow>& rows, bool replace) {
    std::int64_t version = 0;
    m_database.Write([&](soci::session& session) {
        const auto state = LockProject(session, projectId);
        if (!replace)
            RefuseFilled(state);
        version = MakeVersion(session, projectId, state, {rows, RowsBeside(session, projectId, rows)});
    });
    return version;
}

std::int64_t ProjectStore::Apply(const std::string& projectId, const SettingChange& change,
                                 const std::vector<WorkunitEntry>& entries) {
    std::int64_t version = 0;
    m_database.Write([&](soci::session& session) {
        const auto state = LockProject(session, projectId);
        RefuseNeverFilled(state);
        version = MakeVersion(session, projectId, state, change);
        PutEntries(session, projectId, entries);
    });
    return version;
}

std::int64_t ProjectStore::FillFromTemplate(const std::string& projectId, const std::string& templateId) {
    std::int64_t version = 0;
    m_database.Write([&](soci::session& session) {
        const auto state = LockProject(session, projectId);
        const auto source = TemplateProject(session, templateId);
        RefuseFilled(state);
        version = MakeVersion(session, projectId, state, {ReadStandingRows(session, source), {}});
        session << "UPDATE projects SET template_id = :t WHERE project_id = :p", soci::use(templateId, "t"),
            soci::use(projectId, "p");
    });
    return version;
}

std::int64_t ProjectStore::LoseVersions(const std::string& projectId, std::int64_t most) {
    long long version = 0;
    m_database.Write([&](soci::session& session) {
        const auto state = LockProject(session, projectId);
        version = state.version;
        if (version < 1)
            return;
        if (most < 1 || most >= kLastVersion - version)
            throw Refusal(Answer::BadRequest, "there are no so many versions");
        NoteLostVersions(session, projectId, version + 1, version + most);
        version += most + 1;
        session << "UPDATE projects SET version = :v WHERE project_id = :p", soci::use(version, "v"),
            soci::use(projectId, "p");
    });
    return version;
}

std::string ProjectStore::Increment(const std::string& projectId, std::int64_t since) {
    std::string text;
    m_database.Read([&](soci::session& session) {
        const auto state = ReadProject(session, projectId);
        RefuseNeverFilled(state);
        RefuseAhead(session, projectId, state.version, since);
        text = MakeIncrement(session, projectId, since);
    });
    return text;
}

std::string ProjectStore::StandingRows(const std::string& projectId) {
    std::string text;
    m_database.Read([&](soci::session& session) {
        ReadProject(session, projectId);
        text = MakeStandingRows(session, projectId);
    });
    return text;
}

void ProjectStore::SetTemplate(const std::string& templateId, const std::string& projectId) {
    m_database.Write([&](soci::session& session) {
        ReadProject(session, projectId);
        session << "INSERT INTO templates (template_id, project_id) VALUES (:t, :p) ON CONFLICT (template_id) DO "
                   "UPDATE SET "
                   "project_id = excluded.project_id",
            soci::use(templateId, "t"), soci::use(projectId, "p");
    });
}

std::string ProjectStore::TemplateOf(const std::string& projectId) {
    std::string templateId;
    m_database.Read([&](soci::session& session) {
        session << "SELECT template_id FROM projects WHERE project_id = :p", soci::use(projectId),
            soci::into(templateId);
    });
    return templateId;
}

void ProjectStore::PutWorkunitData(const std::string& projectId, const std::vector<WorkunitEntry>& entries) {
    m_database.Write([&](soci::session& session) {
        ReadProject(session, projectId);
        PutEntries(session, projectId, entries);
    });
}

std::vector<WorkunitEntry> ProjectStore::WorkunitData(const std::string& workunitId) {
    std::vector<WorkunitEntry> entries;
    m_database.Read([&](soci::session& session) {
        WorkunitEntry entry;
        entry.workunitId = workunitId;
        soci::statement query =
            (session.prepare << "SELECT data_id, data_status, project_id FROM workunit_data WHERE workunit_id = :w "
                                "ORDER BY data_id",
             soci::use(workunitId), soci::into(entry.dataId), soci::into(entry.dataStatus),
             soci::into(entry.projectId));
        query.execute();
        while (query.fetch())
            entries.push_back(entry);
    });
    return entries;
}

} // namespace tolm::service
