#include "Tolm/Commands.h"

#include "Tolm/Errors.h"

#include "Vorn/Log.h"
#include "Vorn/Text.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <ostream>

namespace tolmcli {
namespace {

using Run = void (*)(const Options&, Context&);

/// One command: its word, what it does, an example, and the options that it has.
struct Command {
    const char* word;
    const char* description;
    const char* examples;
    Run run;
    void (*addOptions)(CLI::App&, Options&);
};

void AddNewOptions(CLI::App& app, Options& options) {
    app.add_option("--server", options.server, "Address of the settings service, as http://host:port");
    app.add_option("--project", options.project, "Project on the service");
    app.add_option("--user", options.user, "User to sign in as; the secret comes from TOLM_SECRET or is asked for");
    app.add_option("--work-unit", options.workUnit, "Work unit within the project");
    app.add_option("--components", options.components,
                   "Component database to use, or a .json file to make one beside the dataset from");
    app.add_option("--combined-products", options.combinedProducts, "Database of combined products");
    app.add_option("--files", options.binaryFolder, "Folder for the project's files");
}

void AddWhat(CLI::App& app, Options& options, const std::vector<std::string>& choices) {
    app.add_option("what", options.what, "What kind of record")->required()->check(CLI::IsMember(choices));
}

void AddKind(CLI::App& app, Options& options) {
    app.add_option("--kind", options.kind,
                   "plumbing-pipe, hvac-pipe, duct, cable-tray, conduit, wire, or electrical for systems");
}

void AddNames(CLI::App& app, Options& options, int count) {
    app.add_option("name", options.names, "Id, or name where only one record bears it")->required()->expected(count);
}

void AddRecordOptions(CLI::App& app, Options& options) {
    app.add_option("--name", options.name, "Name of the record");
    app.add_option("--material", options.material, "Material of a pipe or duct table, by id or name");
    app.add_option("--roughness", options.roughness, "Absolute roughness of a pipe in mm");
    app.add_option("--shape", options.shape, "Shape of a duct (0 rectangular, 1 round) or of a cable tray");
    app.add_option("--pressure-grade", options.pressureGrade, "Pressure grade of a duct");
    app.add_option("--cable-material", options.cableMaterial, "Conductor of a wire: 0 copper, 1 aluminium");
    app.add_option("--temperature", options.environmentTemperature, "Environment temperature of a wire, as its number");
    app.add_option("--cable-type", options.cableTypeName, "Type name of a wire; its name by default");
    app.add_option("--row", options.addRows,
                   "Row to add: DN,OD,ID,Thickness or Size,Thickness or area,current,temperature; may be repeated")
        ->allow_extra_args(false);
    app.add_option("--set", options.setMembers,
                   "Member of a template, method or product as MEMBER=VALUE, the members being those that 'tolm show "
                   "--json' tells; may be repeated")
        ->allow_extra_args(false);
}

void AddNothing(CLI::App&, Options&) {}

void AddPullOptions(CLI::App& app, Options& options) {
    app.add_flag("--discard", options.discard, "Throw local changes away and load the project whole");
}

void AddSyncOptions(CLI::App& app, Options& options) {
    app.add_flag("--from-local", options.fromLocal,
                 "Where the project has no settings yet: fill it from this dataset, not from the default template");
    app.add_option("--attempts", options.attempts, "How often to try while others change the project at the same time")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
    app.add_option("--pause", options.pause, "Seconds before the second attempt; each further pause is longer")
        ->check(CLI::Range(0.0, 60.0))
        ->capture_default_str();
}

void AddListOptions(CLI::App& app, Options& options) {
    AddWhat(app, options, ListableWords());
    AddKind(app, options);
}

void AddShowOptions(CLI::App& app, Options& options) {
    AddWhat(app, options, ShowableWords());
    AddNames(app, options, 1);
    AddKind(app, options);
}

void AddUsedByOptions(CLI::App& app, Options& options) {
    AddWhat(app, options, {"size", "series"});
    AddNames(app, options, 1);
    AddKind(app, options);
}

void AddAvailableOptions(CLI::App& app, Options& options) {
    AddKind(app, options);
    app.get_option("--kind")->required();
}

void AddAddOptions(CLI::App& app, Options& options) {
    AddWhat(app, options, EditableWords());
    AddKind(app, options);
    AddRecordOptions(app, options);
}

void AddEditOptions(CLI::App& app, Options& options) {
    AddWhat(app, options, EditableWords());
    AddNames(app, options, 1);
    AddKind(app, options);
    AddRecordOptions(app, options);
    app.add_option("--remove-row", options.removeRows, "Number of a row to remove, from 1; may be repeated")
        ->allow_extra_args(false);
    app.add_flag("--clear-rows", options.clearRows, "Remove all rows before rows are added");
}

void AddDeleteOptions(CLI::App& app, Options& options) {
    AddWhat(app, options, DeletableWords());
    AddNames(app, options, -1);
    AddKind(app, options);
    app.add_flag("--force", options.force, "Delete also what is in use");
}

void AddImportOptions(CLI::App& app, Options& options) {
    app.add_option("file", options.components, "JSON file of disciplines, categories and components")->required();
}

void AddFileOptions(CLI::App& app, Options& options) {
    AddWhat(app, options, ExchangedWords(true, false));
    app.add_option("file", options.file, "JSON file of the records")->required();
}

constexpr Command kCommands[] = {
    {"new", "Make an empty dataset and note where its settings come from",
     "tolm new office.db --server http://127.0.0.1:8080 --project office-tower --user anna", RunNew, AddNewOptions},
    {"info", "Show where a dataset stands", "tolm info office.db", RunInfo, AddNothing},
    {"compare", "Compare the dataset's version with the cloud's", "tolm compare office.db", RunCompare, AddNothing},
    {"pull", "Bring the dataset up to the cloud's version", "tolm pull office.db", RunPull, AddPullOptions},
    {"sync", "Bring dataset and cloud to the same state, whatever that takes",
     "tolm sync office.db\n  tolm sync office.db --json\n  tolm sync office.db --from-local\n\n"
     "Pulls, pushes or merges, as 'tolm compare' finds it. In a merge the cloud wins where others changed the same\n"
     "setting, and a new setting whose name the cloud has already gets a number behind it. At the end stands what "
     "came\n"
     "from the cloud, what went there, what was renamed, and which of your changes the cloud overrode. When others "
     "send\n"
     "changes at the same moment, it compares and tries again. Exit code 0 when both are the same, 1 when that "
     "failed,\n"
     "3 where going on would lose data or the service refuses a name that stands twice; your changes are kept then.",
     RunSync, AddSyncOptions},
    {"push", "Send the local changes to a cloud that has not moved on", "tolm push office.db", RunPush, AddNothing},
    {"merge", "Merge the cloud's changes with the local ones, and send what remains", "tolm merge office.db", RunMerge,
     AddNothing},
    {"list", "List materials, sizes, series, groups, systems, connections, templates, methods, products or components",
     "tolm list office.db sizes --kind plumbing-pipe", RunList, AddListOptions},
    {"show", "Show one record with all that it holds",
     "tolm show office.db size \"Copper tube\"\n  tolm show office.db series \"Copper, pressed\"", RunShow,
     AddShowOptions},
    {"available", "Show what a designer may choose from", "tolm available office.db --kind plumbing-pipe", RunAvailable,
     AddAvailableOptions},
    {"used-by", "Tell who refers to a size table or a series", "tolm used-by office.db size \"Copper tube\"", RunUsedBy,
     AddUsedByOptions},
    {"doctor", "Look a dataset through for damage without changing it",
     "tolm doctor office.db\n  tolm doctor office.db --json\n\n"
     "Looked for: files that do not open, records that do not read or are not found by their id, references to what "
     "is\n"
     "gone, packed lists of a wrong length, names that stand twice, and noted changes of what is gone. The store has "
     "no\n"
     "check of a whole file: every attribute of every record is read instead, and what stands between the records\n"
     "(indexes over other attributes, free pages) is not looked at. Exit code 0 when healthy, 1 with findings.",
     RunDoctor, AddNothing},
    {"changes", "Show the local changes that the cloud has not seen", "tolm changes office.db", RunChanges, AddNothing},
    {"add", "Add a material, a size table, a circuit template, a design method or a combined product",
     "tolm add office.db material --kind plumbing-pipe --name \"Stainless steel\"\n"
     "  tolm add office.db size --kind plumbing-pipe --name \"Stainless DN15-20\" --material \"Stainless steel\"\n"
     "       --roughness 0.0015 --row 15,18,16,1 --row 20,22,19.6,1.2\n"
     "  tolm add office.db template --set systemTypeId=lighting --set wireSpec=4 --set conduitDN=20\n"
     "  tolm add office.db sizing --name \"Equal friction\" --set code=EF --set 'steps=[[1, 0.5, 2.5]]'\n"
     "  tolm add office.db product --name \"Meter set\" --set category=16353515 --set spacing=300\n"
     "       --set 'components=[{\"category\": \"16353020\", \"component\": \"meter\"}]'",
     RunAdd, AddAddOptions},
    {"edit", "Change a material, a size table, a circuit template, a design method or a combined product",
     "tolm edit office.db size \"Stainless DN15-20\" --remove-row 1 --row 25,28,25.6,1.2\n"
     "  tolm edit office.db template \"Lighting\" --set wireSpec=6",
     RunEdit, AddEditOptions},
    {"delete", "Delete materials, size tables, series or groups that nothing uses, or any other record",
     "tolm delete office.db size \"Stainless DN15-20\"\n"
     "  tolm delete office.db series \"Copper, pressed\" \"Copper, soldered\"\n"
     "  tolm delete office.db group \"Cold water\" --force",
     RunDelete, AddDeleteOptions},
    {"export", "Write circuit templates, design methods or combined products to a file",
     "tolm export office.db templates templates.json", RunExport, AddFileOptions},
    {"import", "Add or change what a file holds; templates and products go to the service at once",
     "tolm import office.db templates templates.json\n\n"
     "A record whose id stands is changed, any other is added. Without a service it stays in the dataset. The\n"
     "discipline of a balancing method is told and not stored, so that a host, which lists them by it, does not see\n"
     "the methods that are made here.",
     RunImport, AddFileOptions},
    {"import-components", "Fill the dataset's component database from a file",
     "tolm import-components office.db components.json", RunImportComponents, AddImportOptions},
};

/// Puts the library's log where the user wants it.
void SetUpLog(const std::string& folder) {
    if (!folder.empty())
        vorn::LogManager::SetFolder(vorn::StringUtil::ToWString(folder));
}

} // namespace

int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    CLI::App app("Keeps the settings of a building-services project: reads and edits a dataset, and brings it up to "
                 "the cloud's version.",
                 "tolm");
    app.require_subcommand(1);
    app.set_version_flag("--version", "tolm " TOLM_VERSION);
    app.footer("Exit codes: 0 done, 1 failed, 2 wrong use, 3 refused to protect your data.\n"
               "'tolm COMMAND --help' tells more about a command.");
    app.fallthrough();
    Options options;
    Context context{out};
    std::string logFolder;
    app.add_flag("--json", context.json, "Print results as JSON");
    app.add_option("--log", logFolder, "Folder to keep a log in");

    for (const Command& command : kCommands) {
        CLI::App* sub = app.add_subcommand(command.word, command.description);
        sub->add_option("dataset", options.dataset, "Path of the dataset file")->required();
        command.addOptions(*sub, options);
        sub->footer(std::string("Example:\n  ") + command.examples);
        sub->callback([&, run = command.run] {
            SetUpLog(logFolder);
            run(options, context);
        });
    }
    try {
        app.parse(argc, argv);
        return context.exitCode;
    } catch (const CLI::ParseError& error) {
        return app.exit(error, out, err) == 0 ? Done : Misused;
    } catch (const Failure& failure) {
        err << "tolm: " << failure.what() << '\n';
        return failure.Code();
    } catch (const std::exception& failure) {
        err << "tolm: " << failure.what() << '\n';
        return Failed;
    }
}

} // namespace tolmcli
