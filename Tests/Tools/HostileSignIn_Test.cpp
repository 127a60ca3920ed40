#include "Host/Trust.h"
#include "Support/Certificates.h"
#include "Support/ClosedPort.h"
#include "Support/HostileAnswers.h"
#include "Support/TlsServer.h"
#include "Tolm/SignIn.h"
#include "Tools/ToolTesting.h"

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <set>
#include <utility>

namespace tolmtest {
namespace {

/// The sign-in of the command line against every hostile answer.
class HostileSignIn : public testing::Test {
protected:
    void SetUp() override {
        WatchForSecret("anna's secret");
        WatchForSecret("the true token");
        setenv("TOLM_SECRET", "anna's secret", 1);
        const auto run = Tolm({"new", dataset, "--server", vorn::StringUtil::ToString(server.Address()), "--project",
                               "tower", "--user", "anna"});
        ASSERT_EQ(run.code, tolmcli::Done) << run.err;
    }
    void TearDown() override { unsetenv("TOLM_SECRET"); }

    /// Runs a command that signs in first, and tells what it asked for. The secret goes out once.
    std::vector<RecordedRequest> Asked(const ScriptedAnswer& answer) {
        const auto before = static_cast<std::ptrdiff_t>(server.Requests().size());
        server.Next(answer);
        const auto run = Tolm({"compare", dataset});
        auto requests = server.Requests();
        requests.erase(requests.begin(), requests.begin() + before);
        EXPECT_EQ(requests.at(0).path, "/api/SignIn");
        if (requests.size() == 1) {
            EXPECT_EQ(run.code, tolmcli::Failed);
            EXPECT_FALSE(run.err.empty());
        }
        EXPECT_TRUE(elsewhere.Requests().empty());
        return requests;
    }

