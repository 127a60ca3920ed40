#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace tolmcli {

/// What every command is given.
struct Context {
    std::ostream& out; ///< results
    bool json = false; ///< results as JSON
    int exitCode = 0;  ///< for a command that did its work and has to say more than done
};

/// The options of a command as the user gave them; each command reads those that it has.
struct Options {
    std::string dataset;
    std::string what; ///< materials, sizes, material, size
    std::vector<std::string> names;
    std::string file;

    std::string server;
    std::string project;
    std::string workUnit;
    std::string user;
    std::string components;
    std::string combinedProducts;
    std::string binaryFolder;

    bool discard = false;
    bool force = false;

    bool fromLocal = false;
    int attempts = 6;
    double pause = 0.5; ///< seconds before the second attempt

    std::string kind;
    std::optional<std::string> name;
    std::optional<std::string> material;
    std::optional<std::string> roughness;
    std::optional<std::string> shape;
    std::optional<std::string> pressureGrade;
    std::optional<std::string> cableMaterial;
    std::optional<std::string> environmentTemperature;
    std::optional<std::string> cableTypeName;
    std::vector<std::string> addRows;
    std::vector<int> removeRows;
    bool clearRows = false;
    std::vector<std::string> setMembers; ///< MEMBER=VALUE
};

/// Each command throws Failure when it cannot do its work.
void RunNew(const Options& options, Context& context);
void RunInfo(const Options& options, Context& context);
void RunCompare(const Options& options, Context& context);
void RunPull(const Options& options, Context& context);
void RunSync(const Options& options, Context& context);
void RunMerge(const Options& options, Context& context);
void RunPush(const Options& options, Context& context);
void RunList(const Options& options, Context& context);
void RunShow(const Options& options, Context& context);
void RunUsedBy(const Options& options, Context& context);
void RunAvailable(const Options& options, Context& context);
void RunDoctor(const Options& options, Context& context);
void RunChanges(const Options& options, Context& context);
void RunAdd(const Options& options, Context& context);
void RunEdit(const Options& options, Context& context);
void RunDelete(const Options& options, Context& context);
void RunImportComponents(const Options& options, Context& context);
/// Circuit templates, design methods and combined products to a file, and from one.
void RunExport(const Options& options, Context& context);
void RunImport(const Options& options, Context& context);

// The same kinds in `list`, `show`, `add`, `edit` and `delete`. False for other words.
bool AddExchanged(const Options& options, Context& context);
bool EditExchanged(const Options& options, Context& context);
bool ListExchanged(const Options& options, Context& context);
bool ShowExchanged(const Options& options, Context& context);
bool DeleteExchanged(const Options& options, Context& context);
/// Their words for many or for one, with those of what is only read if `readOnlyToo`.
std::vector<std::string> ExchangedWords(bool many, bool readOnlyToo);

/// What `list`, `show`, `add`, `edit` and `delete` take.
std::vector<std::string> ListableWords();
std::vector<std::string> ShowableWords();
std::vector<std::string> EditableWords();
std::vector<std::string> DeletableWords();

/// Runs the command that the arguments name and returns its exit code.
int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

} // namespace tolmcli
