#include "Service/CommandContext.h"

#include "Service/Database.h"
#include "Service/MemberStore.h"
#include "Service/ProjectFile.h"
#include "Service/ProjectStore.h"
#include "Service/SettingTables.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <stdexcept>

namespace tolm::service {
namespace {

struct ProjectOptions {
    std::string id;
    std::string name;
    std::string file;
    std::string user;
    bool force = false;
    std::int64_t lost = 1'000'000;
};

std::string FolderOf(const std::string& file) {
    return std::filesystem::path(file).parent_path().string();
}

std::string VersionText(std::int64_t version) {
    return version < 1 ? "never filled" : "version " + std::to_string(version);
}

void CreateProject(const CommandContext& context, const ProjectOptions& options) {
    CheckPlainId(options.id, "a project's id");
    Database database(context.database, 1);
    ProjectStore(database).Create(options.id, options.name);
    context.streams.out << "project \"" << options.id << "\" is there, never filled\n";
}

void FillProject(const CommandContext& context, const ProjectOptions& options) {
    const auto file = ReadProjectFile(ReadWholeFile(options.file), FolderOf(options.file));
    Database database(context.database, 1);
    const auto version = ProjectStore(database).Fill(options.id, file.rows, options.force);
    context.streams.out << "project \"" << options.id << "\": " << file.rows.size() << " rows, " << VersionText(version)
                        << '\n';
}

void ListProjects(const CommandContext& context) {
    Database database(context.database, 1);
    for (const auto& project : ProjectStore(database).List())
        context.streams.out << project.id << '\t' << VersionText(project.version) << '\t' << project.name << '\n';
}

void PrintMembers(std::ostream& out, MemberStore members, const std::string& projectId) {
    if (!members.IsClosed(projectId)) {
        out << "members: every user\n";
        return;
    }
    out << "members:";
    for (const auto& user : members.List(projectId))
        out << ' ' << user;
    out << '\n';
}

void ShowProject(const CommandContext& context, const ProjectOptions& options) {
    Database database(context.database, 1);
    ProjectStore projects(database);
    const auto info = projects.Info(options.id);
    auto& out = context.streams.out;
    out << info.id << "\nname: " << info.name << '\n' << VersionText(info.version) << '\n';
    if (!info.templateId.empty())
        out << "filled from the template: " << info.templateId << '\n';
    PrintMembers(out, MemberStore(database), options.id);
    const auto counts = projects.RowCounts(options.id);
    for (std::size_t i = 0; i < counts.size(); ++i)
        out << kSettingTables[i].name << ": " << counts[i] << '\n';
}

void Grant(const CommandContext& context, const ProjectOptions& options) {
    CheckPlainId(options.user, "a user's id");
    Database database(context.database, 1);
    MemberStore(database).Grant(options.id, options.user);
    context.streams.out << "project \"" << options.id << "\" is for its members alone; \"" << options.user
                        << "\" is one\n";
}

void Revoke(const CommandContext& context, const ProjectOptions& options) {
    Database database(context.database, 1);
    if (!MemberStore(database).Revoke(options.id, options.user))
        throw std::runtime_error("\"" + options.user + "\" is no member of the project \"" + options.id + "\"");
    context.streams.out << "\"" << options.user << "\" is no member of the project \"" << options.id << "\" any more\n";
}

void OpenToAll(const CommandContext& context, const ProjectOptions& options) {
    Database database(context.database, 1);
    MemberStore(database).OpenToAll(options.id);
    context.streams.out << "project \"" << options.id << "\" is for every user\n";
}

void SetBack(const CommandContext& context, const ProjectOptions& options) {
    Database database(context.database, 1);
    ProjectStore projects(database);
    for (const auto& project : projects.List())
        context.streams.out << project.id << '\t' << VersionText(projects.LoseVersions(project.id, options.lost))
                            << '\n';
}

void ApplyChange(const CommandContext& context, const ProjectOptions& options) {
    const auto file = ReadChangeFile(ReadWholeFile(options.file), FolderOf(options.file));
    Database database(context.database, 1);
    ProjectStore projects(database);
    const auto version = projects.Apply(options.id, file.change, file.workunits);
    context.streams.out << "project \"" << options.id << "\": " << VersionText(version) << '\n';
}

void Export(const CommandContext& context, const ProjectOptions& options) {
    Database database(context.database, 1);
    ProjectStore projects(database);
    const auto text = WriteProjectFile(projects.Info(options.id), projects.StandingRows(options.id));
    if (options.file.empty() || options.file == "-") {
        context.streams.out << text;
        return;
    }
    std::ofstream file(options.file, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file)
        throw std::runtime_error("the file \"" + options.file + "\" cannot be written");
}

using Work = void (*)(const CommandContext&, const ProjectOptions&);

/// A command on one project, chosen by option.
CLI::App& AddCommand(CLI::App& group, CommandContext& context, const std::string& name, const std::string& what,
                     const std::shared_ptr<ProjectOptions>& options, Work work) {
    auto& command = *group.add_subcommand(name, what);
    AddDatabaseOption(command, context);
    command.callback(
        [&context, options, work] { context.chosen = [&context, options, work] { work(context, *options); }; });
    return command;
}

void AddFileOptions(CLI::App& command, ProjectOptions& options) {
    command.add_option("--project", options.id, "id of the project")->required();
    command.add_option("--file", options.file, "file to read")->required()->check(CLI::ExistingFile);
}

void AddMemberCommands(CLI::App& group, CommandContext& context, const std::shared_ptr<ProjectOptions>& options) {
    auto& grant = AddCommand(group, context, "grant", "Make a project one for its members alone, and a user a member",
                             options, Grant);
    auto& revoke = AddCommand(group, context, "revoke", "Let a user be no member any more", options, Revoke);
    for (auto* command : {&grant, &revoke}) {
        command->add_option("user,--user", options->user, "id of the user")->required();
        command->add_option("--project", options->id, "id of the project")->required();
    }
    grant.footer("Example:\n  tolm-service project grant --project house anna --db settings.db");

    auto& open = AddCommand(group, context, "open", "Make a project one for every user again", options, OpenToAll);
    open.add_option("id,--project", options->id, "id of the project")->required();
}

void AddGroupCommands(CLI::App& group, CommandContext& context, const std::shared_ptr<ProjectOptions>& options) {
    auto& create = AddCommand(group, context, "create", "Make a project without settings", options, CreateProject);
    create.add_option("id,--project", options->id, "id of the project")->required();
    create.add_option("--name", options->name, "name for people to read");

    auto& fill =
        AddCommand(group, context, "fill", "Give a project its settings from a project file", options, FillProject);
    AddFileOptions(fill, *options);
    fill.add_flag("--force", options->force,
                  "also when it has some: the file's rows stand instead, as one further version");
    fill.footer("Example:\n  tolm-service project fill --project house --file house.json --db settings.db");

    AddCommand(group, context, "list", "List the projects with their versions", options,
               [](const CommandContext& chosen, const ProjectOptions&) { ListProjects(chosen); });

    auto& show = AddCommand(group, context, "show", "Show a project: version and number of rows", options, ShowProject);
    show.add_option("id,--project", options->id, "id of the project")->required();
}

} // namespace

void AddProjectCommands(CLI::App& app, CommandContext& context) {
    auto options = std::make_shared<ProjectOptions>();
    auto& group = *app.add_subcommand("project", "Projects and their settings");
    group.require_subcommand(1);
    AddGroupCommands(group, context, options);
    AddMemberCommands(group, context, options);

    auto& change = *app.add_subcommand("change", "Changes to a project's settings");
    change.require_subcommand(1);
    auto& apply = AddCommand(change, context, "apply", "Make one version out of a change file", options, ApplyChange);
    AddFileOptions(apply, *options);
    apply.footer("Example:\n  tolm-service change apply --project house --file change.json --db settings.db");

    auto& setBack = AddCommand(
        app, context, "set-back",
        "After the database was set back to an older copy: let no client go on from what it lost", options, SetBack);
    setBack.add_option("--lost", options->lost, "as many versions a project may have had since, at most")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    setBack.footer("Example:\n  tolm-service set-back --db settings.db");

    auto& copy = AddCommand(app, context, "export", "Write a project's settings as a project file", options, Export);
    copy.add_option("--project", options->id, "id of the project")->required();
    copy.add_option("--out", options->file, "file to write; standard output without it");
}

} // namespace tolm::service