    const TempFolder folder;
    const std::string dataset = vorn::StringUtil::ToString(folder.File(L"office.db"));
    const std::string trueBody = R"({"code":"10000","data":{"token":"the true token"}})";
    ScriptedServer server;
    ScriptedServer elsewhere;
};

/// Answers that the HTTP library reads all the same: the chunk with the true body claims the end of its own line too,
/// which is blank to JSON.
const std::set<std::string> kTakenAllTheSame{"chunk size 33", "chunk size 34"};

TEST_F(HostileSignIn, TakesTheTrueTokenOrNone) {
    EXPECT_EQ(Asked(ScriptedAnswer::Json(trueBody)).at(1).Header("Authorization"), "the true token");
    for (const auto& hostile : HostileAnswers(trueBody, elsewhere.Port())) {
        if (hostile.isSlow)
            continue;
        SCOPED_TRACE(hostile.name);
        const auto requests = Asked(hostile.answer);
        if (requests.size() > 1) {
            if (!kTakenAllTheSame.contains(hostile.name)) {
                EXPECT_EQ(hostile.means, HostileAnswer::Means::TrueContent);
            }
            EXPECT_EQ(requests[1].Header("Authorization"), "the true token");
        }
    }
}

TEST_F(HostileSignIn, TakesNoTokenThatIsNone) {
    for (const char* data : {"null", "7", "\"the true token\"", "[]", "{}", R"({"token":null})", R"({"token":7})",
                             R"({"token":""})", R"({"token":["the true token"]})", R"({"Token":"the true token"})"})
        EXPECT_EQ(Asked(ScriptedAnswer::Data(data)).size(), 1U) << data;
}

TEST_F(HostileSignIn, SendsNoTokenThatWouldEndItsHeader) {
    for (const char* token : {"a\\r\\nX-Evil: 1", "a\\nb", "\\u0000", "a\\u007f"})
        EXPECT_EQ(Asked(ScriptedAnswer::Data(std::string("{\"token\":\"") + token + "\"}")).size(), 1U) << token;
}

// --- time and size -------------------------------------------------------------------------------------------------

TEST_F(HostileSignIn, TakesNoPartOfAnAnswerForTheWhole) {
    for (const auto& cut : CutAnswers(trueBody)) {
        SCOPED_TRACE(cut.name);
        const auto requests = Asked(cut.answer);
        if (requests.size() > 1) {
            EXPECT_EQ(cut.means, HostileAnswer::Means::TrueContent);
        }
    }
}

/// The sign-in with little time, or with much.
class BoundedSignIn : public HostileSignIn {
protected:
    static constexpr std::chrono::milliseconds kBrief{200};
    static constexpr std::chrono::milliseconds kLong{60'000};

    ~BoundedSignIn() override { tolmcli::SetSignInLimits(tolmcli::kSignInLimits); }

    /// Runs a command against it, and returns what it says of its failure.
    std::string FailureAt(const ScriptedAnswer& answer, std::chrono::milliseconds time) {
        tolmcli::SetSignInLimits({time, tolmcli::kSignInLimits.bytes});
        server.Next(answer);
        const auto run = Tolm({"compare", dataset});
        EXPECT_EQ(run.code, tolmcli::Failed);
        return run.err;
    }
    static ScriptedAnswer Endless(const std::string& head, const std::string& again) {
        auto answer = ScriptedAnswer::Raw("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n" + head);
        answer.endlessly = again;
        return answer;
    }
    static ScriptedAnswer Dripping(ScriptedAnswer answer) {
        answer.byteByByte = true;
        answer.pace = std::chrono::milliseconds(20);
        return answer;
    }
};

TEST_F(BoundedSignIn, GivesUpASilentService) {
    EXPECT_TRUE(Contains(FailureAt(ScriptedAnswer::Silence(), kBrief), "did not answer in time"));
}

TEST_F(BoundedSignIn, GivesUpAServiceThatDrips) {
    const ScriptedAnswer drips[] = {
        Endless("Content-Length: 60000\r\n\r\n", " "),
        Endless("Transfer-Encoding: chunked\r\n\r\n", "1\r\n \r\n"),
        Endless("\r\n", " "),
        Endless("", "A: b\r\n"),
        Endless("A: ", "b"),
    };
    for (const ScriptedAnswer& drip : drips)
        EXPECT_TRUE(Contains(FailureAt(Dripping(drip), kBrief), "did not answer in time")) << *drip.raw;
}

/// Long before the time is over.
TEST_F(BoundedSignIn, GivesUpAnAnswerWithoutEnd) {
    const std::string much(1000, ' ');
    const ScriptedAnswer answers[] = {
        Endless("\r\n", much),
        Endless("Content-Length: 9000000000\r\n\r\n", much),
        Endless("Transfer-Encoding: chunked\r\n\r\n", "3e8\r\n" + much + "\r\n"),
        Endless("", "A: " + much + "\r\n"),
        Endless("A: ", much),
    };
    for (const ScriptedAnswer& answer : answers)
        EXPECT_TRUE(Contains(FailureAt(answer, kLong), "answers without end")) << *answer.raw;
}

TEST_F(BoundedSignIn, GivesUpEveryAnswerThatIsSlow) {
    for (const auto& hostile : HostileAnswers(trueBody, elsewhere.Port())) {
        if (hostile.isSlow) {
            EXPECT_FALSE(FailureAt(hostile.answer, kBrief).empty()) << hostile.name;
        }
    }
}

// --- TLS -----------------------------------------------------------------------------------------------------------

/// Whom the sign-in tells the secret over TLS, and whom not.
class SignInOverTls : public testing::Test {
protected:
    using Protocol = TlsServer::Protocol;

    SignInOverTls() {
        WatchForSecret("anna's secret");
        WatchForSecret("the true token");
        setenv("TOLM_SECRET", "anna's secret", 1);
        std::ofstream(vorn::StringUtil::ToString(file)) << authority.Pem();
        setenv("TOLM_CA_FILE", vorn::StringUtil::ToString(file).c_str(), 1);
    }
    ~SignInOverTls() override {
        unsetenv("TOLM_SECRET");
        unsetenv("TOLM_CA_FILE");
        tolm::TolmTrustSettings::SetCertificateAuthorityFile(L"");
        tolmcli::SetSignInLimits(tolmcli::kSignInLimits);
    }

