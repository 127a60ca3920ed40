#include "Service/CommandContext.h"

#include "Service/Database.h"
#include "Service/ProjectStore.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <ostream>

namespace tolm::service {
namespace {

struct TemplateOptions {
    std::string id;
    std::string project;
};

void SetTemplate(const CommandContext& context, const TemplateOptions& options) {
    CheckPlainId(options.id, "a template's id");
    Database database(context.database, 1);
    ProjectStore(database).SetTemplate(options.id, options.project);
    context.streams.out << "template \"" << options.id << "\" fills from the project \"" << options.project << "\"\n";
}

} // namespace

void AddTemplateCommands(CLI::App& app, CommandContext& context) {
    auto& group = *app.add_subcommand("template", "Projects that new ones are filled from");
    group.require_subcommand(1);
    auto options = std::make_shared<TemplateOptions>();
    auto& set = *group.add_subcommand("set", "Let a template's id stand for a project");
    AddDatabaseOption(set, context);
    set.add_option("--id", options->id, "id of the template")->required();
    set.add_option("--project", options->project, "project whose settings it gives")->required();
    set.footer("Example:\n  tolm-service template set --id 159254153455992832 --project default --db settings.db");
    set.callback([&context, options] { context.chosen = [&context, options] { SetTemplate(context, *options); }; });
}

} // namespace tolm::service
