#include "Host/Trust.h"
#include "StoreSupport/CloudTestSupport.h"
#include "Support/Certificates.h"
#include "Support/TempFolder.h"
#include "Support/TlsServer.h"
#include "Vorn/Text.h"

#include <cpprest/json.h>
#include <fstream>

/// Whom the client talks to over TLS, and whom not: what it does not trust gets no byte of a request.
namespace tolmtest {
namespace {

using Protocol = TlsServer::Protocol;
using tolm::TolmTrustSettings;

constexpr const char* kVersion7 = R"({"code":"10000","data":7})";

class CloudTrust : public testing::Test {
protected:
    ~CloudTrust() override { TolmTrustSettings::SetCertificateAuthorityFile(L""); }

    /// The host names these authorities.
    void Trust(const std::string& pem) {
        std::ofstream(vorn::StringUtil::ToString(file)) << pem;
        TolmTrustSettings::SetCertificateAuthorityFile(file);
    }

    static Certificate LeafOf(const Certificate& issuer, const std::string& names = "IP:127.0.0.1,DNS:localhost") {
        return Certificate({.name = "settings", .subjectAltName = names}, &issuer);
    }

    static bool Asks(const TlsServer& server, const std::wstring& host = L"127.0.0.1") {
        const TestSession session(server.Address(host));
        int version = 0;
        const bool done = Client().GetVersion(L"P1", version);
        EXPECT_EQ(version, done ? 7 : 0);
        return done;
    }

    /// Expects that the client came, saw, and said nothing.
    static void ExpectRefused(const Certificate& certificate, const std::wstring& host = L"127.0.0.1",
                              Protocol protocol = Protocol::Newest) {
        const TlsServer server(certificate, kVersion7, protocol);
        EXPECT_FALSE(Asks(server, host));
        EXPECT_EQ(server.ConnectionCount(), 1);
        EXPECT_EQ(server.Requests(), std::vector<std::string>{});
    }