    /// What a command tells of errors that signs in there.
    std::string ErrorsAt(const std::string& address) {
        const TempFolder own;
        const std::string dataset = vorn::StringUtil::ToString(own.File(L"office.db"));
        EXPECT_EQ(Tolm({"new", dataset, "--server", address, "--project", "tower", "--user", "anna"}).code,
                  tolmcli::Done);
        return Tolm({"compare", dataset}).err;
    }
    std::vector<std::string> RequestsAt(const Certificate& certificate, const std::wstring& host = L"127.0.0.1",
                                        Protocol protocol = Protocol::Newest) {
        const TlsServer server(certificate, R"({"code":"10000","data":{"token":"the true token"}})", protocol);
        const std::string errors = ErrorsAt(vorn::StringUtil::ToString(server.Address(host)));
        EXPECT_GE(server.ConnectionCount(), 1);
        const auto requests = server.Requests();
        EXPECT_EQ(requests.empty(), Contains(errors, "cannot be reached")) << errors;
        return requests;
    }
    void ExpectRefused(const Certificate& certificate, const std::wstring& host = L"127.0.0.1",
                       Protocol protocol = Protocol::Newest) {
        EXPECT_EQ(RequestsAt(certificate, host, protocol), std::vector<std::string>{});
    }
    Certificate LeafOf(const Certificate::Wish& wish) const { return Certificate(wish, &authority); }

    const TempFolder folder;
    const std::wstring file = folder.File(L"authorities.pem");
    const Certificate authority{{.name = "authority", .isAuthority = true}};
    const Certificate good = LeafOf({.name = "settings", .subjectAltName = "IP:127.0.0.1,DNS:localhost"});
};

TEST_F(SignInOverTls, GoesToAServiceThatIsTrusted) {
    for (const wchar_t* host : {L"127.0.0.1", L"localhost"}) {
        const auto requests = RequestsAt(good, host);
        ASSERT_FALSE(requests.empty());
        EXPECT_TRUE(requests[0].starts_with("POST /api/SignIn HTTP/1.1\r\n"));
        EXPECT_TRUE(Contains(requests[0], "anna's secret"));
    }
}

TEST_F(SignInOverTls, RefusesACertificateThatSignsItself) {
    ExpectRefused(Certificate({.name = "127.0.0.1", .subjectAltName = "IP:127.0.0.1"}));
}

TEST_F(SignInOverTls, RefusesACertificateOutOfItsTime) {
    for (const auto& [from, to] : {std::pair(-3, -1), std::pair(1, 3)})
        ExpectRefused(LeafOf({.name = "settings", .subjectAltName = "IP:127.0.0.1", .validFrom = from, .validTo = to}));
}

TEST_F(SignInOverTls, RefusesACertificateForAnotherHost) {
    for (const char* names : {"DNS:elsewhere.example", "IP:127.0.0.2", "DNS:*.localhost", "DNS:127.0.0.1"})
        ExpectRefused(LeafOf({.name = "settings", .subjectAltName = names}));
    ExpectRefused(LeafOf({.name = "localhost", .subjectAltName = "DNS:other"}), L"localhost");
    ExpectRefused(LeafOf({.name = "127.0.0.1", .subjectAltName = "DNS:other"}));
}

TEST_F(SignInOverTls, RefusesVersionsBelow12) {
    EXPECT_FALSE(RequestsAt(good, L"127.0.0.1", Protocol::Only12).empty());
    EXPECT_FALSE(RequestsAt(good, L"127.0.0.1", Protocol::Only13).empty());
    ExpectRefused(good, L"127.0.0.1", Protocol::AtMost11);
    ExpectRefused(good, L"127.0.0.1", Protocol::AtMost10);
}

/// Within the handshake, where no HTTP was said yet.
TEST_F(SignInOverTls, GivesUpAHandshakeThatNobodyAnswers) {
    tolmcli::SetSignInLimits({std::chrono::milliseconds(200), tolmcli::kSignInLimits.bytes});
    ClosedPort deaf;
    deaf.TurnDeaf();
    const std::string port = vorn::StringUtil::ToString(deaf.Address()).substr(7);
    EXPECT_TRUE(Contains(ErrorsAt("https://" + port), "did not answer in time"));
}

} // namespace
} // namespace tolmtest
