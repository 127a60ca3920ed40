#include "Support/Certificates.h"
#include "Support/TlsServer.h"
#include "Tools/ToolTesting.h"

#include <cstdlib>
#include <fstream>

namespace tolmtest {
namespace {

/// A dataset connected to a service over TLS, whose certificate comes from a private authority.
class ToolOverTls : public testing::Test {
protected:
    void SetUp() override {
        WatchForSecret("anna's secret");
        WatchForSecret("a token of TLS");
        setenv("TOLM_SECRET", "anna's secret", 1);
        std::ofstream(m_authorities) << m_authority.Pem();
        const auto run = Tolm({"new", m_dataset, "--server", vorn::StringUtil::ToString(m_server.Address(L"127.0.0.1")),
                               "--project", "tower", "--user", "anna"});
        ASSERT_EQ(run.code, tolmcli::Done) << run.err;
    }
    void TearDown() override {
        unsetenv("TOLM_SECRET");
        unsetenv("TOLM_CA_FILE");
    }

    /// What was asked for, without the version of the protocol.
    std::vector<std::string> Asked() const {
        std::vector<std::string> lines;
        for (const std::string& request : m_server.Requests())
            lines.push_back(request.substr(0, request.find(" HTTP")));
        return lines;
    }

    TempFolder m_folder;
    const std::string m_dataset = vorn::StringUtil::ToString(m_folder.File(L"office.db"));
    const std::string m_authorities = vorn::StringUtil::ToString(m_folder.File(L"authorities.pem"));
    const Certificate m_authority{{.name = "authority", .isAuthority = true}};
    const Certificate m_certificate{{.name = "settings", .subjectAltName = "IP:127.0.0.1"}, &m_authority};
    const TlsServer m_server{m_certificate, R"({"code":"10000","data":{"token":"a token of TLS"}})"};
};

TEST_F(ToolOverTls, SignsInOnlyWhereAnAuthorityVouchesForTheService) {
    EXPECT_EQ(Tolm({"compare", m_dataset}).code, tolmcli::Failed);
    EXPECT_EQ(Asked(), std::vector<std::string>{});
}

TEST_F(ToolOverTls, TakesTheAuthoritiesThatAreNamedForAllCalls) {
    setenv("TOLM_CA_FILE", m_authorities.c_str(), 1);
    Tolm({"compare", m_dataset}); // which has no version to tell from this server
    EXPECT_EQ(Asked(), (std::vector<std::string>{"POST /api/SignIn", "POST /api/GetVersion/tower"}));
}

TEST_F(ToolOverTls, SaysNothingToAnybodyWhileTheAuthoritiesCannotBeRead) {
    setenv("TOLM_CA_FILE", (m_authorities + ".none").c_str(), 1);
    EXPECT_EQ(Tolm({"compare", m_dataset}).code, tolmcli::Failed);
    EXPECT_EQ(Asked(), std::vector<std::string>{});
}

} // namespace
} // namespace tolmtest
