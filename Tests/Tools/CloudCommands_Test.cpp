#include "Tools/ToolTesting.h"

#include <fstream>
#include <iterator>

using namespace tolmtest;
using tolmcli::Done;
using tolmcli::Failed;
using tolmcli::Refused;

TEST_F(ConnectedTool, CompareTellsThatTheCloudIsAhead) {
    const auto json = On("compare", {"--json"}).Json();
    EXPECT_EQ(json.at("code"), 1);
    EXPECT_EQ(json.at("cloudVersion"), 1);
    EXPECT_TRUE(Contains(On("compare").out, "tolm pull"));
}

TEST_F(ConnectedTool, PullFillsTheDataset) {
    const auto run = On("pull");
    ASSERT_EQ(run.code, Done) << run.err;
    EXPECT_TRUE(Contains(run.out, "Pulled version 1")) << run.out;
    EXPECT_EQ(MaterialName(), "Steel");
    EXPECT_EQ(On("info", {"--json"}).Json().at("localVersion"), 1);
    EXPECT_EQ(On("compare", {"--json"}).Json().at("code"), 0);
}

TEST_F(ConnectedTool, PullAgainIsUpToDate) {
    ASSERT_EQ(On("pull").code, Done);
    const auto run = On("pull");
    EXPECT_EQ(run.code, Done);
    EXPECT_TRUE(Contains(run.out, "Up to date at version 1")) << run.out;
}

TEST_F(ConnectedTool, PullBringsTheIncrement) {
    ASSERT_EQ(On("pull").code, Done);
    m_service.Apply("tower", kRename);
    const auto run = On("pull");
    EXPECT_TRUE(Contains(run.out, "from version 1 to 2")) << run.out;
    EXPECT_EQ(MaterialName(), "Galvanised steel");
}

TEST_F(ConnectedTool, PullIsRefusedWhileLocalChangesAreNoted) {
    ASSERT_EQ(On("pull").code, Done);
    ASSERT_EQ(On("edit", {"material", "m1", "--name", "Mine"}).code, Done);
    m_service.Apply("tower", kRename);
    const auto run = On("pull");
    EXPECT_EQ(run.code, Refused);
    EXPECT_EQ(MaterialName(), "Mine");
    EXPECT_EQ(On("compare", {"--json"}).Json().at("code"), 3);
}

TEST_F(ConnectedTool, DiscardBringsTheCloudsStateBackWhole) {
    ASSERT_EQ(On("pull").code, Done);
    ASSERT_EQ(On("edit", {"material", "m1", "--name", "Mine"}).code, Done);
    ASSERT_EQ(On("add", {"material", "--kind", "duct", "--name", "Zinc"}).code, Done);
    const auto run = On("pull", {"--discard"});
    ASSERT_EQ(run.code, Done) << run.err;
    EXPECT_EQ(MaterialName(), "Steel");
    EXPECT_EQ(On("list", {"materials", "--json"}).Json().size(), 1U);
    EXPECT_TRUE(Contains(On("changes").out, "No local changes"));
    EXPECT_EQ(On("compare", {"--json"}).Json().at("code"), 0);
}

TEST_F(ConnectedTool, DiscardKeepsTheLocalChangesWhenTheServiceIsGone) {
    ASSERT_EQ(On("pull").code, Done);
    ASSERT_EQ(On("edit", {"material", "m1", "--name", "Mine"}).code, Done);
    setenv("TOLM_SECRET", "not the secret", 1);
    EXPECT_EQ(On("pull", {"--discard"}).code, Failed);
    EXPECT_EQ(MaterialName(), "Mine");
    EXPECT_EQ(On("changes", {"--json"}).Json().size(), 1U);
}

TEST_F(ConnectedTool, AWrongSecretIsAClearError) {
    setenv("TOLM_SECRET", "not the secret", 1);
    const auto run = On("compare");
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.err, "does not let user anna in")) << run.err;
    EXPECT_FALSE(Contains(run.err, "not the secret"));
}

TEST_F(ConnectedTool, AProjectThatWasNeverFilledIsToldFromAFailure) {
    m_service.CreateProject("empty");
    const std::string dataset = vorn::StringUtil::ToString(m_folder.File(L"empty.db"));
    ASSERT_EQ(Tolm({"new", dataset, "--server", vorn::StringUtil::ToString(m_service.Address()), "--project", "empty",
                    "--user", "anna"})
                  .code,
              Done);
    const auto run = Tolm({"compare", dataset, "--json"});
    EXPECT_EQ(run.code, Done) << run.err;
    EXPECT_EQ(run.Json().at("code"), 4);
    EXPECT_EQ(Tolm({"pull", dataset}).code, Failed);
}

TEST_F(ConnectedTool, TheProfileHoldsNoSecret) {
    ASSERT_EQ(On("pull").code, Done);
    std::ifstream in(vorn::StringUtil::ToString(m_folder.File(L"office.tolm.json")));
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    EXPECT_TRUE(Contains(text, "tower"));
    EXPECT_FALSE(Contains(text, "secret"));
    EXPECT_FALSE(Contains(text, "oken"));
}
