#include "Service/Commands.h"

#include "Service/CommandContext.h"
#include "Service/Router.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <ostream>
#include <stdexcept>

namespace tolm::service {
namespace {

constexpr int kFailure = 1;
constexpr int kWrongUse = 2;

constexpr auto kExamples = R"(Examples:
  tolm-service user add anna --db settings.db < secret.txt
  tolm-service project create house --name "House in the park" --db settings.db
  tolm-service project fill --project house --file house.json --db settings.db
  tolm-service serve --db settings.db --port 8420
  tolm-service change apply --project house --file change.json --db settings.db
  tolm-service export --project house --out copy.json --db settings.db

Exit code: 0 success, 1 failure, 2 wrong use.)";

int RunChosen(const CommandContext& context) {
    try {
        context.chosen();
        return 0;
    } catch (const std::exception& error) {
        context.streams.err << "tolm-service: " << error.what() << '\n';
        return kFailure;
    }
}

} // namespace

void AddDatabaseOption(CLI::App& command, CommandContext& context) {
    command
        .add_option("--db", context.database, "SQLite file, or a connection string as postgresql://host=... dbname=...")
        ->envname("TOLM_SERVICE_DB")
        ->required();
}

void CheckPlainId(const std::string& text, const std::string& what) {
    if (!IsPlainId(text))
        throw std::runtime_error(what + " is made of letters, digits, \".\", \"_\" and \"-\", at most 128 of them");
}

int RunServiceCommand(int argc, const char* const* argv, const Streams& streams) {
    CLI::App app("The settings service: holds the settings of projects and serves them to their clients.",
                 "tolm-service");
    app.footer(kExamples);
    app.require_subcommand(1);
    CommandContext context{streams, {}, {}};
    AddServeCommand(app, context);
    AddUserCommands(app, context);
    AddProjectCommands(app, context);
    AddTemplateCommands(app, context);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error, streams.out, streams.err) == 0 ? 0 : kWrongUse;
    }
    return RunChosen(context);
}

} // namespace tolm::service
