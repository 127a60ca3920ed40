#include "ServiceTesting.h"

#include "Service/Commands.h"
#include "Service/UserStore.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tolmtest {
namespace {

struct Outcome {
    int code;
    std::string out;
    std::string err;
};

class CommandLine : public testing::Test {
protected:
    /// Runs a command on the test's database.
    Outcome Run(std::vector<std::string> words, const std::string& input = "") const {
        words.insert(words.end(), {"--db", Database()});
        return RunBare(words, input);
    }
    static Outcome RunBare(const std::vector<std::string>& words, const std::string& input = "") {
        std::vector<const char*> argv{"tolm-service"};
        for (const auto& word : words)
            argv.push_back(word.c_str());
        std::istringstream in(input);
        std::ostringstream out;
        std::ostringstream err;
        const int code = service::RunServiceCommand(static_cast<int>(argv.size()), argv.data(), {in, out, err});
        return {code, out.str(), err.str()};
    }
    std::string Database() const { return File("service.db"); }
    std::string File(const std::string& name) const { return Narrow(m_folder.Path()) + "/" + name; }
    std::string Written(const std::string& name, const json& content) const {
        std::ofstream(File(name)) << content.dump();
        return File(name);
    }
    std::string ProjectFile(const json& tables) const {
        return Written("project.json", {{"format", "tolm-project"}, {"formatVersion", 1}, {"tables", tables}});
    }
    std::string ChangeFile(const json& add) const {
        return Written("change.json", {{"format", "tolm-change"}, {"formatVersion", 1}, {"add", add}});
    }
    void Filled() const {
        Run({"project", "create", "--project", "p", "--name", "House"});
        Run({"project", "fill", "--project", "p", "--file", ProjectFile({{"PipeType", {Series("s", "S")}}})});
    }

private:
    TempFolder m_folder;
};

TEST_F(CommandLine, AProjectIsGrantedRevokedAndOpened) {
    Filled();
    const auto members = [&] {
        const auto text = Run({"project", "show", "p"}).out;
        const auto at = text.find("members:");
        return at == std::string::npos ? text : text.substr(at, text.find('\n', at) - at);
    };
    EXPECT_EQ(members(), "members: every user");
    EXPECT_EQ(Run({"project", "grant", "--project", "p", "anna"}).code, 0);
    EXPECT_EQ(Run({"project", "grant", "--project", "p", "ben"}).code, 0);
    EXPECT_EQ(members(), "members: anna ben");
    EXPECT_EQ(Run({"project", "revoke", "--project", "p", "ben"}).code, 0);
    EXPECT_EQ(Run({"project", "revoke", "--project", "p", "ben"}).code, 1);
    EXPECT_EQ(members(), "members: anna");
    EXPECT_EQ(Run({"project", "grant", "--project", "q", "anna"}).code, 1);
    EXPECT_EQ(Run({"project", "grant", "--project", "p", "a b"}).code, 1);
    EXPECT_EQ(Run({"project", "open", "p"}).code, 0);
    EXPECT_EQ(members(), "members: every user");
}

TEST_F(CommandLine, WordsThatWouldBeSqlArePlainWords) {
    Filled();
    const std::string trick = "x'); DROP TABLE projects; --";
    EXPECT_EQ(Run({"project", "create", "--project", trick, "--name", "N"}).code, 1);
    EXPECT_EQ(Run({"project", "create", "--project", "q", "--name", trick}).code, 0);
    EXPECT_EQ(Run({"user", "add", trick}, "a long secret\n").code, 1);
    EXPECT_EQ(Run({"user", "remove", trick}).code, 1);
    EXPECT_EQ(Run({"project", "show", trick}).code, 1);
    EXPECT_EQ(Run({"template", "set", "--id", trick, "--project", "p"}).code, 1);
    EXPECT_EQ(Run({"project", "revoke", "--project", trick, trick}).code, 1);
    EXPECT_NE(Run({"project", "list"}).out.find(trick), std::string::npos) << "as the name that it was given";
    EXPECT_NE(Run({"project", "show", "p"}).out.find("PipeType: 1"), std::string::npos);
}

TEST_F(CommandLine, HelpIsASuccessWithExamples) {
    const auto outcome = RunBare({"--help"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_NE(outcome.out.find("Examples:"), std::string::npos);
    for (const auto* command : {"serve", "user", "project", "change", "template", "export", "set-back"}) {
        EXPECT_NE(outcome.out.find(command), std::string::npos) << command;
        EXPECT_EQ(RunBare({command, "--help"}).code, 0) << command;
    }
}

TEST_F(CommandLine, AWrongUseIsTwo) {
    const std::vector<std::vector<std::string>> uses{
        {},
        {"nonsense"},
        {"user"},
        {"project"},
        {"change"},
        {"project", "create"},
        {"project", "list"},
        {"project", "fill", "--project", "p", "--db", "x.db"},
        {"project", "fill", "--project", "p", "--file", "/no/such/file", "--db", "x.db"},
        {"serve", "--db", "x.db", "--port", "70000"},
        {"serve", "--db", "x.db", "--what"},
        {"user", "add", "anna", "--secret-file", "a", "--secret-env", "B", "--db", "x.db"},
    };
    for (const auto& words : uses) {
        const auto outcome = RunBare(words);
        EXPECT_EQ(outcome.code, 2) << testing::PrintToString(words);
        EXPECT_NE(outcome.err, "") << testing::PrintToString(words);
    }
}

TEST_F(CommandLine, UsersAreAddedListedAndRemoved) {
    EXPECT_EQ(Run({"user", "add", "anna"}, "first secret\nrest\n").code, 0);
    EXPECT_EQ(Run({"user", "list"}).out, "anna\n");
    {
        service::Database database(Database(), 1);
        EXPECT_TRUE(service::UserStore(database, {}).SignIn("anna", "first secret").has_value());
    }
    EXPECT_EQ(Run({"user", "remove", "anna"}).code, 0);
    EXPECT_EQ(Run({"user", "list"}).out, "");
    EXPECT_EQ(Run({"user", "remove", "anna"}).code, 1);
}

TEST_F(CommandLine, ASecretComesFromAFileOrTheEnvironment) {
    std::ofstream(File("secret")) << "from the file\r\n";
    EXPECT_EQ(Run({"user", "add", "anna", "--secret-file", File("secret")}).code, 0);
    ASSERT_EQ(setenv("TOLM_TEST_SECRET", "from outside", 1), 0);
    EXPECT_EQ(Run({"user", "add", "bert", "--secret-env", "TOLM_TEST_SECRET"}).code, 0);
    unsetenv("TOLM_TEST_SECRET");
    EXPECT_EQ(Run({"user", "add", "carl", "--secret-env", "TOLM_TEST_SECRET"}).code, 1);
    service::Database database(Database(), 1);
    service::UserStore users(database, {});
    EXPECT_TRUE(users.SignIn("anna", "from the file").has_value());
    EXPECT_TRUE(users.SignIn("bert", "from outside").has_value());
    EXPECT_EQ(users.List().size(), 2U);
}

TEST_F(CommandLine, AShortSecretAndAWrongIdAreRefused) {
    EXPECT_EQ(Run({"user", "add", "anna"}, "short\n").err, "tolm-service: a secret has 8 to 1024 bytes\n");
    EXPECT_EQ(Run({"user", "add", "a b"}, "long enough\n").code, 1);
    EXPECT_EQ(Run({"project", "create", "a/b"}).code, 1);
    EXPECT_EQ(Run({"user", "list"}).out, "");
    EXPECT_EQ(Run({"project", "list"}).out, "");
}

TEST_F(CommandLine, AUsersSecretIsReplacedOnlyWhenAsked) {
    Run({"user", "add", "anna"}, "first secret\n");
    EXPECT_EQ(Run({"user", "add", "anna"}, "other secret\n").code, 1);
    EXPECT_EQ(Run({"user", "add", "anna", "--replace"}, "other secret\n").code, 0);
    service::Database database(Database(), 1);
    EXPECT_TRUE(service::UserStore(database, {}).SignIn("anna", "other secret").has_value());
}

TEST_F(CommandLine, AProjectIsMadeFilledAndShown) {
    EXPECT_EQ(Run({"project", "create", "--project", "p", "--name", "House"}).code, 0);
    EXPECT_EQ(Run({"project", "list"}).out, "p\tnever filled\tHouse\n");
    EXPECT_EQ(Run({"project", "fill", "--project", "p", "--file", ProjectFile({{"PipeType", {Series("s", "S")}}})}).out,
              "project \"p\": 1 rows, version 1\n");
    EXPECT_EQ(Run({"project", "list"}).out, "p\tversion 1\tHouse\n");
    const auto shown = Run({"project", "show", "p"}).out;
    EXPECT_NE(shown.find("name: House\nversion 1\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("PipeType: 1\n"), std::string::npos) << shown;
    EXPECT_EQ(Run({"project", "show", "q"}).err, "tolm-service: there is no such project\n");
}

TEST_F(CommandLine, AFilledProjectIsFilledAgainOnlyByForce) {
    Filled();
    const auto file = ProjectFile({{"PipeType", {Series("t", "T")}}});
    EXPECT_EQ(Run({"project", "fill", "--project", "p", "--file", file}).code, 1);
    EXPECT_EQ(Run({"project", "fill", "--project", "p", "--file", file, "--force"}).out,
              "project \"p\": 1 rows, version 2\n");
}

TEST_F(CommandLine, ARefusedFileIsNamedByTableAndRowAndChangesNothing) {
    Filled();
    const auto outcome =
        Run({"change", "apply", "--project", "p", "--file", ChangeFile({{"DuctType", {json{{"ID", "d"}}}}})});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err, "tolm-service: DuctType, row \"d\": \"name\" is missing\n");
    EXPECT_EQ(Run({"project", "list"}).out, "p\tversion 1\tHouse\n");
}

TEST_F(CommandLine, AChangeMakesAVersion) {
    Filled();
    EXPECT_EQ(Run({"change", "apply", "--project", "p", "--file", ChangeFile({{"DuctType", {Series("d", "D")}}})}).out,
              "project \"p\": version 2\n");
}

TEST_F(CommandLine, AnExportFillsAnotherProjectWithTheSame) {
    Filled();
    EXPECT_EQ(Run({"export", "--project", "p", "--out", File("copy.json")}).code, 0);
    Run({"project", "create", "q"});
    EXPECT_EQ(Run({"project", "fill", "--project", "q", "--file", File("copy.json")}).code, 0);
    EXPECT_EQ(json::parse(Run({"export", "--project", "q"}).out)["tables"],
              json::parse(Run({"export", "--project", "p"}).out)["tables"]);
    EXPECT_EQ(Run({"export", "--project", "p", "--out", "/no/such/folder/copy.json"}).code, 1);
    EXPECT_EQ(Run({"export", "--project", "nothing"}).code, 1);
}

TEST_F(CommandLine, ASetBackDatabaseGoesOnBehindWhatItLost) {
    Filled();
    Run({"project", "create", "q"});
    EXPECT_EQ(Run({"set-back", "--lost", "9"}).out, "p\tversion 11\nq\tnever filled\n");
    EXPECT_EQ(Run({"set-back"}).out, "p\tversion 1000012\nq\tnever filled\n");
    EXPECT_EQ(Run({"set-back", "--lost", "0"}).code, 2);
    EXPECT_EQ(Run({"set-back", "--lost", "2146483640"}).code, 1);
    EXPECT_EQ(Run({"project", "list"}).out, "p\tversion 1000012\tHouse\nq\tnever filled\t\n");
}

TEST_F(CommandLine, ATemplateIsSetForAProjectThatIsThere) {
    Filled();
    EXPECT_EQ(Run({"template", "set", "--id", "159", "--project", "p"}).code, 0);
    EXPECT_EQ(Run({"template", "set", "--id", "159", "--project", "q"}).code, 1);
    EXPECT_EQ(Run({"template", "set", "--id", "1 9", "--project", "p"}).code, 1);
}

TEST_F(CommandLine, TheDatabaseMayStandInTheEnvironment) {
    ASSERT_EQ(setenv("TOLM_SERVICE_DB", Database().c_str(), 1), 0);
    EXPECT_EQ(RunBare({"project", "create", "p"}).code, 0);
    unsetenv("TOLM_SERVICE_DB");
    EXPECT_EQ(Run({"project", "list"}).out, "p\tnever filled\t\n");
}

TEST_F(CommandLine, ADatabaseThatCannotBeOpenedIsAFailure) {
    EXPECT_EQ(RunBare({"project", "list", "--db", "/no/such/folder/x.db"}).code, 1);
}

} // namespace
} // namespace tolmtest
