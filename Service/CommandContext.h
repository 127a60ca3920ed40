#pragma once

#include "Service/Commands.h"

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace tolm::service {

/// What the commands share: the database that they work on, the streams, and the one that was chosen.
struct CommandContext {
    const Streams& streams;
    std::string database;
    std::function<void()> chosen; ///< does the work; a failure leaves as an exception
};

/// Each adds its commands to the command line.
void AddServeCommand(CLI::App& app, CommandContext& context);
void AddUserCommands(CLI::App& app, CommandContext& context);
void AddProjectCommands(CLI::App& app, CommandContext& context);
void AddTemplateCommands(CLI::App& app, CommandContext& context);

/// Adds "--db" to a command.
void AddDatabaseOption(CLI::App& command, CommandContext& context);

/// Throws `std::runtime_error` unless the text can be an id.
void CheckPlainId(const std::string& text, const std::string& what);

} // namespace tolm::service