    const TempFolder folder;
    const std::wstring file = folder.File(L"权威 authorities.pem");
    const Certificate authority{{.name = "authority", .isAuthority = true}};
    const Certificate good = LeafOf(authority);
};

TEST_F(CloudTrust, TheSystemsAuthoritiesCountUnlessTheHostNamesOthers) {
    EXPECT_EQ(TolmTrustSettings::GetCertificateAuthorityFile(), L"");
    ExpectRefused(good);
    Trust(authority.Pem());
    EXPECT_EQ(TolmTrustSettings::GetCertificateAuthorityFile(), file);
    EXPECT_TRUE(Asks(TlsServer(good, kVersion7)));
    TolmTrustSettings::SetCertificateAuthorityFile(L"");
    ExpectRefused(good);
}

TEST_F(CloudTrust, ARequestGoesWholeToATrustedService) {
    Trust(authority.Pem());
    const TlsServer server(good, kVersion7);
    EXPECT_TRUE(Asks(server));
    ASSERT_EQ(server.Requests().size(), 1U);
    EXPECT_EQ(server.Requests()[0].find("POST /api/GetVersion/P1 HTTP/1.1\r\n"), 0U);
    EXPECT_NE(server.Requests()[0].find("Authorization:secret-token\r\n"), std::string::npos);
}

TEST_F(CloudTrust, BothTheNameAndTheAddressOfAServiceMayBeCertified) {
    Trust(authority.Pem());
    EXPECT_TRUE(Asks(TlsServer(good, kVersion7), L"localhost"));
    EXPECT_TRUE(Asks(TlsServer(good, kVersion7), L"127.0.0.1"));
}

TEST_F(CloudTrust, ACertificateForAnotherHostIsRefused) {
    Trust(authority.Pem());
    for (const char* names : {"DNS:elsewhere.example", "IP:127.0.0.2", "DNS:*.localhost", "DNS:localhost.example",
                              "DNS:127.0.0.1", "email:a@localhost", "URI:https://127.0.0.1/"})
        ExpectRefused(LeafOf(authority, names));
    ExpectRefused(LeafOf(authority, "DNS:elsewhere.example"), L"localhost");
    ExpectRefused(LeafOf(authority, "IP:127.0.0.1"), L"localhost");
    ExpectRefused(LeafOf(authority, "DNS:localhost"), L"127.0.0.1");
    ExpectRefused(Certificate({.name = "127.0.0.1", .subjectAltName = "DNS:elsewhere.example"}, &authority));
}

TEST_F(CloudTrust, ACommonNameCountsWhereNoOtherNamesAreGiven) {
    Trust(authority.Pem());
    EXPECT_TRUE(Asks(TlsServer(Certificate({.name = "localhost"}, &authority), kVersion7), L"localhost"));
    ExpectRefused(Certificate({.name = "localhost", .subjectAltName = "DNS:other"}, &authority), L"localhost");
    ExpectRefused(Certificate({.name = "127.0.0.1"}, &authority));
}

TEST_F(CloudTrust, ACertificateThatSignsItselfIsRefused) {
    const Certificate selfSigned({.name = "127.0.0.1", .subjectAltName = "IP:127.0.0.1"});
    ExpectRefused(selfSigned);
    Trust(authority.Pem());
    ExpectRefused(selfSigned);
}

TEST_F(CloudTrust, ACertificateOutOfItsTimeIsRefused) {
    Trust(authority.Pem());
    Certificate::Wish wish{.name = "settings", .subjectAltName = "IP:127.0.0.1", .validFrom = -3, .validTo = -1};
    ExpectRefused(Certificate(wish, &authority));
    wish.validFrom = 1;
    wish.validTo = 3;
    ExpectRefused(Certificate(wish, &authority));
}

TEST_F(CloudTrust, AnAuthorityOutOfItsTimeVouchesForNobody) {
    const Certificate old({.name = "old", .isAuthority = true, .validFrom = -3, .validTo = -1});
    Trust(old.Pem());
    ExpectRefused(LeafOf(old));
}

TEST_F(CloudTrust, AnAuthorityOfTheSameNameVouchesForNobodyElses) {
    Trust(authority.Pem());
    const Certificate impostor({.name = "authority", .isAuthority = true});
    ExpectRefused(LeafOf(impostor));
}

TEST_F(CloudTrust, ACertificateThatIsNoAuthoritysVouchesForNobody) {
    Trust(authority.Pem() + good.Pem());
    ExpectRefused(LeafOf(good));
}

TEST_F(CloudTrust, EachAuthorityOfTheFileCounts) {
    const Certificate second({.name = "second", .isAuthority = true});
    Trust(authority.Pem() + second.Pem());
    EXPECT_TRUE(Asks(TlsServer(good, kVersion7)));
    EXPECT_TRUE(Asks(TlsServer(LeafOf(second), kVersion7)));
}

TEST_F(CloudTrust, VersionsBelow12AreRefused) {
    Trust(authority.Pem());
    EXPECT_TRUE(Asks(TlsServer(good, kVersion7, Protocol::Only12)));
    EXPECT_TRUE(Asks(TlsServer(good, kVersion7, Protocol::Only13)));
    ExpectRefused(good, L"127.0.0.1", Protocol::AtMost11);
    ExpectRefused(good, L"127.0.0.1", Protocol::AtMost10);
}

TEST_F(CloudTrust, NobodyIsTrustedWhileTheAuthoritiesCannotBeRead) {
    const TlsServer server(good, kVersion7);
    for (const std::string& content : {std::string(), std::string("nonsense"), authority.Pem().substr(0, 200)}) {
        Trust(content);
        EXPECT_FALSE(Asks(server));
    }
    TolmTrustSettings::SetCertificateAuthorityFile(folder.File(L"none.pem"));
    EXPECT_FALSE(Asks(server));
    TolmTrustSettings::SetCertificateAuthorityFile(folder.Path());
    EXPECT_FALSE(Asks(server));
    EXPECT_EQ(server.ConnectionCount(), 0);
}

TEST_F(CloudTrust, AuthoritiesMatterToTlsAlone) {
    TolmTrustSettings::SetCertificateAuthorityFile(folder.File(L"none.pem"));
    ScriptedServer server;
    server.Next(ScriptedAnswer::Data("7"));
    const TestSession session(server.Address());
    int version = 0;
    EXPECT_TRUE(Client().GetVersion(L"P1", version));
}

TEST_F(CloudTrust, AServiceWithoutTlsGetsNoRequestThatWasMeantForIt) {
    ScriptedServer plain;
    plain.On("/", ScriptedAnswer::Data("7"));
    const TestSession session({L"https://127.0.0.1:" + std::to_wstring(plain.Port()), L"P1", L"W1", 300'000});
    web::json::value data;
    EXPECT_FALSE(Client().GetCloudData(L"P1", 1, data));
    EXPECT_TRUE(plain.Requests().empty());
}

} // namespace
} // namespace tolmtest
