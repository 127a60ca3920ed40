#include "Service/CommandContext.h"

#include "Service/Database.h"
#include "Service/ProjectFile.h"
#include "Service/UserStore.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <istream>
#include <memory>
#include <ostream>
#include <stdexcept>

namespace tolm::service {
namespace {

constexpr std::size_t kShortestSecret = 8;
constexpr std::size_t kLongestSecret = 1024;

struct UserOptions {
    std::string id;
    std::string secretFile;
    std::string secretVariable;
    bool replace = false;
};

std::string FirstLine(const std::string& text) {
    auto line = text.substr(0, text.find('\n'));
    if (line.ends_with('\r'))
        line.pop_back();
    return line;
}

std::string SecretFrom(const CommandContext& context, const UserOptions& options) {
    if (!options.secretFile.empty())
        return FirstLine(ReadWholeFile(options.secretFile));
    if (!options.secretVariable.empty()) {
        const char* value = std::getenv(options.secretVariable.c_str());
        return value == nullptr ? std::string() : value;
    }
    std::string line;
    std::getline(context.streams.in, line);
    return FirstLine(line);
}

std::string CheckedSecret(const CommandContext& context, const UserOptions& options) {
    auto secret = SecretFrom(context, options);
    if (secret.size() < kShortestSecret || secret.size() > kLongestSecret)
        throw std::runtime_error("a secret has 8 to 1024 bytes");
    return secret;
}

void AddUser(const CommandContext& context, const UserOptions& options) {
    CheckPlainId(options.id, "a user's id");
    Database database(context.database, 1);
    UserStore users(database, {});
    if (!options.replace && std::ranges::count(users.List(), options.id) > 0)
        throw std::runtime_error("there is a user \"" + options.id + "\" already; --replace gives a new secret");
    users.Put(options.id, CheckedSecret(context, options));
    context.streams.out << "user \"" << options.id << "\" can sign in\n";
}

void RemoveUser(const CommandContext& context, const UserOptions& options) {
    Database database(context.database, 1);
    if (!UserStore(database, {}).Remove(options.id))
        throw std::runtime_error("there is no user \"" + options.id + "\"");
    context.streams.out << "user \"" << options.id << "\" is removed, all sign-ins have ended\n";
}

void ListUsers(const CommandContext& context) {
    Database database(context.database, 1);
    for (const auto& user : UserStore(database, {}).List())
        context.streams.out << user << '\n';
}

} // namespace

void AddUserCommands(CLI::App& app, CommandContext& context) {
    auto& group = *app.add_subcommand("user", "Who may sign in");
    group.require_subcommand(1);
    auto options = std::make_shared<UserOptions>();

    auto& add = *group.add_subcommand("add", "Add a user; the secret is the first line of standard input");
    AddDatabaseOption(add, context);
    add.add_option("id", options->id, "id of the user")->required();
    auto* file = add.add_option("--secret-file", options->secretFile, "take the secret from the first line of a file");
    add.add_option("--secret-env", options->secretVariable, "take the secret from an environment variable")
        ->excludes(file);
    add.add_flag("--replace", options->replace, "give a user that is there a new secret");
    add.footer("Example:\n  tolm-service user add anna --secret-file anna.txt --db settings.db");
    add.callback([&context, options] { context.chosen = [&context, options] { AddUser(context, *options); }; });

    auto& remove = *group.add_subcommand("remove", "Remove a user; all of the user's sign-ins end");
    AddDatabaseOption(remove, context);
    remove.add_option("id", options->id, "id of the user")->required();
    remove.callback([&context, options] { context.chosen = [&context, options] { RemoveUser(context, *options); }; });

    auto& list = *group.add_subcommand("list", "List the users");
    AddDatabaseOption(list, context);
    list.callback([&context] { context.chosen = [&context] { ListUsers(context); }; });
}

} // namespace tolm::service
